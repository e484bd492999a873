#include "draw/ReadBack.h"

#include "base/ExitCode.h"
#include "draw/GL.h"

#include <algorithm>
#include <utility>

namespace orloview {

namespace {

/// As many of a frame's rows are a strip.
constexpr int kStripRows = 64;

int rowsOfStrip(const ReadPart& part) {
    return std::max(kStripRows / part.factor, 1);
}

/// Lets those strips of a part be given in which something may be, and gives the others.
void giveStrips(const ReadPart& part, const std::function<void(int row, int rows)>& give) {
    const Block read = part.read();
    const auto giveFrom = [&](int row, int end, const std::function<void(int, int)>& giveStrip) {
        for (; row < end; row += rowsOfStrip(part))
            giveStrip(row, std::min(rowsOfStrip(part), end - row));
    };
    const auto giveNothing = [&](int row, int rows) { part.take(row, rows, {nullptr}); };
    part.begin();
    giveFrom(0, read.y, giveNothing);
    giveFrom(read.y, read.y + read.height, give);
    giveFrom(read.y + read.height, part.height, giveNothing);
    part.end();
}

[[noreturn]] void failForMemory() {
    throw Failure(kExitNoGL, "there is no memory for a picture of this size; try a smaller --size");
}

bool hasPixelBuffers() {
    return gl().usable(kCapVertexBufferObject) &&
           isExtensionSupported(gl().glGetString(GL_EXTENSIONS), "GL_ARB_pixel_buffer_object");
}

} // namespace

ReadBack::ReadBack(Canvas& canvas, size_t strips, Order order)
    : fCanvas(canvas), fAreHalves(canvas.target().fActualFormat.fColorFormat == kRasterRGBA16F),
      fHasBuffers(order == Order::Later && canvas.target().fFramebufferObjectFlag && hasPixelBuffers()),
      fStrips(strips) {}

ReadBack::~ReadBack() {
    for (const Strip& strip : fStrips) {
        if (strip.taken.valid())
            strip.taken.wait();
    }
    for (Buffer& buffer : fBuffers) {
        if (buffer.name == 0)
            continue;
        fCanvas.makeCurrent();
        release(buffer);
        gl().glDeleteBuffersARB(1, &buffer.name);
    }
}

void ReadBack::read(ReadPart part) {
    if (!fHasBuffers)
        return readStrips(part);
    if (part.read().width == 0) {
        finish();
        return giveStrips(part, {});
    }
    fetch(part, fBuffers[fNextBuffer]);
    finish();
    fFetched = std::move(part);
    fNextBuffer = 1 - fNextBuffer;
}

void ReadBack::finish() {
    if (fFetched)
        handOver(*std::exchange(fFetched, std::nullopt), fBuffers[1 - fNextBuffer]);
}

void ReadBack::readStrips(const ReadPart& part) {
    const auto format =
        fAreHalves ? koSysPixelFormat(kRasterRGBA16F, 8) : koSysPixelFormat(kRasterRGBA32F, 16);
    const Block read = part.read();
    const int width = read.width * part.factor;
    giveStrips(part, [&](int row, int rows) {
        Strip& strip = fStrips[fNextStrip++ % fStrips.size()];
        if (strip.taken.valid())
            strip.taken.get();
        if (!strip.pixels || strip.pixels->width() < width)
            strip.pixels = std::make_unique<PixelArray2D>(format, width, rowsOfStrip(part) * part.factor);
        if (!strip.pixels->data())
            failForMemory();
        fCanvas.target().readColorBuffer(format.pixelType(),
                                         static_cast<unsigned>((read.x - part.left) * part.factor),
                                         static_cast<unsigned>((row - part.bottom) * part.factor), width,
                                         rows * part.factor, strip.pixels.get());
        strip.taken = part.take(row, rows, {strip.pixels->data(), fAreHalves, read.x, read.x + read.width});
    });
}

/// Asks GL for the part: it comes when the buffer is looked into.
void ReadBack::fetch(const ReadPart& part, Buffer& buffer) {
    release(buffer);
    const Block read = part.read();
    const int width = read.width * part.factor;
    const int height = read.height * part.factor;
    if (buffer.name == 0)
        gl().glGenBuffersARB(1, &buffer.name);
    gl().glBindBufferARB(GL_PIXEL_PACK_BUFFER_ARB, buffer.name);
    gl().glBufferDataARB(GL_PIXEL_PACK_BUFFER_ARB,
                         static_cast<GLsizeiptrARB>(width) * height * (fAreHalves ? 8 : 16), nullptr,
                         GL_STREAM_READ_ARB);
    gl().glPixelStorei(GL_PACK_ALIGNMENT, 1);
    gl().glReadPixels((read.x - part.left) * part.factor, (read.y - part.bottom) * part.factor, width, height,
                      GL_RGBA, fAreHalves ? GL_HALF_FLOAT_ARB : GL_FLOAT, nullptr);
    gl().glBindBufferARB(GL_PIXEL_PACK_BUFFER_ARB, 0);
}

void ReadBack::handOver(const ReadPart& part, Buffer& buffer) {
    gl().glBindBufferARB(GL_PIXEL_PACK_BUFFER_ARB, buffer.name);
    const auto* pixels =
        static_cast<const std::byte*>(gl().glMapBufferARB(GL_PIXEL_PACK_BUFFER_ARB, GL_READ_ONLY_ARB));
    gl().glBindBufferARB(GL_PIXEL_PACK_BUFFER_ARB, 0);
    if (!pixels)
        failForMemory();
    buffer.isMapped = true;
    const Block read = part.read();
    const size_t rowBytes = static_cast<size_t>(read.width) * static_cast<size_t>(part.factor) *
                            static_cast<size_t>(part.factor) * (fAreHalves ? 8 : 16);
    giveStrips(part, [&](int row, int rows) {
        buffer.taken.push_back(part.take(row, rows,
                                         {pixels + static_cast<size_t>(row - read.y) * rowBytes, fAreHalves,
                                          read.x, read.x + read.width}));
    });
}

/// Takes the buffer back from those that use it.
void ReadBack::release(Buffer& buffer) {
    for (const std::shared_future<void>& taken : buffer.taken)
        taken.wait();
    buffer.taken.clear();
    if (!std::exchange(buffer.isMapped, false))
        return;
    gl().glBindBufferARB(GL_PIXEL_PACK_BUFFER_ARB, buffer.name);
    gl().glUnmapBufferARB(GL_PIXEL_PACK_BUFFER_ARB);
    gl().glBindBufferARB(GL_PIXEL_PACK_BUFFER_ARB, 0);
}

} // namespace orloview
