#pragma once

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

/// Turns rows of a frame into rows of a picture: averages blocks of factor x factor linear pixels, encodes
/// them as sRGB and turns the rows the right way up. `first` and `count` are rows of the picture, counted
/// from the bottom; `linear` holds red, green, blue (multiplied by alpha) and alpha per pixel of the frame,
/// which is factor times the picture's size both ways, rows from the bottom up beginning with that of
/// `first`. With `opaque` alpha counts as 1.
void developRows(Picture& picture, int first, int count, const float* linear, int factor, bool opaque);

} // namespace orloview
