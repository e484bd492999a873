#pragma once

#include "gl/Export.h"
#include "texture/GLTexture2D.h"

#include <cstdint>

/// Two square RGBA8 maps of how light fades from the middle outward, the same value in all four channels.
///
/// With x = (2 i + 1) / size - 1 and y likewise for the texel in column i and row j, in single precision: the
/// distance map holds 255 (x^2 + y^2), at most 255, the exponent map 255 (1 - e^(-16 x^2) e^(-16 y^2)), both
/// cut to whole numbers.
///
/// Filters and wrap modes are the user's to set; the default filter shows nothing, as there is only level 0.
/// Needs the table, a current context, and an unpack state as the TextureManager says. The constructor leaves
/// the exponent map bound to GL_TEXTURE_2D of the active unit.
class ORLOGL_API GLAttenuationLightMap {
public:
    /// Without memory and for a negative size the maps stay without images.
    explicit GLAttenuationLightMap(int size);
    virtual ~GLAttenuationLightMap();

    GLAttenuationLightMap(const GLAttenuationLightMap&) = delete;
    GLAttenuationLightMap& operator=(const GLAttenuationLightMap&) = delete;

    /// A reference on each; null where there was no memory.
    GLTexture2D* fDistanceTexture = nullptr;
    GLTexture2D* fExponentTexture = nullptr; ///< the second of the two

    /// How many there are, for leak hunts.
    static int32_t fsNumInstances_GLAttenuationLightMap;
};
