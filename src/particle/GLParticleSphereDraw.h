#pragma once

#include "gl/Export.h"
#include "particle/GLParticleDrawBase.h"

#include <vector>

/// Stands for particles that are spheres: a software renderer's business, so that drawing them does nothing
/// here. Hosts keep one like any other drawer.
class ORLOGL_API GLParticleSphereDraw : public GLParticleDrawBase {
public:
    /// As GLParticleDrawBase.
    using GLParticleDrawBase::GLParticleDrawBase;

    void draw(IHWTexPlacement* placement, std::vector<IHWTexture*>* textures) override;
};
