#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "import/GltfJson.h"

namespace orloview {

inline constexpr const char* kMeshopt = "EXT_meshopt_compression";

/// The bytes that this extension of a buffer view stands for. `packed` are those that it names, out of its
/// buffer. Throws an ImportError where they are damaged, before it takes memory that they can't fill.
std::vector<std::uint8_t> unpackMeshopt(const GltfObject& compression, std::span<const std::uint8_t> packed);

} // namespace orloview
