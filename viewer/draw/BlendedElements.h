#pragma once

#include "scene/Scene.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace orloview {

/// The order in which what shines through has to be drawn: farthest first.
///
/// Groups whose boxes overlap are sorted together, triangle by triangle (line by line, point by point), by
/// their middles; a group by itself likewise within itself. Triangles that cut each other, or are long beside
/// their neighbours, can still come out wrong: no order of whole triangles is right for them.
///
/// Keeps a reference to the scene, which has to stay as it is.
class BlendedElements {
public:
    /// Part of an instance, to be drawn with one call.
    struct Run {
        size_t instance;
        size_t firstIndex;
        size_t indexCount;
    };

    /// Of these instances, each of which has its box, in world space.
    BlendedElements(const Scene& scene, const std::vector<size_t>& instances,
                    const std::vector<Bounds>& boxes);

    /// Sorts for this view, unless it is that of the last call.
    const std::vector<Run>& farthestFirst(const koLinear::AffineMatrix& worldToEye);

    /// The indices of a run of the last order, of the instance's mesh.
    std::uint32_t* indicesOf(const Run& run) { return &fIndices[run.firstIndex]; }

private:
    struct Element {
        std::uint32_t instance;
        std::uint32_t firstIndex;  ///< into the mesh's
        koLinear::PointFlt middle; ///< in world space
    };
    /// Groups that touch, as a range of fElements.
    struct Cluster {
        size_t begin;
        size_t end;
        koLinear::Point middle;
    };

    void addElements(size_t instance);
    void append(const Element& element);
    size_t elementWidth(size_t instance) const;

    const Scene& fScene;
    std::vector<Element> fElements;
    std::vector<Cluster> fClusters;

    std::array<float, 4> fSortedFor{}; ///< the depth of a point in the view that fRuns are for
    std::vector<std::pair<float, std::uint32_t>> fByDepth;
    std::vector<Run> fRuns;
    std::vector<std::uint32_t> fIndices;
};

} // namespace orloview
