#pragma once

#include "gl/Export.h"
#include "particle/GLParticleDrawBase.h"

#include <cstdint>
#include <vector>

/// Draws each particle as a point, or, with a multi count, as a cloud of points.
///
/// The data say how large points are. With attenuation coefficients a + b + c above 0, and where GL has point
/// parameters, a point at eye distance d is drawn 1 / sqrt(a + b d + c d^2) times as large, down to a tenth
/// of a pixel.
class ORLOGL_API GLParticlePointDraw : public GLParticleDrawBase {
public:
    /// As GLParticleDrawBase.
    using GLParticleDrawBase::GLParticleDrawBase;

    /// Where the normals of lit points look. Any other number: nowhere, none is sent.
    enum NormalMode : uint32_t {
        kNoNormal = 0,
        kAlongVelocity = 1,
        kTowardCamera = 2,
        kAgainstVelocity = 3,
    };

    /// Both arguments are ignored. Leaves the current colour white, and point size and point parameters as it
    /// used them.
    void draw(IHWTexPlacement* placement, std::vector<IHWTexture*>* textures) override;

    /// Sends the normal for a point that moves with `velocity` at `position`; none where it has no direction.
    /// Toward the camera is toward the origin where there is no alignment record.
    void setCurrentNormal(float* velocity, float* position);

    /// What the points' normals are, where they are lit: one of the modes above.
    uint32_t fNormalMode = kTowardCamera;

    float fDistanceAttenuation[3] = {0.0F, 0.0F, 0.0F}; ///< a, b, c
};
