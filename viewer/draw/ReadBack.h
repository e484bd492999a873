#pragma once

#include "draw/Canvas.h"
#include "output/Picture.h"

#include <array>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <vector>

namespace orloview {

/// Part of a frame that is read from a canvas, and who takes it.
struct ReadPart {
    int width;  ///< in squares of factor x factor
    int height; ///< the same
    int factor;

    /// Takes a strip, the rows from `row` on, so many, from the bottom up: until the result is there the
    /// samples stay.
    std::function<std::shared_future<void>(int row, int rows, const Samples&)> take;

    std::function<void()> begin = [] {}; ///< called before the first strip
    std::function<void()> end = [] {};   ///< called behind the last

    /// Where of the part something may be, within it; the rest isn't read, and a canvas needn't hold it.
    /// None: everywhere.
    std::optional<Block> drawn = std::nullopt;

    int left = 0; ///< what of the part the canvas holds begins here, in squares
    int bottom = 0;

    Block read() const { return drawn.value_or(Block{0, 0, width, height}); }
};

/// Reads what is drawn in a canvas, a strip at a time: who takes a strip may go on with it on other threads
/// while the next ones are read.
///
/// Where GL has pixel buffers, a part may be handed over later, when the next one is drawn and asked for: GL
/// fetches the one while the other is drawn. So what `take` needs has to stay until `finish`.
class ReadBack {
public:
    enum class Order : std::uint8_t {
        AtOnce, ///< for a single part
        Later,  ///< where GL can
    };

    /// `strips` are in memory at once. The canvas outlives it.
    ReadBack(Canvas& canvas, size_t strips, Order order);

    /// Waits until no strip is in use.
    ~ReadBack();

    ReadBack(const ReadBack&) = delete;
    ReadBack& operator=(const ReadBack&) = delete;

    /// Needs the canvas's context current. Throws Failure when there is no memory.
    void read(ReadPart part);

    /// Hands over what isn't yet.
    void finish();

private:
    struct Strip {
        std::unique_ptr<PixelArray2D> pixels;
        std::shared_future<void> taken;
    };

    /// A pixel buffer, and what of it is in use.
    struct Buffer {
        GLuint name = 0;
        std::vector<std::shared_future<void>> taken;
        bool isMapped = false;
    };

    void readStrips(const ReadPart& part);
    void fetch(const ReadPart& part, Buffer& buffer);
    void handOver(const ReadPart& part, Buffer& buffer);
    void release(Buffer& buffer);

    Canvas& fCanvas;
    bool fAreHalves;
    bool fHasBuffers;
    std::vector<Strip> fStrips;
    size_t fNextStrip = 0;
    std::array<Buffer, 2> fBuffers;
    size_t fNextBuffer = 0;
    std::optional<ReadPart> fFetched; ///< in the buffer before the next, not handed over
};

} // namespace orloview
