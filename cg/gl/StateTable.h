#pragma once

#include "StateCalls.h"

#include <Cg/cg.h>

#include <array>
#include <cstdint>
#include <span>

namespace orlocg {

/// A constant of states by its name.
struct StateWord {
    const char* name;
    int value;
};

using StateWords = std::span<const StateWord>;
using StateNumbers = std::span<const double>;

/// A state that is set by numbers.
struct NumberState { // NOLINT(clang-analyzer-optin.performance.Padding): as rows read best
    const char* name;
    CGtype type;
    StateWords words;                         ///< that its numbers may be written as
    int wordCount;                            ///< how many of its numbers are one of the words
    int least;                                ///< numbers
    std::array<double, 4> usual;              ///< what OpenGL begins with
    int most;                                 ///< numbers; OpenGL begins with so many
    void (*apply)(StateNumbers, GLenum, int); ///< is given the numbers, `what` and the index
    GLenum what = 0;                          ///< which of several that are set in the same way
    int indices = 1;                          ///< how many of it there are
};

/// All of passes but those of programs and textures.
std::span<const NumberState> numberStates();

} // namespace orlocg
