#pragma once

#include "orlohost/Export.h"

#include <cmath>
#include <limits>

/// Points, vectors and matrices of the host.
///
/// All are contiguous numbers without a header, so that GL and Cg take them by address. Vectors are rows and
/// stand left of the matrix: p' = p M, translation in the last row (elements 12 to 14 of a ProjMatrix), which
/// is the order in which GL takes a matrix.
namespace koLinear {

/// x, y and z of type T. Points and vectors are different types so that an overload can tell them apart.
template <typename T, int kTag>
class Triple {
public:
    constexpr Triple() = default;

    /// Of its elements.
    constexpr Triple(T x, T y, T z) : fElements{x, y, z} {}

    constexpr T operator[](int i) const { return fElements[i]; } ///< element 0 to 2, not checked
    constexpr T& operator[](int i) { return fElements[i]; }      ///< the same, to write
    constexpr const T* data() const { return fElements; }        ///< the three elements in a row

    /// Makes it one unit long. False, and nothing changed, where it has no direction: it is zero, or not
    /// finite.
    bool normalize() {
        // Squares of floats neither overflow nor vanish in doubles.
        const auto x = static_cast<double>(fElements[0]);
        const auto y = static_cast<double>(fElements[1]);
        const auto z = static_cast<double>(fElements[2]);
        const double square = x * x + y * y + z * z;
        if (!(square > 0.0 && square <= std::numeric_limits<double>::max()))
            return false;
        const double inverse = 1.0 / std::sqrt(square);
        *this = {static_cast<T>(x * inverse), static_cast<T>(y * inverse), static_cast<T>(z * inverse)};
        return true;
    }

private:
    T fElements[3] = {};
};

/// At right angles to both, right-handed, as long as the parallelogram between them is large.
template <typename T, int kTag>
constexpr Triple<T, kTag> cross(const Triple<T, kTag>& a, const Triple<T, kTag>& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// The sum of the products of the elements.
template <typename T, int kTag>
constexpr T dot(const Triple<T, kTag>& a, const Triple<T, kTag>& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

/// The Euclidean length.
template <typename T, int kTag>
T length(const Triple<T, kTag>& v) {
    return std::hypot(v[0], v[1], v[2]);
}

using Point = Triple<double, 0>;    ///< a place
using PointFlt = Triple<float, 0>;  ///< a place, in floats
using Vector = Triple<double, 1>;   ///< a direction and length; translations leave it alone
using VectorFlt = Triple<float, 1>; ///< the same in floats

/// A point in homogeneous coordinates x, y, z, w.
class HPoint {
public:
    constexpr HPoint() = default;

    /// Of its elements.
    constexpr HPoint(double x, double y, double z, double w) : fElements{x, y, z, w} {}

    /// The place itself: w is 1.
    constexpr explicit HPoint(const Point& p) : fElements{p[0], p[1], p[2], 1.0} {}

    constexpr double operator[](int i) const { return fElements[i]; } ///< element 0 to 3, not checked
    constexpr double& operator[](int i) { return fElements[i]; }      ///< the same, to write
    constexpr const double* data() const { return fElements; }        ///< the four elements in a row

private:
    double fElements[4] = {0.0, 0.0, 0.0, 1.0};
};

class ProjMatrix;

/// A linear map and a translation: four rows of three, the last row the translation. The identity unless told
/// otherwise.
class ORLOHOST_API AffineMatrix {
public:
    constexpr AffineMatrix() = default;

    /// From 12 numbers, row by row.
    constexpr AffineMatrix(double m00, double m01, double m02, double m10, double m11, double m12, double m20,
                           double m21, double m22, double m30, double m31, double m32)
        : fRows{{m00, m01, m02}, {m10, m11, m12}, {m20, m21, m22}, {m30, m31, m32}} {}

    /// Leaves out the last column.
    explicit AffineMatrix(const ProjMatrix& matrix);

    /// The three elements of row 0 to 3, not checked.
    constexpr const double* operator[](int row) const { return fRows[row]; }
    constexpr double* operator[](int row) { return fRows[row]; } ///< the same, to write

    /// Put a turn about z (radians, counter-clockwise), or a scaling, before the map: a point is turned or
    /// scaled first.
    void rotateZ(double angle);

    /// Scales what it maps to along each axis; afterwards, as rotateZ turns.
    void scale(double x, double y, double z);

    static AffineMatrix translation(double x, double y, double z); ///< by x, y, z
    static AffineMatrix scaling(double x, double y, double z);     ///< along each axis, about the origin

    /// The map that does `*this` first, then `after`.
    AffineMatrix then(const AffineMatrix& after) const;

    /// The inverse; the identity where there is none.
    AffineMatrix inverse() const;

    /// Determinant of the linear part: negative where the map turns shapes inside out.
    double determinant() const;

    Point transform(const Point& p) const;   ///< with the translation
    Vector transform(const Vector& v) const; ///< without the translation

private:
    double fRows[4][3] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}, {0.0, 0.0, 0.0}};
};

/// A full 4 x 4 matrix of doubles. The identity unless told otherwise.
class ORLOHOST_API ProjMatrix {
public:
    constexpr ProjMatrix() = default;

