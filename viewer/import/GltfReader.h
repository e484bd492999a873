#pragma once

#include <cstdint>
#include <span>

#include "base/ProgressReport.h"
#include "import/ModelFolder.h"
#include "scene/Scene.h"

namespace orloview {

/// Reads a glTF 2.0 file, text or binary.
///
/// The scene that the file names is read, or its first, or without any every node. Strips, fans and loops are
/// spelled out, quantised and sparse attributes are resolved, triangles without normals get flat ones. Morph
/// targets are added by their weights and skins stand in the pose of the scene; but what of this an animation
/// moves is left to a Poser. Parts that can't be read are left out with a warning. Throws an ImportError
/// where nothing can be made of the file.
Scene readGltf(std::span<const std::uint8_t> bytes, const ModelFolder& folder,
               const ProgressReport& report = {});

} // namespace orloview
