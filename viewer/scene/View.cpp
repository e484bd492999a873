#include "scene/View.h"

#include "base/ExitCode.h"
#include "scene/Vectors.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <numbers>
#include <utility>

namespace orloview {

namespace {

using koLinear::AffineMatrix;
using koLinear::ProjMatrix;

constexpr double kDefaultFieldOfView = 35.0;

/// What a fitted scene takes up of the picture's shorter side.
constexpr double kFill = 0.85;

double radians(double degrees) {
    return degrees * std::numbers::pi / 180.0;
}

std::array<Point, 8> corners(const Bounds& b) {
    std::array<Point, 8> result;
    for (size_t i = 0; i < 8; ++i)
        result[i] = {(i & 1U) ? b.max[0] : b.min[0], (i & 2U) ? b.max[1] : b.min[1],
                     (i & 4U) ? b.max[2] : b.min[2]};
    return result;
}

/// Turns the eye to look from `eye` at `target`.
void lookAt(Viewpoint& viewpoint, const Point& eye, const Point& target, const Vector& up) {
    const Vector sight = between(eye, target);
    viewpoint.target = target;
    viewpoint.distance = length(sight);
    if (!(viewpoint.distance > 0.0))
        throw Failure(kExitUsage, "--eye is where the view looks; move --eye or --target");
    viewpoint.back = scaled(sight, -1.0 / viewpoint.distance);
    Vector right = cross(up, viewpoint.back);
    if (!(length(right) / length(up) >
          1e-9)) // from straight above or below: the front is at the bottom or top
        right = cross(up, frontOf(up));
    viewpoint.right = scaled(right, 1.0 / length(right));
    viewpoint.up = cross(viewpoint.back, viewpoint.right);
}

struct DepthRange {
    double near;
    double far;
};

/// Just round the scene as this eye sees it; where the scene reaches behind the eye, near is negative.
DepthRange rangeOf(const AffineMatrix& worldToEye, const Bounds& bounds) {
    DepthRange range{std::numeric_limits<double>::max(), std::numeric_limits<double>::lowest()};
    for (const Point& corner : corners(bounds)) {
        const double depth = -worldToEye.transform(corner)[2];
        range.near = std::min(range.near, depth);
        range.far = std::max(range.far, depth);
    }
    return range;
}

/// The range for a perspective: in front of the eye, near enough to it to stand inside the scene.
DepthRange inFront(DepthRange range, const Bounds& bounds) {
    const double far = std::max(range.far, radiusOf(bounds) * 1e-3) * 1.01;
    return {std::max(range.near * 0.99, far * 1e-4), far};
}

AffineMatrix worldToEyeOf(const Viewpoint& viewpoint) {
    AffineMatrix matrix;
    const Vector origin = between({}, viewpoint.eye());
    for (int axis = 0; axis < 3; ++axis) {
        matrix[axis][0] = viewpoint.right[axis];
        matrix[axis][1] = viewpoint.up[axis];
        matrix[axis][2] = viewpoint.back[axis];
    }
    matrix[3][0] = -dot(origin, viewpoint.right);
    matrix[3][1] = -dot(origin, viewpoint.up);
    matrix[3][2] = -dot(origin, viewpoint.back);
    return matrix;
}

/// How far points reach to each side, each moved outwards by `more`, and along the view.
struct Extremes {
    static constexpr double kNone = std::numeric_limits<double>::lowest();
    double right = kNone;
    double left = kNone;
    double above = kNone;
    double below = kNone;
    double nearest = kNone;
    double farthest = kNone;

