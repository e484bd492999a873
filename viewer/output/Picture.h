#pragma once

#include "output/ToneMap.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace orloview {

/// A picture to be stored: sRGB bytes, red green blue alpha, rows from the top down, alpha not multiplied in.
struct Picture {
    /// Transparent black.
    Picture(int pictureWidth, int pictureHeight);

    int width;
    int height;
    std::vector<std::uint8_t> rgba;
};

/// Encodes linear values as sRGB (IEC 61966-2-1): what is outside 0 to 1 is cut to it.
std::uint8_t encodeSrgb(float linear);

/// The linear value of an sRGB value in 0 to 1.
float decodeSrgb(float encoded);

/// Part of a picture, pixels, counted from the lower left corner.
struct Block {
    int x;
    int y;
    int width;
    int height;
};

/// How linear pixels become a picture's.
struct Development {
    bool opaque = true; ///< alpha counts as 1 in the end
    ToneMap toneMap = ToneMap::Cut;

    /// Laid under what is there, past the tone map: linear, multiplied by its alpha.
    std::array<float, 4> background{};
};

/// Turns a block of a frame into a block of a picture: averages squares of factor x factor linear pixels,
/// encodes them as sRGB and turns the rows the right way up. `linear` holds red, green, blue (multiplied by
/// alpha) and alpha per pixel of the frame's block, which is factor times as large both ways, rows from the
/// bottom up. What alpha has above 1 is the share of a colour that the tone map leaves alone.
void developBlock(Picture& picture, const Block& block, const float* linear, int factor,
                  const Development& development);

/// The same without the curves and without limits, into rows of three floats, `width` pixels each, from the
/// bottom up.
void averageBlock(std::vector<float>& rgb, int width, const Block& block, const float* linear, int factor,
                  const std::array<float, 4>& background);

} // namespace orloview
