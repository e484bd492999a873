#include "orlohost/PixelArray2D.h"

#include <new>

IPixelFormat::~IPixelFormat() = default;

koBufferFormat::koBufferFormat(RasterFormat color, RasterFormat depth, RasterFormat stencil,
                               SamplingType sampling, IHWTexture::TextureType textureType)
    : fColorFormat(color), fTextureType(textureType), fDepthFormat(depth), fStencilFormat(stencil),
      fSamplingType(sampling) {}

koSysPixelFormat::koSysPixelFormat(uint32_t pixelType, uint32_t bytesPerPixel)
    : fPixelType(pixelType), fBytesPerPixel(bytesPerPixel) {}

PixelArray2D::PixelArray2D(const koSysPixelFormat& format, int width, int height)
    : fFormat(format), fWidth(width), fHeight(height) {
    size_t rowBytes = 0;
    if (width < 0 || height < 0 ||
        __builtin_mul_overflow(static_cast<size_t>(width), format.bytesPerPixel(), &rowBytes) ||
        __builtin_mul_overflow(rowBytes, static_cast<size_t>(height), &fByteCount)) {
        fByteCount = 0;
        return;
    }
    fData.reset(new (std::nothrow) std::byte[fByteCount]);
    if (!fData)
        fByteCount = 0;
}
