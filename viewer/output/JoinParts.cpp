// Each part is a whole file of its own. What it packs is copied as it is: PNG's chunks of rows are packed
// apart from each other, other formats are bare rows behind a header.

#include "output/OutputFile.h"
#include "output/PictureFile.h"
#include "output/PngChunks.h"
#include "output/Share.h"

#include "base/ExitCode.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <libdeflate.h>
#include <memory>
#include <utility>
#include <zlib.h>

namespace orloview {

namespace {

/// What --size allows.
constexpr int kMostRows = 65536;

/// More than rows packed at once ever take.
constexpr std::uint32_t kLargestChunk = 1U << 26U;

struct Header {
    int width = 0;
    int height = 0;
    bool withAlpha = false;
};

/// Where the numbers stand, whatever else the bytes are.
Header readHeader(PictureFormat format, const Bytes& bytes) {
    const auto number = [&](size_t at, size_t size, bool highFirst) {
        unsigned value = 0;
        for (size_t i = 0; i < size; ++i)
            value = value << 8U | bytes[at + (highFirst ? i : size - 1 - i)];
        return static_cast<int>(value);
    };
    if (format == PictureFormat::Png)
        return {number(16, 4, true), number(20, 4, true), bytes[25] == 6};
    if (format == PictureFormat::Tga)
        return {number(12, 2, false), number(14, 2, false), bytes[16] == 32};
    Header header;
    const std::string text(bytes.begin(), bytes.end());
    if (std::sscanf(text.c_str(), "P%*c%d%d", &header.width, &header.height) != 2)
        return {};
    return header;
}

std::unique_ptr<PictureEncoder> encoderOf(PictureFormat format, const Header& header) {
    switch (format) {
    case PictureFormat::Png:
        return makePngEncoder(header.width, header.height, header.withAlpha);
    case PictureFormat::Tga:
        return makeTgaEncoder(header.width, header.height, header.withAlpha);
    case PictureFormat::Pfm:
        return makePfmEncoder(header.width, header.height);
    default:
        return makePpmEncoder(header.width, header.height);
    }
}

class Part {
public:
    Part(const std::string& whole, const Share& share, PictureFormat format)
        : fPath(partPath(whole, share)), fShare(share),
          fFile(std::fopen(fPath.c_str(), "rbe"),
                [](std::FILE* file) { return file ? std::fclose(file) : 0; }) {
        if (!fFile)
            throw Failure(kExitNoInput,
                          fPath + ": " + std::strerror(errno) + "; write it by --only " + share.text());
        OutputFile::spare(fPath);
        constexpr size_t kLongestHeader = 64;
        Bytes first(kLongestHeader);
        first.resize(std::fread(first.data(), 1, first.size(), fFile.get()));
        std::rewind(fFile.get());
        first.resize(kLongestHeader);
        fHeader = readHeader(format, first);
        if (fHeader.width < 1 || fHeader.height < 1 || fHeader.height > kMostRows)
            refuse();
        const Bytes begin = encoderOf(format, fHeader)->begin();
        if (read(begin.size()) != begin)
            refuse();
    }

    const std::string& path() const { return fPath; }
    const Header& header() const { return fHeader; }

    void copyBytes(size_t rowBytes, OutputFile& out) {
        for (int row = 0; row < fHeader.height; ++row) {
            const Bytes bytes = read(rowBytes);
            out.write(bytes.data(), bytes.size());
        }
        expectEnd();
    }

    /// All chunks but the two last. Returns the sum of what is packed in them.
    std::uint32_t copyChunks(OutputFile& out) {
        Bytes last;
        for (Bytes chunk = readChunk(); !isNamed(chunk, "IEND"); chunk = readChunk()) {
            if (!isNamed(chunk, "IDAT"))
                refuse();
            if (!last.empty())
                out.write(last.data(), last.size());
            last = std::move(chunk);
        }
        constexpr size_t kLengthAndName = 8;
        if (last.size() < kLengthAndName + 6)
            refuse();
        std::uint32_t sum = 0;
        for (size_t i = 0; i < 4; ++i)
            sum = sum << 8U | last[kLengthAndName + 2 + i];
        expectEnd();
        const Bytes end = pngEnd(sum);
        if (last.size() > end.size() || !std::equal(last.begin(), last.end(), end.begin()))
            refuse();
        return sum;
    }

private:
    [[noreturn]] void refuse() const {
        throw Failure(kExitNoInput,
                      fPath + ": it is no whole part of a picture; write it anew by --only " + fShare.text());
    }

