#pragma once

#include <span>
#include <string>
#include <vector>

#include "import/GltfData.h"
#include "import/GltfJson.h"
#include "import/Warnings.h"
#include "scene/Scene.h"

namespace orloview {

/// How far each morph target of a mesh is gone to where this node shows it: the node's weights, without any
/// the mesh's. Empty where none moves it.
std::vector<double> morphWeights(const GltfObject& node, const GltfObject& mesh);

/// Adds the primitive's targets to the mesh that was read from it, vertex by vertex, each by its weight. A
/// target that doesn't fit is left out with a warning that calls the mesh by `name`.
void morphMesh(Mesh& mesh, const GltfObject& primitive, GltfData& data, std::span<const double> weights,
               const std::string& name, Warnings& warnings);

} // namespace orloview
