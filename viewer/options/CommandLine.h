#pragma once

#include "options/Options.h"

#include <array>
#include <optional>
#include <string>

namespace orloview {

/// What to do: options to go on with, or text to print and stop.
struct CommandLine {
    Options options;
    std::string printAndStop;
};

/// Reads the command line. Throws Failure (kExitUsage) that names the switch and what it takes.
CommandLine parseCommandLine(int argc, const char* const* argv);

/// A colour of --background: a name, #RGB, #RRGGBB, #RRGGBBAA, or "transparent". Null when it is none.
std::optional<std::array<float, 4>> parseColor(const std::string& text);

} // namespace orloview
