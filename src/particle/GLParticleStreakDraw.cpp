#include "particle/GLParticleStreakDraw.h"

#include "gl/GLFunctionTable.h"
#include "particle/ParticleWalk.h"

#include <algorithm>

namespace {

/// What all streaks of a draw share.
struct StreakLook {
    float current[4]; ///< the current colour of before the draw
    float tailAlpha;  ///< of tails that keep it
    float tailFade;
    float tailTime; ///< seconds
};

/// Oddity: not faded: only the tail is.
template <Coloring kColoring>
void sendHeadColor(const GLFunctionTable& gl, const float* color, const StreakLook& look) {
    if constexpr (kColoring.isIgnored)
        gl.glColor4f(look.current[0], look.current[1], look.current[2], look.current[3] * color[3]);
    else if constexpr (kColoring.isLit)
        gl.glMaterialfv(GL_FRONT, GL_DIFFUSE, color);
    else
        gl.glColor4fv(color);
}

template <Coloring kColoring>
void sendTailColor(const GLFunctionTable& gl, const float* color, const StreakLook& look) {
    if constexpr (kColoring.isIgnored) {
        gl.glColor4f(look.current[0], look.current[1], look.current[2], look.tailAlpha * color[3]);
    } else if constexpr (kColoring.isLit) {
        const float faded[4] = {color[0], color[1], color[2], color[3] * look.tailFade};
        gl.glMaterialfv(GL_FRONT, GL_DIFFUSE, faded);
    } else {
        gl.glColor4f(color[0], color[1], color[2], color[3] * look.tailFade);
    }
}

/// A function to itself for each way to draw, all it needs inlined: together they are more than a compiler
/// inlines by its own choice.
template <Coloring kColoring, bool kCopies>
[[gnu::noinline, gnu::flatten]] void sendStreaks(GLParticleStreakDraw& drawer, const ParticleWalk walk,
                                                 const StreakLook look) {
    const GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    const koColor::Color object = drawer.fParticleData->fObjectColor;
    const PerParticle colors = PerParticle::of(walk.colors, 4, object.data());
    const PerParticle velocities = PerParticle::of(walk.velocities, 3, kAtRest);
    const ParticleNormals normals(drawer);
    RandomOffsets offsets(drawer, walk);
    walk.forEach([](uint32_t, const float*) {},
                 [&](uint32_t index, uint32_t particle, const float* p) {
                     const float* const color = colors[particle];
                     const float* const v = velocities[particle];
                     const auto tail = [&](int i) { return p[i] - look.tailTime * v[i]; };
                     if constexpr (kColoring.isLit)
                         normals.send(gl, v, p);
                     if constexpr (kCopies) {
                         const float end[3] = {tail(0), tail(1), tail(2)};
                         offsets.forEach(index, [&](float x, float y, float z) {
                             sendHeadColor<kColoring>(gl, color, look);
                             gl.glVertex3f(p[0] + x, p[1] + y, p[2] + z);
                             sendTailColor<kColoring>(gl, color, look);
                             gl.glVertex3f(end[0] + x, end[1] + y, end[2] + z);
                         });
                     } else { // the tail's place last: nothing to keep across the calls
                         sendHeadColor<kColoring>(gl, color, look);
                         gl.glVertex3fv(p);
                         sendTailColor<kColoring>(gl, color, look);
                         gl.glVertex3f(tail(0), tail(1), tail(2));
                     }
                 });
    offsets.keepCursor(drawer);
}

} // namespace

void GLParticleStreakDraw::draw(IHWTexPlacement*, std::vector<IHWTexture*>*) {
    if (!fParticleData)
        return;
    const GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    const ParticleWalk walk = ParticleWalk::of(*this);
    StreakLook look{};
    gl.glGetFloatv(GL_CURRENT_COLOR, look.current);
    look.tailAlpha = (fNoTailFade ? 1.0F : fTailFade) * look.current[3];
    look.tailFade = fTailFade;
    look.tailTime = 0.0333F * fTailSize;     // tails are in frames, velocities per second
    fLineWidth = std::max(1.0F, fLineWidth); // in this order also for a width that is no number
    gl.glLineWidth(fLineWidth);
    gl.glShadeModel(GL_SMOOTH);
    gl.glBegin(GL_LINES);
    withConstants(*this, [&](auto coloring, auto copies) {
        sendStreaks<coloring.value, copies.value>(*this, walk, look);
    });
    gl.glEnd();
}
