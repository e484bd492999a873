#include "output/PictureFile.h"

#include "base/Text.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace orloview {

namespace {

/// Rows of about so many bytes are encoded as one: few enough for every worker to get some, many enough for
/// what a packer starts anew with.
constexpr size_t kBytesAtOnce = size_t{256} << 10;

struct Suffix {
    const char* text;
    PictureFormat format;
};
constexpr Suffix kSuffixes[] = {{".png", PictureFormat::Png},   {".jpg", PictureFormat::Jpeg},
                                {".jpeg", PictureFormat::Jpeg}, {".bmp", PictureFormat::Bmp},
                                {".tga", PictureFormat::Tga},   {".ppm", PictureFormat::Ppm},
                                {".pfm", PictureFormat::Pfm}};

} // namespace

const char* const kPictureFormats = ".png, .jpg or .jpeg, .bmp, .tga, .ppm, .pfm (linear floats)";

std::optional<PictureFormat> formatOf(const std::string& path) {
    if (path == "-")
        return PictureFormat::Png;
    const std::string lower = lowered(path);
    for (const Suffix& suffix : kSuffixes) {
        if (lower.ends_with(suffix.text))
            return suffix.format;
    }
    return std::nullopt;
}

bool hasAlpha(PictureFormat format) {
    return format == PictureFormat::Png || format == PictureFormat::Tga;
}

PictureFile::PictureFile(std::string path, std::unique_ptr<PictureEncoder> encoder,
                         const Development& development, Workers& workers)
    : fPath(std::move(path)), fEncoder(std::move(encoder)), fDevelopment(development), fWorkers(workers) {}

void PictureFile::open() {
    fFile.emplace(fPath);
    write({fEncoder->begin(), {}});
    writeEncoded();
}

void PictureFile::beginBand(int rows) {
    fBand = std::make_shared<Band>();
    fBand->picture = std::make_shared<Picture>(fEncoder->width(), rows, fEncoder->pixelBytes());
}

std::shared_future<void> PictureFile::add(const Block& block, const Samples& samples, int factor) {
    const auto develop = [picture = fBand->picture, block, samples, factor, development = fDevelopment] {
        developBlock(*picture, block, samples, factor, development);
    };
    return fBand->blocks.emplace_back(fWorkers.add(develop));
}

void PictureFile::endBand() {
    if (fFile)
        writeEncoded(); // the band before; no more than two are in memory
    const int rows = fBand->picture->height;
    const auto most = static_cast<int>(std::max<size_t>(kBytesAtOnce / fBand->picture->rowBytes(), 1));
    for (int first = 0; first < rows; first += most) {
        const int end = std::min(first + most, rows);
        fEncoded.push_back(fWorkers.add([encoder = fEncoder, band = fBand, above = fAbove, first, end] {
            for (const std::shared_future<void>& block : band->blocks)
                block.get();
            return encoder->encode(*band->picture, above, first, end);
        }));
    }
    fAbove += rows;
    fBand = nullptr;
    if (fFile && fWorkers.most() == 0)
        writeEncoded();
}

void PictureFile::finish() {
    writeEncoded();
    const std::optional<Bytes> last = fEncoder->end();
    if (!last)
        fFile->fail();
    write({*last, {}});
    fFile->commit();
}

Bytes PictureFile::takeBytes() {
    Bytes all;
    for (; !fEncoded.empty(); fEncoded.pop_front()) {
        const Bytes bytes = fEncoded.front().get().bytes;
        all.insert(all.end(), bytes.begin(), bytes.end());
    }
    return all;
}

void PictureFile::write(const EncodedRows& rows) {
    if (rows.place && std::fseek(fFile->stream(), *rows.place, SEEK_SET) != 0)
        fFile->fail();
    if (!rows.bytes.empty())
        fFile->write(rows.bytes.data(), rows.bytes.size());
}

void PictureFile::writeEncoded() {
    for (; !fEncoded.empty(); fEncoded.pop_front())
        write(fEncoded.front().get());
}

std::unique_ptr<PictureFile> createPicture(const std::string& path, PictureFormat format, int width,
                                           int height, const Development& development, Workers& workers) {
    const bool opaque = development.opaque || !hasAlpha(format);
    const auto encoder = [&] {
        switch (format) {
        case PictureFormat::Pfm:
            return makePfmEncoder(width, height);
        case PictureFormat::Jpeg:
            return makePixbufEncoder(path, width, height, "jpeg");
        case PictureFormat::Bmp:
            return makePixbufEncoder(path, width, height, "bmp");
        case PictureFormat::Tga:
            return makeTgaEncoder(width, height, !opaque);
        case PictureFormat::Ppm:
            return makePpmEncoder(width, height);
        case PictureFormat::Png:
            break;
        }
        return makePngEncoder(width, height, !opaque);
    };
    return std::make_unique<PictureFile>(
        path, encoder(), Development{opaque, development.toneMap, development.background, development.gain},
        workers);
}

std::unique_ptr<PictureFile> keepPicture(int width, const Development& development, Workers& workers) {
    return std::make_unique<PictureFile>("", makeRgbaEncoder(width), development, workers);
}

} // namespace orloview
