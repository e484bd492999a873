#include "scene/View.h"

#include "ExitCode.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace orloview {

namespace {

using koLinear::AffineMatrix;
using koLinear::Point;
using koLinear::ProjMatrix;
using koLinear::Vector;

constexpr double kDefaultFieldOfView = 35.0;

/// The fitted view looks down by this angle.
constexpr double kElevation = 15.0;

/// Room round the fitted scene, as a part of the distance.
constexpr double kMargin = 1.08;

double radians(double degrees) {
    return degrees * std::numbers::pi / 180.0;
}

double dot(const Vector& a, const Vector& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Vector cross(const Vector& a, const Vector& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double length(const Vector& v) {
    return std::hypot(v[0], v[1], v[2]);
}

Vector scaled(const Vector& v, double factor) {
    return {v[0] * factor, v[1] * factor, v[2] * factor};
}

Vector between(const Point& from, const Point& to) {
    return {to[0] - from[0], to[1] - from[1], to[2] - from[2]};
}

Point offset(const Point& p, const Vector& v) {
    return {p[0] + v[0], p[1] + v[1], p[2] + v[2]};
}

Point center(const Bounds& b) {
    return {(b.min[0] + b.max[0]) / 2.0, (b.min[1] + b.max[1]) / 2.0, (b.min[2] + b.max[2]) / 2.0};
}

double radius(const Bounds& b) {
    const double r = length(between(b.min, b.max)) / 2.0;
    return r > 0.0 ? r : 1.0; // a single point still has to be seen
}

std::array<Point, 8> corners(const Bounds& b) {
    std::array<Point, 8> result;
    for (size_t i = 0; i < 8; ++i)
        result[i] = {(i & 1U) ? b.max[0] : b.min[0], (i & 2U) ? b.max[1] : b.min[1],
                     (i & 4U) ? b.max[2] : b.min[2]};
    return result;
}

AffineMatrix lookAt(const Point& eye, const Point& target, const Vector& up) {
    const Vector sight = between(eye, target);
    const double distance = length(sight);
    if (!(distance > 0.0))
        throw Failure(kExitUsage, "--eye is where the view looks; move --eye or --target");
    const Vector back = scaled(sight, -1.0 / distance);
    Vector right = cross(up, back);
    const double sine = length(right) / length(up);
    if (!(sine > 1e-9))
        throw Failure(kExitUsage, "--up lies along the view; give another direction, such as --up 0,0,1");
    right = scaled(right, 1.0 / length(right));
    const Vector top = cross(back, right);

    AffineMatrix view;
    const Vector origin = between({}, eye);
    for (int axis = 0; axis < 3; ++axis) {
        view[axis][0] = right[axis];
        view[axis][1] = top[axis];
        view[axis][2] = back[axis];
    }
    view[3][0] = -dot(origin, right);
    view[3][1] = -dot(origin, top);
    view[3][2] = -dot(origin, back);
    return view;
}

/// `far` may be infinite.
ProjMatrix perspective(double fieldOfView, double aspect, double near, double far) {
    const double scale = 1.0 / std::tan(fieldOfView / 2.0);
    ProjMatrix m;
    m[0][0] = scale / aspect;
    m[1][1] = scale;
    m[2][2] = std::isinf(far) ? -1.0 : (far + near) / (near - far);
    m[2][3] = -1.0;
    m[3][2] = std::isinf(far) ? -2.0 * near : 2.0 * far * near / (near - far);
    m[3][3] = 0.0;
    return m;
}

ProjMatrix orthographic(double halfWidth, double halfHeight, double near, double far) {
    ProjMatrix m;
    m[0][0] = 1.0 / halfWidth;
    m[1][1] = 1.0 / halfHeight;
    m[2][2] = 2.0 / (near - far);
    m[3][2] = (far + near) / (near - far);
    return m;
}

struct DepthRange {
    double near;
    double far;
};

/// Just round the scene as this eye sees it, near enough to 0 to stand inside it.
DepthRange depthRange(const AffineMatrix& worldToEye, const Bounds& bounds) {
    double nearest = std::numeric_limits<double>::max();
    double farthest = 0.0;
    for (const Point& corner : corners(bounds)) {
        const double depth = -worldToEye.transform(corner)[2];
        nearest = std::min(nearest, depth);
        farthest = std::max(farthest, depth);
    }
    const double size = radius(bounds);
    const double far = std::max(farthest, size * 1e-3) * 1.01;
    return {std::max(nearest * 0.99, far * 1e-4), far};
}

/// How far from the centre the eye must be, along `back`, to have every corner in view.
double fittingDistance(const Bounds& bounds, const Vector& up, const Vector& back, double fieldOfView,
                       double aspect) {
    const Point middle = center(bounds);
    const AffineMatrix view = lookAt(offset(middle, back), middle, up);
    const double tangentY = std::tan(fieldOfView / 2.0);
    const double tangentX = tangentY * aspect;
    double distance = 0.0;
    for (const Point& corner : corners(bounds)) {
        const Point p = view.transform(corner);
        // In front of the centre by 1 + z: the eye of this trial view is 1 away.
        const double before = 1.0 + p[2];
        distance =
            std::max({distance, before + std::abs(p[0]) / tangentX, before + std::abs(p[1]) / tangentY});
    }
    return distance > 0.0 ? distance * kMargin : 1.0;
}

} // namespace

View placeView(const Placement& placement, const Bounds& bounds, double aspect) {
    const double fieldOfView = radians(placement.fieldOfView.value_or(kDefaultFieldOfView));
    const Vector up = placement.up.value_or(Vector(0.0, 1.0, 0.0));
    const Point target = placement.target.value_or(center(bounds));
    Point eye;
    if (placement.eye) {
        eye = *placement.eye;
    } else {
        // In front of the scene: +z where y is up; where z is up, -y, so that the model stands on its feet.
        const bool zIsUp = std::abs(up[2]) > std::abs(up[1]) && std::abs(up[2]) > std::abs(up[0]);
        const Vector front = zIsUp ? Vector(0.0, -1.0, 0.0) : Vector(0.0, 0.0, 1.0);
        const Vector above = scaled(up, 1.0 / length(up));
        const Vector back(front[0] * std::cos(radians(kElevation)) + above[0] * std::sin(radians(kElevation)),
                          front[1] * std::cos(radians(kElevation)) + above[1] * std::sin(radians(kElevation)),
                          front[2] * std::cos(radians(kElevation)) +
                              above[2] * std::sin(radians(kElevation)));
        eye = offset(target,
                     scaled(back, fittingDistance(bounds, up, back, fieldOfView, aspect) / length(back)));
    }
    const AffineMatrix worldToEye = lookAt(eye, target, up);
    const DepthRange depth = depthRange(worldToEye, bounds);
    return {worldToEye, perspective(fieldOfView, aspect, depth.near, depth.far)};
}

View viewThrough(const Camera& camera, const Bounds& bounds, double aspect) {
    // A camera's place may carry a scale, which the view must not.
    AffineMatrix place = camera.toWorld;
    for (int axis = 0; axis < 3; ++axis) {
        const double size = std::hypot(place[axis][0], place[axis][1], place[axis][2]);
        for (int i = 0; size > 0.0 && i < 3; ++i)
            place[axis][i] /= size;
    }
    View view{place.inverse(), {}};
    const DepthRange fitted = depthRange(view.worldToEye, bounds);
    const double near = camera.zNear > 0.0 ? camera.zNear : fitted.near;
    if (camera.kind == Camera::Kind::Orthographic) {
        const double halfWidth = camera.ymag * aspect;
        view.projection = orthographic(halfWidth, camera.ymag, camera.zNear,
                                       std::isinf(camera.zFar) ? fitted.far : camera.zFar);
    } else {
        view.projection = perspective(camera.yfov, aspect, near, camera.zFar);
    }
    return view;
}

} // namespace orloview
