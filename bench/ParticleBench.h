#pragma once

#include "GroupBench.h"

#include "particle/GLParticlePointDraw.h"
#include "particle/GLParticleSpriteDraw.h"
#include "particle/GLParticleStreakDraw.h"

#include <array>
#include <utility>

// Particles against the loop that a renderer of its own would write for just this case, over the same arrays.

constexpr int kCopies = 4;

/// What a draw is told at run time, and the way through the random table.
struct ByHand {
    const GLFunctionTable& gl;
    float radius;
    float tailTime;
    float tailFade;
    float camera[3];
    const float (*entry)[3] = GLParticleDrawBase::sfRandom3;

    std::array<float, 3> nextOffset() {
        const float* triple = *entry;
        if (++entry == GLParticleDrawBase::sfRandom3 + GLParticleDrawBase::kRandomCount)
            entry = GLParticleDrawBase::sfRandom3;
        return {triple[0] * radius, triple[1] * radius, triple[2] * radius};
    }
};

struct ParticleBench {
    static constexpr uint32_t kCount = 10'000;

    ParticleBench() : fParticles(new ParticleData) {
        fParticles->ref();
        std::vector<float> numbers(size_t{kCount} * 4);
        for (size_t i = 0; i < numbers.size(); ++i)
            numbers[i] = 0.25F + static_cast<float>(i % 101) / 128.0F;
        fParticles->setPositions({numbers.begin(), numbers.begin() + kCount * 3});
        fParticles->setVelocities({numbers.begin(), numbers.begin() + kCount * 3});
        fParticles->setColors(numbers);
        fParticles->addData("twist", {numbers.begin(), numbers.begin() + kCount});
        fParticles->addData("scaleX", {numbers.begin(), numbers.begin() + kCount});
    }
    ~ParticleBench() { fParticles->unref(); }

    ParticleBench(const ParticleBench&) = delete;
    ParticleBench& operator=(const ParticleBench&) = delete;

    template <typename OneByHand>
    void compare(const std::string& name, GLParticleDrawBase& drawer, GLenum primitive,
                 OneByHand&& oneByHand) const {
        measure(name + "/library", [&] { drawer.draw(nullptr, nullptr); });
        const float* const positions = fParticles->positions();
        const float* const velocities = fParticles->velocities();
        const float* const colors = fParticles->colors();
        volatile float told[] = {1.0F, 0.0333F * 7.0F, 0.5F, 0.0F};
        measure(name + "/by hand", [&, positions, velocities, colors, primitive] {
            ByHand hand{table(), told[0], told[1], told[2], {told[3], told[3], told[3]}};
            hand.gl.fglBegin(primitive);
            const float* p = positions;
            const float* v = velocities;
            const float* c = colors;
            for (const float* const end = p + 3 * kCount; p != end; p += 3, v += 3, c += 4)
                oneByHand(hand, p, v, c);
            hand.gl.fglEnd();
        });
    }

    ParticleData* fParticles;
};

inline void benchPoints(const ParticleBench& bench) {
    GLParticlePointDraw drawer(*bench.fParticles);
    bench.compare("10,000 points", drawer, GL_POINTS,
                  [](ByHand& hand, const float* p, const float*, const float* c) {
                      hand.gl.fglColor4fv(c);
                      hand.gl.fglVertex3fv(p);
                  });
    drawer.fMultiCount = kCopies;
    bench.compare("10,000 points of 4 copies", drawer, GL_POINTS,
                  [](ByHand& hand, const float* p, const float*, const float* c) {
                      hand.gl.fglColor4fv(c);
                      for (int copy = 0; copy < kCopies; ++copy) {
                          const auto [x, y, z] = hand.nextOffset();
                          hand.gl.fglVertex3f(p[0] + x, p[1] + y, p[2] + z);
                      }
                  });
    drawer.fMultiCount = 0;
    drawer.fLit = true;
    bench.compare("10,000 lit points", drawer, GL_POINTS,
                  [](ByHand& hand, const float* p, const float*, const float* c) {
                      hand.gl.fglMaterialfv(GL_FRONT, GL_DIFFUSE, c);
                      koLinear::VectorFlt normal(hand.camera[0] - p[0], hand.camera[1] - p[1],
                                                 hand.camera[2] - p[2]);
                      if (normal.normalize())
                          hand.gl.fglNormal3f(normal[0], normal[1], normal[2]);
                      hand.gl.fglVertex3fv(p);
                  });
}

