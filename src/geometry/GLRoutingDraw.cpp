#include "geometry/GLRouting.h"

#include "gl/GLFunctionTable.h"

#include <orlohost/HWEnvironment.h>

#include <memory>
#include <new>

// Drawing the index records of a group: from buffer objects or client memory, whole or in part.

namespace {

bool useObjectsForIndexing(const GLFunctionTable& gl) {
    return GLRouting::fsUseObjectsForIndexing && gl.usable(kCapVertexBufferObject);
}

bool isInBlock(const GeometryDataIndex& record) {
    return record.fAllocatedCount != record.fIndexCount;
}

/// Draws `count` indices at `indices`, which is an offset while an index buffer is bound.
void drawElements(GLenum mode, uint32_t count, const void* indices) {
    GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    const auto size = static_cast<GLsizei>(count);
    // The end of the range is the count, not the largest index: hosts that switch this on have no larger one.
    if (GLRouting::fsUseDrawRangeElements && gl.usable(kCapDrawRangeElements))
        gl.glDrawRangeElements(mode, 0, count, size, GL_UNSIGNED_INT, indices);
    else
        gl.glDrawElements(mode, size, GL_UNSIGNED_INT, indices);
}

/// Hangs a new object with the first `bytes` of the record's indices on the record and leaves it bound; null,
/// and nothing is left of it, when that fails.
GLObject* uploadIndices(GeometryDataIndex& record, long bytes) {
    std::unique_ptr<GLObject> object(new (std::nothrow) GLObject);
    if (!object)
        return nullptr;
    object->fDataType = GLObject::kIndexData;
    if (!object->bind() || !object->bufferData(bytes, record.fIndices))
        return nullptr;
    record.setHanger(object.get());
    return object.release();
}

constexpr long kIndexSize = sizeof(uint32_t);

/// Where in the index buffer of its block a record begins. GL takes an offset as a pointer.
const void* offsetOf(const GeometryDataIndex& record) {
    const uintptr_t bytes = uintptr_t{record.fStart} * kIndexSize;
    return reinterpret_cast<const void*>(bytes); // NOLINT(performance-no-int-to-ptr)
}

/// Binds the index object of a record that stands for itself, made and filled the first time; null when the
/// record is to be drawn from client memory.
GLObject* bindOwnObject(GeometryDataIndex& record, uint32_t indexCount) {
    GLObject* object = GLObject::from(record.fHanger);
    if (!object)
        return uploadIndices(record, indexCount * kIndexSize);
    return object->bind() ? object : nullptr;
}

/// The object that all records of a block share, found on the first one or made from it, and bound.
GLObject* bindSharedObject(GeometryDataIndex& first) {
    GLObject* object = GLObject::from(first.fHanger);
    if (!object)
        object = uploadIndices(first, first.fAllocatedCount * kIndexSize + kIndexSize);
    return object && object->bind() ? object : nullptr;
}

} // namespace

std::optional<GLenum> GLRouting::primitiveMode(uint32_t primitiveType) {
    switch (primitiveType) {
    case GeometryDataIndex::kTriangles:
        return GL_TRIANGLES;
    case GeometryDataIndex::kTriangleStrip:
        return GL_TRIANGLE_STRIP;
    case GeometryDataIndex::kQuads:
        return GL_QUADS;
    default:
        return std::nullopt;
    }
}

bool GLRouting::makeCurrent(GeometryDataIndex* record) {
    fIndexRecord = record;
    fPrimitiveType = record->fPrimitiveType;
    fIndexCount = record->fIndexCount;
    return fPrimitiveType != GeometryDataIndex::kNothing && fIndexCount != 0;
}

void GLRouting::drawRecords(koUtil::BitField* visible, unsigned* primitiveList, unsigned* preparedIndices,
                            unsigned preparedCount) {
    // Never for a subset: drawGroup has switched the objects off.
    if (HWEnvironment::orlo_block_allocate_strips &&
        useObjectsForIndexing(*GLFunctionTable::fpGlobalFunctionTable)) {
        drawRecordsFromSharedObject(preparedIndices, preparedCount);
        return;
    }
    for (size_t i = 0; i < fGroup->indexRecordCount(); ++i) {
        if (makeCurrent(fGroup->indexRecord(i)))
            drawSingleIndexed(visible, primitiveList, preparedIndices, preparedCount);
    }
}

void GLRouting::drawRecordsFromSharedObject(unsigned* preparedIndices, unsigned preparedCount) {
    GLObject* shared = nullptr;
    for (size_t i = 0; i < fGroup->indexRecordCount(); ++i) {
        if (!makeCurrent(fGroup->indexRecord(i)))
            continue;
        if (isInBlock(*fIndexRecord)) {
            if (i == 0) {
                shared = bindSharedObject(*fIndexRecord);
                fSharedObjectIsBound = shared != nullptr;
            } else if (shared && !GLObject::from(fIndexRecord->fHanger)) {
                fIndexRecord->setHanger(shared);
            }
        }
        drawSingleIndexed(nullptr, nullptr, preparedIndices, preparedCount);
    }
    fSharedObjectIsBound = false;
    if (shared)
        shared->unbind();
}

