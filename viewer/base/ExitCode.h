#pragma once

#include <stdexcept>
#include <string>

namespace orloview {

/// What the process tells its caller.
enum ExitCode : int {
    kExitDone = 0,       ///< the picture is written, or what was asked for is printed
    kExitUsage = 1,      ///< a switch or its value is wrong
    kExitNoInput = 2,    ///< no model could be read, or nothing in it can be drawn
    kExitIncomplete = 3, ///< the picture is written, but some input was left out
    kExitNoGL = 4,       ///< no display, or no GL that can do it
    kExitNotWritten = 5, ///< the picture could not be written
    kExitOurFault = 70,  ///< a fault of the viewer
};

/// Ends the program with one line for the user: what is wrong and what to do.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& message) : std::runtime_error(message), fCode(code) {}

    ExitCode code() const { return fCode; }

private:
    ExitCode fCode;
};

} // namespace orloview
