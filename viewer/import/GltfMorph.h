#pragma once

#include <cstddef>
#include <functional>
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

/// The primitive's targets for the mesh that was read from it, vertex by vertex. Those for which `isWanted`
/// is false by their number are left empty; so is one that doesn't fit, with a warning that calls the mesh by
/// `name`.
std::vector<MorphTarget> readGltfTargets(const Mesh& mesh, const GltfObject& primitive, GltfData& data,
                                         const std::function<bool(size_t)>& isWanted, const std::string& name,
                                         Warnings& warnings);

} // namespace orloview
