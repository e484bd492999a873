#pragma once

#include <string>

namespace orloview {

/// Writes a line for the user on standard error, behind the program's name. Control characters become blanks;
/// further lines are those that begin with two blanks.
void say(const std::string& line);

} // namespace orloview
