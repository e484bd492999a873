#include "OpenGL.h"

#include <dlfcn.h>

#include <initializer_list>

namespace orlocg {

namespace {

using AskByName = void (*(*)(const GLubyte*))();

AskByName findAsker() {
    // What the host has opened goes first.
    void* found = dlsym(RTLD_DEFAULT, "glXGetProcAddressARB");
    for (const char* name : {"libGL.so", "libGL.so.1"})
        if (!found)
            if (void* library = dlopen(name, RTLD_LAZY | RTLD_GLOBAL))
                found = dlsym(library, "glXGetProcAddressARB");
    return reinterpret_cast<AskByName>(found);
}

class Finder {
public:
    template <typename Function>
    void operator()(Function& slot, const char* name) {
        slot = reinterpret_cast<Function>(findEntryPoint(name));
        fIsComplete = fIsComplete && slot;
    }
    bool isComplete() const { return fIsComplete; }

private:
    bool fIsComplete = true;
};

void findUniforms(GL& gl, Finder& find) {
    constexpr const char* kVectors[] = {"glProgramUniform1fv", "glProgramUniform2fv", "glProgramUniform3fv",
                                        "glProgramUniform4fv"};
    constexpr const char* kInts[] = {"glProgramUniform1iv", "glProgramUniform2iv", "glProgramUniform3iv",
                                     "glProgramUniform4iv"};
    for (int i = 0; i < 4; ++i) {
        find(gl.uniformVectors[i], kVectors[i]);
        find(gl.uniformInts[i], kInts[i]);
    }
    constexpr const char* kMatrices[3][3] = {
        {"glProgramUniformMatrix2fv", "glProgramUniformMatrix2x3fv", "glProgramUniformMatrix2x4fv"},
        {"glProgramUniformMatrix3x2fv", "glProgramUniformMatrix3fv", "glProgramUniformMatrix3x4fv"},
        {"glProgramUniformMatrix4x2fv", "glProgramUniformMatrix4x3fv", "glProgramUniformMatrix4fv"}};
    for (int columns = 0; columns < 3; ++columns)
        for (int rows = 0; rows < 3; ++rows)
            find(gl.uniformMatrices[columns][rows], kMatrices[columns][rows]);
}

GL findAll() {
    GL gl{};
    Finder find;
    find(gl.currentGlxContext, "glXGetCurrentContext");
    find(gl.getString, "glGetString");
    find(gl.getError, "glGetError");
    find(gl.getFloatv, "glGetFloatv");
    find(gl.bindTexture, "glBindTexture");
    find(gl.color4f, "glColor4f");
    find(gl.normal3f, "glNormal3f");
    find(gl.vertexPointer, "glVertexPointer");
    find(gl.normalPointer, "glNormalPointer");
    find(gl.colorPointer, "glColorPointer");
    find(gl.texCoordPointer, "glTexCoordPointer");
    find(gl.enableClientState, "glEnableClientState");
    find(gl.disableClientState, "glDisableClientState");
    find(gl.activeTexture, "glActiveTexture");
    find(gl.clientActiveTexture, "glClientActiveTexture");
    find(gl.multiTexCoord4f, "glMultiTexCoord4f");
    find(gl.secondaryColor3f, "glSecondaryColor3f");
    find(gl.secondaryColorPointer, "glSecondaryColorPointer");
    find(gl.fogCoordf, "glFogCoordf");
    find(gl.fogCoordPointer, "glFogCoordPointer");
    find(gl.vertexAttrib4f, "glVertexAttrib4f");
    find(gl.vertexAttribPointer, "glVertexAttribPointer");
    find(gl.enableVertexAttribArray, "glEnableVertexAttribArray");
    find(gl.disableVertexAttribArray, "glDisableVertexAttribArray");
    find(gl.createShader, "glCreateShader");
    find(gl.shaderSource, "glShaderSource");
    find(gl.compileShader, "glCompileShader");
    find(gl.deleteShader, "glDeleteShader");
    find(gl.createProgram, "glCreateProgram");
    find(gl.programParameteri, "glProgramParameteri");
    find(gl.bindAttribLocation, "glBindAttribLocation");
    find(gl.attachShader, "glAttachShader");
    find(gl.linkProgram, "glLinkProgram");
    find(gl.getProgramiv, "glGetProgramiv");
    find(gl.getProgramInfoLog, "glGetProgramInfoLog");
    find(gl.getShaderInfoLog, "glGetShaderInfoLog");
    find(gl.deleteProgram, "glDeleteProgram");
    find(gl.useProgram, "glUseProgram");
    find(gl.getUniformLocation, "glGetUniformLocation");
    find(gl.genProgramPipelines, "glGenProgramPipelines");
    find(gl.isProgramPipeline, "glIsProgramPipeline");
    find(gl.bindProgramPipeline, "glBindProgramPipeline");
    find(gl.useProgramStages, "glUseProgramStages");
    find(gl.genBuffers, "glGenBuffers");
    find(gl.deleteBuffers, "glDeleteBuffers");
    find(gl.bindBuffer, "glBindBuffer");
    find(gl.bufferData, "glBufferData");
    find(gl.getBufferSubData, "glGetBufferSubData");
    findUniforms(gl, find);
    gl.isComplete = find.isComplete();
    return gl;
}

} // namespace

EntryPoint findEntryPoint(const char* name) {
    static const AskByName ask = findAsker();
    return ask ? ask(reinterpret_cast<const GLubyte*>(name)) : nullptr;
}

/// Where the process has EGL already: a host that draws without an X server opened it for its context.
void* GL::currentEglContext() {
    using Current = void* (*)();
    static Current current = nullptr;
    if (!current)
        if (void* library = dlopen("libEGL.so.1", RTLD_LAZY | RTLD_NOLOAD))
            current = reinterpret_cast<Current>(dlsym(library, "eglGetCurrentContext"));
    return current ? current() : nullptr;
}

const GL* openGL() {
    static const GL theGL = findAll();
    return theGL.isComplete ? &theGL : nullptr;
}

} // namespace orlocg
