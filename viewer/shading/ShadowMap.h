#pragma once

#include "draw/Canvas.h"
#include "draw/DrawableScene.h"
#include "draw/SceneLights.h"

#include <optional>

#include <orlohost/koLinear.h>
#include <texture/GLTexture2D.h>

namespace orloview {

/// What the main light of a scene, its first, sees: how near the nearest surface is, as a shadow map on the
/// light and seen through a projector of it. Surfaces that shine through cast no shadow; masks cast that of
/// their whole shape.
///
/// Needs a GLSession to be made, drawn and ended, in its start-up context. The scene and the lights have to
/// stay.
class ShadowMap {
public:
    /// Throws Failure as Canvas does.
    ShadowMap(const Scene& scene, SceneLights& lights);

    /// Draws it anew where the light has moved since. Leaves another target current.
    void update(DrawableScene& drawable, const koLinear::AffineMatrix& worldToEye);

    /// Things have moved, and are within these bounds now.
    void follow(const Bounds& bounds) {
        fBounds = bounds;
        fDrawnFor.reset();
    }

    GLuint texture() const { return fMap->textureName(); }

    /// World to the map, 0 to 1 in all three directions.
    const koLinear::ProjMatrix& worldToMap() const { return fWorldToMap; }

private:
    void aim(const koLinear::AffineMatrix& toWorld);
    void draw(DrawableScene& drawable);

    SceneLights& fLights;
    Bounds fBounds;
    Canvas fCanvas;
    GLTexture2D* fMap;     ///< the light's
    IHWCamera* fProjector; ///< the light's
    std::optional<koLinear::AffineMatrix> fDrawnFor;
    koLinear::ProjMatrix fWorldToMap;
};

} // namespace orloview