    /// From 16 numbers, row by row.
    constexpr ProjMatrix(double m00, double m01, double m02, double m03, double m10, double m11, double m12,
                         double m13, double m20, double m21, double m22, double m23, double m30, double m31,
                         double m32, double m33)
        : fRows{{m00, m01, m02, m03}, {m10, m11, m12, m13}, {m20, m21, m22, m23}, {m30, m31, m32, m33}} {}

    /// Of 16 elements, row by row.
    explicit ProjMatrix(const double* elements);

    /// The same map, with a last column of 0, 0, 0, 1.
    ProjMatrix(const AffineMatrix& affine); // NOLINT: every affine map is a projective one

    /// The four elements of row 0 to 3, not checked.
    constexpr const double* operator[](int row) const { return fRows[row]; }
    constexpr double* operator[](int row) { return fRows[row]; } ///< the same, to write
    const double* data() const { return &fRows[0][0]; }          ///< the 16 elements, row by row

    /// Puts `before` in front: a point meets it first.
    void preMult(const ProjMatrix& before);

    /// The map that does `*this` first, then `after`.
    ProjMatrix then(const ProjMatrix& after) const;

    /// p as a row, times this matrix; w isn't divided by.
    HPoint transform(const HPoint& p) const;

private:
    double fRows[4][4] = {
        {1.0, 0.0, 0.0, 0.0}, {0.0, 1.0, 0.0, 0.0}, {0.0, 0.0, 1.0, 0.0}, {0.0, 0.0, 0.0, 1.0}};
};
static_assert(sizeof(ProjMatrix) == 16 * sizeof(double));

/// Whether no element differs by more than `tolerance`.
ORLOHOST_API bool equivalent(const ProjMatrix& a, const ProjMatrix& b, double tolerance);

/// The same in single precision.
class ORLOHOST_API ProjMatrixFlt {
public:
    constexpr ProjMatrixFlt() = default;

    /// Of its elements, row by row.
    constexpr ProjMatrixFlt(float m00, float m01, float m02, float m03, float m10, float m11, float m12,
                            float m13, float m20, float m21, float m22, float m23, float m30, float m31,
                            float m32, float m33)
        : fRows{{m00, m01, m02, m03}, {m10, m11, m12, m13}, {m20, m21, m22, m23}, {m30, m31, m32, m33}} {}

    /// Of 16 elements, row by row.
    explicit ProjMatrixFlt(const float* elements);

    /// Each element rounded to a float.
    explicit ProjMatrixFlt(const ProjMatrix& matrix);

    /// The four elements of row 0 to 3, not checked.
    constexpr const float* operator[](int row) const { return fRows[row]; }
    constexpr float* operator[](int row) { return fRows[row]; } ///< the same, to write
    const float* data() const { return &fRows[0][0]; }          ///< the 16 elements, row by row

private:
    float fRows[4][4] = {{1.0F, 0.0F, 0.0F, 0.0F},
                         {0.0F, 1.0F, 0.0F, 0.0F},
                         {0.0F, 0.0F, 1.0F, 0.0F},
                         {0.0F, 0.0F, 0.0F, 1.0F}};
};
static_assert(sizeof(ProjMatrixFlt) == 16 * sizeof(float));

} // namespace koLinear
