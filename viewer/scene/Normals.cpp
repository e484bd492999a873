#include "scene/Normals.h"

#include "scene/Vectors.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace orloview {

namespace {

/// Along the triangle's normal, as long as twice its area.
Vector areaVector(const Mesh& mesh, size_t triangle) {
    const auto corner = [&](size_t i) {
        const float* p = &mesh.positions[size_t{mesh.indices[triangle * 3 + i]} * 3];
        return Point(p[0], p[1], p[2]);
    };
    const Point first = corner(0);
    return cross(between(first, corner(1)), between(first, corner(2)));
}

void storeUnit(const Vector& vector, float* to) {
    const double size = length(vector);
    if (!(size > 0.0) || !std::isfinite(size)) { // of a triangle without area, or so in the file: any will do
        to[0] = to[1] = 0.0F;
        to[2] = 1.0F;
        return;
    }
    for (int axis = 0; axis < 3; ++axis)
        to[axis] = static_cast<float>(vector[axis] / size);
}

/// The attribute as each corner of each triangle sees it.
std::vector<float> perCorner(const std::vector<float>& values, size_t width,
                             const std::vector<std::uint32_t>& indices) {
    std::vector<float> result;
    if (values.empty())
        return result;
    result.resize(indices.size() * width);
    for (size_t i = 0; i < indices.size(); ++i)
        std::copy_n(&values[size_t{indices[i]} * width], width, &result[i * width]);
    return result;
}

} // namespace

void addFlatNormals(Mesh& mesh) {
    mesh.positions = perCorner(mesh.positions, 3, mesh.indices);
    mesh.colors = perCorner(mesh.colors, 4, mesh.indices);
    mesh.tangents.clear(); // of other normals
    for (std::vector<float>& uvSet : mesh.uvSets)
        uvSet = perCorner(uvSet, 2, mesh.indices);
    std::iota(mesh.indices.begin(), mesh.indices.end(), 0U);
    mesh.normals.resize(mesh.positions.size());
    setFlatNormals(mesh);
}

void setFlatNormals(Mesh& mesh) {
    for (size_t triangle = 0; triangle < mesh.elementCount(); ++triangle) {
        float* const normals = &mesh.normals[triangle * 9];
        storeUnit(areaVector(mesh, triangle), normals);
        std::copy_n(normals, 3, normals + 3);
        std::copy_n(normals, 3, normals + 6);
    }
}

void addSmoothNormals(Mesh& mesh, std::span<const std::uint32_t> groups) {
    const auto groupOf = [&](size_t vertex) { return groups.empty() ? vertex : groups[vertex]; };
    size_t groupCount = 0;
    for (size_t vertex = 0; vertex < mesh.vertexCount(); ++vertex)
        groupCount = std::max(groupCount, groupOf(vertex) + 1);

    std::vector<Vector> sums(groupCount);
    for (size_t triangle = 0; triangle < mesh.elementCount(); ++triangle) {
        const Vector vector = areaVector(mesh, triangle);
        for (size_t i = 0; i < 3; ++i) {
            Vector& normal = sums[groupOf(mesh.indices[triangle * 3 + i])];
            normal = sum(normal, vector);
        }
    }
    mesh.normals.resize(mesh.positions.size());
    for (size_t vertex = 0; vertex < mesh.vertexCount(); ++vertex)
        storeUnit(sums[groupOf(vertex)], &mesh.normals[vertex * 3]);
}

void normalize(std::span<float> normals) {
    for (size_t i = 0; i + 2 < normals.size(); i += 3)
        storeUnit({normals[i], normals[i + 1], normals[i + 2]}, &normals[i]);
}

} // namespace orloview
