#pragma once

#include "OpenGL.h"
#include "objects/Objects.h"

#include <vector>

// What the binding keeps of programs in GL.

namespace orlocg {

struct LoadedProgram : Extension {
    explicit LoadedProgram(GLuint program) : name(program) {}
    ~LoadedProgram() override;

    GLuint name;
    std::vector<const ParameterObject*> samplers; ///< that GL kept
};

/// GL with separate programs, and a current context; else null and an error.
const GL* usableGL();

/// The same, and which context that is.
const GL* usableGL(void*& context);

/// What was made of a program; null: it is not loaded.
LoadedProgram* loaded(const ProgramObject& program);

/// Binds a texture to a sampler's unit, if the program uses it. Unit 0 is active then.
void bindSampler(const GL& gl, const ParameterObject& sampler, GLuint texture);

/// What OpenGL calls the textures that a sampler reads.
GLenum targetOf(const ParameterObject& sampler);

/// Takes a buffer's bytes to OpenGL and back.
void storeBuffer(const BufferObject& buffer);
void fetchBuffer(BufferObject& buffer);

/// The texture coordinates and the generic attributes that a vertex program's resource can be.
constexpr bool isTexCoord(int resource) {
    return resource >= CG_TEXCOORD0 && resource <= CG_TEXCOORD7;
}
constexpr bool isGeneric(int resource) {
    return resource >= CG_ATTR0 && resource <= CG_ATTR15;
}

} // namespace orlocg
