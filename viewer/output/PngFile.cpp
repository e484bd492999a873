#include "output/PngFile.h"

#include "ExitCode.h"

#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <memory>
#include <png.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace orloview {

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

[[noreturn]] void notWritten(const std::string& path, int error) {
    const std::string reason = error != 0 ? std::strerror(error) : "the disk took no more";
    throw Failure(kExitNotWritten, path + ": the picture could not be written: " + reason +
                                       "; check the folder, its rights and the space left");
}

/// The part that libpng may leave by longjmp: no object with a destructor lives here.
bool encode(png_structp png, png_infop info, std::FILE* file, const Picture& picture, bool withAlpha,
            const ProgressReport& report) {
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    png_init_io(png, file);
    png_set_compression_level(png, 6);
    png_set_IHDR(png, info, static_cast<png_uint_32>(picture.width), static_cast<png_uint_32>(picture.height),
                 8, withAlpha ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_sRGB_gAMA_and_cHRM(png, info, PNG_sRGB_INTENT_PERCEPTUAL);
    png_write_info(png, info);
    if (!withAlpha)
        png_set_filler(png, 0, PNG_FILLER_AFTER);
    const auto stride = static_cast<size_t>(picture.width) * 4;
    for (int y = 0; y < picture.height; ++y) {
        png_write_row(png, picture.rgba.data() + static_cast<size_t>(y) * stride);
        tell(report, y + 1, picture.height);
    }
    png_write_end(png, info);
    return true;
}

void ignoreWarning(png_structp, png_const_charp) {}

void leaveQuietly(png_structp png, png_const_charp) {
    png_longjmp(png, 1);
}

bool encodeTo(std::FILE* file, const Picture& picture, bool withAlpha, const ProgressReport& report) {
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, leaveQuietly, ignoreWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    const bool written = info && encode(png, info, file, picture, withAlpha, report);
    png_destroy_write_struct(&png, &info);
    return written && std::fflush(file) == 0;
}

/// A device or pipe can't be replaced by a renaming: it is written straight.
bool isReplaceable(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode);
}

} // namespace

void writePng(const std::string& path, const Picture& picture, bool withAlpha, const ProgressReport& report) {
    if (path == "-") {
        if (!encodeTo(stdout, picture, withAlpha, report))
            notWritten("standard output", errno);
        return;
    }
    const bool replace = isReplaceable(path);
    const std::string written = replace ? path + ".part" + std::to_string(getpid()) : path;
    File file(std::fopen(written.c_str(), "wb"));
    if (!file)
        notWritten(path, errno);
    errno = 0;
    const bool complete = encodeTo(file.get(), picture, withAlpha, report);
    const int error = errno;
    const bool closed = std::fclose(file.release()) == 0;
    if (complete && closed && (!replace || std::rename(written.c_str(), path.c_str()) == 0))
        return;
    const int lastError = complete ? errno : error;
    if (replace)
        std::remove(written.c_str());
    notWritten(path, lastError);
}

} // namespace orloview
