#pragma once

#include "gl/Export.h"

/// What a driver keeps to compile shaders with. Mesa's takes some 6 MB, in which a frame has room.
class ORLOGL_API GLShaderCompiler {
public:
    GLShaderCompiler() = delete;

    /// Lets the driver put it away until the next shader is compiled, which then takes longer: call it once
    /// all that a scene needs are compiled. Needs the table and a current context. False where OpenGL has no
    /// such call, which came with 4.1 and GL_ARB_ES2_compatibility: then nothing is changed.
    static bool release();
};
