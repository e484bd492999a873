#pragma once

#include "language/Ast.h"

#include <string>
#include <vector>

namespace orlocg {

/// A semantic's name in capitals, and its number; none: -1.
struct Semantic {
    std::string name;
    int index = -1;

    explicit Semantic(const std::string& text);
    Semantic(std::string name, int index) : name(std::move(name)), index(index) {}

    int number() const { return index < 0 ? 0 : index; }
};

/// Where a varying value of a program comes from or goes to: GLSL, and how many numbers it has.
struct Slot {
    std::string glsl;     ///< empty: there is no such slot
    std::string resource; ///< its name among those of the runtime, "TEXCOORD3"; empty: it has none
    unsigned size = 4;

    /// A generic vertex attribute that has to be declared; -1: it is GL's own.
    int attribute = -1;

    /// A varying that has to be declared, of four floats: more than GL has texture coordinates for.
    bool isDeclared = false;

    std::string extension = {}; ///< of GLSL, that it takes
};

Slot inputSlot(Stage stage, const Semantic& semantic);
Slot outputSlot(Stage stage, const Semantic& semantic);

/// Whether a value of a texture coordinate goes there; for finding a free one.
int texCoordOf(const Semantic& semantic);

} // namespace orlocg
