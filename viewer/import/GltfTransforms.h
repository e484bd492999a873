#pragma once

#include <cstddef>
#include <vector>

#include <orlohost/koLinear.h>

#include "import/GltfData.h"
#include "import/GltfJson.h"
#include "scene/Motion.h"

namespace orloview {

/// How the node stands to its parent, which is yet to be named.
Node readGltfNode(const GltfObject& node);

inline constexpr const char* kGltfInstancing = "EXT_mesh_gpu_instancing";

/// Where that extension of a node shows the node's mesh, from the mesh's space into the node's. `left` says
/// how many copies the file may still have. Throws an ImportError.
std::vector<koLinear::AffineMatrix> readGltfInstances(const GltfObject& instancing, GltfData& data,
                                                      size_t& left);

} // namespace orloview
