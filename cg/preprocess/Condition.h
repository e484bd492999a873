#pragma once

#include "preprocess/Source.h"

namespace orlocg {

/// The value of an #if's expression, macros expanded: whole numbers, C's operators, 0 for names that are
/// left. Throws CompileError.
long long evaluateCondition(const std::vector<Token>& tokens, const Location& at, Diagnostics& diagnostics);

} // namespace orlocg
