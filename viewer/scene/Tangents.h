#pragma once

#include "scene/Scene.h"

#include <vector>

namespace orloview {

/// Of each vertex of a mesh three numbers: the directions in which the first and the second of its first
/// texture coordinates grow, across the normal, of unit length.
struct Tangents {
    std::vector<float> tangents; ///< those of the file, where it has some
    std::vector<float> binormals;
};

/// Empty where the mesh has no normals, or neither tangents nor texture coordinates.
Tangents tangentsOf(const Mesh& mesh);

} // namespace orloview
