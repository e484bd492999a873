#pragma once

#include "base/ImportLimits.h"
#include "scene/Scene.h"
#include "texture/Texels.h"

#include <array>
#include <memory>

namespace orloview {

/// What becomes of a picture.
struct Conversion {
    Encoding encoding = Encoding::Srgb;
    AlphaUse alpha = AlphaUse::Ignored;
    std::array<float, 3> factor{1.0F, 1.0F, 1.0F}; ///< multiplies the linear colour
};

/// A picture's file, opened: it tells how large the picture is, and makes texels of it as often as they are
/// asked for. It is decoded once, when they are asked for first.
///
/// Decoders crash and fill the memory on some files, so a program that draws lets them run in processes of
/// their own, limited and confined as readers of models are. Without these, as in tests, pictures are decoded
/// here.
class PictureSource {
public:
    /// Starts the process that starts the decoders: before the program has started threads, opened a display
    /// or taken much memory, all of which they would have too. Throws Failure.
    static void startDecoders(const ImportLimits& limits);

    /// Throws PictureError.
    static std::unique_ptr<PictureSource> open(const Image& image);

    virtual ~PictureSource() = default;

    int width() const { return fWidth; }
    int height() const { return fHeight; }

    /// As makeTexels does. Throws PictureError.
    virtual Texels texels(const Conversion& conversion, int largestSide) = 0;

protected:
    int fWidth = 0;
    int fHeight = 0;
};

} // namespace orloview
