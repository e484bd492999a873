#pragma once

#include "orlohost/Export.h"
#include "orlohost/HWInterfaces.h"
#include "orlohost/RasterFormat.h"

#include <cstddef>
#include <cstdint>
#include <memory>

/// What the formats of pixel arrays and of drawables have in common.
class ORLOHOST_API IPixelFormat {
public:
    virtual ~IPixelFormat();

protected:
    IPixelFormat() = default;
    IPixelFormat(const IPixelFormat&) = default;
    IPixelFormat& operator=(const IPixelFormat&) = default;
};

/// The format of a drawable that a host asks for.
class ORLOHOST_API koBufferFormat : public IPixelFormat {
public:
    /// No buffers at all.
    koBufferFormat() = default;
    koBufferFormat(RasterFormat color, RasterFormat depth, RasterFormat stencil, SamplingType sampling,
                   IHWTexture::TextureType textureType);

    RasterFormat fColorFormat = kRasterNoColor;

    /// What the colour buffer of a framebuffer object is: a 2D, rectangle or cube-map texture.
    IHWTexture::TextureType fTextureType = IHWTexture::kTextureRectangle;
    RasterFormat fDepthFormat = kRasterNoDepth;
    RasterFormat fStencilFormat = kRasterNoStencil;
    SamplingType fSamplingType = kSamplingSingle;
};

/// The format of a pixel array in memory.
///
/// Pixel types 0 to 4 are the colour formats of RasterFormat (0 alpha, 1 RGB, 2 RGBA bytes, 3 RGBA half, 4
/// RGBA float); 5 is depth in bytes, 8 depth in floats.
class ORLOHOST_API koSysPixelFormat : public IPixelFormat {
public:
    static constexpr uint32_t kDepthBytes = 5;
    static constexpr uint32_t kDepthFloats = 8;

    koSysPixelFormat(uint32_t pixelType, uint32_t bytesPerPixel);

    uint32_t pixelType() const { return fPixelType; }
    uint32_t bytesPerPixel() const { return fBytesPerPixel; }

private:
    uint32_t fPixelType;
    uint32_t fBytesPerPixel;
};

/// Pixels in memory: rows from the bottom up, without padding.
class ORLOHOST_API PixelArray2D {
public:
    /// Pixels of no value yet: most arrays are made to be filled. A size that is negative or can't be had
    /// leaves data() null.
    PixelArray2D(const koSysPixelFormat& format, int width, int height);

    int width() const { return fWidth; }
    int height() const { return fHeight; }
    const koSysPixelFormat& format() const { return fFormat; }
    size_t byteCount() const { return fByteCount; }

    void* data() { return fData.get(); }
    const void* data() const { return fData.get(); }

private:
    koSysPixelFormat fFormat;
    int fWidth;
    int fHeight;
    size_t fByteCount = 0;
    std::unique_ptr<std::byte[]> fData;
};
