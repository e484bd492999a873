#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "scene/Scene.h"

/// Moves the vertices of meshes: what a file's rest pose takes, and what a moving scene takes for each
/// picture.
namespace orloview {

/// The attributes of a mesh by number, for what moves some of them: positions, normals, tangents, colours,
/// and from kUvAttribute on its sets of texture coordinates.
enum Attribute : size_t { kPositions, kNormals, kTangents, kColors, kUvAttribute };

size_t attributeCount(const Mesh& mesh);
std::vector<float>& attributeOf(Mesh& mesh, size_t attribute);
const std::vector<float>& attributeOf(const Mesh& mesh, size_t attribute);
size_t attributeWidth(size_t attribute);

/// Adds to the mesh what each target does, by its weight; targets beyond the weights count as 0. Colours stay
/// between 0 and 1, and all else finite.
void morph(Mesh& mesh, std::span<const MorphTarget> targets, std::span<const double> weights);

/// Moves each vertex as its joints say, with its normal and tangent. `joints` map the mesh's space into the
/// one that it then stands in, and are finite; as the influences, what comes out is.
void bend(Mesh& mesh, const Influences& influences, std::span<const koLinear::AffineMatrix> joints);

/// Lets a bend be that of a mesh whose triangles have got vertices of their own: `corners` are the vertices
/// from which they come. What the mesh has not (any more) isn't moved.
void followCorners(Bend& bend, std::span<const std::uint32_t> corners);

/// Takes out of the targets what the mesh has no values for.
void dropMissing(std::vector<MorphTarget>& targets, const Mesh& mesh);

} // namespace orloview
