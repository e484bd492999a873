#include "draw/BlendedElements.h"

#include <algorithm>
#include <numeric>

namespace orloview {

namespace {

koLinear::Point middleOf(const Bounds& box) {
    return {(box.min[0] + box.max[0]) / 2.0, (box.min[1] + box.max[1]) / 2.0,
            (box.min[2] + box.max[2]) / 2.0};
}

bool overlap(const Bounds& a, const Bounds& b) {
    for (int axis = 0; axis < 3; ++axis) {
        if (a.min[axis] > b.max[axis] || b.min[axis] > a.max[axis])
            return false;
    }
    return true;
}

/// Who stands for the set that `i` is in; shortens the way for the next who asks.
size_t find(std::vector<size_t>& parents, size_t i) {
    while (parents[i] != i)
        i = parents[i] = parents[parents[i]];
    return i;
}

/// Sets of boxes that hang together by overlaps, as numbers of boxes.
std::vector<std::vector<size_t>> overlapping(const std::vector<Bounds>& boxes) {
    std::vector<size_t> fromLeft(boxes.size());
    std::iota(fromLeft.begin(), fromLeft.end(), size_t{0});
    std::sort(fromLeft.begin(), fromLeft.end(),
              [&](size_t a, size_t b) { return boxes[a].min[0] < boxes[b].min[0]; });
    std::vector<size_t> parents(boxes.size());
    std::iota(parents.begin(), parents.end(), size_t{0});
    for (size_t i = 0; i < fromLeft.size(); ++i) {
        const Bounds& box = boxes[fromLeft[i]];
        for (size_t j = i + 1; j < fromLeft.size() && boxes[fromLeft[j]].min[0] <= box.max[0]; ++j) {
            if (overlap(box, boxes[fromLeft[j]]))
                parents[find(parents, fromLeft[j])] = find(parents, fromLeft[i]);
        }
    }
    std::vector<std::vector<size_t>> sets(boxes.size());
    for (size_t i = 0; i < boxes.size(); ++i)
        sets[find(parents, i)].push_back(i);
    std::erase_if(sets, [](const auto& set) { return set.empty(); });
    return sets;
}

/// What turns a point of the world into its depth: larger is nearer.
std::array<float, 4> depthOf(const koLinear::AffineMatrix& worldToEye) {
    return {static_cast<float>(worldToEye[0][2]), static_cast<float>(worldToEye[1][2]),
            static_cast<float>(worldToEye[2][2]), static_cast<float>(worldToEye[3][2])};
}

} // namespace

BlendedElements::BlendedElements(const Scene& scene, const std::vector<size_t>& instances,
                                 const std::vector<Bounds>& boxes)
    : fScene(scene) {
    for (const std::vector<size_t>& set : overlapping(boxes)) {
        Bounds around;
        Cluster cluster{fElements.size(), 0, {}};
        for (const size_t i : set) {
            around.extend(boxes[i].min);
            around.extend(boxes[i].max);
            addElements(instances[i]);
        }
        cluster.end = fElements.size();
        cluster.middle = middleOf(around);
        fClusters.push_back(cluster);
    }
}

size_t BlendedElements::elementWidth(size_t instance) const {
    switch (fScene.meshes[static_cast<size_t>(fScene.instances[instance].mesh)].topology) {
    case Topology::Points:
        return 1;
    case Topology::Lines:
        return 2;
    case Topology::Triangles:
        break;
    }
    return 3;
}

void BlendedElements::addElements(size_t instance) {
    const Instance& placed = fScene.instances[instance];
    const Mesh& mesh = fScene.meshes[static_cast<size_t>(placed.mesh)];
    const size_t width = elementWidth(instance);
    for (size_t first = 0; first + width <= mesh.indices.size(); first += width) {
        std::array<double, 3> sum{};
        for (size_t corner = first; corner < first + width; ++corner) {
            for (size_t axis = 0; axis < 3; ++axis)
                sum[axis] += mesh.positions[size_t{mesh.indices[corner]} * 3 + axis];
        }
        const auto count = static_cast<double>(width);
        const koLinear::Point middle =
            placed.toWorld.transform(koLinear::Point(sum[0] / count, sum[1] / count, sum[2] / count));
        fElements.push_back({static_cast<std::uint32_t>(instance), static_cast<std::uint32_t>(first),
                             koLinear::PointFlt(static_cast<float>(middle[0]), static_cast<float>(middle[1]),
                                                static_cast<float>(middle[2]))});
    }
}

const std::vector<BlendedElements::Run>&
BlendedElements::farthestFirst(const koLinear::AffineMatrix& worldToEye) {
    const std::array<float, 4> depth = depthOf(worldToEye);
    if (fClusters.empty() || depth == fSortedFor)
        return fRuns;
    fSortedFor = depth;
    fRuns.clear();
    fIndices.clear();
    std::sort(fClusters.begin(), fClusters.end(), [&](const Cluster& a, const Cluster& b) {
        return worldToEye.transform(a.middle)[2] < worldToEye.transform(b.middle)[2];
    });
    for (const Cluster& cluster : fClusters) {
        fByDepth.clear();
        for (size_t i = cluster.begin; i < cluster.end; ++i) {
            const koLinear::PointFlt& p = fElements[i].middle;
            fByDepth.emplace_back(depth[0] * p[0] + depth[1] * p[1] + depth[2] * p[2] + depth[3],
                                  static_cast<std::uint32_t>(i));
        }
        std::sort(fByDepth.begin(), fByDepth.end());
        for (const auto& [ignored, element] : fByDepth)
            append(fElements[element]);
    }
    return fRuns;
}

void BlendedElements::append(const Element& element) {
    if (fRuns.empty() || fRuns.back().instance != element.instance)
        fRuns.push_back({element.instance, fIndices.size(), 0});
    const size_t width = elementWidth(element.instance);
    const Mesh& mesh = fScene.meshes[static_cast<size_t>(fScene.instances[element.instance].mesh)];
    const auto first = mesh.indices.begin() + element.firstIndex;
    fIndices.insert(fIndices.end(), first, first + static_cast<std::ptrdiff_t>(width));
    fRuns.back().indexCount += width;
}

} // namespace orloview
