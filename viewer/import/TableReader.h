#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "base/ProgressReport.h"
#include "scene/Scene.h"

namespace orloview {

/// Whether a text's first line names columns, x, y and z among them.
bool isTable(std::string_view start);

/// Reads points from a text: a first line of column names (x y z, r g b a, vx vy vz, scaleX, scaleY, twist,
/// textureNumber, in any order and either case; only x, y and z are needed), and a point a line. Commas, or
/// semicolons, or blanks part the columns. Empty lines and lines that begin with # are passed over. Colours
/// are 0 to 1; where one is larger, all are 0 to 255.
///
/// Throws an ImportError that names the line.
Scene readTable(std::span<const std::uint8_t> bytes, const ProgressReport& report = {});

} // namespace orloview
