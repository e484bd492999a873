#pragma once

#include "options/Options.h"
#include "output/Progress.h"
#include "scene/Scene.h"

namespace orloview {

/// Draws and writes what the options ask for: the picture or the turntable's, the depth, the cube map. The
/// models are uploaded once. Whether everything of the scene could be drawn. Throws Failure.
bool writePictures(const Options& options, const Scene& scene, Progress& progress);

/// Draws the scene with both shadings of --compare and tells, in a line, how far the pictures are apart.
/// Throws Failure.
std::string compareShadings(const Options& options, const Scene& scene, Progress& progress);

} // namespace orloview
