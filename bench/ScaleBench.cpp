#include "GroupBench.h"
#include "Timing.h"

#include <malloc.h>

#include <cstdio>

// What a group costs when there are many: time, in which unlike in instructions the caches show, and memory.
// Against the GL that does nothing. Prints a line per figure: name, library, by hand.

namespace {

using Groups = std::vector<std::unique_ptr<GeometryLogicalGroup>>;

Groups makeGroups(size_t count) {
    Groups groups(count);
    for (auto& group : groups)
        group = makeGroup();
    return groups;
}

void draw(GLRouting& routing, const Groups& groups) {
    for (const auto& group : groups)
        routing.drawGroup(group.get(), nullptr, nullptr, nullptr, 0, false);
}

struct Scene {
    size_t count;
    Groups groups;
    std::vector<HandGroup> handGroups;
    std::vector<double> library;
    std::vector<double> byHand;
};

Scene makeScene(size_t count, GLRouting& routing) {
    Scene scene{count, makeGroups(count), {}, {}, {}};
    draw(routing, scene.groups);
    for (const auto& group : scene.groups)
        scene.handGroups.push_back(handGroupOf(*group));
    return scene;
}

/// All counts take turns, so that a machine that grows slower meanwhile is slow for each of them.
void benchGrowth(GLRouting& routing) {
    constexpr int kRounds = 15;
    std::vector<Scene> scenes;
    for (const size_t count : {1, 100, 1'000, 10'000, 100'000})
        scenes.push_back(makeScene(count, routing));
    for (int round = 0; round < kRounds; ++round) {
        for (Scene& scene : scenes) {
            scene.library.push_back(timePerGroup(scene.count, [&] { draw(routing, scene.groups); }));
            scene.byHand.push_back(timePerGroup(scene.count, [&] {
                for (const HandGroup& group : scene.handGroups)
                    drawByHand(table(), group);
            }));
        }
    }
    for (const Scene& scene : scenes)
        std::printf("ns per group of %zu|%.1f|%.1f\n", scene.count, median(scene.library),
                    median(scene.byHand));
}

/// With what the allocator takes for itself.
double heapBytes() {
    const struct mallinfo2 heap = mallinfo2();
    return static_cast<double>(heap.uordblks + heap.hblkhd);
}

/// A group of a renderer of its own: elements and indices as in makeGroup, and what drawByHand wants.
struct HandMesh {
    std::vector<float> positions, normals, texCoords;
    std::vector<uint32_t> indices;
    HandGroup group = {};
};

/// All that groups take: elements, records, buffer objects and plans.
void benchMemory(GLRouting& routing) {
    constexpr size_t kCount = 10'000;
    const double before = heapBytes();
    const Groups groups = makeGroups(kCount);
    draw(routing, groups);
    draw(routing, groups);
    const double drawn = heapBytes();
    std::vector<HandMesh> byHand(kCount);
    for (HandMesh& mesh : byHand) {
        mesh.positions.resize(groups[0]->stream(0)->fKept.size());
        mesh.normals.resize(groups[0]->stream(1)->fKept.size());
        mesh.texCoords.resize(groups[0]->stream(2)->fKept.size());
        mesh.indices.resize(groups[0]->indexRecord(0)->fKept.size());
    }
    std::printf("bytes per group of %zu|%.1f|%.1f\n", kCount, (drawn - before) / kCount,
                (heapBytes() - drawn) / kCount);
}

} // namespace

int main() {
    const TableInForce inForce;
    GLRouting routing = makeRouting();
    benchMemory(routing);
    benchGrowth(routing);
}
