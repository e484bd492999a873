#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orloview {

/// A picture to be stored: sRGB bytes, red green blue alpha, rows from the top down, alpha not multiplied in.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgba;
};

/// Encodes linear values as sRGB (IEC 61966-2-1): what is outside 0 to 1 is cut to it.
std::uint8_t encodeSrgb(float linear);

/// The linear value of an sRGB value in 0 to 1.
float decodeSrgb(float encoded);

/// Turns a frame into a picture: averages blocks of factor x factor linear pixels, encodes them as sRGB and
/// turns the rows the right way up. `linear` holds red, green, blue (multiplied by alpha) and alpha per
/// pixel, rows from the bottom up, factor times the picture's size in both directions. With `opaque` alpha
/// counts as 1.
Picture developPicture(const float* linear, int width, int height, int factor, bool opaque);

} // namespace orloview
