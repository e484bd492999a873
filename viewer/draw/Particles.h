#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orloview {

/// What points are drawn as.
enum class ParticleKind : std::uint8_t {
    Points,
    Multi, ///< a small cloud of points each
    Sprites,
    Streaks
};

struct ParticleOptions {
    ParticleKind kind = ParticleKind::Points;
    bool lit = false;
    std::vector<std::string> images; ///< files, of sprites; none: a soft round spot
};

} // namespace orloview
