#include "objects/Handles.h"
#include "objects/Values.h"

#include <cstring>
#include <utility>

using namespace orlocg;

BufferObject* orlocg_findBuffer(CGbuffer handle) {
    const auto found = global().buffers.find(reinterpret_cast<uintptr_t>(handle));
    if (found != global().buffers.end())
        return found->second.get();
    raise(CG_INVALID_BUFFER_HANDLE_ERROR);
    return nullptr;
}

namespace {

constexpr auto findBuffer = orlocg_findBuffer;

/// After its bytes were changed.
void store(const BufferObject& buffer) {
    if (buffer.extension)
        global().binding->store(buffer);
}

/// The place for a buffer of a program; null and an error: there is none.
CGbuffer* placeOf(CGprogram handle, int index) {
    ProgramObject* program = find(handle);
    if (!program)
        return nullptr;
    if (index >= 0 && static_cast<size_t>(index) < program->buffers.size())
        return &program->buffers[static_cast<size_t>(index)];
    raise(CG_BUFFER_INDEX_OUT_OF_RANGE_ERROR);
    return nullptr;
}

} // namespace

CGbuffer cgCreateBuffer(CGcontext handle, int size, const void* data, CGbufferusage usage) {
    ContextObject* context = find(handle);
    if (!context)
        return nullptr;
    if (size < 0 || usage < CG_BUFFER_USAGE_STREAM_DRAW || usage > CG_BUFFER_USAGE_DYNAMIC_COPY) {
        raise(size < 0 ? CG_INVALID_SIZE_ERROR : CG_INVALID_ENUMERANT_ERROR);
        return nullptr;
    }
    return guarded<CGbuffer>(nullptr, [&] {
        auto buffer = std::make_unique<BufferObject>();
        buffer->context = context;
        buffer->usage = usage;
        buffer->bytes.resize(static_cast<size_t>(size));
        if (data && size > 0)
            std::memcpy(buffer->bytes.data(), data, buffer->bytes.size());
        const auto made = buffer->handle = makeHandle<CGbuffer>();
        global().buffers.emplace(reinterpret_cast<uintptr_t>(made), std::move(buffer));
        return made;
    });
}

void cgDestroyBuffer(CGbuffer handle) {
    if (findBuffer(handle))
        global().buffers.erase(reinterpret_cast<uintptr_t>(handle));
}

CGbool cgIsBuffer(CGbuffer buffer) {
    return global().buffers.contains(reinterpret_cast<uintptr_t>(buffer));
}

CGcontext cgGetBufferContext(CGbuffer handle) {
    const BufferObject* buffer = findBuffer(handle);
    return buffer ? buffer->context->handle : nullptr;
}

int cgGetBufferSize(CGbuffer handle) {
    const BufferObject* buffer = findBuffer(handle);
    return buffer ? static_cast<int>(buffer->bytes.size()) : -1;
}

void cgSetBufferData(CGbuffer handle, int size, const void* data) {
    BufferObject* buffer = findBuffer(handle);
    if (!buffer)
        return;
    if (size < 0 || buffer->isMapped)
        return raise(size < 0 ? CG_INVALID_SIZE_ERROR : CG_BUFFER_UPDATE_NOT_ALLOWED_ERROR);
    guarded([&] {
        buffer->bytes.assign(static_cast<size_t>(size), 0);
        if (data && size > 0)
            std::memcpy(buffer->bytes.data(), data, buffer->bytes.size());
        store(*buffer);
    });
}

void cgSetBufferSubData(CGbuffer handle, int offset, int size, const void* data) {
    BufferObject* buffer = findBuffer(handle);
    if (!buffer)
        return;
    const auto length = static_cast<int>(buffer->bytes.size());
    if (offset < 0 || size < 0 || offset > length || size > length - offset)
        return raise(CG_BUFFER_INDEX_OUT_OF_RANGE_ERROR);
    if (buffer->isMapped || !data)
        return raise(data ? CG_BUFFER_UPDATE_NOT_ALLOWED_ERROR : CG_INVALID_POINTER_ERROR);
    if (buffer->extension)
        global().binding->fetch(*buffer);
    if (size > 0)
        std::memcpy(buffer->bytes.data() + offset, data, static_cast<size_t>(size));
    store(*buffer);
}

void* cgMapBuffer(CGbuffer handle, CGbufferaccess access) {
    BufferObject* buffer = findBuffer(handle);
    if (!buffer)
        return nullptr;
    if (access < CG_MAP_READ || access > CG_MAP_WRITE_NO_OVERWRITE || buffer->isMapped) {
        raise(buffer->isMapped ? CG_BUFFER_ALREADY_MAPPED_ERROR : CG_INVALID_ENUMERANT_ERROR);
        return nullptr;
    }
    if (buffer->extension)
        global().binding->fetch(*buffer);
    buffer->isMapped = true;
    return buffer->bytes.data();
}

void cgUnmapBuffer(CGbuffer handle) {
    BufferObject* buffer = findBuffer(handle);
    if (buffer && std::exchange(buffer->isMapped, false))
        store(*buffer);
}

void cgSetProgramBuffer(CGprogram program, int index, CGbuffer buffer) {
    CGbuffer* place = placeOf(program, index);
    if (place && (!buffer || findBuffer(buffer)))
        *place = buffer;
}

CGbuffer cgGetProgramBuffer(CGprogram program, int index) {
    const CGbuffer* place = placeOf(program, index);
    return place && global().buffers.contains(reinterpret_cast<uintptr_t>(*place)) ? *place : nullptr;
}

int cgGetProgramBufferMaxIndex(CGprofile profile) {
    return cgIsProfileSupported(profile) ? static_cast<int>(ProgramObject().buffers.size()) - 1 : -1;
}

int cgGetProgramBufferMaxSize(CGprofile profile) {
    return cgIsProfileSupported(profile) ? 65536 : 0; // what OpenGL promises
}

int cgGetParameterBufferIndex(CGparameter handle) {
    const ParameterObject* p = find(handle);
    return p ? p->buffer : -1;
}

int cgGetParameterBufferOffset(CGparameter handle) {
    const ParameterObject* p = find(handle);
    return p ? p->offset : -1;
}
