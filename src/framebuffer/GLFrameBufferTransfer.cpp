// Pixels between arrays and the current framebuffer.

#include "framebuffer/GLFrameBuffer.h"
#include "gl/GLFunctionTable.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>

namespace {

/// How a pixel type of koSysPixelFormat is transferred. No format: it can't be.
struct PixelTransfer {
    uint32_t bytesPerPixel;
    GLenum format;
    GLenum type;
};

/// Indexed by pixel type. Alpha is sized at 3 bytes though it travels as one: hosts share the array with RGB.
constexpr std::array<PixelTransfer, 9> kPixelTransfers = {{
    {3, GL_ALPHA, GL_UNSIGNED_BYTE},
    {3, GL_RGB, GL_UNSIGNED_BYTE},
    {4, GL_RGBA, GL_UNSIGNED_BYTE},
    {8, GL_RGBA, GL_HALF_FLOAT_ARB},
    {16, GL_RGBA, GL_FLOAT},
    {1, GL_NONE, GL_NONE},
    {2, GL_NONE, GL_NONE},
    {4, GL_NONE, GL_NONE},
    {4, GL_DEPTH_COMPONENT, GL_FLOAT},
}};

/// A width or height that is cut to the buffer's.
constexpr int kWhole = std::numeric_limits<int>::max();

using NewArray = std::unique_ptr<PixelArray2D>;

NewArray makeArray(uint32_t pixelType, uint32_t bytesPerPixel, int width, int height) {
    NewArray made(new (std::nothrow) PixelArray2D({pixelType, bytesPerPixel}, width, height));
    if (made && !made->data())
        made.reset();
    return made;
}

} // namespace

PixelArray2D* GLFrameBuffer::readColorBuffer(unsigned pixelType, unsigned x, unsigned y, int width,
                                             int height, PixelArray2D* target) {
    if (!fFunctionTable)
        return nullptr;
    int bufferWidth = 0;
    int bufferHeight = 0;
    getDimensions(&bufferWidth, &bufferHeight);
    const int readWidth = width == 0 ? bufferWidth : std::min(width, bufferWidth);
    const int readHeight = height == 0 ? bufferHeight : std::min(height, bufferHeight);
    if (pixelType >= kPixelTransfers.size() || kPixelTransfers[pixelType].format == GL_NONE)
        return nullptr;
    const PixelTransfer& transfer = kPixelTransfers[pixelType];

    NewArray made;
    if (!target) {
        made = makeArray(pixelType, transfer.bytesPerPixel, readWidth, readHeight);
        if (!made)
            return nullptr;
        target = made.get();
    }
    fFunctionTable->glPixelStorei(GL_PACK_ALIGNMENT, 1);
    fFunctionTable->glReadPixels(static_cast<GLint>(x), static_cast<GLint>(y), readWidth, readHeight,
                                 transfer.format, transfer.type, target->data());
    static_cast<void>(made.release()); // the caller's now
    return target;
}

PixelArray2D* GLFrameBuffer::readCurrentColorBuffer(PixelArray2D*) {
    return readColorBuffer(fActualFormat.fColorFormat, 0, 0, 0, 0, nullptr);
}

std::array<int, 2> GLFrameBuffer::cutToBuffer(int width, int height) {
    int bufferWidth = 0;
    int bufferHeight = 0;
    getDimensions(&bufferWidth, &bufferHeight);
    return {std::min(width, bufferWidth), std::min(height, bufferHeight)};
}

PixelArray2D* GLFrameBuffer::readDepth(const koSysPixelFormat& format, GLenum type, int x, int y, int width,
                                       int height) {
    if (!fFunctionTable)
        return nullptr;
    const auto [readWidth, readHeight] = cutToBuffer(width, height);
    NewArray made = makeArray(format.pixelType(), format.bytesPerPixel(), readWidth, readHeight);
    if (!made)
        return nullptr;
    fFunctionTable->glPixelStorei(GL_PACK_ALIGNMENT, 1);
    fFunctionTable->glReadPixels(std::max(x, 0), std::max(y, 0), readWidth, readHeight, GL_DEPTH_COMPONENT,
                                 type, made->data());
    return made.release();
}

PixelArray2D* GLFrameBuffer::readDepthBuffer(int x, int y, int width, int height) {
    return readDepth({koSysPixelFormat::kDepthFloats, 4}, GL_FLOAT, x, y, width, height);
}

PixelArray2D* GLFrameBuffer::readDepthBuffer() {
    return readDepth({koSysPixelFormat::kDepthFloats, 4}, GL_FLOAT, 0, 0, kWhole, kWhole);
}

PixelArray2D* GLFrameBuffer::readDepthBufferInBytes() {
    return readDepth({koSysPixelFormat::kDepthBytes, 1}, GL_UNSIGNED_BYTE, 0, 0, kWhole, kWhole);
}

void GLFrameBuffer::readDepthBuffer(PixelArray2D*) {
    for (int i = 0; i < 2; ++i)
        const NewArray dropped(readDepthBuffer());
}

void GLFrameBuffer::drawPixels(const std::array<float, 3>& place, const std::array<int, 2>& size,
                               GLenum format, GLenum type, const PixelArray2D& pixels) {
    fFunctionTable->glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    fFunctionTable->glRasterPos3f(place[0], place[1], place[2]);
    fFunctionTable->glDrawPixels(size[0], size[1], format, type, pixels.data());
}

uint32_t GLFrameBuffer::drawColorBuffer(float x, float y, float z, int width, int height,
                                        PixelArray2D* pixels) {
    constexpr uint32_t kColorTypes = 5;
    if (!fFunctionTable || !pixels)
        return 0;
    const std::array<int, 2> size = cutToBuffer(width, height);
    if (pixels->format().pixelType() >= kColorTypes)
        return 0;
    const PixelTransfer& transfer = kPixelTransfers[pixels->format().pixelType()];
    drawPixels({x, y, z}, size, transfer.format, transfer.type, *pixels);
    return 1;
}

void GLFrameBuffer::drawDepthBuffer(float x, float y, float z, int width, int height, PixelArray2D* pixels) {
    if (!fFunctionTable || !pixels)
        return;
    const std::array<int, 2> size = cutToBuffer(width, height);
    if (pixels->format().pixelType() == koSysPixelFormat::kDepthFloats)
        drawPixels({x, y, z}, size, GL_DEPTH_COMPONENT, GL_FLOAT, *pixels);
}

void GLFrameBuffer::writeCurrentColorBuffer(const PixelArray2D& pixels) {
    drawColorBuffer(0.0F, 0.0F, 0.0F, kWhole, kWhole, const_cast<PixelArray2D*>(&pixels)); // only read
}

void GLFrameBuffer::writeDepthBuffer(const PixelArray2D& pixels) {
    drawDepthBuffer(0.0F, 0.0F, 0.0F, kWhole, kWhole, const_cast<PixelArray2D*>(&pixels)); // only read
}
