#include "import/MeshCheck.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "scene/Normals.h"

namespace orloview {

namespace {

size_t indicesPerElement(Topology topology) {
    switch (topology) {
    case Topology::Points:
        return 1;
    case Topology::Lines:
        return 2;
    case Topology::Triangles:
        return 3;
    }
    return 1;
}

const char* elementName(Topology topology) {
    switch (topology) {
    case Topology::Points:
        return "point";
    case Topology::Lines:
        return "line";
    case Topology::Triangles:
        return "triangle";
    }
    return "";
}

std::vector<bool> finiteVertices(const Mesh& mesh) {
    std::vector<bool> finite(mesh.vertexCount());
    for (size_t i = 0; i < finite.size(); ++i)
        finite[i] = std::all_of(&mesh.positions[i * 3], &mesh.positions[i * 3] + 3,
                                [](float coordinate) { return std::isfinite(coordinate); });
    return finite;
}

/// How many elements had to go, and why.
struct Dropped {
    size_t missingVertex = 0;
    size_t notFinite = 0;
    size_t incomplete = 0; ///< indices at the end that make no whole element
};

Dropped dropElements(Mesh& mesh) {
    Dropped dropped;
    const size_t width = indicesPerElement(mesh.topology);
    const std::vector<bool> finite = finiteVertices(mesh);
    std::vector<std::uint32_t>& indices = mesh.indices;

    dropped.incomplete = indices.size() % width;
    indices.resize(indices.size() - dropped.incomplete);
    auto kept = indices.begin();
    for (auto element = indices.begin(); element != indices.end(); element += static_cast<long>(width)) {
        const auto end = element + static_cast<long>(width);
        if (std::any_of(element, end, [&](std::uint32_t index) { return index >= finite.size(); }))
            ++dropped.missingVertex;
        else if (!std::all_of(element, end, [&](std::uint32_t index) { return finite[index]; }))
            ++dropped.notFinite;
        else
            kept = std::copy(element, end, kept);
    }
    indices.erase(kept, indices.end());
    return dropped;
}

void dropMisfits(Mesh& mesh, const std::string& name, Warnings& warnings) {
    const auto fits = [&](const std::vector<float>& values, size_t width) {
        return values.empty() || values.size() == mesh.vertexCount() * width;
    };
    const char* const reason = "left out: there is not one value for each vertex";
    if (!fits(mesh.normals, 3)) {
        mesh.normals.clear();
        warnings.add("the normals of " + name, reason);
    }
    if (!fits(mesh.tangents, 4)) {
        mesh.tangents.clear();
        warnings.add("the tangents of " + name, reason);
    }
    if (!fits(mesh.colors, 4)) {
        mesh.colors.clear();
        warnings.add("the colours of " + name, reason);
    }
    for (std::vector<float>& uvSet : mesh.uvSets)
        if (!fits(uvSet, 2)) {
            uvSet.clear();
            warnings.add("texture coordinates of " + name, reason);
        }
}

void makeFinite(std::vector<float>& values, float instead) {
    for (float& value : values)
        if (!std::isfinite(value))
            value = instead;
}

void warnOf(const Dropped& dropped, const Mesh& mesh, const std::string& name, Warnings& warnings) {
    const auto part = [&](size_t count) {
        return std::to_string(count) + " " + elementName(mesh.topology) + (count == 1 ? " of " : "s of ") +
               name;
    };
    if (dropped.missingVertex > 0)
        warnings.add(part(dropped.missingVertex), "left out: they use vertices that the file doesn't have");
    if (dropped.notFinite > 0)
        warnings.add(part(dropped.notFinite), "left out: their coordinates are infinite or missing");
    if (dropped.incomplete > 0)
        warnings.add("the last indices of " + name, "left out: they make no whole line or triangle");
}

} // namespace

bool makeDrawable(Mesh& mesh, const std::string& name, Warnings& warnings) {
    mesh.positions.resize(mesh.positions.size() / 3 * 3);
    warnOf(dropElements(mesh), mesh, name, warnings);
    dropMisfits(mesh, name, warnings);
    if (std::none_of(mesh.normals.begin(), mesh.normals.end(),
                     [](float n) { return std::isfinite(n) && n != 0.0F; }))
        mesh.normals.clear(); // exporters write zeros for normals that they don't have
    normalize(mesh.normals);
    makeFinite(mesh.tangents, 0.0F);
    makeFinite(mesh.colors, 1.0F);
    makeFinite(mesh.particles.velocities, 0.0F);
    for (std::vector<float>& values : mesh.particles.values)
        makeFinite(values, 0.0F);
    for (std::vector<float>& uvSet : mesh.uvSets)
        makeFinite(uvSet, 0.0F);
    return !mesh.indices.empty();
}

} // namespace orloview
