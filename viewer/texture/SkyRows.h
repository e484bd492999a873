#pragma once

#include "texture/SkyPicture.h"

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace orloview {

/// Takes a picture of a sky row by row, from the top down, and keeps no more of it than is drawn: each texel
/// is the mean of a block. What isn't light (below 0, or no number) becomes 0.
class SkyRows {
public:
    /// Throws PictureError for a size that no picture has.
    SkyRows(long long width, long long height);

    int width() const { return fPicture.fileWidth; }
    int height() const { return fPicture.fileHeight; }

    void add(const float* rgb);

    /// Once all rows are in.
    SkyPicture take();

private:
    void endBlocks();

    SkyPicture fPicture;
    int fStep = 1;
    int fRowsInBlocks = 0;
    std::vector<double> fSums; ///< of a row of blocks
};

/// Each reads a whole file, and throws PictureError.
SkyPicture readRadiance(std::span<const std::uint8_t> file);
SkyPicture readOpenExr(std::span<const std::uint8_t> file);

} // namespace orloview
