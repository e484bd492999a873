#pragma once

namespace koColor {

/// Red, green, blue and alpha, contiguous, as GL takes them. Opaque black unless told otherwise.
class Color {
public:
    constexpr Color() = default;

    /// Of its channels, linear, 1 being full.
    constexpr Color(float red, float green, float blue, float alpha = 1.0F)
        : fRgba{red, green, blue, alpha} {}

    constexpr float operator[](int channel) const { return fRgba[channel]; } ///< channel 0 to 3, not checked
    constexpr float& operator[](int channel) { return fRgba[channel]; }      ///< the same, to write

    /// The four floats.
    constexpr const float* data() const { return fRgba; }

private:
    float fRgba[4] = {0.0F, 0.0F, 0.0F, 1.0F};
};
static_assert(sizeof(Color) == 4 * sizeof(float));

} // namespace koColor
