#include "output/RowWriter.h"

#include <csetjmp>
#include <png.h>

namespace orloview {

namespace {

void ignoreWarning(png_structp, png_const_charp) {}

void leaveQuietly(png_structp png, png_const_charp) {
    png_longjmp(png, 1);
}

// The parts that libpng may leave by longjmp: no object with a destructor lives in them.

bool begin(png_structp png, png_infop info, std::FILE* stream, int width, int height, bool withAlpha) {
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    png_init_io(png, stream);
    png_set_compression_level(png, 6);
    png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8,
                 withAlpha ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_sRGB_gAMA_and_cHRM(png, info, PNG_sRGB_INTENT_PERCEPTUAL);
    png_write_info(png, info);
    if (!withAlpha)
        png_set_filler(png, 0, PNG_FILLER_AFTER);
    return true;
}

bool writeRow(png_structp png, const std::uint8_t* rgba) {
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    png_write_row(png, rgba);
    return true;
}

bool end(png_structp png, png_infop info) {
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    png_write_end(png, info);
    return true;
}

class PngWriter : public RowWriter {
public:
    PngWriter(const std::string& path, int width, int height, bool withAlpha)
        : fFile(path),
          fPng(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, leaveQuietly, ignoreWarning)),
          fInfo(fPng ? png_create_info_struct(fPng) : nullptr) {
        require(fInfo && begin(fPng, fInfo, fFile.stream(), width, height, withAlpha));
    }
    ~PngWriter() override { destroy(); }
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;

    void write(const std::uint8_t* rgba) override { require(writeRow(fPng, rgba)); }

    void finish() override {
        require(end(fPng, fInfo));
        fFile.commit();
    }

private:
    void destroy() { png_destroy_write_struct(&fPng, &fInfo); }

    void require(bool done) {
        if (done)
            return;
        destroy(); // a constructor that throws has no destructor
        fFile.fail();
    }

    OutputFile fFile;
    png_structp fPng;
    png_infop fInfo;
};

} // namespace

std::unique_ptr<RowWriter> makePngWriter(const std::string& path, int width, int height, bool withAlpha) {
    return std::make_unique<PngWriter>(path, width, height, withAlpha);
}

} // namespace orloview
