#include "output/PictureEncoder.h"

#include "output/PngChunks.h"
#include "output/RowFilter.h"

#include <algorithm>
#include <array>
#include <libdeflate.h>
#include <map>
#include <mutex>
#include <new>
#include <utility>
#include <zlib.h>

namespace orloview {

namespace {

/// zlib's middle one is as small here, and takes more than twice as long.
constexpr int kDeflateLevel = 6;

void append(Bytes& bytes, std::initializer_list<std::uint8_t> more) {
    bytes.insert(bytes.end(), more);
}

/// A stream of blocks without a header, which ends with its last block.
class Deflater {
public:
    Deflater() : fCompressor(libdeflate_alloc_compressor(kDeflateLevel), libdeflate_free_compressor) {
        if (!fCompressor)
            throw std::bad_alloc();
    }

    /// Appends.
    void deflate(const Bytes& plain, Bytes& out) {
        const size_t start = out.size();
        const size_t bound = libdeflate_deflate_compress_bound(fCompressor.get(), plain.size());
        out.resize(start + bound);
        out.resize(start + libdeflate_deflate_compress(fCompressor.get(), plain.data(), plain.size(),
                                                       out.data() + start, bound));
    }

private:
    std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor*)> fCompressor;
};

/// Makes of a stream that starts at `start` one which others may follow: its last block is no longer marked
/// as such, and an empty one behind it ends at a whole byte. Where the last block begins only a walk through
/// all blocks tells. `plainBytes` are in it.
void openEnd(Bytes& deflated, size_t start, size_t plainBytes) {
    z_stream walk{};
    if (inflateInit2(&walk, -MAX_WBITS) != Z_OK)
        throw std::bad_alloc();
    Bytes plain(plainBytes);
    walk.next_in = deflated.data() + start;
    walk.avail_in = static_cast<uInt>(deflated.size() - start);
    walk.next_out = plain.data();
    walk.avail_out = static_cast<uInt>(plain.size());
    constexpr int kUnusedBits = 7; // what zlib tells at the end of a block
    constexpr int kIsLast = 64;
    size_t lastBlock = 0; // bits from the start
    while (inflate(&walk, Z_BLOCK) == Z_OK && (walk.data_type & kIsLast) == 0)
        lastBlock = walk.total_in * 8 - static_cast<size_t>(walk.data_type & kUnusedBits);
    const int unused = walk.data_type & kUnusedBits;
    inflateEnd(&walk);
    deflated[start + lastBlock / 8] &= static_cast<std::uint8_t>(~(1U << (lastBlock % 8)));
    // The empty block begins with three zeros, as the unused bits are.
    if (unused < 3)
        deflated.push_back(0);
    append(deflated, {0, 0, 0xFF, 0xFF});
}

/// Rows are filtered, deflated and made a chunk of their own, apart from others; the chunks are one stream.
class PngEncoder : public PictureEncoder {
public:
    struct Layout {
        int width;
        int height;
        int bits; ///< of a channel
        int colorType;
    };
    static constexpr int kGrey = 0;
    static constexpr int kRGB = 2;
    static constexpr int kRGBA = 6;

    explicit PngEncoder(const Layout& layout)
        : PictureEncoder(layout.width, bytesOf(layout)), fLayout(layout) {}

    Bytes begin() override {
        Bytes bytes{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
        const size_t header = beginChunk(bytes, "IHDR");
        appendNumber(bytes, static_cast<std::uint32_t>(fLayout.width));
        appendNumber(bytes, static_cast<std::uint32_t>(fLayout.height));
        append(bytes, {static_cast<std::uint8_t>(fLayout.bits), static_cast<std::uint8_t>(fLayout.colorType),
                       0, 0, 0});
        endChunk(bytes, header);
        if (fLayout.colorType != kGrey)
            tagAsSrgb(bytes);
        const size_t data = beginChunk(bytes, "IDAT");
        append(bytes, {0x78, 0x9C}); // of zlib's middle level, with a window of 32 KB
        endChunk(bytes, data);
        return bytes;
    }

    EncodedRows encode(const Picture& part, int above, int first, int end) override {
        const Bytes filtered = filterRows(part, first, end);
        EncodedRows rows;
        const size_t data = beginChunk(rows.bytes, "IDAT");
        const size_t start = rows.bytes.size();
        Deflater().deflate(filtered, rows.bytes);
        openEnd(rows.bytes, start, filtered.size());
        endChunk(rows.bytes, data);
        const Checked checked{libdeflate_adler32(1, filtered.data(), filtered.size()), filtered.size()};
        const std::lock_guard lock(fMutex);
        fChecked[above + first] = checked;
        return rows;
    }

    std::optional<Bytes> end() override {
        uLong sum = 1;
        for (const auto& [row, checked] : fChecked)
            sum = adler32_combine(sum, checked.sum, static_cast<z_off_t>(checked.bytes));
        return pngEnd(static_cast<std::uint32_t>(sum));
    }

private:
    /// The sum of what is deflated, by which a reader checks it.
    struct Checked {
        std::uint32_t sum;
        size_t bytes;
    };

    static int bytesOf(const Layout& layout) {
        const int channels = layout.colorType == kGrey ? 1 : layout.colorType == kRGB ? 3 : 4;
        return layout.bits / 8 * channels;
    }

    /// For readers of all ages: as sRGB, and by its gamma and primaries.
    static void tagAsSrgb(Bytes& bytes) {
        const size_t gamma = beginChunk(bytes, "gAMA");
        appendNumber(bytes, 45455);
        endChunk(bytes, gamma);
        const size_t primaries = beginChunk(bytes, "cHRM");
        for (const std::uint32_t place : {31270U, 32900U, 64000U, 33000U, 30000U, 60000U, 15000U, 6000U})
            appendNumber(bytes, place);
        endChunk(bytes, primaries);
        const size_t intent = beginChunk(bytes, "sRGB");
        append(bytes, {0}); // perceptual
        endChunk(bytes, intent);
    }

    Layout fLayout;
    std::mutex fMutex;
    std::map<int, Checked> fChecked; ///< by their first row in the picture
};

} // namespace

std::unique_ptr<PictureEncoder> makePngEncoder(int width, int height, bool withAlpha) {
    return std::make_unique<PngEncoder>(
        PngEncoder::Layout{width, height, 8, withAlpha ? PngEncoder::kRGBA : PngEncoder::kRGB});
}

std::unique_ptr<PictureEncoder> makeGrey16Encoder(int width, int height) {
    return std::make_unique<PngEncoder>(PngEncoder::Layout{width, height, 16, PngEncoder::kGrey});
}

} // namespace orloview
