#include "particle/GLParticleDrawBase.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

// The table of GLParticleDrawBase and its generators. Every picture of every host that shows multi-points
// depends on each bit of it: the order of the operations, and what is rounded when, are part of the result.

float GLParticleDrawBase::sfRandom3[kRandomCount][3];
bool GLParticleDrawBase::sfInitRandom3 = false;

namespace {

/// The state of drand48, 16 bits to a word, low to high.
uint32_t sharedState[3] = {0x330E, 0xABCD, 0x1234};

unsigned short tableState[3] = {1, 0, 1};

float cachedTriple[3];
float givenTriple[3];
bool tripleIsCached = false;

} // namespace

float GLParticleDrawBase::drand48() {
    const uint64_t state =
        sharedState[0] | (uint64_t{sharedState[1]} << 16U) | (uint64_t{sharedState[2]} << 32U);
    const uint64_t next = 0x5DEECE66DU * state + 0xBU;
    sharedState[0] = next & 0xFFFFU;
    sharedState[1] = (next >> 16U) & 0xFFFFU;
    sharedState[2] = (next >> 32U) & 0xFFFFU;

    constexpr float kWord = 0x1p-16F;
    float value = static_cast<float>(sharedState[0]) * kWord;
    value = (value + static_cast<float>(sharedState[1])) * kWord;
    return (value + static_cast<float>(sharedState[2])) * kWord;
}

float GLParticleDrawBase::erand48(unsigned short* state) {
    uint32_t kept[3];
    std::copy_n(sharedState, 3, kept);
    std::copy_n(state, 3, sharedState);
    const float value = drand48();
    std::transform(sharedState, sharedState + 3, state,
                   [](uint32_t word) { return static_cast<unsigned short>(word); });
    std::copy_n(kept, 3, sharedState);
    return value;
}

const float* GLParticleDrawBase::generateRandom3() {
    if (tripleIsCached) {
        tripleIsCached = false;
        return cachedTriple;
    }
    // The polar method, in six dimensions instead of two: near a normal distribution, not one.
    float r[6];
    float sum = 0.0F;
    do {
        sum = 0.0F;
        for (float& value : r) {
            value = 2.0F * erand48(tableState) - 1.0F;
            sum += value * value;
        }
    } while (!(sum < 1.0F));
    const auto wide = static_cast<double>(sum);
    const auto quotient = static_cast<float>(std::log(wide) / wide);
    const float factor = std::sqrt(-2.0F * quotient);
    for (size_t i = 0; i < 3; ++i) {
        cachedTriple[i] = r[2 * i] * factor;
        givenTriple[i] = r[2 * i + 1] * factor;
    }
    tripleIsCached = true;
    return givenTriple;
}

void GLParticleDrawBase::initRandom3() {
    if (sfInitRandom3)
        return;
    for (auto& triple : sfRandom3)
        std::copy_n(generateRandom3(), 3, triple);
    sfInitRandom3 = true;
}
