#pragma once

#include "scene/Scene.h"

namespace orloview {

/// A square on the ground that the scene stands on, wide enough for its shade.
struct GroundSquare {
    koLinear::Point middle;
    koLinear::Vector right; ///< all three of unit length
    koLinear::Vector ahead;
    koLinear::Vector up;
    double side = 0.0;   ///< half of it
    double height = 0.0; ///< of the scene above it
};

/// What helps the eye in an empty space, as scenes of their own: unlit lines in the world's space.
struct Guides {
    /// Lines a power of ten, or two or five of them, apart; the lowest point of the scene stands on them.
    Scene grid;

    /// x red, y green, z blue, from the origin, in the positive direction.
    Scene axes;

    GroundSquare ground;

    Bounds gridBounds;
    Bounds axesBounds;
};

/// Guides for a scene of this size. `up` is the axis that points up, of any length.
Guides makeGuides(const Bounds& scene, const koLinear::Vector& up);

/// Round the scene and those of its guides that are shown.
Bounds boundsWith(Bounds scene, const Guides& guides, bool grid, bool axes, bool ground);

} // namespace orloview
