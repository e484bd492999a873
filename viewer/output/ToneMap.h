#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

namespace orloview {

/// What becomes of light that is brighter than a picture can show.
enum class ToneMap : std::uint8_t {
    Cut, ///< cut off at 1, channel by channel
    Soft ///< the bright end is drawn together and paled; below 0.8 nothing changes
};

/// Where the soft curve begins.
constexpr float kToneMapStart = 0.8F;

/// The soft curve for linear colours from 0 on; what is below 0 and what is no number becomes 0.
///
/// From 0.8 on the brightest channel p becomes 1 - 0.04 / (p - 0.6), which goes on with the same slope and
/// reaches 1 at infinity. The others keep their ratio to it, mixed with white by 1 - 1 / (1 + 0.15 x loss).
inline void toneMapSoftly(std::array<float, 3>& color) {
    constexpr float kPaling = 0.15F;
    constexpr float kBrightest = 65504.0F; // of a half float; keeps infinity out
    for (float& channel : color)
        channel = channel > 0.0F ? std::min(channel, kBrightest) : 0.0F;
    const float peak = std::max({color[0], color[1], color[2]});
    if (peak <= kToneMapStart)
        return;
    constexpr float kRoom = 1.0F - kToneMapStart;
    const float mapped = 1.0F - kRoom * kRoom / (peak - kToneMapStart + kRoom);
    const float white = 1.0F - 1.0F / (1.0F + kPaling * (peak - mapped));
    for (float& channel : color)
        channel = std::min(channel * (mapped / peak) * (1.0F - white) + mapped * white, 1.0F);
}

} // namespace orloview
