#include "scene/Silhouette.h"

#include "scene/Vectors.h"

#include <algorithm>
#include <array>
#include <map>
#include <numeric>

namespace orloview {

namespace {

constexpr std::uint32_t kNone = ~0U;

/// For each vertex the first one at its place.
std::vector<std::uint32_t> firstAtPlace(const Mesh& mesh) {
    const auto place = [&mesh](std::uint32_t vertex) {
        const float* p = mesh.positions.data() + size_t{vertex} * 3;
        return std::array<float, 3>{p[0], p[1], p[2]};
    };
    std::vector<std::uint32_t> order(mesh.vertexCount());
    std::iota(order.begin(), order.end(), 0U);
    std::sort(order.begin(), order.end(),
              [&](std::uint32_t a, std::uint32_t b) { return place(a) < place(b); });
    std::vector<std::uint32_t> first(order.size());
    for (size_t i = 0; i < order.size(); ++i)
        first[order[i]] = i > 0 && place(order[i]) == place(order[i - 1]) ? first[order[i - 1]] : order[i];
    return first;
}

} // namespace

Silhouette::Silhouette(const Mesh& mesh) : fMesh(mesh) {
    if (mesh.topology != Topology::Triangles)
        return;
    const std::vector<std::uint32_t> first = firstAtPlace(mesh);
    const size_t triangles = mesh.indices.size() / 3;
    fIsBehind.resize(triangles);
    fEdges.reserve(triangles * 3);
    for (size_t i = 0; i < triangles * 3; ++i) {
        const std::uint32_t a = first[mesh.indices[i]];
        const std::uint32_t b = first[mesh.indices[i % 3 == 2 ? i - 2 : i + 1]];
        if (a != b)
            fEdges.push_back({std::min(a, b), std::max(a, b), static_cast<std::uint32_t>(i / 3), kNone});
    }
    const auto ends = [](const Edge& edge) { return std::uint64_t{edge.from} << 32U | edge.to; };
    std::sort(fEdges.begin(), fEdges.end(), [&](const Edge& a, const Edge& b) { return ends(a) < ends(b); });
    size_t kept = 0;
    for (const Edge& edge : fEdges) {
        if (kept > 0 && fEdges[kept - 1].other == kNone && ends(fEdges[kept - 1]) == ends(edge))
            fEdges[kept - 1].other = edge.triangle;
        else
            fEdges[kept++] = edge;
    }
    fEdges.resize(kept);
}

void Silhouette::seenFrom(const koLinear::Point& eye, double w, std::vector<float>& lines) {
    const auto place = [this](std::uint32_t vertex) {
        const float* p = fMesh.positions.data() + size_t{vertex} * 3;
        return Point(p[0], p[1], p[2]);
    };
    for (size_t i = 0; i < fIsBehind.size(); ++i) {
        const Point a = place(fMesh.indices[3 * i]);
        const Vector normal =
            cross(between(a, place(fMesh.indices[3 * i + 1])), between(a, place(fMesh.indices[3 * i + 2])));
        const Vector toEye(eye[0] - w * a[0], eye[1] - w * a[1], eye[2] - w * a[2]);
        fIsBehind[i] = dot(normal, toEye) < 0.0;
    }
    lines.clear();
    for (const Edge& edge : fEdges) {
        if (edge.other != kNone && fIsBehind[edge.triangle] == fIsBehind[edge.other])
            continue;
        for (const std::uint32_t end : {edge.from, edge.to}) {
            const float* p = fMesh.positions.data() + size_t{end} * 3;
            lines.insert(lines.end(), p, p + 3);
        }
    }
}

} // namespace orloview
