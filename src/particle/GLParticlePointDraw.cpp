#include "particle/GLParticlePointDraw.h"

#include "gl/GLFunctionTable.h"
#include "particle/ParticleWalk.h"

namespace {

void setAttenuation(GLFunctionTable& gl, const float* coefficients, float pointSize) {
    if (!gl.usable(kCapPointParameters) || !(coefficients[0] + coefficients[1] + coefficients[2] > 0.0F))
        return;
    gl.glPointParameterf(GL_POINT_SIZE_MIN, 0.1F);
    gl.glPointParameterf(GL_POINT_SIZE_MAX, pointSize);
    gl.glPointParameterfv(GL_POINT_DISTANCE_ATTENUATION, coefficients);
}

/// `current` is the current colour of before the draw; where colours are ignored, only its alpha changes.
template <Coloring kColoring>
void sendColor(const GLFunctionTable& gl, const float* color, float* current) {
    if constexpr (kColoring.isIgnored) {
        current[3] = color[3];
        gl.glColor4fv(current);
    } else if constexpr (kColoring.isLit) {
        gl.glMaterialfv(GL_FRONT, GL_DIFFUSE, color);
    } else {
        gl.glColor4fv(color);
    }
}

/// A function to itself for each way to draw, all it needs inlined: together they are more than a compiler
/// inlines by its own choice.
template <Coloring kColoring, bool kCopies>
[[gnu::noinline, gnu::flatten]] void sendPoints(GLParticlePointDraw& drawer, const ParticleWalk walk,
                                                float* current) {
    const GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    koColor::Color object = drawer.fParticleData->fObjectColor;
    if (kColoring.isIgnored)
        object[3] = drawer.fParticleData->fOpacity;
    sendColor<kColoring>(gl, object.data(), current);

    const PerParticle velocities = PerParticle::of(walk.velocities, 3, kAtRest);
    const ParticleNormals normals(drawer);
    RandomOffsets offsets(drawer, walk);
    walk.forEach(
        [&](uint32_t particle, const float* position) {
            if (walk.colors)
                sendColor<kColoring>(gl, walk.colors + size_t{particle} * 4, current);
            normals.sendFor<kColoring>(gl, velocities[particle], position);
        },
        [&](uint32_t index, uint32_t, const float* p) {
            if constexpr (kCopies)
                offsets.forEach(
                    index, [&](float x, float y, float z) { gl.glVertex3f(p[0] + x, p[1] + y, p[2] + z); });
            else
                gl.glVertex3fv(p);
        });
    offsets.keepCursor(drawer);
}

} // namespace

void GLParticlePointDraw::draw(IHWTexPlacement*, std::vector<IHWTexture*>*) {
    if (!fParticleData)
        return;
    GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    setAttenuation(gl, fDistanceAttenuation, fParticleData->fPointSize);
    const ParticleWalk walk = ParticleWalk::of(*this);
    float current[4] = {};
    gl.glGetFloatv(GL_CURRENT_COLOR, current);
    gl.glPointSize(fParticleData->fPointSize);
    gl.glBegin(GL_POINTS);
    withConstants(*this, [&](auto coloring, auto copies) {
        sendPoints<coloring.value, copies.value>(*this, walk, current);
    });
    gl.glEnd();
    gl.glColor4f(1.0F, 1.0F, 1.0F, 1.0F);
}

void GLParticlePointDraw::setCurrentNormal(float* velocity, float* position) {
    ParticleNormals(*this).send(*GLFunctionTable::fpGlobalFunctionTable, velocity, position);
}
