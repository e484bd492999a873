#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>

namespace orloview {

/// Why a picture can't be shown, in words for the one who made the model.
class PictureError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What a picture's file says at its beginning, before anything is decoded.
struct PictureHeader {
    const char* kind = ""; ///< gdk-pixbuf's name of it
    int width = 0;
    int height = 0;

    /// Beyond this a picture is taken as broken, or meant to fill the memory: 16384 pixels each way.
    static constexpr double kMostPixels = 16384.0 * 16384.0;

    double pixels() const { return static_cast<double>(width) * height; }
};

/// Of PNG, JPEG, WebP, TIFF, TGA, BMP, GIF, ICO and the plain PBM, PGM and PPM: kinds of pixels. Others may
/// be programs, as SVG is. Throws PictureError where it is none of these, or can't be as large as it says.
PictureHeader readPictureHeader(std::span<const std::uint8_t> file);

} // namespace orloview