    void add(double x, double y, double more) {
        right = std::max(right, more + x);
        left = std::max(left, more - x);
        above = std::max(above, more + y);
        below = std::max(below, more - y);
    }
};

/// What an outline takes up with its mirror images about the target: fitted, it leaves the target where it
/// is.
Outline mirrored(const Outline& outline, const Viewpoint& viewpoint) {
    return [=](const auto& visit) {
        outline([&](std::span<const Point> points) {
            for (const Point& point : points) {
                const Vector p = between(viewpoint.target, point);
                const Vector depth = scaled(viewpoint.back, dot(p, viewpoint.back));
                visit(std::array{offset(viewpoint.target, p),
                                 offset(viewpoint.target, sum(scaled(depth, 2.0), scaled(p, -1.0)))});
            }
        });
    };
}

/// A camera's place may carry a scale, which the view must not.
AffineMatrix withoutScale(AffineMatrix place) {
    for (int axis = 0; axis < 3; ++axis) {
        const double size = std::hypot(place[axis][0], place[axis][1], place[axis][2]);
        for (int i = 0; size > 0.0 && i < 3; ++i)
            place[axis][i] /= size;
    }
    return place;
}

} // namespace

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

koLinear::ProjMatrix halved() {
    koLinear::ProjMatrix matrix;
    for (int axis = 0; axis < 3; ++axis)
        matrix[axis][axis] = matrix[3][axis] = 0.5;
    return matrix;
}

Point Viewpoint::eye() const {
    return offset(target, scaled(back, distance));
}

double Viewpoint::halfHeight() const {
    return distance * std::tan(fieldOfView / 2.0);
}

Point centerOf(const Bounds& b) {
    return {(b.min[0] + b.max[0]) / 2.0, (b.min[1] + b.max[1]) / 2.0, (b.min[2] + b.max[2]) / 2.0};
}

double radiusOf(const Bounds& b) {
    const double radius = length(between(b.min, b.max)) / 2.0;
    return radius > 0.0 ? radius : 1.0;
}

Vector frontOf(const Vector& up) {
    const bool zIsUp = std::abs(up[2]) > std::abs(up[1]) && std::abs(up[2]) > std::abs(up[0]);
    return zIsUp ? Vector(0.0, -1.0, 0.0) : Vector(0.0, 0.0, 1.0);
}

Vector levelFrontOf(const Vector& up) {
    Vector front = frontOf(up);
    front = sum(front, scaled(up, -dot(front, up)));
    return scaled(front, 1.0 / length(front));
}

Outline outlineOf(const Bounds& bounds) {
    return [bounds](const auto& visit) { visit(corners(bounds)); };
}

Outline outlineOf(const Scene& scene) {
    return [vertices = std::make_shared<const DrawnVertices>(scene)](const auto& visit) {
        std::array<Point, 256> some;
        size_t count = 0;
        vertices->visit([&](const Point& place) {
            if (!std::isfinite(place[0]) || !std::isfinite(place[1]) || !std::isfinite(place[2]))
                return;
            some[count++] = place;
            if (count == some.size())
                visit(std::span(some.data(), std::exchange(count, 0)));
        });
        visit(std::span(some.data(), count));
    };
}

Outline turnedAbout(const Outline& outline, const Point& middle, const Vector& up) {
    return [=](const auto& visit) {
        outline([&](std::span<const Point> points) {
            std::array<Point, 12> round;
            for (const Point& point : points) {
                for (size_t i = 0; i < round.size(); ++i)
                    round[i] = offset(middle, turned(between(middle, point), up,
                                                     2.0 * std::numbers::pi * static_cast<double>(i) /
                                                         static_cast<double>(round.size())));
                visit(round);
            }
        });
    };
}

void fit(Viewpoint& viewpoint, const Outline& outline, double aspect) {
    const double tangent = kFill * std::tan(viewpoint.fieldOfView / 2.0) * std::min(aspect, 1.0);
    const double perspective = viewpoint.orthographic ? 0.0 : tangent;
    // In perspective the eye sees a point when it is no farther aside than the tangent times its depth.
    Extremes seen;
    outline([&](std::span<const Point> points) {
        for (const Point& point : points) {
            const Vector p = between({}, point);
            const double z = dot(p, viewpoint.back);
            seen.add(dot(p, viewpoint.right), dot(p, viewpoint.up), perspective * z);
            seen.nearest = std::max(seen.nearest, z);
            seen.farthest = std::max(seen.farthest, -z);
        }
    });
    const double middle = (seen.nearest - seen.farthest) / 2.0;
    double eye = std::max(seen.right + seen.left, seen.above + seen.below) / (2.0 * tangent); // along back
    if (viewpoint.orthographic)
        eye += middle;
    eye = std::max(eye, seen.nearest + 0.01 * (seen.nearest + seen.farthest));
    viewpoint.distance = eye > middle ? eye - middle : 1.0; // a single point
    double x = (seen.right - seen.left) / 2.0;
    double y = (seen.above - seen.below) / 2.0;
    // What doesn't reach from side to side isn't in the middle yet: near things look larger.
    for (int round = 0; round < 2 && !viewpoint.orthographic; ++round) {
        Extremes drawn;
        outline([&](std::span<const Point> points) {
            for (const Point& point : points) {
                const Vector p = between({}, point);
                const double depth = std::max(eye - dot(p, viewpoint.back), 1e-9 * viewpoint.distance);
                drawn.add((dot(p, viewpoint.right) - x) / depth, (dot(p, viewpoint.up) - y) / depth, 0.0);
            }
        });
        x += (drawn.right - drawn.left) / 2.0 * viewpoint.distance;
        y += (drawn.above - drawn.below) / 2.0 * viewpoint.distance;
    }
    viewpoint.target = offset(
        {}, sum(sum(scaled(viewpoint.right, x), scaled(viewpoint.up, y)), scaled(viewpoint.back, middle)));
}

Viewpoint placeEye(const Placement& placement, const Outline& outline, double aspect) {
    Viewpoint viewpoint;
    viewpoint.fieldOfView = radians(placement.fieldOfView.value_or(kDefaultFieldOfView));
    viewpoint.orthographic = placement.orthographic;
    const Vector given = placement.up.value_or(Vector(0.0, 1.0, 0.0));
    const Vector up = scaled(given, 1.0 / length(given));
    Point target = placement.target.value_or(Point());
    if (placement.eye && !placement.target) {
        Bounds bounds;
        outline([&](std::span<const Point> points) {
            for (const Point& point : points)
                bounds.extend(point);
        });
        target = centerOf(bounds);
    }
    if (placement.eye) {
        lookAt(viewpoint, *placement.eye, target, up);
        return viewpoint;
    }
    const double elevation = radians(placement.direction.elevation);
    const Vector side = turned(levelFrontOf(up), up, radians(placement.direction.azimuth));
    lookAt(viewpoint, offset(target, sum(scaled(side, std::cos(elevation)), scaled(up, std::sin(elevation)))),
           target, up);
    if (placement.target)
        fit(viewpoint, mirrored(outline, viewpoint), aspect);
    else
        fit(viewpoint, outline, aspect);
    return viewpoint;
}

Viewpoint eyeOf(const Camera& camera, const Bounds& bounds) {
    const AffineMatrix place = withoutScale(camera.toWorld);
    Viewpoint viewpoint;
    viewpoint.right = {place[0][0], place[0][1], place[0][2]};
    viewpoint.back = {place[2][0], place[2][1], place[2][2]};
    viewpoint.up = cross(viewpoint.back, viewpoint.right);
    const Point eye(place[3][0], place[3][1], place[3][2]);
    const double depth = dot(between(centerOf(bounds), eye), viewpoint.back);
    viewpoint.distance = depth > 0.0 ? depth : radiusOf(bounds);
    viewpoint.orthographic = camera.kind == Camera::Kind::Orthographic;
    viewpoint.fieldOfView =
        viewpoint.orthographic ? 2.0 * std::atan(camera.ymag / viewpoint.distance) : camera.yfov;
    viewpoint.target = offset(eye, scaled(viewpoint.back, -viewpoint.distance));
    return viewpoint;
}

View viewFrom(const Viewpoint& viewpoint, const Bounds& bounds, double aspect) {
    View view{worldToEyeOf(viewpoint), {}};
    const DepthRange range = rangeOf(view.worldToEye, bounds);
    if (viewpoint.orthographic) {
        const double room = radiusOf(bounds) * 0.01;
        const double halfHeight = viewpoint.halfHeight();
        view.projection = orthographic(halfHeight * aspect, halfHeight, range.near - room, range.far + room);
        view.skyDistance = viewpoint.distance;
    } else {
        const DepthRange depth = inFront(range, bounds);
        view.projection = perspective(viewpoint.fieldOfView, aspect, depth.near, depth.far);
    }
    return view;
}

View placeView(const Placement& placement, const Bounds& bounds, double aspect) {
    return viewFrom(placeEye(placement, outlineOf(bounds), aspect), bounds, aspect);
}

View viewThrough(const Camera& camera, const Bounds& bounds, double aspect) {
    View view{withoutScale(camera.toWorld).inverse(), {}};
    const DepthRange fitted = inFront(rangeOf(view.worldToEye, bounds), bounds);
    const double near = camera.zNear > 0.0 ? camera.zNear : fitted.near;
    if (camera.kind == Camera::Kind::Orthographic) {
        const double halfWidth = camera.ymag * aspect;
        view.projection = orthographic(halfWidth, camera.ymag, camera.zNear,
                                       std::isinf(camera.zFar) ? fitted.far : camera.zFar);
        view.skyDistance = camera.ymag / std::tan(radians(kDefaultFieldOfView) / 2.0);
    } else {
        view.projection = perspective(camera.yfov, aspect, near, camera.zFar);
    }
    return view;
}

} // namespace orloview
