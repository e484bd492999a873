#pragma once

#include "options/Options.h"
#include "output/Progress.h"

namespace orloview {

/// Reads the models, shows them in a window, and others in their place, until the user closes it; `progress`
/// ends with the first frame. Throws Failure when the first can't be shown, or when there is no display or no
/// OpenGL for it. Needs startReaders.
void showInWindow(const Options& options, Progress& progress);

} // namespace orloview
