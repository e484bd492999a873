#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace orloview {

/// Cuts a polygon, convex or not, into triangles that face as it does, and appends their corners to
/// `triangles`.
///
/// The polygon's corners are vertex indices into `positions` (x, y, z each) and should lie about in a plane.
/// n corners give n - 2 triangles, fewer than 3 give none. A polygon that crosses itself, or whose corners
/// are not all there, is cut as a fan.
void triangulate(std::span<const std::uint32_t> polygon, std::span<const float> positions,
                 std::vector<std::uint32_t>& triangles);

/// Spells a triangle strip out: every second triangle turns the other way in the strip and is turned back.
void appendStrip(std::span<const std::uint32_t> strip, std::vector<std::uint32_t>& triangles);

/// Spells a triangle fan out around its first vertex.
void appendFan(std::span<const std::uint32_t> fan, std::vector<std::uint32_t>& triangles);

} // namespace orloview
