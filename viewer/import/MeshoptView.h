#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "import/GltfJson.h"

namespace orloview {

/// The extensions of a buffer view that say so; the later one allows more.
inline constexpr std::array kMeshoptExtensions = {"EXT_meshopt_compression", "KHR_meshopt_compression"};

/// The bytes that such an extension stands for. `packed` are those that it names, out of its buffer. Throws
/// an ImportError where they are damaged, before it takes memory that they can't fill, or of a kind that came
/// after this program.
std::vector<std::uint8_t> unpackMeshopt(const GltfObject& compression, std::span<const std::uint8_t> packed);

} // namespace orloview
