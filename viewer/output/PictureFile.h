#pragma once

#include "output/Picture.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orloview {

enum class PictureFormat : std::uint8_t { Png, Jpeg, Bmp, Tga, Ppm, Pfm };

/// By the name's suffix, whatever its case; "-" is PNG.
std::optional<PictureFormat> formatOf(const std::string& path);

/// "PNG, JPEG (.jpg, .jpeg), ...", for messages.
extern const char* const kPictureFormats;

bool hasAlpha(PictureFormat format);

/// A picture that is written while it is drawn: in bands, from the top down, each of them filled by blocks of
/// a frame. PNG, TGA, PPM and PFM keep one band in memory; JPEG and BMP the whole picture.
///
///     auto file = createPicture("out.png", look, PictureFormat::Png);
///     for (each band) {
///         file->beginBand(rows);
///         file->add({x, y, width, height}, pixels, 2);
///         file->endBand();
///     }
///     file->finish();
///
/// All throw Failure (kExitNotWritten). A picture that isn't finished leaves no file.
class PictureFile {
public:
    virtual ~PictureFile() = default;

    virtual void beginBand(int rows) = 0;

    /// A block of the band, y counted from the band's bottom: its pixels are the means of factor x factor
    /// linear pixels, red, green, blue (multiplied by alpha) and alpha, rows from the bottom up.
    virtual void add(const Block& block, const float* linear, int factor) = 0;

    virtual void endBand() = 0;
    virtual void finish() = 0;
};

/// The alpha of an opaque picture isn't stored. A format without alpha shows what is transparent over black.
/// PFM stores linear colours as they are, also below 0 and above 1.
std::unique_ptr<PictureFile> createPicture(const std::string& path, PictureFormat format, int width,
                                           int height, const Development& development);

/// A picture that is no file: appends its rows to `rgba`, four bytes a pixel.
std::unique_ptr<PictureFile> keepPicture(std::vector<std::uint8_t>& rgba, int width,
                                         const Development& development);

} // namespace orloview
