#pragma once

#include <array>
#include <cmath>
#include <utility>

namespace orlocg {

/// In GL's order: column by column.
using Matrix = std::array<double, 16>;

inline Matrix product(const Matrix& a, const Matrix& b) {
    Matrix c{};
    for (size_t column = 0; column < 4; ++column)
        for (size_t row = 0; row < 4; ++row)
            for (size_t k = 0; k < 4; ++k)
                c[column * 4 + row] += a[k * 4 + row] * b[column * 4 + k];
    return c;
}

inline Matrix transposed(const Matrix& m) {
    Matrix t{};
    for (size_t i = 0; i < 16; ++i)
        t[i] = m[i % 4 * 4 + i / 4];
    return t;
}

/// By elimination; the identity where there is no inverse.
inline Matrix inverse(Matrix m) {
    const Matrix identity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    Matrix result = identity;
    for (size_t k = 0; k < 4; ++k) {
        size_t pivot = k;
        for (size_t row = k + 1; row < 4; ++row)
            if (std::abs(m[k * 4 + row]) > std::abs(m[k * 4 + pivot]))
                pivot = row;
        if (m[k * 4 + pivot] == 0.0)
            return identity;
        for (size_t column = 0; column < 4; ++column) {
            std::swap(m[column * 4 + k], m[column * 4 + pivot]);
            std::swap(result[column * 4 + k], result[column * 4 + pivot]);
        }
        const double divisor = m[k * 4 + k];
        for (size_t row = 0; row < 4; ++row) {
            const double factor = row == k ? 0.0 : m[k * 4 + row] / divisor;
            for (size_t column = 0; column < 4 && row != k; ++column) {
                m[column * 4 + row] -= factor * m[column * 4 + k];
                result[column * 4 + row] -= factor * result[column * 4 + k];
            }
        }
        for (size_t column = 0; column < 4; ++column) {
            m[column * 4 + k] /= divisor;
            result[column * 4 + k] /= divisor;
        }
    }
    return result;
}

} // namespace orlocg
