#pragma once

#include "language/CompiledProgram.h"

#include <memory>
#include <string>
#include <string_view>

namespace orlocg {

/// Compiles a Cg program to GLSL. Null where it has an error; `listing` holds errors and warnings.
std::unique_ptr<CompiledProgram> compile(std::string_view source, const CompileOptions& options,
                                         std::string& listing);

} // namespace orlocg
