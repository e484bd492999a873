#include "particle/GLParticleCloudDraw.h"
#include "particle/GLParticleMultiPointDraw.h"
#include "particle/GLParticleSphereDraw.h"

// The drawers that leave GL alone.

void GLParticleMultiPointDraw::draw(IHWTexPlacement*, std::vector<IHWTexture*>*) {}

void GLParticleSphereDraw::draw(IHWTexPlacement*, std::vector<IHWTexture*>*) {}

void GLParticleCloudDraw::draw(IHWTexPlacement*, std::vector<IHWTexture*>*) {}