inline void benchStreaks(const ParticleBench& bench) {
    GLParticleStreakDraw drawer(*bench.fParticles);
    drawer.fTailFade = 0.5F;
    bench.compare("10,000 streaks", drawer, GL_LINES,
                  [](ByHand& hand, const float* p, const float* v, const float* c) {
                      hand.gl.fglColor4fv(c);
                      hand.gl.fglVertex3fv(p);
                      hand.gl.fglColor4f(c[0], c[1], c[2], c[3] * hand.tailFade);
                      hand.gl.fglVertex3f(p[0] - hand.tailTime * v[0], p[1] - hand.tailTime * v[1],
                                          p[2] - hand.tailTime * v[2]);
                  });
    drawer.fMultiCount = kCopies;
    bench.compare("10,000 streaks of 4 copies", drawer, GL_LINES,
                  [](ByHand& hand, const float* p, const float* v, const float* c) {
                      const float tail[3] = {p[0] - hand.tailTime * v[0], p[1] - hand.tailTime * v[1],
                                             p[2] - hand.tailTime * v[2]};
                      for (int copy = 0; copy < kCopies; ++copy) {
                          const auto [x, y, z] = hand.nextOffset();
                          hand.gl.fglColor4fv(c);
                          hand.gl.fglVertex3f(p[0] + x, p[1] + y, p[2] + z);
                          hand.gl.fglColor4f(c[0], c[1], c[2], c[3] * hand.tailFade);
                          hand.gl.fglVertex3f(tail[0] + x, tail[1] + y, tail[2] + z);
                      }
                  });
}

/// By hand: the corners by the host's matrices, and, as the floor, a square whose corners are known.
inline void benchSprites(const ParticleBench& bench) {
    const float* twist = bench.fParticles->getData(0)->fValues.data();
    const float* scaleX = bench.fParticles->getData(1)->fValues.data();
    const float* const first = bench.fParticles->positions();
    const auto byMatrices = [&](ByHand& hand, const float* p, const float*, const float* c) {
        const ptrdiff_t i = (p - first) / 3;
        const koLinear::VectorFlt toCamera(hand.camera[0] - p[0], hand.camera[1] - p[1],
                                           hand.camera[2] - p[2]);
        koLinear::VectorFlt right = cross(koLinear::VectorFlt(0.0F, 1.0F, 0.0F), toCamera);
        koLinear::VectorFlt up = cross(toCamera, right);
        right.normalize();
        up.normalize();
        koLinear::AffineMatrix matrix(right[0], right[1], right[2], up[0], up[1], up[2], 0.0, 0.0, 1.0, p[0],
                                      p[1], p[2]);
        matrix.rotateZ(twist[i] * 3.141592653589793 / 180.0);
        matrix.scale(scaleX[i], 1.0, 1.0);
        hand.gl.fglColor4fv(c);
        hand.gl.fglBegin(GL_QUADS);
        for (const auto& [x, y] : {std::pair(-0.5, -0.5), {0.5, -0.5}, {0.5, 0.5}, {-0.5, 0.5}})
            hand.gl.fglVertex3dv(matrix.transform(koLinear::Point(x, y, 0.0)).data());
        hand.gl.fglEnd();
    };
    const auto knownSquare = [](ByHand& hand, const float*, const float*, const float* c) {
        static constexpr double kCorners[4][3] = {};
        hand.gl.fglColor4fv(c);
        hand.gl.fglBegin(GL_QUADS);
        for (const auto& corner : kCorners)
            hand.gl.fglVertex3dv(corner);
        hand.gl.fglEnd();
    };
    GLParticleSpriteDraw drawer(*bench.fParticles);
    drawer.fCameraPosition[2] = 10.0F;
    bench.compare("10,000 sprites, each twisted anew", drawer, GL_QUADS, byMatrices);
    bench.fParticles->addData("twist", std::vector<float>(ParticleBench::kCount, 30.0F));
    twist = bench.fParticles->getData(0)->fValues.data();
    bench.compare("10,000 sprites of one twist", drawer, GL_QUADS, byMatrices);
    bench.compare("10,000 sprites of known corners", drawer, GL_QUADS, knownSquare);
}

inline void benchParticles() {
    const ParticleBench bench;
    benchPoints(bench);
    benchStreaks(bench);
    benchSprites(bench);
}
