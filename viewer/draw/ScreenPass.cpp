#include "draw/ScreenPass.h"

#include "draw/GL.h"

namespace orloview {

namespace {

constexpr const char* kVertexSource = R"(
void main() {
    gl_Position = gl_Vertex;
}
)";

void attachShader(GLhandleARB program, GLenum kind, const char* source) {
    const GLhandleARB shader = gl().glCreateShaderObjectARB(kind);
    gl().glShaderSourceARB(shader, 1, &source, nullptr);
    gl().glCompileShaderARB(shader);
    gl().glAttachObjectARB(program, shader);
    gl().glDeleteObjectARB(shader); // the program keeps it
}

} // namespace

ScreenPass::ScreenPass(const std::string& fragmentSource) {
    fGroup.addStream(GeometryData::kPosition, 2, {-1, -1, 1, -1, 1, 1, -1, 1});
    fGroup.addIndexRecord(GeometryDataIndex::kQuads, {0, 1, 2, 3});
    fRouting.fSlots[GLRouting::kPosition] = {GLRouting::kFromGeometry, {}, GeometryData::kPosition, 0};
    if (!gl().usable(kCapShaderObjects))
        return;
    fProgram = gl().glCreateProgramObjectARB();
    attachShader(fProgram, GL_VERTEX_SHADER_ARB, kVertexSource);
    attachShader(fProgram, GL_FRAGMENT_SHADER_ARB, fragmentSource.c_str());
    gl().glLinkProgramARB(fProgram);
    GLint linked = 0;
    gl().glGetObjectParameterivARB(fProgram, GL_OBJECT_LINK_STATUS_ARB, &linked);
    if (linked)
        return;
    gl().glDeleteObjectARB(fProgram);
    fProgram = 0;
}

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
    fRouting.drawGroup(&fGroup, nullptr, nullptr, nullptr, 0, false);
    gl().glUseProgramObjectARB(0);
}

} // namespace orloview
