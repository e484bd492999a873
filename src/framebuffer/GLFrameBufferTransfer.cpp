// Pixels out of and into the current framebuffer.

#include "framebuffer/GLFrameBuffer.h"
#include "gl/GLFunctionTable.h"

#include <algorithm>
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

    std::unique_ptr<PixelArray2D> made;
    if (!target) {
        const koSysPixelFormat format(pixelType, transfer.bytesPerPixel);
        made.reset(new (std::nothrow) PixelArray2D(format, readWidth, readHeight));
        if (!made || !made->data())
            return nullptr;
        target = made.get();
    }
    fFunctionTable->glPixelStorei(GL_PACK_ALIGNMENT, 1);
    fFunctionTable->glReadPixels(static_cast<GLint>(x), static_cast<GLint>(y), readWidth, readHeight,
                                 transfer.format, transfer.type, target->data());
    static_cast<void>(made.release()); // the caller's now
    return target;
}