    void expectEnd() const {
        if (std::fgetc(fFile.get()) != EOF)
            refuse();
    }

    Bytes read(size_t count) {
        Bytes bytes(count);
        if (std::fread(bytes.data(), 1, count, fFile.get()) != count)
            refuse();
        return bytes;
    }

    static bool isNamed(const Bytes& chunk, std::string_view name) {
        return std::equal(name.begin(), name.end(), chunk.begin() + 4);
    }

    Bytes readChunk() {
        Bytes chunk = read(4);
        const std::uint32_t length =
            std::uint32_t{chunk[0]} << 24U | chunk[1] << 16U | chunk[2] << 8U | chunk[3];
        if (length > kLargestChunk)
            refuse();
        const Bytes rest = read(size_t{length} + 8);
        chunk.insert(chunk.end(), rest.begin(), rest.end());
        std::uint32_t sum = 0;
        for (size_t i = rest.size() - 4; i < rest.size(); ++i)
            sum = sum << 8U | rest[i];
        if (libdeflate_crc32(0, rest.data(), rest.size() - 4) != sum)
            refuse();
        return chunk;
    }

    std::string fPath;
    Share fShare;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> fFile;
    Header fHeader;
};

std::vector<Part> openParts(const std::string& path, int count, PictureFormat format) {
    std::vector<Part> parts;
    for (int i = 1; i <= count; ++i) {
        const Part& part = parts.emplace_back(path, Share{i, count}, format);
        const Header& first = parts.front().header();
        if (part.header().width != first.width || part.header().withAlpha != first.withAlpha)
            throw Failure(kExitNoInput, part.path() + ": it is of another picture than " +
                                            parts.front().path() +
                                            "; write all parts with the same switches");
    }
    return parts;
}

} // namespace

std::string partPath(const std::string& path, const Share& share) {
    const std::filesystem::path whole(path);
    const std::string part = "_" + std::to_string(share.part) + "_of_" + std::to_string(share.of);
    return (whole.parent_path() / (whole.stem().string() + part + whole.extension().string())).string();
}

void joinParts(const std::string& path, int count) {
    const PictureFormat format = *formatOf(path);
    std::vector<Part> parts = openParts(path, count, format);
    Header whole = parts.front().header();
    std::int64_t rows = 0;
    for (const Part& part : parts)
        rows += part.header().height;
    if (rows > kMostRows)
        throw Failure(kExitNoInput, path + ": its parts have " + std::to_string(rows) +
                                        " rows; write all of them with the same switches");
    whole.height = static_cast<int>(rows);
    const auto encoder = encoderOf(format, whole);
    const size_t rowBytes = static_cast<size_t>(whole.width) * static_cast<size_t>(encoder->pixelBytes());
    OutputFile file(path);
    const auto write = [&file](const Bytes& bytes) { file.write(bytes.data(), bytes.size()); };
    write(encoder->begin());
    uLong sum = 1;
    if (format == PictureFormat::Pfm) // from the bottom up
        std::reverse(parts.begin(), parts.end());
    for (Part& part : parts) {
        if (format == PictureFormat::Png) {
            const size_t bytes = static_cast<size_t>(part.header().height) * (rowBytes + 1); // a filter each
            sum = adler32_combine(sum, part.copyChunks(file), static_cast<z_off_t>(bytes));
        } else {
            part.copyBytes(rowBytes, file);
        }
    }
    if (format == PictureFormat::Png)
        write(pngEnd(static_cast<std::uint32_t>(sum)));
    file.commit();
}

} // namespace orloview
