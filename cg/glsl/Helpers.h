#pragma once

#include <string>

namespace orlocg {

/// The text of a GLSL function that stands for something GLSL lacks. `name` is "cg_saturate" and its like,
/// `type` the GLSL type that it works on.
std::string helperText(const std::string& name, const std::string& type);

} // namespace orlocg
