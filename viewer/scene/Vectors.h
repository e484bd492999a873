#pragma once

#include <algorithm>
#include <cmath>

#include <orlohost/koLinear.h>

/// Arithmetic on the host's points and vectors.
namespace orloview {

using koLinear::cross;
using koLinear::dot;
using koLinear::length;
using koLinear::Point;
using koLinear::Vector;

inline Vector scaled(const Vector& v, double factor) {
    return {v[0] * factor, v[1] * factor, v[2] * factor};
}

inline Vector sum(const Vector& a, const Vector& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

inline Vector between(const Point& from, const Point& to) {
    return {to[0] - from[0], to[1] - from[1], to[2] - from[2]};
}

inline Point offset(const Point& p, const Vector& v) {
    return {p[0] + v[0], p[1] + v[1], p[2] + v[2]};
}

inline bool isFinite(const koLinear::AffineMatrix& matrix) {
    return std::all_of(matrix[0], matrix[0] + 12, [](double element) { return std::isfinite(element); });
}

/// Axes of unit length at the origin, the last of them along `z`.
inline koLinear::AffineMatrix frameAlong(const Vector& z) {
    const Vector back = scaled(z, 1.0 / length(z));
    const Vector side = std::abs(back[1]) < 0.9 ? Vector(0.0, 1.0, 0.0) : Vector(1.0, 0.0, 0.0);
    Vector right = cross(side, back);
    right = scaled(right, 1.0 / length(right));
    const Vector up = cross(back, right);
    return {right[0], right[1], right[2], up[0], up[1], up[2], back[0], back[1], back[2], 0.0, 0.0, 0.0};
}

/// The vector turned by an angle (radians, right-handed) round an axis of unit length.
inline Vector turned(const Vector& v, const Vector& axis, double angle) {
    const double along = dot(axis, v) * (1.0 - std::cos(angle));
    return sum(sum(scaled(v, std::cos(angle)), scaled(cross(axis, v), std::sin(angle))), scaled(axis, along));
}

} // namespace orloview
