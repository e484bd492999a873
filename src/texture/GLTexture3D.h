#pragma once

#include "texture/IGLTexture.h"

/// A name for a 3D texture of the host: the host uploads into textureName() itself.
class ORLOGL_API GLTexture3D : public IGLTexture {
public:
    GLTexture3D();
    ~GLTexture3D() override;

    /// Always false, and nothing is bound: this layer binds 2D textures and cube maps only.
    bool bind() override;

    /// How many there are, for leak hunts.
    static int32_t fsNumInstances_GLTexture3D;
};
