#include "geometry/GLRouting.h"

#include "gl/GLFunctionTable.h"

#include <algorithm>
#include <bit>
#include <memory>
#include <new>
#include <utility>

bool GLRouting::fsUseObjectsForData = false;
bool GLRouting::fsUseObjectsForIndexing = false;
bool GLRouting::fsUsePrimitiveRestart = false;
bool GLRouting::fsUseDrawRangeElements = false;
bool GLRouting::requiresAttribInterpolants = false;
bool GLRouting::fsHostHasRouted = false;

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

bool usePrimitiveRestart(const GLFunctionTable& gl) {
    return GLRouting::fsUsePrimitiveRestart && gl.usable(kCapNVPrimitiveRestart);
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

/// Binds 0 to the targets that the switches say are in use.
void unbindBuffers(GLFunctionTable& gl) {
    if (!gl.usable(kCapVertexBufferObject))
        return;
    if (GLRouting::fsUseObjectsForData)
        gl.glBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
    if (GLRouting::fsUseObjectsForIndexing)
        gl.glBindBufferARB(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
}

} // namespace

template <bool kPointersOnly>
[[gnu::always_inline]] inline void GLRouting::setArray(GLFunctionTable& gl, GLInterpolant i,
                                                       const DirectDataAssignment& a) {
    const auto count = static_cast<GLint>(a.fComponentCount);
    const auto stride = static_cast<GLsizei>(a.fStride);
    const auto bindBuffer = [&]() -> const void* {
        return a.fBufferObject && a.fBufferObject->bindWith(&gl) ? nullptr : a.fClientData;
    };
    const auto enable = [&](GLenum array) {
        if constexpr (!kPointersOnly)
            gl.glEnableClientState(array);
    };

    boundGLObjects[i] = a.fBufferObject;
    if (i == kPosition) {
        const void* pointer = bindBuffer();
        enable(GL_VERTEX_ARRAY);
        gl.glVertexPointer(count, a.fComponentType, stride, pointer);
    } else if (i == kNormal) {
        const void* pointer = bindBuffer();
        enable(GL_NORMAL_ARRAY);
        gl.glNormalPointer(a.fComponentType, stride, pointer);
    } else if (i == kColor) {
        const void* pointer = bindBuffer();
        enable(GL_COLOR_ARRAY);
        gl.glColorPointer(count, a.fComponentType, stride, pointer);
    } else if (isTexCoord(i)) {
        // Oddity: with pointersOnly the client-active unit stays as it is: hosts that only move pointers have
        // one set of coordinates and have chosen its unit.
        if constexpr (!kPointersOnly)
            clientActiveTexture(gl, fsInterpolantEnums[i]);
        const void* pointer = bindBuffer();
        enable(GL_TEXTURE_COORD_ARRAY);
        gl.glTexCoordPointer(count, a.fComponentType, stride, pointer);
    } else if (attribIsLive(gl, i)) {
        const GLuint attrib = fsInterpolantEnums[i];
        const void* pointer = bindBuffer();
        if constexpr (!kPointersOnly)
            gl.glEnableVertexAttribArray(attrib);
        gl.glVertexAttribPointer(attrib, count, a.fComponentType, GL_FALSE, stride, pointer);
    }
}

void GLRouting::setupInterpolant(GLInterpolant i, const DirectDataAssignment& a, bool pointersOnly) {
    if (i >= kInterpolantCount)
        return;
    GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    fsHostHasRouted = true;
    if (pointersOnly)
        setArray<true>(gl, i, a);
    else
        setArray<false>(gl, i, a);
}

inline void GLRouting::disableArray(GLFunctionTable& gl, GLInterpolant i) {
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

void GLRouting::disableInterpolant(GLInterpolant i) {
    if (i < kInterpolantCount)
        disableArray(*GLFunctionTable::fpGlobalFunctionTable, i);
}

namespace {

using Slots = std::array<GLRouting::Slot, GLRouting::kInterpolantCount>;

/// A bit per used slot from `first` to `last`.
[[gnu::noinline]] uint32_t usedSlotsOf(const Slots& slots, uint32_t first, uint32_t last) {
    uint32_t used = 0;
    for (uint32_t i = first; i <= last; ++i)
        used |= uint32_t{slots[i].fMode != GLRouting::kUnused} << i;
    return used;
}

/// Whether none of the slots is used, in an instruction per slot.
template <uint32_t kFirst, size_t... kOffsets>
bool areUnused(const Slots& slots, std::index_sequence<kOffsets...>) {
    return (slots[kFirst + kOffsets].fMode & ...) == GLRouting::kUnused;
}

/// The lowest `count` of the bits that are set in `mask`.
uint32_t firstOf(uint32_t mask, int32_t count) {
    if (count >= static_cast<int32_t>(GLRouting::kInterpolantCount) || (count > 0 && mask >> count == 0))
        return mask;
    uint32_t beyond = mask;
    for (; beyond != 0 && count > 0; --count)
        beyond &= beyond - 1;
    return mask & ~beyond;
}

} // namespace

inline uint32_t GLRouting::usedSlots() const {
    uint32_t used = 0;
    for (uint32_t i = kPosition; i <= kTexCoord0; ++i)
        used |= uint32_t{fSlots[i].fMode != kUnused} << i;
    if (!areUnused<kTexCoord0 + 1>(fSlots, std::make_index_sequence<kTexCoord7 - kTexCoord0>()))
        used |= usedSlotsOf(fSlots, kTexCoord0 + 1, kTexCoord7);
    if (!areUnused<kAttrib1>(fSlots, std::make_index_sequence<kAttrib15 - kTexCoord7>()))
        used |= usedSlotsOf(fSlots, kAttrib1, kAttrib15);
    return used;
}

void GLRouting::setVertexArrays(bool pointersOnly, bool substitute) {
    GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    fsHostHasRouted = true;
    if (pointersOnly)
        setArrays<true>(gl, usedSlots(), substitute);
    else
        setArrays<false>(gl, usedSlots(), substitute);
}

template <bool kPointersOnly>
void GLRouting::setArrays(GLFunctionTable& gl, uint32_t usedSlots, bool substitute) {
    const bool useObjects = fsUseObjectsForData && gl.usable(kCapVertexBufferObject);
    const auto normalType = substitute ? GeometryData::kSubstituteNormal : GeometryData::kNormal;

    for (uint32_t rest = firstOf(usedSlots, gl.fMaxTextureUnits + 3); rest != 0; rest &= rest - 1) {
        const auto i = static_cast<GLInterpolant>(std::countr_zero(rest));
        const Slot& slot = fSlots[i];
        if (slot.fMode == kDirect) {
            setArray<kPointersOnly>(gl, i, slot.fDirect);
            continue;
        }
        GeometryData::DataType type = slot.fDataType;
        if (type == GeometryData::kNormal)
            type = normalType;
        GeometryData* stream = fGroup ? fGroup->geometryDataPtr(type, slot.fIndex, false) : nullptr;
        if (!stream)
            continue;
        GLObject* object = nullptr;
        if (useObjects && (!isAttrib(i) || requiresAttribInterpolants)) {
            object = GLObject::from(stream->fHanger);
            if (!object)
                object = uploadStream(*stream);
        }
        setArray<kPointersOnly>(gl, i, {stream->fComponentsPerElement, GL_FLOAT, 0, stream->fData, object});
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
        if (!object) {
            disableArray(gl, i);
            continue;
        }
        object->bindWith(&gl);
        disableArray(gl, i);
        object->unbindWith(&gl);
    }
    std::ranges::fill(boundGLObjects, nullptr);
    fsHostHasRouted = false;
    unbindBuffers(gl);
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
    unbindBuffers(gl);
}

// Takes what drawGroup took, in the same order: that is a jump then.
void GLRouting::drawUnplanned(GeometryLogicalGroup* group, koUtil::BitField* visible, unsigned* primitiveList,
                              unsigned* preparedIndices, unsigned preparedCount, bool substitute) {
    if (group->indexRecordCount() == 0 || group->streamCount() == 0)
        return;
    GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;

    const bool isSubset = visible || primitiveList;
    const bool useObjectsForData = fsUseObjectsForData;
    const bool useObjectsForIndices = fsUseObjectsForIndexing;
    if (isSubset) {
        fsUseObjectsForData = false;
        fsUseObjectsForIndexing = false;
    }

    const uint32_t used = usedSlots();
    const bool restart = usePrimitiveRestart(gl);
    setArrays<false>(gl, used, substitute);
    if (restart) {
        gl.glEnable(GL_PRIMITIVE_RESTART_NV);
        gl.glPrimitiveRestartIndexNV(0xFFFFFFFFU);
    }
    drawRecords(visible, primitiveList, preparedIndices, preparedCount);
    if (restart)
        gl.glDisable(GL_PRIMITIVE_RESTART_NV);
    unsetArrays(gl, used);

    // Oddity: after a subset the two switches come back exchanged, which hosts count on.
    if (isSubset) {
        fsUseObjectsForIndexing = useObjectsForData;
        fsUseObjectsForData = useObjectsForIndices;
    }
}
