#pragma once

#include "scene/View.h"

namespace orloview {

/// Moves an eye about a scene by hand: turns it round its target, moves both, goes nearer.
///
/// The horizon stays level: turning goes round the axis that points up, and tilting ends a tenth of a degree
/// before straight above and straight below. Angles are radians; places in the picture run from -1 (left,
/// bottom) to 1.
class Navigation {
public:
    enum class Side { Front, Back, Right, Left, Top, Bottom };

    /// `up` is the axis that points up, of any length; `radius` that of the scene.
    Navigation(const Viewpoint& start, const koLinear::Vector& up, Outline outline, double radius);

    const Viewpoint& viewpoint() const { return fViewpoint; }

    /// The axis that points up, of unit length.
    const koLinear::Vector& up() const { return fUp; }

    /// Turns the eye to the right round the target, then higher.
    void orbit(double toRight, double higher);

    /// Moves the picture, so that what was at a place of it follows by as many parts of its half height.
    void pan(double right, double up);

    /// Divides the distance by `factor`. What lies under the place at the target's depth stays there.
    void zoom(double factor, double x, double y, double aspect);

    /// Has the whole scene in view, from where the eye looks.
    void fit(double aspect);

    /// Looks at the target from a side, as near as before.
    void face(Side side);

    /// Back to the view that this one started with.
    void home() { fViewpoint = fStart; }

    /// Goes on from another place.
    void look(const Viewpoint& viewpoint) { fViewpoint = viewpoint; }

    void setOrthographic(bool on) { fViewpoint.orthographic = on; }

private:
    Viewpoint fViewpoint;
    Viewpoint fStart;
    koLinear::Vector fUp;
    Outline fOutline;
    double fRadius;
};

} // namespace orloview
