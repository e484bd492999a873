#pragma once

#include "OpenGL.h"
#include "objects/Objects.h"

#include <new>
#include <vector>

// What the binding keeps of programs and parameters in GL.

namespace orlocg {

/// A leaf's values, and where GL keeps them.
struct LeafState : Extension {
    std::vector<float> values;
    GLint location = -1;
    GLuint texture = 0;
};

struct LoadedProgram : Extension {
    explicit LoadedProgram(GLuint program) : name(program) {}
    ~LoadedProgram() override;

    GLuint name;
};

/// Calls `work`; a lack of memory becomes an error.
template <typename Work>
void guarded(Work&& work) {
    try {
        work();
    } catch (const std::bad_alloc&) {
        orlocg_raise(CG_MEMORY_ALLOC_ERROR);
    }
}

/// GL with separate programs, and a current context; else null and an error.
const GL* usableGL();

/// The same, and which context that is.
const GL* usableGL(void*& context);

/// What was made of a program; null: it is not loaded.
LoadedProgram* loaded(const ProgramObject& program);

LeafState& stateOf(ParameterObject& leaf);

/// Hands a leaf's values to its program, if that is loaded and uses them.
void upload(ParameterObject& leaf);

/// The same of elements of an array, in one call.
void uploadElements(ParameterObject& array, size_t first, size_t count);

} // namespace orlocg
