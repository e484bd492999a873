#include "draw/ScreenPass.h"

#include "draw/GL.h"
#include "draw/LinkedProgram.h"

namespace orloview {

namespace {

constexpr const char* kVertexSource = R"(
void main() {
    gl_Position = gl_Vertex;
}
)";

} // namespace

ScreenPass::ScreenPass(const std::string& fragmentSource)
    : fProgram(linkedProgram(kVertexSource, fragmentSource.c_str())) {}

ScreenPass::~ScreenPass() {
    if (fProgram != 0)
        gl().glDeleteObjectARB(fProgram);
}

GLint ScreenPass::place(const char* uniform) const {
    return gl().glGetUniformLocationARB(fProgram, uniform);
}

void ScreenPass::begin() const {
    gl().glUseProgramObjectARB(fProgram);
}

void ScreenPass::run() {
    fQuad.draw();
    gl().glUseProgramObjectARB(0);
}

} // namespace orloview
