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

/// The buffer object of a stream, made and filled the first time; null when that fails.
GLObject* bufferObjectOf(GeometryData& stream) {
    if (GLObject* hanger = GLObject::from(stream.fHanger))
        return hanger;
    std::unique_ptr<GLObject> object(new (std::nothrow) GLObject);
    if (!object || !object->bind() || !object->bufferData(streamBytes(stream), stream.fData))
        return nullptr;
    stream.deleteHanger();
    stream.setHanger(object.get());
    return object.release();
}

} // namespace

void GLRouting::setupInterpolant(GLInterpolant i, const DirectDataAssignment& a, bool pointersOnly) {
    GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    boundGLObjects[i] = a.fBufferObject;
    if (isAttrib(i) && !attribIsLive(gl, i))
        return;

    // The client-active unit stays as it is with pointersOnly: hosts that only move pointers have one set of
    // coordinates and have chosen its unit.
    if (isTexCoord(i) && !pointersOnly)
        clientActiveTexture(gl, fsInterpolantEnums[i]);
    const bool inBuffer = a.fBufferObject && a.fBufferObject->bind();
    const void* pointer = inBuffer ? nullptr : a.fClientData;
    const auto count = static_cast<GLint>(a.fComponentCount);
    const auto stride = static_cast<GLsizei>(a.fStride);

    if (isAttrib(i)) {
        if (!pointersOnly)
            gl.glEnableVertexAttribArray(fsInterpolantEnums[i]);
        gl.glVertexAttribPointer(fsInterpolantEnums[i], count, a.fComponentType, GL_FALSE, stride, pointer);
        return;
    }
    if (!pointersOnly)
        gl.glEnableClientState(isTexCoord(i) ? GL_TEXTURE_COORD_ARRAY : fsInterpolantEnums[i]);
    switch (i) {
    case kPosition:
        gl.glVertexPointer(count, a.fComponentType, stride, pointer);
        break;
    case kNormal:
        gl.glNormalPointer(a.fComponentType, stride, pointer);
        break;
    case kColor:
        gl.glColorPointer(count, a.fComponentType, stride, pointer);
        break;
    default:
        gl.glTexCoordPointer(count, a.fComponentType, stride, pointer);
    }
}

void GLRouting::disableInterpolant(GLInterpolant i) {
    GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    if (isAttrib(i)) {
        if (attribIsLive(gl, i))
            gl.glDisableVertexAttribArray(fsInterpolantEnums[i]);
    } else if (isTexCoord(i)) {
        if (static_cast<int32_t>(i - kTexCoord0) >= gl.fMaxTextureUnits)
            return;
        clientActiveTexture(gl, fsInterpolantEnums[i]);
        gl.glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    } else {
        gl.glDisableClientState(fsInterpolantEnums[i]);
    }
}

uint32_t GLRouting::usedSlots() const {
    uint32_t used = 0;
    for (uint32_t i = 0; i < kInterpolantCount; ++i)
        used |= uint32_t{fSlots[i].fMode != kUnused} << i;
    return used;
}

void GLRouting::setVertexArrays(bool pointersOnly, bool substitute) {
    setArrays(usedSlots(), pointersOnly, substitute);
}

void GLRouting::setArrays(uint32_t usedSlots, bool pointersOnly, bool substitute) {
    const GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    const bool useObjects = fsUseObjectsForData && gl.usable(kCapVertexBufferObject);
    int32_t room = gl.fMaxTextureUnits + 3;

    for (uint32_t rest = usedSlots; rest != 0 && room > 0; rest &= rest - 1, --room) {
        const auto i = static_cast<GLInterpolant>(std::countr_zero(rest));
        const Slot& slot = fSlots[i];
        if (slot.fMode == kDirect) {
            setupInterpolant(i, slot.fDirect, pointersOnly);
            continue;
        }
        const bool replaced = substitute && slot.fDataType == GeometryData::kNormal;
        const auto type = replaced ? GeometryData::kSubstituteNormal : slot.fDataType;
        GeometryData* stream = fGroup ? fGroup->geometryDataPtr(type, slot.fIndex, false) : nullptr;
        if (!stream)
            continue;
        GLObject* object = nullptr;
        if (useObjects && (!isAttrib(i) || requiresAttribInterpolants))
            object = bufferObjectOf(*stream);
        setupInterpolant(i, {stream->fComponentsPerElement, GL_FLOAT, 0, stream->fData, object},
                         pointersOnly);
    }
}

void GLRouting::unsetVertexArrays() {
    unsetArrays(usedSlots());
}

void GLRouting::unsetArrays(uint32_t usedSlots) {
    GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    for (uint32_t rest = usedSlots; rest != 0; rest &= rest - 1) {
        const auto i = static_cast<GLInterpolant>(std::countr_zero(rest));
        if (isAttrib(i) && !requiresAttribInterpolants)
            break;
        GLObject* object = boundGLObjects[i];
        if (object)
            object->bind();
        disableInterpolant(i);
        if (object)
            object->unbind();
    }
    std::ranges::fill(boundGLObjects, nullptr);

    if (fsUseObjectsForData)
        GLObject::unbindBuffer(GLObject::kVertexData);
    if (fsUseObjectsForIndexing)
        GLObject::unbindBuffer(GLObject::kIndexData);
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
    if (fsUseObjectsForData)
        GLObject::unbindBuffer(GLObject::kVertexData);
    if (fsUseObjectsForIndexing)
        GLObject::unbindBuffer(GLObject::kIndexData);
}
