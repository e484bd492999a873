#pragma once

#include <string>

namespace orloview {

/// Writes a line for the user on standard error, behind the program's name.
void say(const std::string& line);

} // namespace orloview
