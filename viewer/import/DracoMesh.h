#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace orloview {

/// A mesh that Draco packed.
struct DracoMesh {
    /// By the order in which they were asked for; the numbers of each vertex one behind the other, whole ones
    /// as they are.
    std::vector<std::vector<float>> attributes;
    std::vector<std::uint32_t> indices; ///< of triangles
};

/// Unpacks these attributes: each by its number in the packed mesh, with how many components a vertex has.
/// Throws an ImportError where the bytes are damaged or lack one.
DracoMesh unpackDraco(std::span<const std::uint8_t> packed,
                      const std::vector<std::pair<std::uint32_t, size_t>>& wanted);

} // namespace orloview
