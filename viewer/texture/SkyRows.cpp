#include "texture/SkyRows.h"

#include "texture/PictureHeader.h"

#include <algorithm>
#include <cmath>

namespace orloview {

namespace {

/// No sun is brighter; infinity, by which 16-bit floats mean more than they hold, is as much as they hold.
float asLight(float value) {
    constexpr float kBrightest = 1e9F;
    constexpr float kBrightestHalf = 65504.0F;
    if (!(value > 0.0F))
        return 0.0F;
    return std::isinf(value) ? kBrightestHalf : std::min(value, kBrightest);
}

} // namespace

bool SkyPicture::isWhole() const {
    return std::abs(fileWidth - 2 * fileHeight) <= 2;
}

SkyRows::SkyRows(long long width, long long height) {
    if (width < 1 || height < 1)
        throw PictureError("it has no pixels");
    if (static_cast<double>(width) * static_cast<double>(height) > PictureHeader::kMostPixels ||
        std::max(width, height) > 65536)
        throw PictureError("it has more than 16384 x 16384 pixels; make it smaller");
    fPicture.fileWidth = static_cast<int>(width);
    fPicture.fileHeight = static_cast<int>(height);
    const int longest = std::max(fPicture.fileWidth, fPicture.fileHeight);
    fStep = (longest + SkyPicture::kMostWidth - 1) / SkyPicture::kMostWidth;
    fPicture.width = (fPicture.fileWidth + fStep - 1) / fStep;
    fPicture.height = (fPicture.fileHeight + fStep - 1) / fStep;
    fPicture.rgb.reserve(static_cast<size_t>(fPicture.width) * static_cast<size_t>(fPicture.height) * 3);
    fSums.resize(static_cast<size_t>(fPicture.width) * 3);
}

void SkyRows::add(const float* rgb) {
    double* sum = fSums.data();
    for (int x = 0; x < fPicture.fileWidth; x += fStep, sum += 3) {
        for (int i = std::min(fStep, fPicture.fileWidth - x); i > 0; --i, rgb += 3) {
            for (int channel = 0; channel < 3; ++channel)
                sum[channel] += asLight(rgb[channel]);
        }
    }
    if (++fRowsInBlocks == fStep)
        endBlocks();
}

void SkyRows::endBlocks() {
    for (size_t i = 0; i < fSums.size(); ++i) {
        const int first = static_cast<int>(i / 3) * fStep;
        const int columns = std::min(fStep, fPicture.fileWidth - first);
        fPicture.rgb.push_back(static_cast<float>(fSums[i] / (columns * fRowsInBlocks)));
    }
    std::fill(fSums.begin(), fSums.end(), 0.0);
    fRowsInBlocks = 0;
}

SkyPicture SkyRows::take() {
    if (fRowsInBlocks > 0)
        endBlocks();
    return std::move(fPicture);
}

} // namespace orloview
