#pragma once

#include <cstdint>

namespace orloview {

/// What a scene is drawn by.
enum class Shading : std::uint8_t {
    Fixed, ///< GL's own functions
    Glsl   ///< compiled materials
};

} // namespace orloview
