#pragma once

#include "gl/Export.h"
#include "particle/GLParticlePointDraw.h"

#include <vector>

/// The drawer of hosts that tell multi-points from points by their class. It draws nothing: a point drawer
/// with a multi count draws them.
class ORLOGL_API GLParticleMultiPointDraw : public GLParticlePointDraw {
public:
    using GLParticlePointDraw::GLParticlePointDraw;

    void draw(IHWTexPlacement* placement, std::vector<IHWTexture*>* textures) override;
};
