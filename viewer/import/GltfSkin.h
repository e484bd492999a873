#pragma once

#include "import/GltfData.h"
#include "import/GltfJson.h"
#include "scene/Motion.h"

namespace orloview {

/// The joints of a skin, as nodes of the file, of which there are `nodeCount`. Throws an ImportError.
Skin readGltfSkin(const GltfObject& skin, GltfData& data, size_t nodeCount);

/// Which of so many joints carry so many vertices, as the attributes of a primitive say. Throws an
/// ImportError where they don't fit.
Influences readGltfInfluences(const GltfObject& attributes, GltfData& data, size_t vertexCount,
                              size_t jointCount);

} // namespace orloview
