#pragma once

#include "language/Ast.h"

#include <string>
#include <vector>

namespace orlocg {

/// Which of some varying inputs of a vertex program its position is made of, by following back what is
/// assigned to it. `inputs` and `position` are paths, "IN.place" or "result.place"; the entry's name stands
/// for what it gives back. None of them seems to be: the first.
size_t findPositionInput(const Function& entry, const std::string& position,
                         const std::vector<std::string>& inputs);

} // namespace orlocg
