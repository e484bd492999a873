#pragma once

#include "scene/Scene.h"
#include "scene/View.h"

#include <optional>

namespace orloview {

/// From a point in a direction, of any length.
struct Ray {
    koLinear::Point from;
    koLinear::Vector along;
};

/// What lies under a place of the picture, which runs from -1 (left, bottom) to 1.
Ray rayThrough(const Viewpoint& viewpoint, double x, double y, double aspect);

struct Picked {
    size_t instance;
    koLinear::Point place; ///< in the world
};

/// The nearest triangle on the ray, from whichever side; none: it meets none.
std::optional<Picked> pick(const Scene& scene, const Ray& ray);

} // namespace orloview
