#pragma once

#include "gl/GLFunctionTable.h"
#include "particle/GLParticlePointDraw.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

// How the drawers go through their particles. What is asked once per draw is a template parameter or a local
// here: the loops hold nothing but GL calls and what their arguments take.

/// What is drawn, as plain pointers: the GL calls of a loop can't change them, so that they stay in
/// registers.
struct ParticleWalk {
    const ParticleData* data; ///< what the iterator walks
    const float* positions;
    const float* velocities; ///< null: none move
    const float* colors;     ///< null: the object's
    uint32_t particles;
    uint32_t samplesPerParticle;
    const uint32_t* filter; ///< null: everything
    uint32_t filterCount;

    /// Of a drawer that has data. The iterator says which data are walked, the drawer's data by which filter:
    /// one that an iterator brings along would outlive the one that was taken off the data.
    static ParticleWalk of(const GLParticleDrawBase& drawer) {
        const ParticleData& own = *drawer.fParticleData;
        const ParticleData& data = drawer.fIterator ? drawer.fIterator->data() : own;
        return {&data,
                data.positions(),
                data.velocities(),
                data.colors(),
                data.count(),
                data.samplesPerParticle(),
                own.isFiltered() ? own.fFilter.data() : nullptr,
                static_cast<uint32_t>(own.fFilter.size())};
    }

    /// Calls `onParticle(particle, position)` wherever another particle begins, with the place of its first
    /// sample, and `onSample(index, particle, position)` for each sample. The index is what offsets are taken
    /// by: of the particle, or of the sample where a filter picks them.
    template <typename OnParticle, typename OnSample>
    void forEach(OnParticle&& onParticle, OnSample&& onSample) const {
        if (filter)
            forEachFiltered(onParticle, onSample);
        else if (samplesPerParticle == 1)
            forEachParticle(onParticle, onSample);
        else
            forEachSample(onParticle, onSample);
    }

private:
    template <typename OnParticle, typename OnSample>
    void forEachFiltered(OnParticle& onParticle, OnSample& onSample) const {
        const uint32_t* const end = filter + filterCount;
        const uint32_t samples = particles * samplesPerParticle;
        const uint32_t stride = samplesPerParticle;
        for (const uint32_t* sample = filter; sample != end; ++sample) {
            if (*sample >= samples)
                continue;
            const uint32_t particle = *sample / stride;
            const float* position = positions + size_t{*sample} * 3;
            onParticle(particle, position);
            onSample(*sample, particle, position);
        }
    }

    template <typename OnParticle, typename OnSample>
    void forEachParticle(OnParticle& onParticle, OnSample& onSample) const {
        const float* position = positions;
        const uint32_t end = particles;
        for (uint32_t particle = 0; particle != end; ++particle, position += 3) {
            onParticle(particle, position);
            onSample(particle, particle, position);
        }
    }

    template <typename OnParticle, typename OnSample>
    void forEachSample(OnParticle& onParticle, OnSample& onSample) const {
        const float* position = positions;
        const uint32_t stride = samplesPerParticle;
        const uint32_t end = particles;
        for (uint32_t particle = 0; particle != end; ++particle) {
            onParticle(particle, position);
            for (uint32_t sample = 0; sample != stride; ++sample, position += 3)
                onSample(particle, particle, position);
        }
    }
};

/// Numbers of each particle, or the same for all: particle i finds them `i * stride` behind `values`.
struct PerParticle {
    const float* values;
    size_t stride;

    /// `own` may be null.
    static PerParticle of(const float* own, size_t components, const float* common) {
        return own ? PerParticle{own, components} : PerParticle{common, 0};
    }
    const float* operator[](uint32_t particle) const { return values + particle * stride; }
};

inline constexpr float kAtRest[3] = {};

/// What becomes of the particles' colours, and whether they are lit.
struct Coloring {
    bool isLit;          ///< normals are sent, and colours as diffuse materials
    bool isTowardCamera; ///< the normals' mode, the usual one
    bool isIgnored;      ///< the current colour stays, but for its alpha
};

template <bool kLit, bool kTowardCamera, bool kIgnored>
constexpr auto coloringOf(std::bool_constant<kLit>, std::bool_constant<kTowardCamera>,
                          std::bool_constant<kIgnored>) {
    return std::integral_constant<Coloring, Coloring{kLit, kTowardCamera, kIgnored}>();
}

