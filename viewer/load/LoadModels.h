#pragma once

#include "options/Options.h"
#include "scene/Poser.h"

#include <functional>
#include <string>

namespace orloview {

struct Loaded {
    Scene scene;
    bool complete = true; ///< nothing of the models was left out
};

/// Who follows the reading. Each may be empty.
struct LoadWatch {
    ProgressReport report;
    std::function<void(const std::string&)> tell; ///< a line for the user
    std::function<void()> meanwhile;              ///< called once, when the last reader is at work
};

/// Every model that can be read, in one scene as the options want it; each that can't gets its line. Throws
/// Failure where none can, and for a variant that the scene doesn't have.
Loaded loadModels(const Options& options, const LoadWatch& watch);

/// Lets the scene stand as the animation that the options ask for, or its first one, begins. Throws Failure
/// where there is no such animation, or none for what is asked of one.
Poser poserFor(const Options& options, Scene& scene);

/// Throws Failure where nothing of the scene can be drawn. From now on no file that it came from is written
/// over.
void prepareForDrawing(const Options& options, Scene& scene);

} // namespace orloview
