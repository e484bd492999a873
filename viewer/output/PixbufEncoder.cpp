#include "output/PictureEncoder.h"

#include "base/ExitCode.h"

#include <algorithm>

#include <gdk-pixbuf/gdk-pixbuf.h>

namespace orloview {

namespace {

/// The formats of gdk-pixbuf, which takes a picture whole.
class PixbufEncoder : public PictureEncoder {
public:
    PixbufEncoder(const std::string& path, int width, int height, const char* type)
        : PictureEncoder(width, 3), fType(type),
          fPixbuf(gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, width, height), g_object_unref) {
        if (!fPixbuf)
            throw Failure(kExitNotWritten,
                          path + ": there is no memory for a picture of this size; PNG needs less");
    }

    EncodedRows encode(const Picture& part, int above, int first, int end) override {
        const auto stride = static_cast<size_t>(gdk_pixbuf_get_rowstride(fPixbuf.get()));
        for (int y = first; y < end; ++y)
            std::copy(part.row(y), part.row(y + 1),
                      gdk_pixbuf_get_pixels(fPixbuf.get()) + static_cast<size_t>(above + y) * stride);
        return {};
    }

    std::optional<Bytes> end() override {
        Bytes bytes;
        const bool isJpeg = std::string(fType) == "jpeg";
        const bool isDone = gdk_pixbuf_save_to_callback(fPixbuf.get(), save, &bytes, fType, nullptr,
                                                        isJpeg ? "quality" : nullptr, "92", nullptr) != FALSE;
        return isDone ? std::optional(std::move(bytes)) : std::nullopt;
    }

private:
    static gboolean save(const gchar* bytes, gsize count, GError** /*error*/, gpointer all) {
        static_cast<Bytes*>(all)->insert(static_cast<Bytes*>(all)->end(), bytes, bytes + count);
        return TRUE;
    }

    const char* fType;
    std::unique_ptr<GdkPixbuf, void (*)(void*)> fPixbuf;
};

} // namespace

std::unique_ptr<PictureEncoder> makePixbufEncoder(const std::string& path, int width, int height,
                                                  const char* type) {
    return std::make_unique<PixbufEncoder>(path, width, height, type);
}

} // namespace orloview
