#pragma once

#include "output/ToneMap.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>

namespace orloview {

/// Rows of a picture to be stored, from the top down: sRGB bytes red green blue, and alpha where a pixel has
/// four; alpha isn't multiplied in. Or three linear floats. They have no values before they are developed.
struct Picture {
    Picture(int pictureWidth, int pictureHeight, int bytesPerPixel);

    size_t rowBytes() const { return static_cast<size_t>(width) * static_cast<size_t>(pixelBytes); }
    std::uint8_t* row(int y) { return bytes.get() + static_cast<size_t>(y) * rowBytes(); }
    const std::uint8_t* row(int y) const { return bytes.get() + static_cast<size_t>(y) * rowBytes(); }

    int width;
    int height;
    int pixelBytes; ///< 3 or 4; 12 for floats
    std::unique_ptr<std::uint8_t[]> bytes;
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

/// Linear pixels of a frame, rows from the bottom up: red, green, blue (multiplied by alpha) and alpha.
/// Floats or, as GL keeps them, halves. They may be those of some columns of a block alone, from `left` up to
/// `right`: in the others, and where there are none at all, there is nothing.
struct Samples {
    const void* first;
    bool areHalves = false;
    int left = 0;
    int right = std::numeric_limits<int>::max();
};

/// How linear pixels become a picture's.
struct Development {
    bool opaque = true; ///< alpha counts as 1 in the end
    ToneMap toneMap = ToneMap::Cut;

    /// Laid under what is there, past the tone map: linear, multiplied by its alpha.
    std::array<float, 4> background{};

    /// Multiplies, before its tones are mapped, what the tone map doesn't leave alone.
    float gain = 1.0F;
};

/// Turns a block of a frame into a block of a picture: averages squares of factor x factor samples, encodes
/// them as sRGB and turns the rows the right way up. The frame's block is factor times as large both ways.
/// What alpha has above 1 is the share of a colour that the tone map leaves alone. A picture of floats has
/// the averages as they are, without the curves and without limits.
void developBlock(Picture& picture, const Block& block, const Samples& samples, int factor,
                  const Development& development);

} // namespace orloview
