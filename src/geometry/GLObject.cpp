#include "geometry/GLObject.h"

#include <orlohost/GeometryData.h>

bool GLObject::fsSupported = false;
uint32_t GLObject::fsMaximumMemoryUsage = 64U << 20;
uint32_t GLObject::fsBoundCount = 0;

namespace {

GLFunctionTable* table() {
    return GLFunctionTable::fpGlobalFunctionTable;
}

} // namespace

GLObject::GLObject() {
    fsSupported = table() && table()->usable(kCapVertexBufferObject);
}

GLObject::~GLObject() {
    if (fsSupported && table())
        deleteObject();
    endPlans();
    setBound(false);
}

void GLObject::endPlans() {
    if (fPlannedIn)
        fPlannedIn->fDrawPlan.reset();
}

bool GLObject::makeName(GLFunctionTable* gl) {
    if (fDataType >= fsDataTypeInternal.size())
        return false;
    gl->glGenBuffersARB(1, &fBufferName);
    return fBufferName != 0;
}

void GLObject::unbindBuffer(DataType type) {
    if (type < fsDataTypeInternal.size() && table() && table()->usable(kCapVertexBufferObject))
        table()->glBindBufferARB(fsDataTypeInternal[type], 0);
}

bool GLObject::bufferData(long size, const void* data) {
    if (!fsSupported || !fBound)
        return false;
    fSize = 0;
    // The budget is counted in 32 bits: a size beyond them goes to GL whole but is charged by its low word.
    const auto charged = static_cast<uint32_t>(size);
    const uint32_t total = fsMemoryUsage + charged;
    if (size < 0 || total > fsMaximumMemoryUsage || fUsage >= fsUsageInternal.size())
        return false;
    table()->glBufferDataARB(target(), size, data, fsUsageInternal[fUsage]);
    fSize = charged;
    fsMemoryUsage = total;
    return true;
}

bool GLObject::bufferSubData(long offset, long size, const void* data) {
    if (!fsSupported || !fBound)
        return false;
    table()->glBufferSubDataARB(target(), offset, size, data);
    return true;
}

bool GLObject::getBufferSubData(long offset, long size, void* data) {
    if (!fsSupported || !fBound)
        return false;
    table()->glGetBufferSubDataARB(target(), offset, size, data);
    return true;
}

void* GLObject::mapBuffer() {
    if (!fsSupported || !fBound || fAccess >= fsAccessInternal.size())
        return nullptr;
    if (fMapped)
        unmapBuffer();
    void* pointer = table()->glMapBufferARB(target(), fsAccessInternal[fAccess]);
    if (pointer)
        fMapped = true;
    return pointer;
}

bool GLObject::unmapBuffer() {
    if (!fsSupported || !fBound)
        return false;
    const bool intact = fMapped && table()->glUnmapBufferARB(target());
    fMapped = false;
    return intact;
}

bool GLObject::getBufferPointer(void** pointer) {
    if (!fsSupported || !fBound)
        return false;
    table()->glGetBufferPointervARB(target(), GL_BUFFER_MAP_POINTER_ARB, pointer);
    return true;
}

bool GLObject::deleteObject() {
    if (!fsSupported || fBufferName == 0)
        return false;
    endPlans();
    bind();
    if (fSize != 0) {
        if (fMapped)
            unmapBuffer();
        else if (fUsage < fsUsageInternal.size())
            table()->glBufferDataARB(target(), 0, nullptr, fsUsageInternal[fUsage]);
    }
    unbind();
    table()->glDeleteBuffersARB(1, &fBufferName);
    fBufferName = 0;
    fsMemoryUsage -= fSize;
    return true;
}