void GLRouting::drawSingleIndexed(koUtil::BitField* visible, unsigned* primitiveList,
                                  unsigned* preparedIndices, unsigned preparedCount) {
    if (!fIndexRecord)
        return;
    if (visible || primitiveList || preparedIndices)
        drawSubset(visible, primitiveList, preparedIndices, preparedCount);
    else
        drawWholeRecord();
}

void GLRouting::drawWholeRecord() {
    const GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    const void* indices = fIndexRecord->fIndices;
    GLObject* ownObject = nullptr;
    if (useObjectsForIndexing(gl)) {
        if (HWEnvironment::orlo_block_allocate_strips && isInBlock(*fIndexRecord)) {
            if (fSharedObjectIsBound)
                indices = offsetOf(*fIndexRecord);
        } else {
            fSharedObjectIsBound = false;
            ownObject = bindOwnObject(*fIndexRecord, fIndexCount);
            if (ownObject)
                indices = nullptr;
        }
    }
    if (const auto mode = primitiveMode(fPrimitiveType))
        drawElements(*mode, fIndexCount, indices);
    if (ownObject)
        ownObject->unbind();
}

void GLRouting::drawSubset(const koUtil::BitField* visible, const unsigned* primitiveList,
                           const unsigned* preparedIndices, unsigned preparedCount) {
    const bool isQuads = fPrimitiveType == GeometryDataIndex::kQuads;
    if (!isQuads && fPrimitiveType != GeometryDataIndex::kTriangles)
        return;
    const GLenum mode = isQuads ? GL_QUADS : GL_TRIANGLES;

    if (preparedIndices && !primitiveList && preparedCount != 0)
        drawElements(mode, preparedCount, preparedIndices);
    else if (preparedIndices && primitiveList && !visible)
        drawElements(mode, fIndexCount, preparedIndices);
    else if (visible || primitiveList)
        drawOneByOne(mode, isQuads ? 4 : 3, visible, primitiveList, preparedIndices);
}

void GLRouting::drawOneByOne(GLenum mode, uint32_t primitiveSize, const koUtil::BitField* visible,
                             const unsigned* primitiveList, const unsigned* preparedIndices) {
    GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    const uint32_t primitiveCount = fIndexCount / primitiveSize;
    const uint32_t* indices =
        visible && primitiveList && preparedIndices ? preparedIndices : fIndexRecord->fIndices;
    gl.glBegin(mode);
    for (uint32_t j = 0; j < primitiveCount; ++j) {
        const uint32_t listed = primitiveList ? primitiveList[j] : j;
        if (listed >= primitiveCount || (visible && !visible->isSet(listed)))
            continue;
        // With both, the list only says whose visibility counts: what is drawn is the j-th primitive.
        const uint32_t primitive = visible ? j : listed;
        const uint32_t* vertices = indices + size_t{primitive} * primitiveSize;
        for (uint32_t k = 0; k < primitiveSize; ++k)
            gl.glArrayElement(static_cast<GLint>(vertices[k]));
    }
    gl.glEnd();
}

void GLRouting::drawFullMultipleIndexed() {
    GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    GeometryDataIterator positions;
    GeometryDataIterator normals;
    GeometryDataIterator texCoords;
    uint32_t type = GeometryDataIndex::kNothing;
    const size_t recordCount = fGroup ? fGroup->indexRecordCount() : 0;
    for (size_t i = 0; i < recordCount; ++i) {
        const GeometryDataIndex* record = fGroup->indexRecord(i);
        if (!record)
            break;
        type = record->fPrimitiveType;
        switch (record->fStream ? record->fStream->fDataType : GeometryData::kNone) {
        case GeometryData::kPosition:
            positions.reset(record, nullptr);
            break;
        case GeometryData::kNormal:
            normals.reset(record, nullptr);
            break;
        case GeometryData::kTexCoord:
            texCoords.reset(record, nullptr);
            break;
        default:
            break;
        }
    }
    if (type != GeometryDataIndex::kTriangles && type != GeometryDataIndex::kQuads)
        return;

    const bool isQuads = type == GeometryDataIndex::kQuads;
    while (!positions.done()) {
        gl.glBegin(isQuads ? GL_QUADS : GL_TRIANGLES);
        for (int vertex = 0; vertex < (isQuads ? 4 : 3); ++vertex) {
            gl.glTexCoord2fv(texCoords.current());
            gl.glNormal3fv(normals.current());
            gl.glVertex3fv(positions.current());
            texCoords.advance();
            normals.advance();
            positions.advance();
        }
        gl.glEnd();
    }
}
