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

ScreenPass::ScreenPass(const std::string& fragmentSource) {
    fGroup.addStream(GeometryData::kPosition, 2, {-1, -1, 1, -1, 1, 1, -1, 1});
    fGroup.addIndexRecord(GeometryDataIndex::kQuads, {0, 1, 2, 3});
    fRouting.fSlots[GLRouting::kPosition] = {GLRouting::kFromGeometry, {}, GeometryData::kPosition, 0};
    fProgram = linkedProgram(kVertexSource, fragmentSource.c_str());
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
