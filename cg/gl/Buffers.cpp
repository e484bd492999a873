#include "Loaded.h"
#include "objects/Values.h"

#include <Cg/cgGL.h>

#include <array>

// Buffers that OpenGL has too. Whoever writes to OpenGL's is read when a program is bound.

namespace orlocg {

namespace {

/// A place that nothing draws from.
constexpr GLenum kPlace = GL_COPY_WRITE_BUFFER;

/// As CGbufferusage.
constexpr std::array<GLenum, 9> kUsages = {GL_STREAM_DRAW,  GL_STREAM_READ,  GL_STREAM_COPY,
                                           GL_STATIC_DRAW,  GL_STATIC_READ,  GL_STATIC_COPY,
                                           GL_DYNAMIC_DRAW, GL_DYNAMIC_READ, GL_DYNAMIC_COPY};

struct OwnBuffer : Extension {
    explicit OwnBuffer(GLuint made) : name(made) {}
    ~OwnBuffer() override {
        const GL* gl = openGL();
        if (gl && gl->currentContext())
            gl->deleteBuffers(1, &name);
    }

    const GLuint name;
};

GLuint nameOf(const BufferObject& buffer) {
    return static_cast<const OwnBuffer*>(buffer.extension.get())->name;
}

} // namespace

void storeBuffer(const BufferObject& buffer) {
    const GL* gl = usableGL();
    if (!gl)
        return;
    gl->bindBuffer(kPlace, nameOf(buffer));
    gl->bufferData(kPlace, static_cast<GLsizeiptr>(buffer.bytes.size()), buffer.bytes.data(),
                   kUsages[buffer.usage]);
    gl->bindBuffer(kPlace, 0);
}

void fetchBuffer(BufferObject& buffer) {
    const GL* gl = usableGL();
    if (!gl)
        return;
    gl->bindBuffer(kPlace, nameOf(buffer));
    gl->getBufferSubData(kPlace, 0, static_cast<GLsizeiptr>(buffer.bytes.size()), buffer.bytes.data());
    gl->bindBuffer(kPlace, 0);
}

} // namespace orlocg

using namespace orlocg;

CGbuffer cgGLCreateBuffer(CGcontext context, int size, const void* data, GLenum usage) {
    for (size_t i = 0; i < kUsages.size(); ++i) {
        if (kUsages[i] != usage)
            continue;
        const CGbuffer made = cgCreateBuffer(context, size, data, static_cast<CGbufferusage>(i));
        if (made)
            cgGLGetBufferObject(made);
        return made;
    }
    orlocg_raise(CG_INVALID_ENUMERANT_ERROR);
    return nullptr;
}

GLuint cgGLGetBufferObject(CGbuffer handle) {
    BufferObject* buffer = orlocg_findBuffer(handle);
    const GL* gl = buffer ? usableGL() : nullptr;
    if (!gl)
        return 0;
    guarded([&] {
        if (buffer->extension)
            return;
        GLuint name = 0;
        gl->genBuffers(1, &name);
        buffer->extension = std::make_unique<OwnBuffer>(name);
        storeBuffer(*buffer);
    });
    return buffer->extension ? nameOf(*buffer) : 0;
}
