#pragma once

#include <cstdint>
#include <span>

#include "base/ProgressReport.h"
#include "import/ModelFolder.h"
#include "scene/Scene.h"

namespace orloview {

/// Reads a Wavefront OBJ file and the material libraries beside it.
///
/// Each group or object gives one mesh per material and kind (triangles, lines, points). Faces of any number
/// of corners are cut into triangles; where the file has no normals they follow its smoothing groups, and all
/// is smooth where it has none. Missing material libraries and pictures, and lines that make no sense, are
/// told as warnings. Throws an ImportError where there is nothing to draw.
Scene readObj(std::span<const std::uint8_t> bytes, const ModelFolder& folder,
              const ProgressReport& report = {});

} // namespace orloview
