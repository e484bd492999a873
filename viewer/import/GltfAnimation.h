#pragma once

#include <vector>

#include "import/GltfData.h"
#include "import/GltfJson.h"
#include "import/Warnings.h"
#include "scene/Motion.h"

namespace orloview {

/// The animations of a glTF file, their tracks by the file's numbers of nodes. A channel that can't be played
/// is left out with a warning.
std::vector<Animation> readGltfAnimations(const GltfObject& root, GltfData& data, Warnings& warnings);

} // namespace orloview
