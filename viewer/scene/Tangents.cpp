#include "scene/Tangents.h"

#include "scene/Vectors.h"

namespace orloview {

namespace {

Vector vectorAt(const std::vector<float>& numbers, size_t place) {
    return {numbers[place], numbers[place + 1], numbers[place + 2]};
}

void add(std::vector<Vector>& sums, size_t vertex, const Vector& more) {
    sums[vertex] = sum(sums[vertex], more);
}

/// Where the coordinates grow on a triangle, by its area; added to its vertices.
void addTriangle(const Mesh& mesh, const uint32_t* corners, std::vector<Vector>& along,
                 std::vector<Vector>& across) {
    const std::vector<float>& uvs = mesh.uvSets[0];
    const Vector origin = vectorAt(mesh.positions, size_t{3} * corners[0]);
    const auto edge = [&](int i) {
        return sum(vectorAt(mesh.positions, size_t{3} * corners[i]), scaled(origin, -1.0));
    };
    const auto grown = [&](int i, size_t which) {
        return double{uvs[size_t{2} * corners[i] + which]} - double{uvs[size_t{2} * corners[0] + which]};
    };
    const double area = grown(1, 0) * grown(2, 1) - grown(2, 0) * grown(1, 1);
    const double sign = area < 0.0 ? -1.0 : 1.0;
    const Vector u = sum(scaled(edge(1), sign * grown(2, 1)), scaled(edge(2), -sign * grown(1, 1)));
    const Vector v = sum(scaled(edge(2), sign * grown(1, 0)), scaled(edge(1), -sign * grown(2, 0)));
    for (int i = 0; i < 3; ++i) {
        add(along, corners[i], u);
        add(across, corners[i], v);
    }
}

void append(std::vector<float>& numbers, const Vector& v) {
    for (int i = 0; i < 3; ++i)
        numbers.push_back(static_cast<float>(v[i]));
}

} // namespace

Tangents tangentsOf(const Mesh& mesh) {
    const size_t count = mesh.vertexCount();
    const bool hasUvs = !mesh.uvSets.empty() && !mesh.uvSets[0].empty();
    if (mesh.normals.empty() || (mesh.tangents.empty() && (!hasUvs || mesh.topology != Topology::Triangles)))
        return {};
    std::vector<Vector> along(count);
    std::vector<Vector> across(count);
    for (size_t i = 0; mesh.tangents.empty() && i + 2 < mesh.indices.size(); i += 3)
        addTriangle(mesh, &mesh.indices[i], along, across);
    Tangents made;
    for (size_t i = 0; i < count; ++i) {
        const Vector normal = vectorAt(mesh.normals, 3 * i);
        double side = 1.0;
        if (!mesh.tangents.empty()) {
            along[i] = vectorAt(mesh.tangents, 4 * i);
            side = mesh.tangents[4 * i + 3];
        } else {
            side = dot(cross(normal, along[i]), across[i]) < 0.0 ? -1.0 : 1.0;
        }
        Vector tangent = sum(along[i], scaled(normal, -dot(normal, along[i])));
        if (length(tangent) < 1e-20) // no way is more right than another
            tangent =
                cross(std::abs(normal[1]) < 0.9 ? Vector(0.0, 1.0, 0.0) : Vector(1.0, 0.0, 0.0), normal);
        tangent = scaled(tangent, 1.0 / std::max(length(tangent), 1e-30));
        append(made.tangents, tangent);
        append(made.binormals, scaled(cross(normal, tangent), side < 0.0 ? -1.0 : 1.0));
    }
    return made;
}

} // namespace orloview
