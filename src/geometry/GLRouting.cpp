#include "geometry/GLRouting.h"

#include "gl/GLFunctionTable.h"

#include <algorithm>
#include <bit>
#include <memory>
#include <new>

bool GLRouting::fsUseObjectsForData = false;
bool GLRouting::fsUseObjectsForIndexing = false;
bool GLRouting::fsUsePrimitiveRestart = false;
bool GLRouting::fsUseDrawRangeElements = false;
bool GLRouting::requiresAttribInterpolants = false;

GLObject* boundGLObjects[GLRouting::kInterpolantCount] = {};

namespace {

using GLInterpolant = GLRouting::GLInterpolant;

bool isAttrib(uint32_t i) {
    return i >= GLRouting::kAttrib1;
}

bool isTexCoord(uint32_t i) {
    return i >= GLRouting::kTexCoord0 && i <= GLRouting::kTexCoord7;
}

/// Whether generic attribute `i` reaches GL.
bool attribIsLive(const GLFunctionTable& gl, uint32_t i) {
    return GLRouting::requiresAttribInterpolants &&
           static_cast<int32_t>(GLRouting::fsInterpolantEnums[i]) < gl.fMaxVertexAttribs;
}

void clientActiveTexture(GLFunctionTable& gl, GLenum unit) {
    if (gl.usable(kCapMultitexture))
        gl.glClientActiveTexture(unit);
}

/// Bytes of a stream; -1, which no upload takes, when they can't be counted.
long streamBytes(const GeometryData& stream) {
    long bytes = 0;
    if (__builtin_mul_overflow(stream.fElementCount, stream.fComponentsPerElement, &bytes) ||
        __builtin_mul_overflow(bytes, GeometryData::elementTypeSize(stream.fElementType), &bytes))
        return -1;
    return bytes;
}

/// Hangs a new buffer object with its data on a stream; null, and nothing is left of it, when that fails.
[[gnu::noinline]] GLObject* uploadStream(GeometryData& stream) {
    std::unique_ptr<GLObject> object(new (std::nothrow) GLObject);
    if (!object || !object->bind() || !object->bufferData(streamBytes(stream), stream.fData))
        return nullptr;
    stream.deleteHanger();
    stream.setHanger(object.get());
    return object.release();
}

void unbindBuffers() {
    if (GLRouting::fsUseObjectsForData)
        GLObject::unbindBuffer(GLObject::kVertexData);
    if (GLRouting::fsUseObjectsForIndexing)
        GLObject::unbindBuffer(GLObject::kIndexData);
}

} // namespace

void GLRouting::setupInterpolant(GLInterpolant i, const DirectDataAssignment& a, bool pointersOnly) {
    setupInterpolant(*GLFunctionTable::fpGlobalFunctionTable, i, a, pointersOnly);
}

inline void GLRouting::setupInterpolant(GLFunctionTable& gl, GLInterpolant i, const DirectDataAssignment& a,
                                        bool pointersOnly) {
    boundGLObjects[i] = a.fBufferObject;
    const auto count = static_cast<GLint>(a.fComponentCount);
    const auto stride = static_cast<GLsizei>(a.fStride);
    const GLenum type = a.fComponentType;
    const auto bindBuffer = [&]() -> const void* {
        return a.fBufferObject && a.fBufferObject->bind(&gl) ? nullptr : a.fClientData;
    };
    const auto enable = [&](GLenum array) {
        if (!pointersOnly)
            gl.glEnableClientState(array);
    };

    if (i == kPosition) {
        const void* pointer = bindBuffer();
        enable(GL_VERTEX_ARRAY);
        gl.glVertexPointer(count, type, stride, pointer);
    } else if (i == kNormal) {
        const void* pointer = bindBuffer();
        enable(GL_NORMAL_ARRAY);
        gl.glNormalPointer(type, stride, pointer);
    } else if (i == kColor) {
        const void* pointer = bindBuffer();
        enable(GL_COLOR_ARRAY);
        gl.glColorPointer(count, type, stride, pointer);
    } else if (isTexCoord(i)) {
        // With pointersOnly the client-active unit stays as it is: hosts that only move pointers have one set
        // of coordinates and have chosen its unit.
        if (!pointersOnly)
            clientActiveTexture(gl, fsInterpolantEnums[i]);
        const void* pointer = bindBuffer();
        enable(GL_TEXTURE_COORD_ARRAY);
        gl.glTexCoordPointer(count, type, stride, pointer);
    } else if (attribIsLive(gl, i)) {
        const GLuint attrib = fsInterpolantEnums[i];
        const void* pointer = bindBuffer();
        if (!pointersOnly)
            gl.glEnableVertexAttribArray(attrib);
        gl.glVertexAttribPointer(attrib, count, type, GL_FALSE, stride, pointer);
    }
}

void GLRouting::disableInterpolant(GLInterpolant i) {
    disableInterpolant(*GLFunctionTable::fpGlobalFunctionTable, i);
}

