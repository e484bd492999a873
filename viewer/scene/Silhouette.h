#pragma once

#include "scene/Scene.h"

#include <cstdint>
#include <vector>

namespace orloview {

/// The edges of a mesh of triangles that part what is seen from before from what is seen from behind, and
/// those of one triangle alone: what draws its shape. Vertices at one place count as one. The mesh has to
/// stay; its positions may change.
class Silhouette {
public:
    explicit Silhouette(const Mesh& mesh);

    /// Two points for each edge, x, y and z, as seen from a point of the mesh's space, or from so far in a
    /// direction (w = 0).
    void seenFrom(const koLinear::Point& eye, double w, std::vector<float>& lines);

private:
    struct Edge {
        std::uint32_t from;
        std::uint32_t to;
        std::uint32_t triangle;
        std::uint32_t other; ///< kNone: there is none
    };

    const Mesh& fMesh;
    std::vector<Edge> fEdges;
    std::vector<char> fIsBehind; ///< by triangle, whether it is seen from behind
};

} // namespace orloview
