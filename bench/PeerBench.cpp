#include "GroupBench.h"
#include "Timing.h"

#include <osg/Array>
#include <osg/Geometry>
#include <osg/RenderInfo>
#include <osg/State>

#include <cstdio>

// A group as OpenSceneGraph draws it: what its renderer calls for each drawable once it is sorted, with all
// in buffer objects, against the library and the same GL that does nothing. OpenSceneGraph leaves arrays
// enabled from group to group and makes 8 calls, the library 26. Prints a line per figure: name, library,
// OpenSceneGraph.

namespace {

osg::ref_ptr<osg::Geometry> peerOf(const GeometryLogicalGroup& group) {
    const auto floats = [&](size_t stream) { return group.stream(stream)->fKept.data(); };
    const unsigned count = group.stream(0)->fElementCount;
    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    const auto* positions = reinterpret_cast<const osg::Vec3*>(floats(0));
    const auto* normals = reinterpret_cast<const osg::Vec3*>(floats(1));
    const auto* texCoords = reinterpret_cast<const osg::Vec2*>(floats(2));
    geometry->setVertexArray(new osg::Vec3Array(count, positions));
    geometry->setNormalArray(new osg::Vec3Array(count, normals), osg::Array::BIND_PER_VERTEX);
    geometry->setTexCoordArray(0, new osg::Vec2Array(count, texCoords), osg::Array::BIND_PER_VERTEX);
    const GeometryDataIndex& record = *group.indexRecord(0);
    geometry->addPrimitiveSet(
        new osg::DrawElementsUInt(GL_TRIANGLES, record.fIndexCount, record.fKept.data()));
    geometry->setUseDisplayList(false);
    geometry->setUseVertexBufferObjects(true);
    return geometry;
}

struct Scene {
    std::vector<std::unique_ptr<GeometryLogicalGroup>> groups;
    std::vector<osg::ref_ptr<osg::Geometry>> peers;
    std::vector<double> library;
    std::vector<double> peer;

    explicit Scene(size_t count) : groups(count) {
        for (auto& group : groups) {
            group = makeGroup();
            peers.push_back(peerOf(*group));
        }
    }
};

void drawGroups(GLRouting& routing, const Scene& scene) {
    for (const auto& group : scene.groups)
        routing.drawGroup(group.get(), nullptr, nullptr, nullptr, 0, false);
}

void drawPeers(osg::RenderInfo& info, const Scene& scene) {
    for (const auto& geometry : scene.peers)
        geometry->draw(info);
}

void countInstructions(GLRouting& routing, osg::RenderInfo& info) {
    const Scene scene(100);
    measure("nothing/by hand", [] {});
    measure("drawGroup, 100 groups/library", [&] { drawGroups(routing, scene); });
    measure("drawGroup, 100 groups/by hand", [&] { drawPeers(info, scene); });
}

void takeTimes(GLRouting& routing, osg::RenderInfo& info) {
    constexpr int kRounds = 9;
    std::vector<Scene> scenes;
    for (const size_t count : {100, 1'000, 10'000})
        scenes.emplace_back(count);
    for (int round = 0; round < kRounds; ++round) {
        for (Scene& scene : scenes) {
            const size_t count = scene.groups.size();
            scene.library.push_back(timePerGroup(count, [&] { drawGroups(routing, scene); }));
            scene.peer.push_back(timePerGroup(count, [&] { drawPeers(info, scene); }));
        }
    }
    for (const Scene& scene : scenes)
        std::printf("ns per group of %zu|%.1f|%.1f\n", scene.groups.size(), median(scene.library),
                    median(scene.peer));
}

} // namespace

int main() {
    const TableInForce inForce;
    GLRouting routing = makeRouting();
    osg::ref_ptr<osg::State> state = new osg::State;
    state->setContextID(0);
    state->initializeExtensionProcs();
    osg::RenderInfo info(state.get(), nullptr);
    if (RUNNING_ON_VALGRIND)
        countInstructions(routing, info);
    else
        takeTimes(routing, info);
}
