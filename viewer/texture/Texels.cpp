#include "texture/Texels.h"

#include "base/Halves.h"
#include "output/Picture.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace orloview {

namespace {

using ByteTable = std::array<float, 256>;

ByteTable linearValues() {
    ByteTable table;
    for (size_t byte = 0; byte < table.size(); ++byte)
        table[byte] = decodeSrgb(static_cast<float>(byte) / 255.0F);
    return table;
}

ByteTable shares() {
    ByteTable table;
    for (size_t byte = 0; byte < table.size(); ++byte)
        table[byte] = static_cast<float>(byte) / 255.0F;
    return table;
}

/// What bytes mean, by the encoding.
const std::array<ByteTable, 2> kValues = {linearValues(), shares()};

const ByteTable& valuesOf(Encoding encoding) {
    return kValues[static_cast<size_t>(encoding)];
}

/// Half floats of all bytes of a channel, multiplied by a factor.
std::array<std::uint16_t, 256> halvesOf(const ByteTable& values, float factor) {
    std::array<std::uint16_t, 256> halves;
    for (size_t byte = 0; byte < halves.size(); ++byte)
        halves[byte] = toHalf(values[byte] * factor);
    return halves;
}

float alphaOf(const std::uint8_t* pixel, int channels, AlphaUse use) {
    return channels == 4 && use != AlphaUse::Ignored ? static_cast<float>(pixel[3]) / 255.0F : 1.0F;
}

/// The common case, where each byte has its half float: no picture is reduced, no colour multiplied.
void convertBytes(const DecodedPicture& picture, Encoding encoding, AlphaUse use,
                  const std::array<float, 3>& factor, Texels& texels) {
    const ByteTable& values = valuesOf(encoding);
    const std::array tables{halvesOf(values, factor[0]), halvesOf(values, factor[1]),
                            halvesOf(values, factor[2])};
    const auto alphas = halvesOf(valuesOf(Encoding::Linear), 1.0F);
    const int channels = picture.channels();
    std::uint16_t* out = texels.halves.data();
    for (int y = 0; y < picture.height(); ++y) {
        const std::uint8_t* in = picture.row(y);
        for (int x = 0; x < picture.width(); ++x, in += channels, out += 4) {
            out[0] = tables[0][in[0]];
            out[1] = tables[1][in[1]];
            out[2] = tables[2][in[2]];
            out[3] = alphas[channels == 4 && use != AlphaUse::Ignored ? in[3] : 255];
        }
    }
}

/// The mean of the block of step x step pixels, less at the far edges, that begins at x, y. Colours are
/// weighed by alpha, so that what can't be seen doesn't shine through.
std::array<float, 4> meanOfBlock(const DecodedPicture& picture, Encoding encoding, AlphaUse use, int x, int y,
                                 int step) {
    const int endX = std::min(x + step, picture.width());
    const int endY = std::min(y + step, picture.height());
    const ByteTable& values = valuesOf(encoding);
    std::array<float, 4> sum{};
    for (int row = y; row < endY; ++row) {
        for (int column = x; column < endX; ++column) {
            const std::uint8_t* pixel =
                picture.row(row) + static_cast<ptrdiff_t>(column) * picture.channels();
            const float alpha = alphaOf(pixel, picture.channels(), use);
            for (size_t channel = 0; channel < 3; ++channel)
                sum[channel] += values[pixel[channel]] * alpha;
            sum[3] += alpha;
        }
    }
    const auto count = static_cast<float>((endX - x) * (endY - y));
    const float weight = use == AlphaUse::Multiplied ? count : std::max(sum[3], 1.0F / 255.0F);
    return {sum[0] / weight, sum[1] / weight, sum[2] / weight, sum[3] / count};
}

void convertBlocks(const DecodedPicture& picture, Encoding encoding, AlphaUse use,
                   const std::array<float, 3>& factor, int step, Texels& texels) {
    std::uint16_t* out = texels.halves.data();
    for (int y = 0; y < picture.height(); y += step) {
        for (int x = 0; x < picture.width(); x += step, out += 4) {
            const std::array<float, 4> mean = meanOfBlock(picture, encoding, use, x, y, step);
            for (size_t channel = 0; channel < 3; ++channel)
                out[channel] = toHalf(mean[channel] * factor[channel]);
            out[3] = toHalf(mean[3]);
        }
    }
}

int dividedUp(int size, int step) {
    return (size + step - 1) / step;
}

/// The two texels between which each texel of a level lies, along a side, and how far from the first.
struct Between {
    size_t first;
    size_t second;
    __m128 share;
};

std::vector<Between> placesAlong(int smallSide, int largeSide) {
    std::vector<Between> places;
    for (int i = 0; i < smallSide; ++i) {
        const float place =
            (static_cast<float>(i) + 0.5F) * static_cast<float>(largeSide) / static_cast<float>(smallSide) -
            0.5F;
        const auto first = static_cast<size_t>(place);
        places.push_back({first, std::min(first + 1, static_cast<size_t>(largeSide) - 1),
                          _mm_set1_ps(place - static_cast<float>(first))});
    }
    return places;
}

__m128 mixed(__m128 first, __m128 second, __m128 share) {
    return _mm_add_ps(first, _mm_mul_ps(_mm_sub_ps(second, first), share));
}

Texels halfAsLarge(const Texels& large) {
    Texels small{std::max(large.width / 2, 1), std::max(large.height / 2, 1), {}};
    small.halves.resize(static_cast<size_t>(small.width) * static_cast<size_t>(small.height) * 4);
    const std::vector<Between> across = placesAlong(small.width, large.width);
    std::uint16_t* out = small.halves.data();
    for (const Between& down : placesAlong(small.height, large.height)) {
        const auto row = [&](size_t y) {
            return large.halves.data() + y * static_cast<size_t>(large.width) * 4;
        };
        const std::uint16_t* const above = row(down.first);
        const std::uint16_t* const below = row(down.second);
        for (const Between& place : across) {
            const auto inRow = [&place](const std::uint16_t* texels) {
                return mixed(widened(texels + 4 * place.first), widened(texels + 4 * place.second),
                             place.share);
            };
            narrow(mixed(inRow(above), inRow(below), down.share), out);
            out += 4;
        }
    }
    return small;
}

} // namespace

