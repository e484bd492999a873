#include "draw/LinkedProgram.h"

#include "draw/GL.h"

namespace orloview {

namespace {

void attachShader(GLhandleARB program, GLenum kind, const char* source) {
    const GLhandleARB shader = gl().glCreateShaderObjectARB(kind);
    gl().glShaderSourceARB(shader, 1, &source, nullptr);
    gl().glCompileShaderARB(shader);
    gl().glAttachObjectARB(program, shader);
    gl().glDeleteObjectARB(shader); // the program keeps it
}

} // namespace

GLhandleARB linkedProgram(const char* vertexSource, const char* fragmentSource) {
    if (!gl().usable(kCapShaderObjects))
        return 0;
    const GLhandleARB program = gl().glCreateProgramObjectARB();
    attachShader(program, GL_VERTEX_SHADER_ARB, vertexSource);
    attachShader(program, GL_FRAGMENT_SHADER_ARB, fragmentSource);
    gl().glLinkProgramARB(program);
    GLint linked = 0;
    gl().glGetObjectParameterivARB(program, GL_OBJECT_LINK_STATUS_ARB, &linked);
    if (linked)
        return program;
    gl().glDeleteObjectARB(program);
    return 0;
}

} // namespace orloview
