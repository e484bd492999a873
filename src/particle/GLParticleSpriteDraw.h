#pragma once

#include "gl/Export.h"
#include "particle/GLParticleDrawBase.h"

#include <cstdint>
#include <vector>

/// Draws each particle as a unit square that faces the viewer, scaled and twisted in its own plane, with a
/// texture, if there is one.
///
/// With the base's fTextureCycling set, a draw that is given textures and a placement binds one for each
/// particle: the first for the first, and the last for all that have none of their own. It takes data that
/// have "textureNumber", whatever numbers are in it; without it, and without cycling, the squares have no
/// texture coordinates. A draw with cycling that is given no textures has them, for the texture that its
/// caller has bound.
///
/// The data's "scaleX", "scaleY" and "twist" set the current scale and twist. They stay for particles, and
/// draws, that have none: a host that draws several objects with one drawer sets them back.
class ORLOGL_API GLParticleSpriteDraw : public GLParticleDrawBase {
public:
    /// As GLParticleDrawBase.
    explicit GLParticleSpriteDraw(const ParticleData& data) : GLParticleDrawBase(data) {}

    /// The viewer in the space of the particles.
    void setCamPositionOS(koLinear::Point& position);

    /// Which way is up for the eye, in the object's frame.
    void setCamUpVectorOS(koLinear::Vector& up);

    /// Leaves the current colour white, and with cycling the last texture bound and enabled on the active
    /// unit.
    void draw(IHWTexPlacement* placement, std::vector<IHWTexture*>* textures) override;

    /// Binds and sets up the texture of a particle, with the textures and the placement of the draw. False
    /// without them, or where the texture is null.
    bool applyTextureCycling(unsigned int index);

    /// Draws one sprite, with what the last draw's data have under their names for this particle: they have
    /// to be alive still, and to have it.
    void drawGLQuadAt(unsigned int index, float x, float y, float z);

    uint32_t fReverseWinding = 0;  ///< not 0: clockwise
    uint32_t fReservedSetting = 1; ///< read by nobody
    float fCurrentScaleX = 1.0F;   ///< what the square is scaled by, of its last particle
    float fCurrentScaleY = 1.0F;   ///< likewise
    float fCurrentTwist = 0.0F;    ///< degrees, counter-clockwise as the viewer sees it

    // Of the draw in progress; those of particles have a float for each of its data.
    const float* fTextureNumberData = nullptr;     ///< from "textureNumber", or null
    std::vector<IHWTexture*>* fTextures = nullptr; ///< one a number; the host's, during draw
    IHWTexPlacement* fPlacement = nullptr;         ///< how they are applied; the host's, during draw
    const float* fTextureNumber = nullptr;         ///< of the particle being drawn, or null
    const float* fScaleX = nullptr;                ///< from "scaleX", or null
    const float* fScaleY = nullptr;                ///< from "scaleY", or null
    const float* fTwist = nullptr;                 ///< from "twist", in degrees, or null

    float fCameraPosition[3] = {0.0F, 0.0F, 0.0F}; ///< in the object's frame
    float fCameraUp[3] = {0.0F, 1.0F, 0.0F};       ///< in the object's frame

    /// Where particle colours are ignored: draws in white with the particles' alpha, times the gain.
    bool fOpacityOnly = false;
    float fOpacityGain = 0.0F; ///< multiplies opacity where fOpacityOnly is set

private:
    void findNamedData(const ParticleData& data);
    void sendColor(const koColor::Color& color) const;

    /// The last twist that was turned by, and its cosine and sine: most particles have their neighbour's.
    float fTurnedBy = 0.0F;
    double fCosine = 1.0;
    double fSine = 0.0;
};
