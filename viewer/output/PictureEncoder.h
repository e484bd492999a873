#pragma once

#include "output/Picture.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orloview {

using Bytes = std::vector<std::uint8_t>;

/// What rows of a picture become in its file.
struct EncodedRows {
    Bytes bytes;
    std::optional<long> place; ///< in the file; else behind what is there
};

/// The format of a file. `encode` may be called on several threads at once, for any rows in any order; their
/// bytes are written in the order of the rows.
class PictureEncoder {
public:
    PictureEncoder(int width, int pixelBytes) : fWidth(width), fPixelBytes(pixelBytes) {}
    virtual ~PictureEncoder() = default;

    PictureEncoder(const PictureEncoder&) = delete;
    PictureEncoder& operator=(const PictureEncoder&) = delete;

    /// Of the rows that it takes.
    int width() const { return fWidth; }
    int pixelBytes() const { return fPixelBytes; }

    /// What stands before the first row.
    virtual Bytes begin() { return {}; }

    /// Rows `first` to before `end` of a picture's part; `above` rows of the picture stand over that part.
    virtual EncodedRows encode(const Picture& part, int above, int first, int end) = 0;

    /// What stands behind the last row, once all are encoded; none: it could not be made.
    virtual std::optional<Bytes> end() { return Bytes(); }

private:
    int fWidth;
    int fPixelBytes;
};

/// sRGB bytes, with alpha or without, and tagged as such.
std::unique_ptr<PictureEncoder> makePngEncoder(int width, int height, bool withAlpha);

/// 16-bit values, the high byte first; they are no colours, and not tagged.
std::unique_ptr<PictureEncoder> makeGrey16Encoder(int width, int height);

/// `type` is gdk-pixbuf's name of a format without alpha: "jpeg", "bmp". Throws Failure (kExitNotWritten),
/// with the path before its words, where the picture is too large.
std::unique_ptr<PictureEncoder> makePixbufEncoder(const std::string& path, int width, int height,
                                                  const char* type);

std::unique_ptr<PictureEncoder> makeTgaEncoder(int width, int height, bool withAlpha);
std::unique_ptr<PictureEncoder> makePpmEncoder(int width, int height);

/// Floats.
std::unique_ptr<PictureEncoder> makePfmEncoder(int width, int height);

/// Nothing but the pixels, with alpha.
std::unique_ptr<PictureEncoder> makeRgbaEncoder(int width);

} // namespace orloview
