#pragma once

#include "DoubleTest.h"

#include "geometry/GLRouting.h"

#include <orlohost/HWEnvironment.h>

/// A routing on the recording GL, with the calls that its transcripts are made of. Buffers go by their
/// number.
class RoutingTest : public DoubleTest {
protected:
    RoutingTest() { IHWMemoryObject::fsMemoryUsage = 0; }
    ~RoutingTest() override { HWEnvironment::orlo_block_allocate_strips = false; }

    static std::string bind(int n) { return call("glBindBufferARB", GL_ARRAY_BUFFER_ARB, 101 + n); }
    static std::string unbind() { return call("glBindBufferARB", GL_ARRAY_BUFFER_ARB, 0); }
    static std::string bindIndices(int n) { return call("glBindBufferARB", 0x8893, 101 + n); }
    static std::string unbindIndices() { return call("glBindBufferARB", 0x8893, 0); }
    static std::string generate() { return call("glGenBuffersARB", 1, kOut); }
    static std::string remove(int n) { return call("glDeleteBuffersARB", 1, Values{101.0 + n}); }
    static std::string enable(GLenum array) { return call("glEnableClientState", array); }
    static std::string disable(GLenum array) { return call("glDisableClientState", array); }
    static std::string unit(uint32_t n) { return call("glClientActiveTexture", GL_TEXTURE0 + n); }
    static std::string vertices(const void* data) { return call("glVertexPointer", 3, GL_FLOAT, 0, data); }
    static std::string normals(const void* data) { return call("glNormalPointer", GL_FLOAT, 0, data); }

    /// Routes a slot to the first stream of a type.
    void route(uint32_t slot, GeometryData::DataType type) {
        fRouting.fSlots[slot].fMode = GLRouting::kFromGeometry;
        fRouting.fSlots[slot].fDataType = type;
    }

    GLRouting fRouting;
    GeometryLogicalGroup fGroup;
};
