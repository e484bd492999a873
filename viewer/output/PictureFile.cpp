#include "output/PictureFile.h"

#include "base/Text.h"
#include "output/RowWriter.h"

#include <algorithm>
#include <bit>
#include <utility>
#include <vector>

namespace orloview {

namespace {

/// Pictures of bytes.
class BytePicture : public PictureFile {
public:
    BytePicture(std::unique_ptr<RowWriter> writer, int width, const Development& development)
        : fWriter(std::move(writer)), fBand(width, 0), fDevelopment(development) {}

    void beginBand(int rows) override { fBand = Picture(fBand.width, rows); }

    void add(const Block& block, const float* linear, int factor) override {
        developBlock(fBand, block, linear, factor, fDevelopment);
    }

    void endBand() override {
        for (int y = 0; y < fBand.height; ++y)
            fWriter->write(fBand.rgba.data() + static_cast<size_t>(y) * static_cast<size_t>(fBand.width) * 4);
    }

    void finish() override { fWriter->finish(); }

private:
    std::unique_ptr<RowWriter> fWriter;
    Picture fBand;
    Development fDevelopment;
};

/// Portable float map: three floats a pixel, rows from the bottom up. The bands come from the top down, so
/// each is put where it belongs.
class PfmPicture : public PictureFile {
public:
    PfmPicture(const std::string& path, int width, int height, const std::array<float, 4>& background)
        : fFile(path), fWidth(width), fRowsLeft(height), fBackground(background) {
        static_assert(std::endian::native == std::endian::little, "the header says so");
        const std::string header = "PF\n" + std::to_string(width) + " " + std::to_string(height) + "\n-1.0\n";
        fFile.write(header.data(), header.size());
        fStart = static_cast<long>(header.size());
    }

    void beginBand(int rows) override {
        fRowsLeft -= rows;
        fBand.assign(static_cast<size_t>(fWidth) * static_cast<size_t>(rows) * 3, 0.0F);
    }

    void add(const Block& block, const float* linear, int factor) override {
        averageBlock(fBand, fWidth, block, linear, factor, fBackground);
    }

    void endBand() override {
        const size_t rowBytes = static_cast<size_t>(fWidth) * 3 * sizeof(float);
        if (std::fseek(fFile.stream(), fStart + fRowsLeft * static_cast<long>(rowBytes), SEEK_SET) != 0)
            fFile.fail();
        fFile.write(fBand.data(), fBand.size() * sizeof(float));
    }

    void finish() override { fFile.commit(); }

private:
    OutputFile fFile;
    int fWidth;
    long fRowsLeft; ///< below the current band
    std::array<float, 4> fBackground;
    long fStart = 0;
    std::vector<float> fBand; ///< rows from the bottom up
};

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

std::unique_ptr<PictureFile> createPicture(const std::string& path, PictureFormat format, int width,
                                           int height, const Development& development) {
    const bool opaque = development.opaque;
    const auto bytes = [&](std::unique_ptr<RowWriter> writer) {
        return std::make_unique<BytePicture>(
            std::move(writer), width,
            Development{opaque || !hasAlpha(format), development.toneMap, development.background});
    };
    switch (format) {
    case PictureFormat::Pfm:
        return std::make_unique<PfmPicture>(path, width, height, development.background);
    case PictureFormat::Jpeg:
        return bytes(makePixbufWriter(path, width, height, "jpeg"));
    case PictureFormat::Bmp:
        return bytes(makePixbufWriter(path, width, height, "bmp"));
    case PictureFormat::Tga:
        return bytes(makeTgaWriter(path, width, height, !opaque));
    case PictureFormat::Ppm:
        return bytes(makePpmWriter(path, width, height));
    case PictureFormat::Png:
        break;
    }
    return bytes(makePngWriter(path, width, height, !opaque));
}

std::unique_ptr<PictureFile> keepPicture(std::vector<std::uint8_t>& rgba, int width,
                                         const Development& development) {
    class Keeper : public RowWriter {
    public:
        Keeper(std::vector<std::uint8_t>& kept, int pixels) : fKept(kept), fBytes(pixels * 4) {}
        void write(const std::uint8_t* row) override { fKept.insert(fKept.end(), row, row + fBytes); }
        void finish() override {}

    private:
        std::vector<std::uint8_t>& fKept;
        int fBytes;
    };
    return std::make_unique<BytePicture>(std::make_unique<Keeper>(rgba, width), width, development);
}

} // namespace orloview
