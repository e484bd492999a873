#pragma once

#include "options/Options.h"

#include <string>

namespace orloview {

/// What to do: options to go on with, or text to print and stop.
struct CommandLine {
    Options options;
    std::string printAndStop;
};

/// Reads the command line. Throws Failure (kExitUsage) that names the switch and what it takes.
CommandLine parseCommandLine(int argc, const char* const* argv);

/// Throws Failure (kExitUsage) where switches contradict each other or lack what they go with.
void checkTogether(const Options& options);

} // namespace orloview
