#include "texture/PictureHeader.h"

#include "base/Text.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

namespace orloview {

namespace {

using namespace std::string_view_literals;

using Size = std::pair<long long, long long>; ///< width, height

/// The bytes of a file; beyond its end they are 0, as are sizes that no picture has.
class Bytes {
public:
    explicit Bytes(std::span<const std::uint8_t> file) : fFile(file) {}

    size_t size() const { return fFile.size(); }
    std::string_view text() const { return {reinterpret_cast<const char*>(fFile.data()), fFile.size()}; }
    bool begins(std::string_view with) const { return text().starts_with(with); }
    unsigned operator[](size_t at) const { return at < fFile.size() ? fFile[at] : 0U; }

    /// A number of that many bytes.
    long long little(size_t at, size_t count) const {
        long long number = 0;
        for (size_t i = count; i-- > 0;)
            number = number << 8 | (*this)[at + i];
        return number;
    }
    long long big(size_t at, size_t count) const {
        long long number = 0;
        for (size_t i = 0; i < count; ++i)
            number = number << 8 | (*this)[at + i];
        return number;
    }

private:
    std::span<const std::uint8_t> fFile;
};

Size sizeOfBmp(const Bytes& file) {
    constexpr long long kOldHeader = 12;
    if (file.little(14, 4) == kOldHeader)
        return {file.little(18, 2), file.little(20, 2)};
    const auto height = static_cast<std::int32_t>(file.little(22, 4)); // below 0: from the top down
    return {file.little(18, 4), height < 0 ? -static_cast<long long>(height) : height};
}

/// From the segment that begins a frame of any kind.
Size sizeOfJpeg(const Bytes& file) {
    for (size_t at = 2; at + 9 <= file.size();) {
        const unsigned mark = file[at + 1];
        if (file[at] != 0xFF)
            return {};
        if (mark == 0xFF) { // filling
            ++at;
            continue;
        }
        const bool isFrame = mark >= 0xC0 && mark <= 0xCF && mark != 0xC4 && mark != 0xC8 && mark != 0xCC;
        if (isFrame)
            return {file.big(at + 7, 2), file.big(at + 5, 2)};
        const bool isBare = mark == 0x01 || (mark >= 0xD0 && mark <= 0xD7);
        at += isBare ? 2 : 2 + static_cast<size_t>(file.big(at + 2, 2));
    }
    return {};
}

Size sizeOfWebp(const Bytes& file) {
    const std::string_view chunk = file.text().substr(std::min<size_t>(12, file.size()), 4);
    if (chunk == "VP8X")
        return {file.little(24, 3) + 1, file.little(27, 3) + 1};
    if (chunk == "VP8L")
        return {(file.little(21, 4) & 0x3FFF) + 1, (file.little(21, 4) >> 14 & 0x3FFF) + 1};
    return {file.little(26, 2) & 0x3FFF, file.little(28, 2) & 0x3FFF};
}

/// From the first directory.
Size sizeOfTiff(const Bytes& file) {
    constexpr long long kWidth = 256;
    constexpr long long kHeight = 257;
    constexpr long long kShort = 3;
    const bool isLittle = file[0] == 'I';
    const auto number = [&](size_t at, size_t count) {
        return isLittle ? file.little(at, count) : file.big(at, count);
    };
    const auto directory = static_cast<size_t>(number(4, 4));
    Size size;
    for (long long i = 0; i < number(directory, 2); ++i) {
        const size_t entry = directory + 2 + static_cast<size_t>(i) * 12;
        const long long value = number(entry + 8, number(entry + 2, 2) == kShort ? 2 : 4);
        if (number(entry, 2) == kWidth)
            size.first = value;
        else if (number(entry, 2) == kHeight)
            size.second = value;
    }
    return size;
}

/// The largest of its pictures.
Size sizeOfIcon(const Bytes& file) {
    Size size;
    for (size_t i = 0; i < static_cast<size_t>(file.little(4, 2)); ++i) {
        const auto side = [](unsigned byte) -> long long { return byte == 0 ? 256 : byte; };
        size.first = std::max(size.first, side(file[6 + 16 * i]));
        size.second = std::max(size.second, side(file[7 + 16 * i]));
    }
    return size;
}

/// The two words behind the first, comments apart.
Size sizeOfPlain(const Bytes& file) {
    std::string_view text = file.text().substr(2, 4096);
    const auto next = [&text] {
        std::string_view word = takeWord(text);
        for (; word.starts_with('#'); word = takeWord(text))
            takeLine(text);
        return toWhole(word).value_or(0);
    };
    const long long width = next();
    return {width, next()};
}

/// It has no mark at its beginning, so all that its header says has to be right.
bool isTga(const Bytes& file) {
    const unsigned map = file[1];
    const unsigned type = file[2] & ~8U; // packed or not
    const unsigned bits = file[16];
    const bool isMapped = type == 1 && map == 1 && bits == 8;
    const bool isTrue = type == 2 && map <= 1 && (bits == 15 || bits == 16 || bits == 24 || bits == 32);
    const bool isGrey = type == 3 && map <= 1 && (bits == 8 || bits == 16);
    return file.size() > 18 && (isMapped || isTrue || isGrey);
}

std::pair<const char*, Size> kindAndSize(const Bytes& file) {
    if (file.begins("\x89PNG\r\n\x1A\n"sv))
        return {"png", {file.big(16, 4), file.big(20, 4)}};
    if (file.begins("\xFF\xD8"sv))
        return {"jpeg", sizeOfJpeg(file)};
    if (file.begins("RIFF"sv) && file.text().substr(std::min<size_t>(8, file.size()), 4) == "WEBP")
        return {"webp", sizeOfWebp(file)};
    if (file.begins("II*\0"sv) || file.begins("MM\0*"sv))
        return {"tiff", sizeOfTiff(file)};
    if (file.begins("GIF8"sv))
        return {"gif", {file.little(6, 2), file.little(8, 2)}};
    if (file.begins("BM"sv))
        return {"bmp", sizeOfBmp(file)};
    if (file.begins("\0\0\1\0"sv))
        return {"ico", sizeOfIcon(file)};
    if (file[0] == 'P' && file[1] >= '1' && file[1] <= '6')
        return {"pnm", sizeOfPlain(file)};
    if (file.begins("\xABKTX"sv))
        throw PictureError(
            "it is KTX, which this program can't decode; convert it to PNG (by 'ktx extract')");
    if (isTga(file))
        return {"tga", {file.little(12, 2), file.little(14, 2)}};
    throw PictureError("it is no PNG, JPEG, WebP, TIFF, TGA, BMP, GIF, ICO or PPM; save it as one of these");
}

} // namespace

PictureHeader readPictureHeader(std::span<const std::uint8_t> file) {
    if (file.empty())
        throw PictureError("it is empty");
    const auto [kind, size] = kindAndSize(Bytes(file));
    const auto [width, height] = size;
    if (width <= 0 || height <= 0)
        throw PictureError("it is cut off");
    if (static_cast<double>(width) * static_cast<double>(height) > PictureHeader::kMostPixels)
        throw PictureError("it has more than 16384 x 16384 pixels");
    // PNG and GIF pack no pixel smaller than this; what claims more would be filled up with nothing.
    constexpr double kMostPixelsPerByte = 8.0 * 1032.0;
    const PictureHeader header{kind, static_cast<int>(width), static_cast<int>(height)};
    const bool isPacked = kind == "png"sv || kind == "gif"sv;
    if (isPacked && header.pixels() > kMostPixelsPerByte * static_cast<double>(file.size()))
        throw PictureError("it is cut off");
    // Nor does any kind take this much for one.
    constexpr double kMostBytesPerPixel = 8.0;
    constexpr double kMostBeside = 1 << 26;
    if (static_cast<double>(file.size()) > kMostBeside + kMostBytesPerPixel * header.pixels())
        throw PictureError("its file is far larger than its pixels; save it again");
    return header;
}

} // namespace orloview
