#pragma once

#include "DoubleTest.h"

#include "geometry/GLRouting.h"

#include <orlohost/HWEnvironment.h>

/// A routing on the recording GL, with the calls that its transcripts are made of.
class RoutingTest : public DoubleTest {
protected:
    RoutingTest() { IHWMemoryObject::fsMemoryUsage = 0; }

    static std::string bind(uint64_t buffer) { return call("glBindBufferARB", GL_ARRAY_BUFFER_ARB, buffer); }
    static std::string bindIndices(uint64_t buffer) {
        return call("glBindBufferARB", GL_ELEMENT_ARRAY_BUFFER_ARB, buffer);
    }
    static std::string generate() { return call("glGenBuffersARB", 1, kOut); }
    static std::string remove(uint64_t buffer) {
        return call("glDeleteBuffersARB", 1, Values{static_cast<double>(buffer)});
    }
    static std::string enable(GLenum array) { return call("glEnableClientState", array); }
    static std::string disable(GLenum array) { return call("glDisableClientState", array); }
    static std::string unit(int number) { return call("glClientActiveTexture", GL_TEXTURE0 + number); }
    static std::string vertices(int count, const void* pointer) {
        return call("glVertexPointer", count, GL_FLOAT, 0, pointer);
    }
    static std::string normals(const void* pointer) { return call("glNormalPointer", GL_FLOAT, 0, pointer); }
    static std::string texCoords(const void* pointer) {
        return call("glTexCoordPointer", 2, GL_FLOAT, 0, pointer);
    }
    static uint64_t buffer(int n) { return nthName(NameKind::Buffer, n); }

    /// Routes a slot to the first stream of a type.
    void route(GLRouting::GLInterpolant slot, GeometryData::DataType type, int index = 0) {
        fRouting.fSlots[slot].fMode = GLRouting::kFromGeometry;
        fRouting.fSlots[slot].fDataType = type;
        fRouting.fSlots[slot].fIndex = index;
    }

    /// Routes a slot to memory or to a buffer object.
    void assign(uint32_t slot, const void* data, GLObject* object = nullptr) {
        fRouting.fSlots[slot].fMode = GLRouting::kDirect;
        fRouting.fSlots[slot].fDirect = {2, GL_FLOAT, 0, data, object};
    }

    /// What was recorded since the last call.
    static Calls newCalls() {
        Calls calls = recorded();
        clearRecorded();
        return calls;
    }

    GLRouting fRouting;
    GeometryLogicalGroup fGroup;
};
