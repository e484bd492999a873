#pragma once

#include "frame/Frame.h"
#include "options/Options.h"
#include "scene/Scene.h"
#include "scene/View.h"
#include "shading/SkyLight.h"

#include <optional>

namespace orloview {

/// Which way is up.
koLinear::Vector upOf(const Options& options);

/// What shines from all round; none where the options ask for none.
std::optional<SkyLight> skyOf(const Options& options);

/// The eye that the options ask for. This and chooseView throw Failure (kExitUsage) for a camera that the
/// scene doesn't have, and for an eye that looks nowhere.
Viewpoint chooseEye(const Options& options, const Scene& scene);

/// The view that the options ask for: through the file's camera exactly, where that is now, else from `eye`,
/// which chooseEye has found. `bounds` is round all that is drawn.
View chooseView(const Options& options, const Scene& scene, const Viewpoint& eye, const Bounds& bounds);

/// Round all of the scene, which is within `bounds`, as the options ask for it to be drawn.
Bounds drawnBounds(const Options& options, const Scene& scene, Bounds bounds);

/// The look that the options ask for; tones are mapped where something is lit by shaders, unless told.
FrameLook lookOf(const Options& options, const Scene& scene);

/// The same look in a frame that is `factor` times as large each way.
FrameLook enlarged(FrameLook look, int factor);

} // namespace orloview
