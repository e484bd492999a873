#pragma once

#include "texture/GLTexture2D.h"

/// The cone of a spot light as an 8-bit alpha texture. Empty: its user fills it (GLloadImage,
/// GLloadRenderedImage) and sets filters and wrap modes.
class ORLOGL_API GLSpotLightMap : public GLTexture2D {
public:
    GLSpotLightMap();
    ~GLSpotLightMap() override;

    /// How many there are, for leak hunts.
    static int32_t fsNumInstances_GLSpotLightMap;
};
