#pragma once

#include "language/Type.h"

#include <optional>
#include <string>
#include <string_view>

namespace orlocg {

/// A piece of GL's state as a program reads it.
struct State {
    std::string glsl;
    unsigned rows = 0; ///< of a matrix
    unsigned columns = 0;
};

/// What "matrix.mvp" or "light[0].diffuse", written behind "glstate.", stands for. Nothing: there is none.
std::optional<State> stateOf(std::string_view path);

/// The same of a semantic, "state.matrix.modelview.invtrans": what is done to a matrix stands behind it.
std::optional<State> stateOfSemantic(std::string_view semantic);

} // namespace orlocg
