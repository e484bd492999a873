#pragma once

#include "texture/PictureHeader.h"

#include <cstdint>
#include <memory>
#include <span>

namespace orloview {

/// A picture, decoded: rows of bytes from the top down, red green blue or red green blue alpha, alpha not
/// multiplied in. Values are the file's own: no gamma, no colour profile, no turning by a camera's note is
/// applied, because a model's author looked at the bare values.
class DecodedPicture {
public:
    /// Decodes a file of a kind that readPictureHeader knows. Needs no GL; several threads may decode at
    /// once. Throws PictureError where it is no picture, is cut off, or is larger than a picture may be.
    explicit DecodedPicture(std::span<const std::uint8_t> file);

    /// Some of its rows as a picture.
    DecodedPicture rows(int first, int count) const {
        DecodedPicture part = *this;
        part.fPixels = row(first);
        part.fHeight = count;
        return part;
    }

    int width() const { return fWidth; }
    int height() const { return fHeight; }

    /// Bytes per pixel: 3 or 4.
    int channels() const { return fChannels; }

    const std::uint8_t* row(int y) const { return fPixels + static_cast<size_t>(y) * fStride; }

private:
    std::shared_ptr<void> fOwner; ///< keeps fPixels
    const std::uint8_t* fPixels = nullptr;
    size_t fStride = 0;
    int fWidth = 0;
    int fHeight = 0;
    int fChannels = 0;
};

} // namespace orloview
