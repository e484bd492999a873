#pragma once

#include "scene/Scene.h"

#include <cstdint>
#include <memory>
#include <stdexcept>

namespace orloview {

/// Why a picture can't be shown, in words for the one who made the model.
class PictureError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A picture, decoded: rows of bytes from the top down, red green blue or red green blue alpha, alpha not
/// multiplied in. Values are the file's own: no gamma, no colour profile, no turning by a camera's note is
/// applied, because a model's author looked at the bare values.
class DecodedPicture {
public:
    /// Reads and decodes a picture of any kind that gdk-pixbuf knows. Needs no GL; several threads may decode
    /// at once. Throws PictureError where the file can't be read, is no picture, is cut off, or claims more
    /// than kMostPixels.
    explicit DecodedPicture(const Image& image);

    /// Beyond this a picture is taken as broken, or meant to fill the memory: 16384 pixels each way.
    static constexpr double kMostPixels = 16384.0 * 16384.0;

    int width() const { return fWidth; }
    int height() const { return fHeight; }

    /// Bytes per pixel: 3 or 4.
    int channels() const { return fChannels; }

    const std::uint8_t* row(int y) const { return fPixels + static_cast<std::size_t>(y) * fStride; }

private:
    std::shared_ptr<void> fOwner; ///< keeps fPixels
    const std::uint8_t* fPixels = nullptr;
    std::size_t fStride = 0;
    int fWidth = 0;
    int fHeight = 0;
    int fChannels = 0;
};

} // namespace orloview
