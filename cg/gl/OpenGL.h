#pragma once

#include <GL/gl.h>

#include <GL/glext.h>

namespace orlocg {

/// The entry points of OpenGL that the binding calls, found once, when the first is needed.
struct GL {
    decltype(&::glGetString) getString;
    decltype(&::glGetError) getError;
    decltype(&::glGetFloatv) getFloatv;
    decltype(&::glBindTexture) bindTexture;
    decltype(&::glColor4f) color4f;
    decltype(&::glNormal3f) normal3f;
    decltype(&::glVertexPointer) vertexPointer;
    decltype(&::glNormalPointer) normalPointer;
    decltype(&::glColorPointer) colorPointer;
    decltype(&::glTexCoordPointer) texCoordPointer;
    decltype(&::glEnableClientState) enableClientState;
    decltype(&::glDisableClientState) disableClientState;
    PFNGLACTIVETEXTUREPROC activeTexture;
    PFNGLCLIENTACTIVETEXTUREARBPROC clientActiveTexture;
    PFNGLMULTITEXCOORD4FARBPROC multiTexCoord4f;
    PFNGLSECONDARYCOLOR3FPROC secondaryColor3f;
    PFNGLSECONDARYCOLORPOINTERPROC secondaryColorPointer;
    PFNGLFOGCOORDFPROC fogCoordf;
    PFNGLFOGCOORDPOINTERPROC fogCoordPointer;
    PFNGLVERTEXATTRIB4FPROC vertexAttrib4f;
    PFNGLVERTEXATTRIBPOINTERPROC vertexAttribPointer;
    PFNGLENABLEVERTEXATTRIBARRAYPROC enableVertexAttribArray;
    PFNGLDISABLEVERTEXATTRIBARRAYPROC disableVertexAttribArray;
    PFNGLCREATESHADERPROC createShader;
    PFNGLSHADERSOURCEPROC shaderSource;
    PFNGLCOMPILESHADERPROC compileShader;
    PFNGLDELETESHADERPROC deleteShader;
    PFNGLCREATEPROGRAMPROC createProgram;
    PFNGLPROGRAMPARAMETERIPROC programParameteri;
    PFNGLBINDATTRIBLOCATIONPROC bindAttribLocation;
    PFNGLATTACHSHADERPROC attachShader;
    PFNGLLINKPROGRAMPROC linkProgram;
    PFNGLGETPROGRAMIVPROC getProgramiv;
    PFNGLGETPROGRAMINFOLOGPROC getProgramInfoLog;
    PFNGLGETSHADERINFOLOGPROC getShaderInfoLog;
    PFNGLDELETEPROGRAMPROC deleteProgram;
    PFNGLUSEPROGRAMPROC useProgram;
    PFNGLGETUNIFORMLOCATIONPROC getUniformLocation;
    PFNGLGENPROGRAMPIPELINESPROC genProgramPipelines;
    PFNGLISPROGRAMPIPELINEPROC isProgramPipeline;
    PFNGLBINDPROGRAMPIPELINEPROC bindProgramPipeline;
    PFNGLUSEPROGRAMSTAGESPROC useProgramStages;
    PFNGLGENBUFFERSPROC genBuffers;
    PFNGLDELETEBUFFERSPROC deleteBuffers;
    PFNGLBINDBUFFERPROC bindBuffer;
    PFNGLBUFFERDATAPROC bufferData;
    PFNGLGETBUFFERSUBDATAPROC getBufferSubData;
    PFNGLPROGRAMUNIFORM1FVPROC uniformVectors[4]; ///< of 1 to 4 floats
    PFNGLPROGRAMUNIFORM1IVPROC uniformInts[4];
    PFNGLPROGRAMUNIFORMMATRIX4FVPROC uniformMatrices[3][3]; ///< by columns and rows, from 2

    /// The current context, of GLX or else of EGL; null where there is none.
    void* currentContext() const {
        void* const context = currentGlxContext();
        return context ? context : currentEglContext();
    }
    void* (*currentGlxContext)();
    static void* currentEglContext();

    bool isComplete = false;
};

/// An entry point by its name; null: there is none.
using EntryPoint = void (*)();
EntryPoint findEntryPoint(const char* name);

/// Whether there is an OpenGL with all of that; a current context is needed to ask first.
const GL* openGL();

} // namespace orlocg
