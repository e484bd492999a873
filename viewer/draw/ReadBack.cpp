#include "draw/ReadBack.h"

#include "base/ExitCode.h"

#include <algorithm>
#include <chrono>

namespace orloview {

namespace {

/// As many of a frame's rows are a strip.
constexpr int kStripRows = 64;

} // namespace

ReadBack::ReadBack(Canvas& canvas, size_t strips) : fCanvas(canvas), fStrips(strips) {}

ReadBack::~ReadBack() {
    for (const Strip& strip : fStrips) {
        if (strip.taken.valid())
            strip.taken.wait();
    }
}

void ReadBack::read(int width, int height, int factor, const Take& take) {
    GLFrameBuffer& target = fCanvas.target();
    const bool areHalves = target.fActualFormat.fColorFormat == kRasterRGBA16F;
    const koSysPixelFormat format =
        areHalves ? koSysPixelFormat(kRasterRGBA16F, 8) : koSysPixelFormat(kRasterRGBA32F, 16);
    const int most = std::max(kStripRows / factor, 1);
    for (int row = 0; row < height; row += most) {
        const int rows = std::min(most, height - row);
        Strip& strip = fStrips[fNext++ % fStrips.size()];
        if (strip.taken.valid())
            strip.taken.get();
        if (!strip.pixels || strip.pixels->width() < width * factor)
            strip.pixels = std::make_unique<PixelArray2D>(format, width * factor, most * factor);
        if (!strip.pixels->data())
            throw Failure(kExitNoGL, "there is no memory for a picture of this size; try a smaller --size");
        target.readColorBuffer(format.pixelType(), 0, static_cast<unsigned>(row * factor), width * factor,
                               rows * factor, strip.pixels.get());
        strip.taken = take(row, rows, {strip.pixels->data(), areHalves});
    }
}

} // namespace orloview