/// Calls `draw` with what a draw is fixed to: two types with a `value`, a Coloring and whether there are
/// copies.
template <typename Draw>
void withConstants(const GLParticlePointDraw& drawer, Draw&& draw) {
    const auto either = [](bool condition, auto&& use) {
        condition ? use(std::true_type()) : use(std::false_type());
    };
    const bool isTowardCamera = drawer.fLit && drawer.fNormalMode == GLParticlePointDraw::kTowardCamera;
    either(drawer.fLit, [&](auto lit) {
        either(isTowardCamera, [&](auto toward) {
            either(drawer.fIgnoreParticleColors, [&](auto ignored) {
                either(drawer.fMultiCount > 0,
                       [&](auto multi) { draw(coloringOf(lit, toward, ignored), multi); });
            });
        });
    });
}

/// The entries of the random table for the copies of one sample, one behind the other.
class RandomOffsets {
public:
    RandomOffsets(const GLParticleDrawBase& drawer, const ParticleWalk& walk)
        : fCount(drawer.fMultiCount), fRadius(drawer.fMultiRadius),
          fBegin(static_cast<uint32_t>(drawer.fRandomBlock) * 64U + drawer.fSeed) {
        const uint64_t last = uint64_t{fBegin} + uint64_t{static_cast<uint32_t>(fCount)} * walk.particles *
                                                     walk.samplesPerParticle;
        if (last <= std::numeric_limits<int32_t>::max())
            fStep = 1;
    }

    /// Calls `use` with the offset of each copy.
    template <typename Use>
    void forEach(uint32_t index, Use&& use) {
        if (index != fNextIndex)
            fEntry = entryOf(cursorOf(index));
        for (int32_t copies = fCount; copies > 0; --copies) {
            const auto& triple = *fEntry;
            use(triple[0] * fRadius, triple[1] * fRadius, triple[2] * fRadius);
            if (++fEntry == entryOf(kEntries))
                fEntry = entryOf(0);
        }
        fNextIndex = index + fStep;
    }

    /// Tells the drawer where the drawing stands.
    void keepCursor(GLParticleDrawBase& drawer) const {
        if (fNextIndex == kNowhere)
            return;
        const auto last = static_cast<uint32_t>(fNextIndex - fStep);
        drawer.fRandomCursor = static_cast<int32_t>((int64_t{cursorOf(last)} + fCount) % kEntries);
    }

private:
    static constexpr int32_t kEntries = GLParticleDrawBase::kRandomCount;
    static constexpr uint64_t kNowhere = ~uint64_t{0};

    static const float (*entryOf(int32_t cursor))[3] {
        return GLParticleDrawBase::sfRandom3 + (cursor < 0 ? cursor + kEntries : cursor);
    }

    /// Where the copies of an index begin. The sum runs over 32 bits, and only the remainder takes it for
    /// signed: it may be below zero, and then counts from the end.
    int32_t cursorOf(uint32_t index) const {
        return static_cast<int32_t>(static_cast<uint32_t>(fCount) * index + fBegin) % kEntries;
    }

    int32_t fCount;
    float fRadius;
    uint32_t fBegin;
    const float (*fEntry)[3] = nullptr;

    /// The index whose copies begin where the last ones ended: the next, unless sums run over on the way.
    uint64_t fNextIndex = kNowhere;
    uint64_t fStep = uint64_t{1} << 32U;
};

/// The normals of lit points and streaks.
class ParticleNormals {
public:
    explicit ParticleNormals(const GLParticlePointDraw& drawer) : fMode(drawer.fNormalMode) {
        if (drawer.fAlignmentInfo)
            std::copy_n(drawer.fAlignmentInfo->fCameraPosition, 3, fCamera);
    }

    void sendTowardCamera(const GLFunctionTable& gl, const float* p) const {
        sendNormalized(gl, {fCamera[0] - p[0], fCamera[1] - p[1], fCamera[2] - p[2]});
    }

    void send(const GLFunctionTable& gl, const float* v, const float* position) const {
        if (fMode == GLParticlePointDraw::kTowardCamera)
            sendTowardCamera(gl, position);
        else if (fMode == GLParticlePointDraw::kAlongVelocity)
            sendNormalized(gl, {v[0], v[1], v[2]});
        else if (fMode == GLParticlePointDraw::kAgainstVelocity)
            sendNormalized(gl, {-v[0], -v[1], -v[2]});
    }

    /// The same, where the coloring knows the mode.
    template <Coloring kColoring>
    void sendFor(const GLFunctionTable& gl, const float* velocity, const float* position) const {
        if constexpr (kColoring.isTowardCamera)
            sendTowardCamera(gl, position);
        else if constexpr (kColoring.isLit)
            send(gl, velocity, position);
    }

private:
    static void sendNormalized(const GLFunctionTable& gl, koLinear::VectorFlt normal) {
        if (normal.normalize())
            gl.glNormal3f(normal[0], normal[1], normal[2]);
    }

    uint32_t fMode;
    float fCamera[3] = {}; ///< the origin where nobody said
};
