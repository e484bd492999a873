#include "scene/Navigation.h"

#include "scene/Vectors.h"

#include <algorithm>
#include <numbers>

namespace orloview {

namespace {

/// How near and how far the eye goes, in radii of the scene.
constexpr double kNearest = 1e-4;
constexpr double kFarthest = 1e3;

/// Turning ends a little before straight above: there, eye, target and up would no longer say which way is up
/// in the picture.
constexpr double kHighest = 89.9 / 180.0 * std::numbers::pi;

} // namespace

Navigation::Navigation(const Viewpoint& start, const Vector& up, Outline outline, double radius)
    : fViewpoint(start), fStart(start), fUp(scaled(up, 1.0 / length(up))), fOutline(std::move(outline)),
      fRadius(radius) {}

void Navigation::orbit(double toRight, double higher) {
    Viewpoint& v = fViewpoint;
    v.right = turned(v.right, fUp, toRight);
    v.back = turned(v.back, fUp, toRight);
    const double elevation = std::atan2(dot(v.back, fUp), length(cross(v.back, fUp)));
    const double tilt = std::clamp(elevation + higher, -kHighest, kHighest) - elevation;
    v.back = turned(v.back, v.right, -tilt);
    // Rounding must not add up over thousands of moves.
    v.back = scaled(v.back, 1.0 / length(v.back));
    v.right = sum(v.right, scaled(v.back, -dot(v.right, v.back)));
    v.right = scaled(v.right, 1.0 / length(v.right));
    v.up = cross(v.back, v.right);
}

void Navigation::pan(double right, double up) {
    const double half = fViewpoint.halfHeight();
    const Vector move = sum(scaled(fViewpoint.right, -right * half), scaled(fViewpoint.up, -up * half));
    fViewpoint.target = offset(fViewpoint.target, move);
}

void Navigation::zoom(double factor, double x, double y, double aspect) {
    const double before = fViewpoint.halfHeight();
    fViewpoint.distance = std::clamp(fViewpoint.distance / factor, fRadius * kNearest, fRadius * kFarthest);
    const double closer = before - fViewpoint.halfHeight();
    fViewpoint.target = offset(fViewpoint.target, sum(scaled(fViewpoint.right, x * aspect * closer),
                                                      scaled(fViewpoint.up, y * closer)));
}

void Navigation::fit(double aspect) {
    orloview::fit(fViewpoint, fOutline, aspect);
}

void Navigation::face(Side side) {
    const Vector front = levelFrontOf(fUp);
    const Vector right = cross(fUp, front);
    const Vector backs[] = {front, scaled(front, -1.0), right, scaled(right, -1.0), fUp, scaled(fUp, -1.0)};
    Viewpoint& v = fViewpoint;
    v.back = backs[static_cast<size_t>(side)];
    const bool alongUp = side == Side::Top || side == Side::Bottom;
    v.right = alongUp ? right : cross(fUp, v.back);
    v.up = cross(v.back, v.right);
}

} // namespace orloview