std::vector<Texels> levelsBelow(const Texels& texels) {
    std::vector<Texels> levels;
    for (const Texels* last = &texels; last->width > 1 || last->height > 1; last = &levels.back())
        levels.push_back(halfAsLarge(*last));
    return levels;
}

std::uint16_t toHalf(float value) {
    constexpr float kLargest = 65504.0F;
    constexpr float kSmallestNormal = 6.103515625e-05F; // 2^-14
    const std::uint32_t sign = (std::bit_cast<std::uint32_t>(value) >> 16) & 0x8000U;
    const float magnitude = std::min(std::abs(value), kLargest);
    if (magnitude < kSmallestNormal) // in steps of 2^-24; the largest of them rounds up into the normal ones
        return static_cast<std::uint16_t>(
            sign | static_cast<std::uint32_t>(std::nearbyint(std::ldexp(magnitude, 24))));
    const std::uint32_t bits = std::bit_cast<std::uint32_t>(magnitude);
    const std::uint32_t rounded = bits + 0x0FFFU + ((bits >> 13) & 1U); // 13 bits fewer, ties to even
    return static_cast<std::uint16_t>(sign | ((rounded >> 13) - ((127U - 15U) << 10)));
}

int reductionOf(int width, int height, int largestSide) {
    return std::max(dividedUp(width, largestSide), dividedUp(height, largestSide));
}

Texels makeReduced(const DecodedPicture& picture, Encoding encoding, AlphaUse alpha,
                   const std::array<float, 3>& factor, int step) {
    Texels texels{dividedUp(picture.width(), step), dividedUp(picture.height(), step), {}};
    texels.halves.resize(static_cast<size_t>(texels.width) * static_cast<size_t>(texels.height) * 4);
    const bool perByte = step == 1 && (alpha != AlphaUse::Multiplied || picture.channels() == 3);
    if (perByte)
        convertBytes(picture, encoding, alpha, factor, texels);
    else
        convertBlocks(picture, encoding, alpha, factor, step, texels);
    return texels;
}

Texels makeTexels(const DecodedPicture& picture, Encoding encoding, AlphaUse alpha,
                  const std::array<float, 3>& factor, int largestSide) {
    return makeReduced(picture, encoding, alpha, factor,
                       reductionOf(picture.width(), picture.height(), largestSide));
}

Texels makeTexel(const std::array<float, 3>& linearColor) {
    return {1, 1, {toHalf(linearColor[0]), toHalf(linearColor[1]), toHalf(linearColor[2]), toHalf(1.0F)}};
}

} // namespace orloview
