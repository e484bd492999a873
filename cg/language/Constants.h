#pragma once

#include "language/Ast.h"

#include <map>
#include <optional>
#include <vector>

namespace orlocg {

/// Values of checked expressions that need no program run: numbers, constants, what operators, constructors
/// and functions of the standard library make of them.
class Constants {
public:
    using Values = std::vector<double>;

    /// All numbers of the value, in the order of its members, rows and elements. Nothing: it is no constant.
    std::optional<Values> of(const Expression& e);

private:
    /// Numbers within a constant's.
    struct Slice {
        const Values* values;
        size_t first;
    };

    const Values* of(const Variable& variable);
    std::optional<Slice> sliceOf(const Expression& e);
    std::optional<size_t> offsetIn(const Expression& pick);
    std::optional<Values> ofCall(const Expression& e, const std::vector<Values>& operands) const;

    std::map<const Variable*, std::optional<Values>> fKnown;
};

} // namespace orlocg
