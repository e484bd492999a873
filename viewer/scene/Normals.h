#pragma once

#include <cstdint>
#include <span>

#include "scene/Scene.h"

/// Normals for triangle meshes that come without, or with bad ones. A mesh's indices must be in range.
namespace orloview {

/// Gives every triangle the normal of its plane. Triangles get vertices of their own for this.
void addFlatNormals(Mesh& mesh);

/// Gives triangles that share no vertices the normals of their planes, where `addFlatNormals` did before they
/// moved.
void setFlatNormals(Mesh& mesh);

/// Gives every vertex the mean of its triangles' normals, weighted by their areas.
///
/// Vertices with the same number in `groups` (one for each vertex) count as one; that is how vertices that
/// were split for their texture coordinates stay smooth. Without groups each vertex is its own.
void addSmoothNormals(Mesh& mesh, std::span<const std::uint32_t> groups = {});

/// Brings normals (x, y, z each) to length 1; one without a direction becomes z.
void normalize(std::span<float> normals);

} // namespace orloview
