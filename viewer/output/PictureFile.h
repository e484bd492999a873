#pragma once

#include "base/Workers.h"
#include "output/OutputFile.h"
#include "output/PictureEncoder.h"

#include <deque>
#include <future>
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

/// A picture that is developed and encoded by workers while it is drawn: in bands, from the top down, each of
/// them filled by blocks of a frame. PNG, TGA, PPM and PFM keep two bands in memory; JPEG and BMP the whole
/// picture.
///
///     auto picture = createPicture("out.png", PictureFormat::Png, 640, 480, development, workers);
///     picture->open();
///     for (each band) {
///         picture->beginBand(rows);
///         picture->add({x, y, width, height}, samples, 2);
///         picture->endBand();
///     }
///     picture->finish();
///
/// All throw Failure (kExitNotWritten). A picture that isn't finished leaves no file.
class PictureFile {
public:
    PictureFile(std::string path, std::unique_ptr<PictureEncoder> encoder, const Development& development,
                Workers& workers);

    /// Opens the file; one is open at a time. What is encoded before stays in memory.
    void open();

    void beginBand(int rows);

    /// A block of the band, y counted from the band's bottom. The samples have to stay as they are until the
    /// result is there.
    std::shared_future<void> add(const Block& block, const Samples& samples, int factor);

    void endBand();

    /// Waits for what is in work and writes it: the file is there.
    void finish();

    /// Waits for what is in work, and gives what would be written.
    Bytes takeBytes();

private:
    /// Pixels, which a block shares until it is developed and forgotten, and the blocks.
    struct Band {
        std::shared_ptr<Picture> picture;
        std::vector<std::shared_future<void>> blocks;
    };

    void write(const EncodedRows& rows);
    void writeEncoded();

    std::string fPath;
    std::shared_ptr<PictureEncoder> fEncoder;
    Development fDevelopment;
    Workers& fWorkers;
    std::optional<OutputFile> fFile;
    std::shared_ptr<Band> fBand;
    int fAbove = 0;                                ///< rows over the band
    std::deque<std::future<EncodedRows>> fEncoded; ///< in the order of the rows, of bands that ended
};

/// The alpha of an opaque picture isn't stored. A format without alpha shows what is transparent over black.
/// PFM stores linear colours as they are, also below 0 and above 1.
std::unique_ptr<PictureFile> createPicture(const std::string& path, PictureFormat format, int width,
                                           int height, const Development& development, Workers& workers);

/// One that is never opened: its bytes are its pixels, four bytes each.
std::unique_ptr<PictureFile> keepPicture(int width, const Development& development, Workers& workers);

} // namespace orloview
