#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orloview {

/// What a scene is drawn by.
enum class Shading : std::uint8_t {
    Fixed, ///< GL's own functions
    Glsl,  ///< compiled materials
    Cg     ///< the same, in Cg
};

/// A Cg shader, or an effect, in the place of all materials.
struct CgRequest {
    struct Value {
        std::string name;
        std::vector<float> numbers; ///< 1 to 4, or 16: a matrix row by row
    };

    bool isEffect = false;
    std::string name;      ///< or path: its files are NAME_vertex.cg and NAME_fragment.cg; an effect's
    std::string technique; ///< of an effect, which is tried first; empty: that of the file
    std::vector<std::string> options; ///< of the compiler, for both
    std::vector<Value> values;        ///< of its parameters
};

} // namespace orloview
