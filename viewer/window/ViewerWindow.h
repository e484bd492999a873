#pragma once

#include "options/Options.h"
#include "output/Progress.h"
#include "scene/Scene.h"

namespace orloview {

/// Shows the scene in a window until the user closes it; `progress` ends with the first frame. Throws Failure
/// when there is no display or no OpenGL for it.
void showInWindow(const Options& options, const Scene& scene, Progress& progress);

} // namespace orloview
