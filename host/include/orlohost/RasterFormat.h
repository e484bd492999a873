#pragma once

#include <cstdint>

/// How pixels are stored: colour, depth and stencil formats of textures, frame buffers and pixel arrays.
enum RasterFormat : uint32_t {
    kRasterAlpha8 = 0,
    kRasterRGB8 = 1,
    kRasterRGBA8 = 2,
    kRasterRGBA16F = 3,
    kRasterRGBA32F = 4,
    kRasterIntensity8 = 5, ///< one byte a pixel, spread over all channels
    kRasterDepth16 = 6,
    kRasterDepth24 = 7,
    kRasterRGBX8 = 8, ///< three bytes a pixel in a texture of four channels
    kRasterDepth24Stencil8 = 9,
    kRasterStencil1 = 10,
    kRasterStencil4 = 11,
    kRasterStencil8 = 12,
    kRasterStencil16 = 13,
    kRasterNoColor = 14,
    kRasterNoDepth = 15,
    kRasterNoStencil = 16,
};

/// Whether a drawable is multisampled.
enum SamplingType : uint32_t {
    kSamplingMultiple = 0,
    kSamplingSingle = 1,
};
