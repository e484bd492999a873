// Formats of a header and bare rows.

#include "output/PictureEncoder.h"

#include <bit>

namespace orloview {

namespace {

Bytes bytesOf(const std::string& header) {
    return {header.begin(), header.end()};
}

/// Rows as they are, or with red and blue exchanged, behind a header.
class PlainEncoder : public PictureEncoder {
public:
    PlainEncoder(int width, int channels, const std::string& header, bool blueFirst)
        : PictureEncoder(width, channels), fHeader(bytesOf(header)), fBlueFirst(blueFirst) {}

    Bytes begin() override { return fHeader; }

    EncodedRows encode(const Picture& part, int /*above*/, int first, int end) override {
        EncodedRows rows{{part.row(first), part.row(end)}, {}};
        if (fBlueFirst) {
            for (auto pixel = rows.bytes.begin(); pixel != rows.bytes.end(); pixel += part.pixelBytes)
                std::swap(pixel[0], pixel[2]);
        }
        return rows;
    }

private:
    Bytes fHeader;
    bool fBlueFirst;
};

/// Portable float map: rows from the bottom up. The rows come from the top down, so each goes to its place.
class PfmEncoder : public PictureEncoder {
public:
    PfmEncoder(int width, int height)
        : PictureEncoder(width, 3 * sizeof(float)),
          fHeader(bytesOf("PF\n" + std::to_string(width) + " " + std::to_string(height) + "\n-1.0\n")),
          fHeight(height) {
        static_assert(std::endian::native == std::endian::little, "the header says so");
    }

    Bytes begin() override { return fHeader; }

    EncodedRows encode(const Picture& part, int above, int first, int end) override {
        EncodedRows rows;
        rows.bytes.reserve(part.rowBytes() * static_cast<size_t>(end - first));
        for (int y = end - 1; y >= first; --y)
            rows.bytes.insert(rows.bytes.end(), part.row(y), part.row(y + 1));
        const auto below = static_cast<size_t>(fHeight - above - end);
        rows.place = static_cast<long>(fHeader.size() + below * part.rowBytes());
        return rows;
    }

private:
    Bytes fHeader;
    int fHeight;
};

} // namespace

std::unique_ptr<PictureEncoder> makeTgaEncoder(int width, int height, bool withAlpha) {
    std::string header(18, '\0');
    header[2] = 2; // true colour, not packed
    for (const auto& [at, value] : {std::pair{12, width}, {14, height}}) {
        header[at] = static_cast<char>(value & 0xFF);
        header[at + 1] = static_cast<char>(value >> 8);
    }
    header[16] = withAlpha ? 32 : 24;
    header[17] = withAlpha ? 0x28 : 0x20; // from the top left; bits of alpha
    return std::make_unique<PlainEncoder>(width, withAlpha ? 4 : 3, header, true);
}

std::unique_ptr<PictureEncoder> makePpmEncoder(int width, int height) {
    return std::make_unique<PlainEncoder>(
        width, 3, "P6\n" + std::to_string(width) + " " + std::to_string(height) + "\n255\n", false);
}

std::unique_ptr<PictureEncoder> makePfmEncoder(int width, int height) {
    return std::make_unique<PfmEncoder>(width, height);
}

std::unique_ptr<PictureEncoder> makeRgbaEncoder(int width) {
    return std::make_unique<PlainEncoder>(width, 4, "", false);
}

} // namespace orloview
