#pragma once

#include "texture/PictureDecoder.h"

#include <array>
#include <cstdint>
#include <vector>

namespace orloview {

/// What a picture's alpha means to a material.
enum class AlphaUse : std::uint8_t {
    Ignored,   ///< everything is opaque, whatever the picture says
    Kept,      ///< for an alpha test
    Multiplied ///< colours are multiplied by it, as blending wants them
};

/// What a picture's numbers are.
enum class Encoding : std::uint8_t {
    Srgb,  ///< colours as screens show them
    Linear ///< shares and directions: the numbers themselves
};

/// Linear red, green, blue, alpha as half floats (IEEE 754 binary16), rows from the top down. Half floats
/// hold each of the 256 sRGB values apart, also multiplied by alpha, and filter linearly.
struct Texels {
    int width = 0;
    int height = 0;
    std::vector<std::uint16_t> halves; ///< width x height x 4
};

/// The levels of a mipmap below these texels, each half as large each way as the one before, rounded down, to
/// a single texel: what is there between the texels of the larger one.
std::vector<Texels> levelsBelow(const Texels& texels);

/// Decodes colours to linear ones times `factor`. A picture that is larger than `largestSide` either way
/// is reduced by a whole number: each texel is the mean of a block. Needs no GL.
Texels makeTexels(const DecodedPicture& picture, Encoding encoding, AlphaUse alpha,
                  const std::array<float, 3>& factor, int largestSide);

/// The whole number that `makeTexels` reduces by, and what it does by one.
int reductionOf(int width, int height, int largestSide);
Texels makeReduced(const DecodedPicture& picture, Encoding encoding, AlphaUse alpha,
                   const std::array<float, 3>& factor, int step);

/// A single texel of that colour.
Texels makeTexel(const std::array<float, 3>& linearColor);

/// The nearest half float, ties to even; what is too large becomes the largest finite one.
std::uint16_t toHalf(float value);

} // namespace orloview