inline void GLRouting::disableInterpolant(GLFunctionTable& gl, GLInterpolant i) {
    if (i <= kColor) {
        gl.glDisableClientState(fsInterpolantEnums[i]);
    } else if (isTexCoord(i)) {
        if (static_cast<int32_t>(i - kTexCoord0) >= gl.fMaxTextureUnits)
            return;
        clientActiveTexture(gl, fsInterpolantEnums[i]);
        gl.glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    } else if (attribIsLive(gl, i)) {
        gl.glDisableVertexAttribArray(fsInterpolantEnums[i]);
    }
}

namespace {

template <uint32_t kFirst, size_t... kOffsets>
uint32_t usedSlotsOf(const std::array<GLRouting::Slot, GLRouting::kInterpolantCount>& slots,
                     std::index_sequence<kOffsets...>) {
    // Most are unused: one look at all of them together.
    if ((slots[kFirst + kOffsets].fMode & ...) == GLRouting::kUnused)
        return 0;
    return (... | (uint32_t{slots[kFirst + kOffsets].fMode != GLRouting::kUnused} << (kFirst + kOffsets)));
}

} // namespace

uint32_t GLRouting::usedSlots() const {
    return usedSlotsOf<kPosition>(fSlots, std::make_index_sequence<4>()) |
           usedSlotsOf<kTexCoord0 + 1>(fSlots, std::make_index_sequence<7>()) |
           usedSlotsOf<kAttrib1>(fSlots, std::make_index_sequence<15>());
}

void GLRouting::setVertexArrays(bool pointersOnly, bool substitute) {
    setArrays(*GLFunctionTable::fpGlobalFunctionTable, usedSlots(), pointersOnly, substitute);
}

void GLRouting::setArrays(GLFunctionTable& gl, uint32_t usedSlots, bool pointersOnly, bool substitute) {
    const bool useObjects = fsUseObjectsForData && gl.usable(kCapVertexBufferObject);
    int32_t room = gl.fMaxTextureUnits + 3;

    for (uint32_t rest = usedSlots; rest != 0 && room > 0; rest &= rest - 1, --room) {
        const auto i = static_cast<GLInterpolant>(std::countr_zero(rest));
        const Slot& slot = fSlots[i];
        if (slot.fMode == kDirect) {
            setupInterpolant(gl, i, slot.fDirect, pointersOnly);
            continue;
        }
        const bool replaced = substitute && slot.fDataType == GeometryData::kNormal;
        const auto type = replaced ? GeometryData::kSubstituteNormal : slot.fDataType;
        GeometryData* stream = fGroup ? fGroup->geometryDataPtr(type, slot.fIndex, false) : nullptr;
        if (!stream)
            continue;
        GLObject* object = nullptr;
        if (useObjects && (!isAttrib(i) || requiresAttribInterpolants)) {
            object = GLObject::from(stream->fHanger);
            if (!object)
                object = uploadStream(*stream);
        }
        setupInterpolant(gl, i, {stream->fComponentsPerElement, GL_FLOAT, 0, stream->fData, object},
                         pointersOnly);
    }
}

void GLRouting::unsetVertexArrays() {
    unsetArrays(*GLFunctionTable::fpGlobalFunctionTable, usedSlots());
}

void GLRouting::unsetArrays(GLFunctionTable& gl, uint32_t usedSlots) {
    for (uint32_t rest = usedSlots; rest != 0; rest &= rest - 1) {
        const auto i = static_cast<GLInterpolant>(std::countr_zero(rest));
        if (isAttrib(i) && !requiresAttribInterpolants)
            break;
        GLObject* object = boundGLObjects[i];
        if (object)
            object->bind(&gl);
        disableInterpolant(gl, i);
        if (object)
            object->unbind(&gl);
    }
    std::ranges::fill(boundGLObjects, nullptr);
    unbindBuffers();
    clientActiveTexture(gl, GL_TEXTURE0_ARB);
}

void GLRouting::disableAllArrays() {
    GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    for (GLenum array : {GL_VERTEX_ARRAY, GL_NORMAL_ARRAY, GL_COLOR_ARRAY, GL_INDEX_ARRAY})
        gl.glDisableClientState(array);
    for (int32_t unit = 0; unit < gl.fMaxTextureUnits; ++unit) {
        clientActiveTexture(gl, GL_TEXTURE0_ARB + static_cast<GLenum>(unit));
        gl.glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    }
    clientActiveTexture(gl, GL_TEXTURE0_ARB);
    if (requiresAttribInterpolants) {
        // Attribute 0 is the position of programs that have no other: it is left alone.
        for (int32_t attrib = 1; attrib < gl.fMaxVertexAttribs; ++attrib)
            gl.glDisableVertexAttribArray(static_cast<GLuint>(attrib));
    }
    unbindBuffers();
}
