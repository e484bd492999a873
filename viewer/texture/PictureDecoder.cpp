#include "texture/PictureDecoder.h"

#include <algorithm>
#include <memory>
#include <new>
#include <string_view>

#include <gdk-pixbuf/gdk-pixbuf.h>

namespace orloview {

namespace {

/// What the loader tells while it reads.
struct Watch {
    bool tooLarge = false;
    int rows = 0; ///< delivered, over all passes of an interlaced picture
};

void onSize(GdkPixbufLoader*, int width, int height, void* data) {
    static_cast<Watch*>(data)->tooLarge = static_cast<double>(width) * height > PictureHeader::kMostPixels;
}

void onRows(GdkPixbufLoader*, int, int, int, int height, void* data) {
    static_cast<Watch*>(data)->rows += height;
}

/// For the kinds whose loaders make up what a file doesn't hold any more: these say themselves where they
/// end.
bool endsEarly(std::string_view file) {
    using namespace std::string_view_literals;
    if (file.starts_with("\x89PNG"sv))
        return file.rfind("IEND"sv) == file.npos;
    if (file.starts_with("\xFF\xD8"sv)) {
        const size_t scan = file.rfind("\xFF\xDA"sv);
        return scan == file.npos || file.find("\xFF\xD9"sv, scan) == file.npos;
    }
    if (file.starts_with("RIFF"sv) && file.size() >= 8) {
        size_t length = 0;
        for (size_t i = 7; i >= 4; --i)
            length = length << 8 | static_cast<unsigned char>(file[i]);
        return file.size() < length + 8;
    }
    return false;
}

/// Whether there is no room for one more picture of that size.
bool isMemoryShort(const PictureHeader& header) {
    const std::unique_ptr<void, void (*)(void*)> room(g_try_malloc(static_cast<size_t>(header.pixels()) * 4),
                                                      g_free); // new may be left out, as never used
    return room == nullptr;
}

/// A loader says that memory is short of sizes that can't be, too.
[[noreturn]] void fail(GError* error, const PictureHeader& header) {
    const bool isMemory = g_error_matches(error, GDK_PIXBUF_ERROR, GDK_PIXBUF_ERROR_INSUFFICIENT_MEMORY) != 0;
    const std::string reason = error->message;
    g_error_free(error);
    if (isMemory && isMemoryShort(header))
        throw std::bad_alloc();
    throw PictureError(reason);
}

/// Feeds the loader piece by piece, so that it can be stopped when the picture's size is known.
void feed(GdkPixbufLoader* loader, std::span<const std::uint8_t> file, const PictureHeader& header,
          const Watch& watch) {
    constexpr size_t kPiece = 65536;
    GError* error = nullptr;
    for (size_t at = 0; at < file.size() && !error && !watch.tooLarge; at += kPiece)
        gdk_pixbuf_loader_write(loader, file.data() + at, std::min(kPiece, file.size() - at), &error);
    // A loader has to be closed whatever came before; only the first error is of interest.
    gdk_pixbuf_loader_close(loader, error || watch.tooLarge ? nullptr : &error);
    if (watch.tooLarge) {
        g_clear_error(&error);
        throw PictureError("it has more than 16384 x 16384 pixels");
    }
    if (error)
        fail(error, header);
}

std::shared_ptr<GdkPixbuf> decode(std::span<const std::uint8_t> file) {
    const PictureHeader header = readPictureHeader(file);
    if (endsEarly({reinterpret_cast<const char*>(file.data()), file.size()}))
        throw PictureError("it is cut off");
    GError* error = nullptr;
    const std::unique_ptr<GdkPixbufLoader, void (*)(void*)> loader(
        gdk_pixbuf_loader_new_with_type(header.kind, &error), g_object_unref);
    if (error)
        fail(error, header);
    Watch watch;
    g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(onSize), &watch);
    g_signal_connect(loader.get(), "area-updated", G_CALLBACK(onRows), &watch);
    feed(loader.get(), file, header, watch);
    GdkPixbuf* pixbuf = gdk_pixbuf_loader_get_pixbuf(loader.get());
    if (!pixbuf || watch.rows < gdk_pixbuf_get_height(pixbuf))
        throw PictureError("it is cut off");
    return {GDK_PIXBUF(g_object_ref(pixbuf)), g_object_unref};
}

} // namespace

DecodedPicture::DecodedPicture(std::span<const std::uint8_t> file) {
    const std::shared_ptr<GdkPixbuf> pixbuf = decode(file);
    fOwner = pixbuf;
    fPixels = gdk_pixbuf_read_pixels(pixbuf.get());
    fStride = static_cast<size_t>(gdk_pixbuf_get_rowstride(pixbuf.get()));
    fWidth = gdk_pixbuf_get_width(pixbuf.get());
    fHeight = gdk_pixbuf_get_height(pixbuf.get());
    fChannels = gdk_pixbuf_get_n_channels(pixbuf.get());
}

} // namespace orloview
