#pragma once

#include "scene/Scene.h"

#include <optional>

namespace orloview {

/// What a frame looks through: world to eye, eye to clip space, both for row vectors.
struct View {
    koLinear::AffineMatrix worldToEye;
    koLinear::ProjMatrix projection;
};

/// How a view without a camera of the file is placed. What isn't given is chosen so that the scene fits, seen
/// from the front and a little above.
struct Placement {
    std::optional<koLinear::Point> eye;
    std::optional<koLinear::Point> target;
    std::optional<koLinear::Vector> up;
    std::optional<double> fieldOfView; ///< the whole vertical angle, degrees
};

/// A view of the scene. `aspect` is width by height. Throws Failure (kExitUsage) when eye and target fall
/// together or up lies along the view.
View placeView(const Placement& placement, const Bounds& bounds, double aspect);

/// The view of a camera of the file. Its vertical angle or height is kept whatever the picture's shape.
View viewThrough(const Camera& camera, const Bounds& bounds, double aspect);

} // namespace orloview
