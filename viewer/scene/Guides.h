#pragma once

#include "scene/Scene.h"

namespace orloview {

/// What helps the eye in an empty space, as scenes of their own: unlit lines in the world's space.
struct Guides {
    /// Lines a power of ten, or two or five of them, apart; the lowest point of the scene stands on them.
    Scene grid;

    /// x red, y green, z blue, from the origin, in the positive direction.
    Scene axes;

    Bounds gridBounds;
    Bounds axesBounds;
};

/// Guides for a scene of this size. `up` is the axis that points up, of any length.
Guides makeGuides(const Bounds& scene, const koLinear::Vector& up);

/// Round the scene and those of its guides that are shown.
Bounds boundsWith(Bounds scene, const Guides& guides, bool grid, bool axes);

} // namespace orloview
