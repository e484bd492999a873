#pragma once

#include "geometry/GLObject.h"
#include "geometry/GLRouting.h"
#include "gl/GLFunctionTable.h"

#include <orlohost/GeometryData.h>

#include <valgrind/callgrind.h>

#include <memory>
#include <numeric>
#include <string>
#include <vector>

// Pairs of measurements, "name/library" and "name/by hand", each dumped by callgrind under that label.

/// Runs `work` twice and dumps the instructions of the second time.
template <typename Work>
[[gnu::noinline]] void measure(const std::string& label, const Work& work) {
    work();
    CALLGRIND_ZERO_STATS;
    work();
    CALLGRIND_DUMP_STATS_AT(label.c_str());
}

inline GLFunctionTable& table() {
    return *GLFunctionTable::fpGlobalFunctionTable;
}

/// The table that the library calls through, as long as this lives.
struct TableInForce {
    GLFunctionTable functions;

    TableInForce() {
        functions.populate();
        GLFunctionTable::fpGlobalFunctionTable = &functions;
    }
    ~TableInForce() { GLFunctionTable::fpGlobalFunctionTable = nullptr; }
    TableInForce(const TableInForce&) = delete;
    TableInForce& operator=(const TableInForce&) = delete;
};

/// A group as a renderer of its own would keep it: names of buffers and a count.
struct HandGroup {
    GLuint positions;
    GLuint normals;
    GLuint texCoords;
    GLuint indices;
    GLsizei indexCount;
};

inline GLuint bufferNameOf(IHWMemoryObject* hanger) {
    return GLObject::from(hanger)->fBufferName;
}

inline HandGroup handGroupOf(const GeometryLogicalGroup& group) {
    return {bufferNameOf(group.stream(0)->fHanger), bufferNameOf(group.stream(1)->fHanger),
            bufferNameOf(group.stream(2)->fHanger), bufferNameOf(group.indexRecord(0)->fHanger),
            static_cast<GLsizei>(group.indexRecord(0)->fIndexCount)};
}

/// The calls that drawGroup makes for such a group, in its order.
inline void drawByHand(const GLFunctionTable& gl, const HandGroup& group) {
    gl.fglBindBufferARB(GL_ARRAY_BUFFER_ARB, group.positions);
    gl.fglEnableClientState(GL_VERTEX_ARRAY);
    gl.fglVertexPointer(3, GL_FLOAT, 0, nullptr);
    gl.fglBindBufferARB(GL_ARRAY_BUFFER_ARB, group.normals);
    gl.fglEnableClientState(GL_NORMAL_ARRAY);
    gl.fglNormalPointer(GL_FLOAT, 0, nullptr);
    gl.fglClientActiveTexture(GL_TEXTURE0_ARB);
    gl.fglBindBufferARB(GL_ARRAY_BUFFER_ARB, group.texCoords);
    gl.fglEnableClientState(GL_TEXTURE_COORD_ARRAY);
    gl.fglTexCoordPointer(2, GL_FLOAT, 0, nullptr);

    gl.fglBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, group.indices);
    gl.fglDrawElements(GL_TRIANGLES, group.indexCount, GL_UNSIGNED_INT, nullptr);
    gl.fglBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);

    gl.fglBindBufferARB(GL_ARRAY_BUFFER_ARB, group.positions);
    gl.fglDisableClientState(GL_VERTEX_ARRAY);
    gl.fglBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
    gl.fglBindBufferARB(GL_ARRAY_BUFFER_ARB, group.normals);
    gl.fglDisableClientState(GL_NORMAL_ARRAY);
    gl.fglBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
    gl.fglBindBufferARB(GL_ARRAY_BUFFER_ARB, group.texCoords);
    gl.fglClientActiveTexture(GL_TEXTURE0_ARB);
    gl.fglDisableClientState(GL_TEXTURE_COORD_ARRAY);
    gl.fglBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
    gl.fglBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
    gl.fglBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
    gl.fglClientActiveTexture(GL_TEXTURE0_ARB);
}

/// Twelve triangles of their own corners each, as the sides of a box.
inline std::unique_ptr<GeometryLogicalGroup> makeGroup() {
    constexpr size_t kCorners = 36;
    std::vector<uint32_t> indices(kCorners);
    std::iota(indices.begin(), indices.end(), 0U);
    auto group = std::make_unique<GeometryLogicalGroup>();
    group->addStream(GeometryData::kPosition, 3, std::vector<float>(3 * kCorners));
    group->addStream(GeometryData::kNormal, 3, std::vector<float>(3 * kCorners));
    group->addStream(GeometryData::kTexCoord, 2, std::vector<float>(2 * kCorners));
    group->addIndexRecord(GeometryDataIndex::kTriangles, std::move(indices));
    return group;
}

/// With all in buffer objects, however many groups.
inline GLRouting makeRouting() {
    GLRouting::fsUseObjectsForData = true;
    GLRouting::fsUseObjectsForIndexing = true;
    GLObject::fsMaximumMemoryUsage = 1U << 30;
    GLRouting routing;
    routing.fSlots[GLRouting::kPosition] = {GLRouting::kFromGeometry, {}, GeometryData::kPosition, 0};
    routing.fSlots[GLRouting::kNormal] = {GLRouting::kFromGeometry, {}, GeometryData::kNormal, 0};
    routing.fSlots[GLRouting::kTexCoord0] = {GLRouting::kFromGeometry, {}, GeometryData::kTexCoord, 0};
    return routing;
}

/// Groups whose streams and indices have long been uploaded.
inline void benchDrawGroup(size_t count, const std::string& name) {
    GLRouting routing = makeRouting();
    std::vector<std::unique_ptr<GeometryLogicalGroup>> groups(count);
    for (auto& group : groups)
        group = makeGroup();

    measure(name + "/library", [&] {
        for (const auto& group : groups)
            routing.drawGroup(group.get(), nullptr, nullptr, nullptr, 0, false);
    });

    std::vector<HandGroup> handGroups;
    for (const auto& group : groups)
        handGroups.push_back(handGroupOf(*group));
    measure(name + "/by hand", [&] {
        for (const HandGroup& group : handGroups)
            drawByHand(table(), group);
    });
}
