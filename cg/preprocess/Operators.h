#pragma once

#include "preprocess/Source.h"

#include <array>

namespace orlocg {

/// An operator between two values; the larger the precedence, the closer it binds. The same in #if and in
/// programs.
struct BinaryOperator {
    std::string_view spelling;
    int precedence;
};

inline constexpr std::array<BinaryOperator, 18> kBinaryOperators = {{{"*", 10},
                                                                     {"/", 10},
                                                                     {"%", 10},
                                                                     {"+", 9},
                                                                     {"-", 9},
                                                                     {"<<", 8},
                                                                     {">>", 8},
                                                                     {"<", 7},
                                                                     {">", 7},
                                                                     {"<=", 7},
                                                                     {">=", 7},
                                                                     {"==", 6},
                                                                     {"!=", 6},
                                                                     {"&", 5},
                                                                     {"^", 4},
                                                                     {"|", 3},
                                                                     {"&&", 2},
                                                                     {"||", 1}}};

/// Null: the token is none.
inline const BinaryOperator* binaryOperatorOf(const Token& token) {
    for (const BinaryOperator& each : kBinaryOperators)
        if (token.is(each.spelling))
            return &each;
    return nullptr;
}

} // namespace orlocg
