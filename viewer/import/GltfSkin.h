#pragma once

#include <span>
#include <vector>

#include <orlohost/koLinear.h>

#include "import/GltfData.h"
#include "import/GltfJson.h"
#include "scene/Scene.h"

namespace orloview {

/// The joints of a skin in the pose in which the scene holds them: for each the map from the mesh's own space
/// into the world. `worlds` has the transform of every node of the file. Throws an ImportError.
std::vector<koLinear::AffineMatrix> readGltfSkin(const GltfObject& skin, GltfData& data,
                                                 std::span<const koLinear::AffineMatrix> worlds);

/// Moves the vertices of a mesh as their joints say, into world space. `attributes` are those of the
/// primitive that the mesh was read from, vertex by vertex. Throws an ImportError and leaves the mesh alone
/// where they don't fit the skin.
void poseMesh(Mesh& mesh, const GltfObject& attributes, GltfData& data,
              std::span<const koLinear::AffineMatrix> joints);

} // namespace orloview
