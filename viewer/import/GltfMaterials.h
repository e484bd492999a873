#pragma once

#include "import/GltfData.h"
#include "import/GltfJson.h"
#include "import/Warnings.h"
#include "scene/Scene.h"

namespace orloview {

/// Reads all materials, textures and pictures of a glTF file into the scene, in the file's order. A picture
/// that isn't there is a warning; its entry stays, without path and bytes.
void readGltfMaterials(const GltfObject& root, GltfData& data, const ModelFolder& folder, Scene& scene,
                       Warnings& warnings);

} // namespace orloview
