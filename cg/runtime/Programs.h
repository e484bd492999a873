#pragma once

#include "objects/Objects.h"

#include <string>

namespace orlocg {

/// The switches of a program or an effect, up to a null.
void readArguments(const char** arguments, CompileOptions& options);

/// Compiles a program for its context to keep; null and an error where that can't be.
CGprogram createProgram(ContextObject& context, CGenum programType, std::string source,
                        const std::string& fileName, CGprofile profile, const char* entry,
                        const char** arguments);

} // namespace orlocg
