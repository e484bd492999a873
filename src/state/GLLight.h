#pragma once

#include "gl/Export.h"
#include "orlohost/HWInterfaces.h"
#include "orlohost/RasterFormat.h"

#include <cstdint>
#include <vector>

class GLTexture2D;
class IGLTexture;

/// A host light as fixed-function GL light state, with what it needs for shadows and projections: projector
/// cameras (owned), shadow maps and two textures (referenced).
///
/// Made, told and destroyed without GL. bind, unbind, allocateShadowMap, and letting go of textures need the
/// table and a current context.
class ORLOGL_API GLLight : public IHWLight {
public:
    GLLight();

    /// Lets go of shadow maps, textures and projectors, in this order.
    ~GLLight() override;

    /// An unknown type is stored and leaves position and direction alone.
    void setLightType(LightType type) override;

    /// Lets go of the shadow maps; projectors and textures stay.
    void releaseLightResources() override;

    /// Deletes the projectors there are and makes `count` new ones, as many as memory allows.
    void addProjector(unsigned int count) override;

    /// Deletes the projectors there are.
    void removeProjector() override;

    /// Sets and enables GL light `unit`. The light's transform is multiplied onto the current matrix, so the
    /// model-view mode must be current with the view loaded, as GLCamera::bind leaves it. The unit isn't
    /// checked.
    void bind(unsigned short unit) override;

    /// Disables GL light `unit`.
    void unbind(unsigned short unit) override;

    /// Lets go of the shadow maps.
    virtual void removeShadowMaps();

    /// Lets go of both textures.
    virtual void removeTextures();

    /// Adds one more shadow map: a 2D texture of this format, without storage yet.
    void allocateShadowMap(RasterFormat format);

    /// How many there are, for leak hunts.
    static int32_t fsNumInstances_GLLight;

    /// A reference each, as many as allocateShadowMap made.
    std::vector<GLTexture2D*> fShadowMaps;

    // Kept for hosts that shade with shadows; nothing here reads them.
    int32_t fShadowPass = 0;                             ///< the host's count
    bool fCastsShadows = true;                           ///< whether it does
    bool fShadowsStale = false;                          ///< whether they have to be drawn again
    koColor::Color fShadowColor{0.0F, 0.0F, 0.0F, 1.0F}; ///< what is in shadow tends to

    /// A reference each, may be null.
    IGLTexture* fFirstTexture = nullptr;
    IGLTexture* fSecondTexture = nullptr; ///< as the first

    /// For the host, like the shadow fields.
    float fTextureIntensity = 1.0F;
};
