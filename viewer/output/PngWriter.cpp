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

struct Layout {
    int width;
    int height;
    int bits;
    int colorType;
};

bool begin(png_structp png, png_infop info, std::FILE* stream, const Layout& layout) {
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    png_init_io(png, stream);
    png_set_compression_level(png, 6);
    png_set_IHDR(png, info, static_cast<png_uint_32>(layout.width), static_cast<png_uint_32>(layout.height),
                 layout.bits, layout.colorType, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    if (layout.colorType != PNG_COLOR_TYPE_GRAY)
        png_set_sRGB_gAMA_and_cHRM(png, info, PNG_sRGB_INTENT_PERCEPTUAL);
    png_write_info(png, info);
    if (layout.colorType == PNG_COLOR_TYPE_RGB)
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
    PngWriter(const std::string& path, const Layout& layout)
        : fFile(path),
          fPng(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, leaveQuietly, ignoreWarning)),
          fInfo(fPng ? png_create_info_struct(fPng) : nullptr) {
        require(fInfo && begin(fPng, fInfo, fFile.stream(), layout));
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
    const int colorType = withAlpha ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB;
    return std::make_unique<PngWriter>(path, Layout{width, height, 8, colorType});
}

std::unique_ptr<RowWriter> makeGrey16Writer(const std::string& path, int width, int height) {
    return std::make_unique<PngWriter>(path, Layout{width, height, 16, PNG_COLOR_TYPE_GRAY});
}

} // namespace orloview
