#pragma once

#include <cstdint>
#include <span>

#include "base/ProgressReport.h"
#include "scene/Scene.h"

namespace orloview {

/// Reads a PLY file: text and both byte orders; polygons, triangle strips, edges, or points alone; normals,
/// texture coordinates and colours under all their usual names.
///
/// No count of the header is believed before it has been held against what is left of the file. Triangles
/// without normals are made smooth. Throws an ImportError where the header is wrong or the data end early.
Scene readPly(std::span<const std::uint8_t> bytes, const ProgressReport& report = {});

} // namespace orloview
