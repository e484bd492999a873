#pragma once

#include <cstddef>
#include <vector>

#include <orlohost/koLinear.h>

#include "import/GltfData.h"
#include "import/GltfJson.h"

namespace orloview {

/// From the node's own space into its parent's.
koLinear::AffineMatrix readGltfTransform(const GltfObject& node);

inline constexpr const char* kGltfInstancing = "EXT_mesh_gpu_instancing";

/// Where that extension of a node shows the node's mesh, from the mesh's space into the world: in places that
/// it gives in the node's own. `left` says how many copies the file may still have. Throws an ImportError.
std::vector<koLinear::AffineMatrix> readGltfInstances(const GltfObject& instancing, GltfData& data,
                                                      const koLinear::AffineMatrix& toWorld, size_t& left);

bool isFinite(const koLinear::AffineMatrix& matrix);

} // namespace orloview
