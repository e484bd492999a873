#pragma once

#include "Options.h"
#include "output/Picture.h"
#include "scene/Scene.h"
#include "scene/View.h"

namespace orloview {

/// The view that the options ask for. Throws Failure (kExitUsage) for a camera that the scene doesn't have.
View chooseView(const Options& options, const Scene& scene);

/// Draws the scene offscreen. Needs a GLSession. Throws Failure when the size is beyond the driver's limit or
/// GL lacks framebuffer objects. With --stats prints what each of two frames cost to standard error.
Picture renderPicture(const Options& options, const Scene& scene, const View& view);

} // namespace orloview
