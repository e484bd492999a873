#pragma once

#include "scene/Scene.h"

#include <functional>
#include <optional>
#include <span>

namespace orloview {

/// What a frame looks through: world to eye, eye to clip space, both for row vectors.
struct View {
    koLinear::AffineMatrix worldToEye;
    koLinear::ProjMatrix projection;

    /// Without perspective, all directions are one; the sky is shown as from so far in front of the eye's
    /// plane.
    double skyDistance = 1.0;
};

/// What an angle of view (the whole vertical one, radians) shows; `far` may be infinite.
koLinear::ProjMatrix perspective(double fieldOfView, double aspect, double near, double far);

koLinear::ProjMatrix orthographic(double halfWidth, double halfHeight, double near, double far);

/// Clip space, from -1 to 1, to a map of it, from 0 to 1.
koLinear::ProjMatrix halved();

/// An eye and what it looks at: a view before the picture's shape and the scene's depth are known.
struct Viewpoint {
    koLinear::Vector right{1.0, 0.0, 0.0}; ///< the eye's axes, each of unit length and across the others
    koLinear::Vector up{0.0, 1.0, 0.0};
    koLinear::Vector back{0.0, 0.0, 1.0}; ///< from the target to the eye
    koLinear::Point target;
    double distance = 1.0;             ///< of the eye from the target
    double fieldOfView = 0.6108652382; ///< the whole vertical angle, radians
    bool orthographic = false; ///< without perspective; as much is seen as in perspective at the target

    koLinear::Point eye() const;

    /// Half the height that is seen at the target.
    double halfHeight() const;
};

/// What a view is fitted to: hands all points to whoever asks, some at a time.
using Outline = std::function<void(const std::function<void(std::span<const koLinear::Point>)>&)>;

Outline outlineOf(const Bounds& bounds);

/// All vertices, in the world. The scene has to stay.
Outline outlineOf(const Scene& scene);

/// What an outline takes up that turns round an axis through a point.
Outline turnedAbout(const Outline& outline, const koLinear::Point& middle, const koLinear::Vector& up);

/// From where an eye looks, in degrees: to the right of the front, and above it.
struct Direction {
    double azimuth = 30.0;
    double elevation = 20.0;
};

/// How a view without a camera of the file is placed. What isn't given is chosen so that the scene fits.
struct Placement {
    Direction direction; ///< of no account where there is an eye
    std::optional<koLinear::Point> eye{};
    std::optional<koLinear::Point> target{};
    std::optional<koLinear::Vector> up{};
    std::optional<double> fieldOfView{}; ///< the whole vertical angle, degrees
    bool orthographic = false;
};

/// The eye of a placement. `aspect` is width by height. Seen from straight above, the front is at the bottom
/// of the picture. Throws Failure (kExitUsage) when eye and target fall together.
Viewpoint placeEye(const Placement& placement, const Outline& outline, double aspect);

/// An eye where a camera of the file stands, its target beside the middle of the scene. The near and far
/// planes of the camera are left behind.
Viewpoint eyeOf(const Camera& camera, const Bounds& bounds);

/// The side of a scene that is the front, given which way is up: towards +z; towards -y where z is up, so
/// that the model stands on its feet.
koLinear::Vector frontOf(const koLinear::Vector& up);

/// The front across the axis that points up, which need not be one of the coordinates'. All of unit length.
koLinear::Vector levelFrontOf(const koLinear::Vector& up);

/// Moves target and eye so that the outline takes up 85 parts in 100 of the picture's shorter side, the axes
/// and the angle given.
void fit(Viewpoint& viewpoint, const Outline& outline, double aspect);

koLinear::Point centerOf(const Bounds& bounds);

/// Half the diagonal; 1 for a single point, which still has to be seen.
double radiusOf(const Bounds& bounds);

/// What the eye sees, near and far plane just round the scene.
View viewFrom(const Viewpoint& viewpoint, const Bounds& bounds, double aspect);

/// viewFrom what placeEye finds for a box.
View placeView(const Placement& placement, const Bounds& bounds, double aspect);

/// The view of a camera of the file. Its vertical angle or height is kept whatever the picture's shape.
View viewThrough(const Camera& camera, const Bounds& bounds, double aspect);

} // namespace orloview
