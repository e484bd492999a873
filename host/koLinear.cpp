#include "orlohost/koLinear.h"

#include <algorithm>
#include <cmath>

namespace koLinear {

AffineMatrix::AffineMatrix(const ProjMatrix& matrix) {
    for (int row = 0; row < 4; ++row)
        std::copy_n(matrix[row], 3, fRows[row]);
}

void AffineMatrix::rotateZ(double angle) {
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    for (int column = 0; column < 3; ++column) {
        const double x = fRows[0][column];
        const double y = fRows[1][column];
        fRows[0][column] = cosine * x + sine * y;
        fRows[1][column] = cosine * y - sine * x;
    }
}

void AffineMatrix::scale(double x, double y, double z) {
    for (int column = 0; column < 3; ++column) {
        fRows[0][column] *= x;
        fRows[1][column] *= y;
        fRows[2][column] *= z;
    }
}

AffineMatrix AffineMatrix::translation(double x, double y, double z) {
    AffineMatrix m;
    m[3][0] = x;
    m[3][1] = y;
    m[3][2] = z;
    return m;
}

AffineMatrix AffineMatrix::scaling(double x, double y, double z) {
    AffineMatrix m;
    m[0][0] = x;
    m[1][1] = y;
    m[2][2] = z;
    return m;
}

AffineMatrix AffineMatrix::then(const AffineMatrix& after) const {
    AffineMatrix product;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 3; ++column) {
            double sum = row == 3 ? after[3][column] : 0.0;
            for (int k = 0; k < 3; ++k)
                sum += fRows[row][k] * after[k][column];
            product[row][column] = sum;
        }
    }
    return product;
}

double AffineMatrix::determinant() const {
    const auto& m = fRows;
    return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
           m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
           m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
}

AffineMatrix AffineMatrix::inverse() const {
    const double det = determinant();
    if (det == 0.0)
        return {};
    const auto& m = fRows;
    AffineMatrix inverse;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            // The cofactor of the transposed element: cyclic indices carry the sign.
            const int r1 = (column + 1) % 3;
            const int r2 = (column + 2) % 3;
            const int c1 = (row + 1) % 3;
            const int c2 = (row + 2) % 3;
            inverse[row][column] = (m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1]) / det;
        }
    }
    for (int column = 0; column < 3; ++column) {
        double sum = 0.0;
        for (int k = 0; k < 3; ++k)
            sum -= m[3][k] * inverse[k][column];
        inverse[3][column] = sum;
    }
    return inverse;
}

Point AffineMatrix::transform(const Point& p) const {
    Point result;
    for (int column = 0; column < 3; ++column)
        result[column] =
            p[0] * fRows[0][column] + p[1] * fRows[1][column] + p[2] * fRows[2][column] + fRows[3][column];
    return result;
}

Vector AffineMatrix::transform(const Vector& v) const {
    Vector result;
    for (int column = 0; column < 3; ++column)
        result[column] = v[0] * fRows[0][column] + v[1] * fRows[1][column] + v[2] * fRows[2][column];
    return result;
}

ProjMatrix::ProjMatrix(const double* elements) {
    std::copy_n(elements, 16, &fRows[0][0]);
}

ProjMatrix::ProjMatrix(const AffineMatrix& affine) {
    for (int row = 0; row < 4; ++row)
        std::copy_n(affine[row], 3, fRows[row]);
}

void ProjMatrix::preMult(const ProjMatrix& before) {
    *this = before.then(*this);
}

ProjMatrix ProjMatrix::then(const ProjMatrix& after) const {
    ProjMatrix product;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            double sum = 0.0;
            for (int k = 0; k < 4; ++k)
                sum += fRows[row][k] * after[k][column];
            product[row][column] = sum;
        }
    }
    return product;
}

HPoint ProjMatrix::transform(const HPoint& p) const {
    HPoint result;
    for (int column = 0; column < 4; ++column) {
        result[column] = 0.0;
        for (int k = 0; k < 4; ++k)
            result[column] += p[k] * fRows[k][column];
    }
    return result;
}

bool equivalent(const ProjMatrix& a, const ProjMatrix& b, double tolerance) {
    return std::equal(a.data(), a.data() + 16, b.data(),
                      [=](double x, double y) { return std::fabs(x - y) <= tolerance; });
}

ProjMatrixFlt::ProjMatrixFlt(const float* elements) {
    std::copy_n(elements, 16, &fRows[0][0]);
}

ProjMatrixFlt::ProjMatrixFlt(const ProjMatrix& matrix) {
    std::transform(matrix.data(), matrix.data() + 16, &fRows[0][0],
                   [](double element) { return static_cast<float>(element); });
}

} // namespace koLinear
