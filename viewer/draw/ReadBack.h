#pragma once

#include "draw/Canvas.h"
#include "output/Picture.h"

#include <functional>
#include <future>
#include <memory>
#include <vector>

namespace orloview {

/// Reads what is drawn in a canvas, a strip at a time: the caller takes a strip, and may go on with it on
/// other threads while the next ones are read.
class ReadBack {
public:
    /// `strips` are in memory at once. The canvas outlives it.
    ReadBack(Canvas& canvas, size_t strips);

    /// Waits until no strip is in use.
    ~ReadBack();

    ReadBack(const ReadBack&) = delete;
    ReadBack& operator=(const ReadBack&) = delete;

    /// Takes a strip: the rows from `row` on, so many; until the result is there the samples stay.
    using Take = std::function<std::shared_future<void>(int row, int rows, const Samples&)>;

    /// The lower left `width` x `height` of the canvas, in squares of factor x factor, from the bottom up.
    /// Throws Failure when there is no memory.
    void read(int width, int height, int factor, const Take& take);

private:
    struct Strip {
        std::unique_ptr<PixelArray2D> pixels;
        std::shared_future<void> taken;
    };

    Canvas& fCanvas;
    std::vector<Strip> fStrips;
    size_t fNext = 0;
};

} // namespace orloview
