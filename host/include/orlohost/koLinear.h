#pragma once

#include "orlohost/Export.h"

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
    constexpr Triple(T x, T y, T z) : fElements{x, y, z} {}

    constexpr T operator[](int i) const { return fElements[i]; }
    constexpr T& operator[](int i) { return fElements[i]; }
    constexpr const T* data() const { return fElements; }

private:
    T fElements[3] = {};
};

using Point = Triple<double, 0>;
using PointFlt = Triple<float, 0>;
using Vector = Triple<double, 1>;
using VectorFlt = Triple<float, 1>;

/// A point in homogeneous coordinates x, y, z, w.
class HPoint {
public:
    constexpr HPoint() = default;
    constexpr HPoint(double x, double y, double z, double w) : fElements{x, y, z, w} {}
    constexpr explicit HPoint(const Point& p) : fElements{p[0], p[1], p[2], 1.0} {}

    constexpr double operator[](int i) const { return fElements[i]; }
    constexpr double& operator[](int i) { return fElements[i]; }
    constexpr const double* data() const { return fElements; }

private:
    double fElements[4] = {0.0, 0.0, 0.0, 1.0};
};

/// A linear map and a translation: four rows of three, the last row the translation. The identity unless told
/// otherwise.
class ORLOHOST_API AffineMatrix {
public:
    constexpr AffineMatrix() = default;

    constexpr const double* operator[](int row) const { return fRows[row]; }
    constexpr double* operator[](int row) { return fRows[row]; }

    static AffineMatrix translation(double x, double y, double z);
    static AffineMatrix scaling(double x, double y, double z);

    /// The map that does `*this` first, then `after`.
    AffineMatrix then(const AffineMatrix& after) const;

    /// The inverse; the identity where there is none.
    AffineMatrix inverse() const;

    /// Determinant of the linear part: negative where the map turns shapes inside out.
    double determinant() const;

    Point transform(const Point& p) const;
    Vector transform(const Vector& v) const;

private:
    double fRows[4][3] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}, {0.0, 0.0, 0.0}};
};

/// A full 4 x 4 matrix of doubles. The identity unless told otherwise.
class ORLOHOST_API ProjMatrix {
public:
    constexpr ProjMatrix() = default;

    /// From 16 numbers, row by row.
    explicit ProjMatrix(const double* elements);
    ProjMatrix(const AffineMatrix& affine); // NOLINT: every affine map is a projective one

    constexpr const double* operator[](int row) const { return fRows[row]; }
    constexpr double* operator[](int row) { return fRows[row]; }
    const double* data() const { return &fRows[0][0]; }

    /// The map that does `*this` first, then `after`.
    ProjMatrix then(const ProjMatrix& after) const;

    HPoint transform(const HPoint& p) const;

private:
    double fRows[4][4] = {
        {1.0, 0.0, 0.0, 0.0}, {0.0, 1.0, 0.0, 0.0}, {0.0, 0.0, 1.0, 0.0}, {0.0, 0.0, 0.0, 1.0}};
};
static_assert(sizeof(ProjMatrix) == 16 * sizeof(double));

/// The same in single precision.
class ORLOHOST_API ProjMatrixFlt {
public:
    constexpr ProjMatrixFlt() = default;
    explicit ProjMatrixFlt(const float* elements);
    explicit ProjMatrixFlt(const ProjMatrix& matrix);

    constexpr const float* operator[](int row) const { return fRows[row]; }
    constexpr float* operator[](int row) { return fRows[row]; }
    const float* data() const { return &fRows[0][0]; }

private:
    float fRows[4][4] = {{1.0F, 0.0F, 0.0F, 0.0F},
                         {0.0F, 1.0F, 0.0F, 0.0F},
                         {0.0F, 0.0F, 1.0F, 0.0F},
                         {0.0F, 0.0F, 0.0F, 1.0F}};
};
static_assert(sizeof(ProjMatrixFlt) == 16 * sizeof(float));

} // namespace koLinear
