#pragma once

#include "output/OutputFile.h"

#include <cstdint>
#include <memory>
#include <string>

namespace orloview {

/// Encodes a picture row by row, from the top down: sRGB bytes, red green blue alpha, unless said otherwise.
/// Throws Failure (kExitNotWritten).
class RowWriter {
public:
    virtual ~RowWriter() = default;
    virtual void write(const std::uint8_t* rgba) = 0;

    /// After the last row: the file is there.
    virtual void finish() = 0;
};

/// Tagged as sRGB.
std::unique_ptr<RowWriter> makePngWriter(const std::string& path, int width, int height, bool withAlpha);

/// Rows of 16-bit values, the high byte first; they are no colours, and not tagged.
std::unique_ptr<RowWriter> makeGrey16Writer(const std::string& path, int width, int height);

/// `type` is gdk-pixbuf's name of a format without alpha: "jpeg", "bmp".
std::unique_ptr<RowWriter> makePixbufWriter(const std::string& path, int width, int height, const char* type);

std::unique_ptr<RowWriter> makeTgaWriter(const std::string& path, int width, int height, bool withAlpha);
std::unique_ptr<RowWriter> makePpmWriter(const std::string& path, int width, int height);

} // namespace orloview
