#include "language/Ast.h"

#include <algorithm>

namespace orlocg {

bool Variable::uses(std::string_view below) const {
    const auto isIn = [](std::string_view path, std::string_view whole) {
        return path.starts_with(whole) &&
               (path.size() == whole.size() || path[whole.size()] == '.' || path[whole.size()] == '[');
    };
    return std::any_of(partsUsed.begin(), partsUsed.end(),
                       [&](const std::string& used) { return isIn(below, used) || isIn(used, below); });
}

} // namespace orlocg
