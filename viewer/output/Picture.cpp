#include "output/Picture.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace orloview {

namespace {

float encode(float linear) {
    return linear <= 0.0031308F ? 12.92F * linear : 1.055F * std::pow(linear, 1.0F / 2.4F) - 0.055F;
}

std::uint8_t toByte(float value) {
    return static_cast<std::uint8_t>(std::lround(value * 255.0F));
}

float clampToUnit(float value) {
    // The comparison, unlike std::clamp, turns a NaN into 0.
    return value > 0.0F ? std::min(value, 1.0F) : 0.0F;
}

} // namespace

std::uint8_t encodeSrgb(float linear) {
    return toByte(encode(clampToUnit(linear)));
}

float decodeSrgb(float encoded) {
    return encoded <= 0.04045F ? encoded / 12.92F : std::pow((encoded + 0.055F) / 1.055F, 2.4F);
}

Picture developPicture(const float* linear, int width, int height, int factor, bool opaque) {
    Picture picture{width, height, std::vector<std::uint8_t>(static_cast<size_t>(width) * height * 4)};
    const size_t stride = static_cast<size_t>(width) * factor * 4;
    const float weight = 1.0F / static_cast<float>(factor * factor);
    for (int y = 0; y < height; ++y) {
        std::uint8_t* out = picture.rgba.data() + static_cast<size_t>(height - 1 - y) * width * 4;
        for (int x = 0; x < width; ++x, out += 4) {
            std::array<float, 4> sum{};
            for (int dy = 0; dy < factor; ++dy) {
                const float* in = linear + (static_cast<size_t>(y) * factor + dy) * stride +
                                  static_cast<size_t>(x) * factor * 4;
                for (int dx = 0; dx < factor; ++dx, in += 4) {
                    const float alpha = opaque ? 1.0F : clampToUnit(in[3]);
                    for (size_t channel = 0; channel < 3; ++channel)
                        sum[channel] += clampToUnit(in[channel]);
                    sum[3] += alpha;
                }
            }
            const float perAlpha = sum[3] > 0.0F ? 1.0F / sum[3] : 0.0F;
            for (size_t channel = 0; channel < 3; ++channel)
                out[channel] = encodeSrgb(sum[channel] * perAlpha);
            out[3] = toByte(sum[3] * weight);
        }
    }
    return picture;
}

} // namespace orloview
