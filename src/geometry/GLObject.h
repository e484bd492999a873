#pragma once

#include "gl/EntryMacros.h"
#include "gl/Export.h"
#include "gl/GLFunctionTable.h"

#include <orlohost/IHWMemoryObject.h>

#include <array>
#include <cstdint>
#include <typeinfo>

class GeometryLogicalGroup;

/// One GL buffer object, of vertex data or of indices, within a budget of memory.
///
///     auto* object = new GLObject; // hung on a record of the host, which deletes it
///     object->fDataType = GLObject::kIndexData;
///     if (object->bind() && object->bufferData(bytes, indices)) ...
///
/// Usage, access and data type are set before the first bind, which makes the GL name; with a value that is
/// none of theirs what asks for it (bufferData, mapBuffer, the first bind) fails. Every operation but
/// the constructor, and the destructor of an object that has no name, needs a current context of the share
/// group; without buffer objects (fsSupported) every operation fails without a GL call. Failures are told by
/// the result alone: the caller then draws from client memory.
///
/// The destructor deletes the GL buffer: destroy it while such a context is current.
class ORLOGL_API GLObject : public IHWMemoryObject {
public:
    /// What a buffer is bound as.
    enum DataType : uint32_t { kVertexData = 0, kIndexData = 1 };

    /// GL's name for each DataType.
    static constexpr std::array<GLenum, 2> fsDataTypeInternal = {GL_ARRAY_BUFFER_ARB,
                                                                 GL_ELEMENT_ARRAY_BUFFER_ARB};
    static_assert(fsDataTypeInternal.size() == kIndexData + 1);

    /// What a mapping is for.
    enum Access : uint32_t { kReadOnly = 0, kWriteOnly = 1, kReadWrite = 2 };

    /// GL's name for each Access.
    static constexpr std::array<GLenum, 3> fsAccessInternal = {GL_READ_ONLY_ARB, GL_WRITE_ONLY_ARB,
                                                               GL_READ_WRITE_ARB};
    static_assert(fsAccessInternal.size() == kReadWrite + 1);

    /// How often data change and who reads them.
    enum Usage : uint32_t {
        kStreamDraw = 0,
        kStreamRead = 1,
        kStreamCopy = 2,
        kStaticDraw = 3,
        kStaticRead = 4,
        kStaticCopy = 5,
        kDynamicDraw = 6,
        kDynamicRead = 7,
        kDynamicCopy = 8,
    };

    /// GL's name for each Usage.
    static constexpr std::array<GLenum, 9> fsUsageInternal = {
        GL_STREAM_DRAW_ARB, GL_STREAM_READ_ARB,  GL_STREAM_COPY_ARB,  GL_STATIC_DRAW_ARB, GL_STATIC_READ_ARB,
        GL_STATIC_COPY_ARB, GL_DYNAMIC_DRAW_ARB, GL_DYNAMIC_READ_ARB, GL_DYNAMIC_COPY_ARB};
    static_assert(fsUsageInternal.size() == kDynamicCopy + 1);

    /// Makes no GL call. Finds out anew whether buffer objects may be used (fsSupported).
    GLObject();

    /// deleteObject, where buffer objects are supported.
    ~GLObject() override;

    /// Binds the buffer to the target of its data type; the first time, makes its name. False when GL gives
    /// no name.
    bool bind() { return bindWith(GLFunctionTable::fpGlobalFunctionTable); }

    /// Binds 0 to the target.
    bool unbind() { return unbindWith(GLFunctionTable::fpGlobalFunctionTable); }

    /// Binds 0 to the target of `type`, where the vertex-buffer-object capability is usable.
    static void unbindBuffer(DataType type);

    /// Uploads `size` bytes and adds them to IHWMemoryObject::fsMemoryUsage. Needs bind before it. False,
    /// without a GL call, for a negative size and when the budget would be exceeded.
    ///
    /// Each upload counts in full: an earlier one into the same object is not given back, here or later.
    bool bufferData(long size, const void* data);

    /// Overwrites a part of the storage. Needs bind before it.
    bool bufferSubData(long offset, long size, const void* data);

    /// Reads a part of the storage into `data`. Needs bind before it.
    bool getBufferSubData(long offset, long size, void* data);

    /// Maps the storage for the object's access, unmapping it first where it is mapped. Needs bind before
    /// it; null on failure.
    void* mapBuffer();

    /// True when the buffer was mapped and its contents survived. Needs bind before it.
    bool unmapBuffer();

    /// Where the storage is mapped, null when it is not. Needs bind before it.
    bool getBufferPointer(void** pointer);

    /// Deletes the GL buffer and gives the bytes of its last upload back to the budget. Leaves 0 bound to the
    /// target. False when there is no buffer.
    bool deleteObject();

    /// The buffer object that hangs on a record; null when nothing or something else hangs there.
    static GLObject* from(IHWMemoryObject* hanger) {
        // Nearly every hanger is one of ours: no need to walk up the class tree for it on each drawing.
        if (hanger && &typeid(*hanger) == &typeid(GLObject))
            return static_cast<GLObject*>(hanger);
        return dynamic_cast<GLObject*>(hanger);
    }

    /// Whether buffer objects may be used, as the last constructor found it.
    static bool fsSupported;

    /// The budget in bytes for all hardware memory objects together: 64 MiB, unless the host sets another.
    static uint32_t fsMaximumMemoryUsage;

    uint32_t fUsage = kStaticDraw;    ///< a Usage, for the next bufferData
    uint32_t fAccess = kReadOnly;     ///< an Access, for the next mapBuffer
    DataType fDataType = kVertexData; ///< what it is bound as
    uint32_t fBufferName = 0;         ///< GL's name, 0 before there is one

    /// This object's own record of bind and unbind; what else is bound to the target behind its back doesn't
    /// show.
    bool fBound = false;
    bool fMapped = false; ///< whether the host has its memory

    /// Bytes of the last upload, 0 when it failed.
    uint32_t fSize = 0;

private:
    friend class DrawPlan;
    friend class GLRouting;

    /// How many objects are bound by their own record. None is while a group is drawn by plan, which skips
    /// those records.
    static uint32_t fsBoundCount;

    /// The group whose plans name this buffer: they end before it does.
    GeometryLogicalGroup* fPlannedIn = nullptr;

    void endPlans();

    // bind and unbind for drawing, which fetches the table once per group.

    bool bindWith(GLFunctionTable* gl) {
        if (!fsSupported || (fBufferName == 0 && !makeName(gl)))
            return false;
        gl->glBindBufferARB(target(), fBufferName);
        setBound(true);
        return true;
    }

    bool unbindWith(GLFunctionTable* gl) {
        if (!fsSupported)
            return false;
        gl->glBindBufferARB(target(), 0);
        setBound(false);
        return true;
    }

    void setBound(bool bound) {
        fsBoundCount += uint32_t{bound} - uint32_t{fBound};
        fBound = bound;
    }

    bool makeName(GLFunctionTable* gl);
    GLenum target() const { return fsDataTypeInternal[fDataType]; }
};
