#pragma once

#include "gl/EntryMacros.h"
#include "gl/Export.h"
#include "orlohost/HWInterfaces.h"
#include "orlohost/RasterFormat.h"

#include <cstdint>

/// A texture's GL name and format: what all texture classes share.
///
/// Everything that calls GL needs the table and a current context, making and destroying it included; the
/// name lives as long as the object. Reference counted: see
/// koSharedObject::SharedObject.
class ORLOGL_API IGLTexture : public IHWTexture {
public:
    IGLTexture();
    ~IGLTexture() override;

    /// The GL name, 0 only where GL gave none.
    uint32_t textureName() const { return fTextureName; }

    /// Size of level 0 in texels as last stored; 0 before.
    uint32_t width() const { return fWidth; }
    uint32_t height() const { return fHeight; } ///< rows, likewise

    /// What glTexImage takes for this raster format: type and format of the data handed over, and the
    /// internal format of the store. Three separate look-ups: where store and data differ (intensity, RGBX)
    /// GL converts.
    GLenum sysDataType() const;
    GLenum sysDataFormat() const; ///< of the data handed over

    /// Compressed for RGBA8 when fCompressionRequest is set and S3TC is offered.
    GLenum sysPixelFormat() const;

    uint32_t fTextureName = 0;                   ///< as textureName()
    RasterFormat fRasterFormat = kRasterNoColor; ///< what a texel is
    uint32_t fWidth = 0;                         ///< as width()
    uint32_t fHeight = 0;                        ///< as height()
};
