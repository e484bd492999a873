#pragma once

#include "options/Options.h"
#include "output/Progress.h"
#include "scene/Poser.h"

namespace orloview {

/// Draws and writes what the options ask for: the picture or those of a series, the depth, the cube map. The
/// models are uploaded once; the eye is placed for how they stand at time 0, whichever is shown. The exit
/// code: kExitIncomplete where something of the scene could not be drawn, or `isWhole` says that it isn't all
/// there. Throws Failure.
int writePictures(const Options& options, Poser& poser, bool isWhole, Progress& progress);

/// Draws the scene with both shadings of --compare and tells, in a line, how far the pictures are apart.
/// Throws Failure.
std::string compareShadings(const Options& options, Poser& poser, Progress& progress);

} // namespace orloview
