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

    /// Copied by value.
    IPixelFormat(const IPixelFormat&) = default;

    /// Copied by value.
    IPixelFormat& operator=(const IPixelFormat&) = default;
};

/// The format of a drawable that a host asks for.
class ORLOHOST_API koBufferFormat : public IPixelFormat {
public:
    /// No buffers at all.
    koBufferFormat() = default;

    /// Of its parts.
    koBufferFormat(RasterFormat color, RasterFormat depth, RasterFormat stencil, SamplingType sampling,
                   IHWTexture::TextureType textureType);

    RasterFormat fColorFormat = kRasterNoColor; ///< what a pixel of colour is

    /// What the colour buffer of a framebuffer object is: a 2D, rectangle or cube-map texture.
    IHWTexture::TextureType fTextureType = IHWTexture::kTextureRectangle;
    RasterFormat fDepthFormat = kRasterNoDepth;     ///< what a pixel of depth is
    RasterFormat fStencilFormat = kRasterNoStencil; ///< what a pixel of stencil is
    SamplingType fSamplingType = kSamplingSingle;   ///< how many samples a pixel has
};

/// The format of a pixel array in memory.
///
/// Pixel types 0 to 4 are the colour formats of RasterFormat (0 alpha, 1 RGB, 2 RGBA bytes, 3 RGBA half, 4
/// RGBA float); 5 is depth in bytes, 8 depth in floats.
class ORLOHOST_API koSysPixelFormat : public IPixelFormat {
public:
    static constexpr uint32_t kDepthBytes = 5;  ///< a pixel type: depth as 4 bytes
    static constexpr uint32_t kDepthFloats = 8; ///< a pixel type: depth as a float

    /// Of a pixel type, as the readers of frame buffers number them, and its size.
    koSysPixelFormat(uint32_t pixelType, uint32_t bytesPerPixel);

    uint32_t pixelType() const { return fPixelType; }         ///< what a pixel holds
    uint32_t bytesPerPixel() const { return fBytesPerPixel; } ///< how large it is

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

    int width() const { return fWidth; }                       ///< pixels in a row
    int height() const { return fHeight; }                     ///< rows
    const koSysPixelFormat& format() const { return fFormat; } ///< of each pixel
    size_t byteCount() const { return fByteCount; }            ///< of all rows

    void* data() { return fData.get(); } ///< the first row, which is the lowest where GL has read it
    const void* data() const { return fData.get(); } ///< the same, to read

private:
    koSysPixelFormat fFormat;
    int fWidth;
    int fHeight;
    size_t fByteCount = 0;
    std::unique_ptr<std::byte[]> fData;
};
