#pragma once

#include "gl/GLFunctionTable.h"

/// The table when GL's shader objects can be used, else null.
inline GLFunctionTable* shaderObjectTable() {
    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    return gl && gl->usable(kCapShaderObjects) ? gl : nullptr;
}

/// Whether GL says 1 to this question about a shader or program object.
inline bool objectHas(GLFunctionTable& gl, GLhandleARB object, GLenum question) {
    GLint status = 0;
    gl.glGetObjectParameterivARB(object, question, &status);
    return status == 1;
}
