#include "output/RowWriter.h"

#include "base/ExitCode.h"

#include <algorithm>

#include <gdk-pixbuf/gdk-pixbuf.h>

namespace orloview {

namespace {

/// The formats of gdk-pixbuf, which takes a picture whole.
class PixbufWriter : public RowWriter {
public:
    PixbufWriter(const std::string& path, int width, int height, const char* type)
        : fFile(path), fType(type),
          fPixbuf(gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, width, height), g_object_unref) {
        if (!fPixbuf)
            throw Failure(kExitNotWritten,
                          path + ": there is no memory for a picture of this size; PNG needs less");
    }

    void write(const std::uint8_t* rgba) override {
        guchar* out =
            gdk_pixbuf_get_pixels(fPixbuf.get()) +
            static_cast<size_t>(fRow++) * static_cast<size_t>(gdk_pixbuf_get_rowstride(fPixbuf.get()));
        for (int x = 0; x < gdk_pixbuf_get_width(fPixbuf.get()); ++x, rgba += 4)
            out = std::copy_n(rgba, 3, out);
    }

    void finish() override {
        GError* error = nullptr;
        const bool isJpeg = std::string(fType) == "jpeg";
        gdk_pixbuf_save_to_callback(fPixbuf.get(), save, this, fType, &error, isJpeg ? "quality" : nullptr,
                                    "92", nullptr);
        if (error) {
            g_error_free(error);
            fFile.fail();
        }
        fFile.commit();
    }

private:
    static gboolean save(const gchar* bytes, gsize count, GError** error, gpointer self) {
        if (std::fwrite(bytes, 1, count, static_cast<PixbufWriter*>(self)->fFile.stream()) == count)
            return TRUE;
        g_set_error_literal(error, GDK_PIXBUF_ERROR, GDK_PIXBUF_ERROR_FAILED, "");
        return FALSE;
    }

    OutputFile fFile;
    const char* fType;
    std::unique_ptr<GdkPixbuf, void (*)(void*)> fPixbuf;
    int fRow = 0;
};

} // namespace

std::unique_ptr<RowWriter> makePixbufWriter(const std::string& path, int width, int height,
                                            const char* type) {
    return std::make_unique<PixbufWriter>(path, width, height, type);
}

} // namespace orloview
