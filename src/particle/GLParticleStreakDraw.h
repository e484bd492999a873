#pragma once

#include "gl/Export.h"
#include "particle/GLParticlePointDraw.h"

#include <vector>

/// Draws each particle as a line from where it is back along its velocity, or, with a multi count, as a
/// bundle of such lines. The tail's alpha fades.
///
/// The point drawer's normals serve lit streaks; its attenuation has no effect on lines.
class ORLOGL_API GLParticleStreakDraw : public GLParticlePointDraw {
public:
    using GLParticlePointDraw::GLParticlePointDraw;

    /// Both arguments are ignored. Leaves the current colour, the line width and smooth shading as it used
    /// them.
    void draw(IHWTexPlacement* placement, std::vector<IHWTexture*>* textures) override;

    float fTailSize = 7.0F;  ///< frames, of 0.0333 seconds, that the tail reaches back
    float fTailFade = 0.0F;  ///< what the tail's alpha is multiplied by
    float fLineWidth = 5.0F; ///< pixels; a drawing raises less than 1 to 1, for good
};
