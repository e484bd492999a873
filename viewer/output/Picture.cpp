#include "output/Picture.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace orloview {

namespace {

/// The IEC 61966-2-1 curve.
float encode(float linear) {
    return linear <= 0.0031308F ? 12.92F * linear : 1.055F * std::pow(linear, 1.0F / 2.4F) - 0.055F;
}

float clampToUnit(float value) {
    // The comparison, unlike std::clamp, turns a NaN into 0.
    return value > 0.0F ? std::min(value, 1.0F) : 0.0F;
}

std::uint8_t toByte(float value) {
    // Never negative: cutting off is rounding here, and lround is a call.
    return static_cast<std::uint8_t>(value * 255.0F + 0.5F); // NOLINT(bugprone-incorrect-roundings)
}

/// The curve without a power per value: 0 to 1 is cut so finely that no piece holds more than two bytes, and
/// each piece knows its lower byte and where the upper one begins.
class CurveTable {
public:
    CurveTable() {
        for (size_t i = 0; i < kPieces; ++i) {
            const std::uint8_t byte = toByte(encode(static_cast<float>(i) / kPieces));
            fPieces[i] = {decodeSrgb((static_cast<float>(byte) + 0.5F) / 255.0F), byte};
        }
    }

    std::uint8_t byteOf(float unit) const {
        const Piece& piece = fPieces[static_cast<size_t>(unit * kPieces)];
        return static_cast<std::uint8_t>(piece.byte + (unit >= piece.upper ? 1 : 0));
    }

private:
    // The curve is steepest at 0, where it climbs 12.92 * 255 bytes.
    static constexpr size_t kPieces = 4096;

    struct Piece {
        float upper = 2.0F; ///< of the last one, for 1 itself: never reached
        std::uint8_t byte = 255;
    };
    std::array<Piece, kPieces + 1> fPieces;
};

/// A pixel's colour, multiplied by alpha, after the tone map.
std::array<float, 3> toneMapped(const float* rgb, float alpha) {
    const float perAlpha = alpha > 0.0F ? 1.0F / alpha : 1.0F;
    std::array<float, 3> color{rgb[0] * perAlpha, rgb[1] * perAlpha, rgb[2] * perAlpha};
    toneMapSoftly(color);
    for (float& channel : color)
        channel /= perAlpha;
    return color;
}

/// A pixel's colour as a picture shows it, multiplied by alpha.
std::array<float, 3> shown(const float* pixel, float alpha, ToneMap toneMap) {
    std::array<float, 3> color{pixel[0], pixel[1], pixel[2]};
    if (toneMap == ToneMap::Soft && pixel[3] == 1.0F) { // as nearly all are
        toneMapSoftly(color);
        return color;
    }
    for (float& channel : color)
        channel = clampToUnit(channel);
    if (toneMap == ToneMap::Cut)
        return color;
    const std::array<float, 3> mapped = toneMapped(pixel, alpha);
    const float plain = clampToUnit(pixel[3] - 1.0F);
    for (size_t channel = 0; channel < 3; ++channel)
        color[channel] = mapped[channel] + plain * (color[channel] - mapped[channel]);
    return color;
}

/// The sum of a block's pixels: colour and alpha.
std::array<float, 4> sumOf(const float* corner, size_t stride, int factor, const Development& development) {
    std::array<float, 4> sum{};
    for (int dy = 0; dy < factor; ++dy, corner += stride) {
        const float* in = corner;
        for (int dx = 0; dx < factor; ++dx, in += 4) {
            const float cover = clampToUnit(in[3]);
            const float below = 1.0F - cover;
            if (below > 0.0F) {
                for (size_t channel = 0; channel < 3; ++channel)
                    sum[channel] += below * development.background[channel];
            }
            sum[3] += development.opaque ? 1.0F : cover + below * development.background[3];
            if (in[0] == 0.0F && in[1] == 0.0F && in[2] == 0.0F)
                continue;
            const std::array<float, 3> color = shown(in, cover, development.toneMap);
            for (size_t channel = 0; channel < 3; ++channel)
                sum[channel] += color[channel];
        }
    }
    return sum;
}

} // namespace

std::uint8_t encodeSrgb(float linear) {
    static const CurveTable table;
    return table.byteOf(clampToUnit(linear));
}

float decodeSrgb(float encoded) {
    return encoded <= 0.04045F ? encoded / 12.92F : std::pow((encoded + 0.055F) / 1.055F, 2.4F);
}

Picture::Picture(int pictureWidth, int pictureHeight)
    : width(pictureWidth), height(pictureHeight),
      rgba(static_cast<size_t>(pictureWidth) * static_cast<size_t>(pictureHeight) * 4) {}

void developBlock(Picture& picture, const Block& block, const float* linear, int factor,
                  const Development& development) {
    const size_t stride = static_cast<size_t>(block.width) * factor * 4;
    const float weight = 1.0F / static_cast<float>(factor * factor);
    for (int y = block.y; y < block.y + block.height; ++y, linear += stride * factor) {
        const size_t row = static_cast<size_t>(picture.height - 1 - y) * picture.width;
        std::uint8_t* out = picture.rgba.data() + (row + block.x) * 4;
        const float* in = linear;
        for (int x = 0; x < block.width; ++x, out += 4, in += static_cast<ptrdiff_t>(4) * factor) {
            const std::array<float, 4> sum = sumOf(in, stride, factor, development);
            const float perAlpha = sum[3] > 0.0F ? 1.0F / sum[3] : 0.0F;
            for (size_t channel = 0; channel < 3; ++channel)
                out[channel] = encodeSrgb(sum[channel] * perAlpha);
            out[3] = toByte(sum[3] * weight);
        }
    }
}

void averageBlock(std::vector<float>& rgb, int width, const Block& block, const float* linear, int factor,
                  const std::array<float, 4>& background) {
    const size_t stride = static_cast<size_t>(block.width) * factor * 4;
    const float weight = 1.0F / static_cast<float>(factor * factor);
    for (int y = block.y; y < block.y + block.height; ++y, linear += stride * factor) {
        float* out = rgb.data() + (static_cast<size_t>(y) * width + block.x) * 3;
        for (int x = 0; x < block.width; ++x, out += 3) {
            for (int sample = 0; sample < factor * factor; ++sample) {
                const float* in = linear + stride * (sample / factor) +
                                  static_cast<ptrdiff_t>(4) * (x * factor + sample % factor);
                const float below = 1.0F - clampToUnit(in[3]);
                for (size_t channel = 0; channel < 3; ++channel)
                    out[channel] += (in[channel] + below * background[channel]) * weight;
            }
        }
    }
}

} // namespace orloview
