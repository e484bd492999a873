#pragma once

#include "orlohost/Export.h"
#include "orlohost/koColor.h"
#include "orlohost/koLinear.h"
#include "orlohost/koSharedObject.h"

#include <cstdint>
#include <vector>

// The host's side of hardware resources: what the library's textures, lights and cameras derive from, so that
// a host can hold and edit them without the library's headers.

/// A resource that may be locked for access and duplicated. A plain one does neither.
class ORLOHOST_API IBaseResource : public koSharedObject::SharedObject {
public:
    /// Who may do what meanwhile: told to lock and asked of isLocked.
    enum LockingMode : uint32_t {
        kLockRead = 0,
        kLockWrite = 1,
    };

    ~IBaseResource() override;

    /// Locks for reading or writing; with `wait`, until the lock is free. Whether it was got.
    virtual bool lock(LockingMode mode, bool wait);

    /// Takes back a lock of that mode.
    virtual void unlock(LockingMode mode);

    /// Whether a lock of that mode is held; here never.
    virtual bool isLocked(LockingMode mode) const;

    /// A copy, deep or shallow, with or without its GL side; null where copying makes no sense.
    virtual IBaseResource* duplicate(bool deep, bool hardware);

    /// What duplicate calls; here null.
    virtual IBaseResource* duplicateInternal(bool deep);
};

/// A texture of any shape.
class ORLOHOST_API IHWTexture : public IBaseResource {
public:
    /// The shape of a texture: what its GL target is chosen by.
    enum TextureType : uint32_t {
        kTextureNone = 0,
        kTexture1D = 1,
        kTexture2D = 2,
        kTextureRectangle = 3,
        kTexture3D = 4,
        kTextureCubeMap = 5,
    };

    /// The sides of a cube map, by the axis that points out of them.
    enum CubeMapSide : uint32_t {
        kPositiveX = 0,
        kNegativeX = 1,
        kPositiveY = 2,
        kNegativeY = 3,
        kPositiveZ = 4,
        kNegativeZ = 5,
    };

    ~IHWTexture() override;

    /// Makes this the bound texture of the active unit; false when that can't be.
    virtual bool bind();

    /// Takes it away from the renderer; here nothing.
    virtual void unbind();

    /// Makes the smaller levels from the first; here nothing.
    virtual void generateMipMaps();

    /// How much the texture matters to the picture, higher keeps it longer. A hint.
    virtual void setImportance(unsigned int importance);

    /// Which kind it is.
    TextureType fTextureType = kTextureNone;

    /// Asks for compressed storage where GL offers it. Set before the upload.
    bool fCompressionRequest = false;
};

/// How a texture is applied: what a host's materials ask for, by number.
class ORLOHOST_API IHWTexUsage {
public:
    /// What coordinates outside 0 to 1 show. The mirrored clamps need GL_EXT_texture_mirror_clamp.
    enum WrapMode : uint32_t {
        kClamp = 0, ///< half border, half edge when filtered
        kClampToEdge = 1,
        kClampToBorder = 2,
        kRepeat = 3,
        kMirroredRepeat = 4,
        kMirrorClamp = 5,
        kMirrorClampToEdge = 6,
    };

    /// Bilinear is linear, and trilinear the linear mix of linear mipmaps, under the names that artists use.
    /// The mipmap filters are for minification only.
    enum Filter : uint32_t {
        kNearest = 0,
        kLinear = 1,
        kBilinear = 2,
        kTrilinear = 3,
        kNearestMipmapNearest = 4,
        kNearestMipmapLinear = 5,
        kLinearMipmapNearest = 6,
        kLinearMipmapLinear = 7,
    };

    /// Where a texture coordinate comes from. The last four are the host's own business: renderers leave the
    /// coordinate as it is.
    enum GenMode : uint32_t {
        kGenNone = 0, ///< from the vertices
        kGenObjectLinear = 1,
        kGenEyeLinear = 2,
        kGenSphereMap = 3,
        kGenReflectionMap = 4,
        kGenNormalMap = 5,
        kGenHost6 = 6,
        kGenHost7 = 7,
        kGenHost8 = 8,
        kGenHost9 = 9,
    };

    /// How a light or camera projects a texture.
    enum ProjType : uint32_t {
        kProjPerspective = 0,
        kProjOrthographic = 1,
    };
};

/// Where and how a texture lies: what the drawers of textured particles are given with the textures.
///
/// The texture matrix, or, where that is the identity, a repeat, an offset and a turn.
class ORLOHOST_API IHWTexPlacement {
public:
    virtual ~IHWTexPlacement();

    /// The texture matrix; the identity leaves it to the next three.
    koLinear::ProjMatrix fMatrix;

    /// How often it lies along s and t, how far it is moved, and degrees about its middle, by which
    /// coordinates turn counter-clockwise: as seen, the texture turns clockwise.
    float fRepeat[2] = {1.0F, 1.0F};
    float fOffset[2] = {0.0F, 0.0F}; ///< texture widths and heights
    float fRotation = 0.0F;          ///< degrees

    /// Along s and t.
    IHWTexUsage::WrapMode fWrapModes[2] = {IHWTexUsage::kRepeat, IHWTexUsage::kRepeat};
    IHWTexUsage::Filter fMinFilter = IHWTexUsage::kLinear; ///< where the picture is drawn smaller
    IHWTexUsage::Filter fMagFilter = IHWTexUsage::kLinear; ///< where it is drawn larger

    /// Of s, t, r and q.
    IHWTexUsage::GenMode fGenModes[4] = {IHWTexUsage::kGenNone, IHWTexUsage::kGenNone, IHWTexUsage::kGenNone,
                                         IHWTexUsage::kGenNone};
    koColor::Color fBorderColor{0.0F, 0.0F, 0.0F, 0.0F}; ///< beyond the picture, with a clamping wrap
    bool fAnisotropic = false;                           ///< sharper where it is seen at a slant
};

/// A camera: where it stands and what it sees.
class ORLOHOST_API IHWCamera {
public:
    /// The sides of the view volume at the near plane, and both planes, in eye units.
    struct Frustum {
        double fLeft = -1.0;   ///< of the near plane, in eye units
        double fRight = 1.0;   ///< of the near plane
        double fBottom = -1.0; ///< of the near plane
        double fTop = 1.0;     ///< of the near plane
        double fNear = 1.0;    ///< distance of the near plane, above 0
        double fFar = 100.0;   ///< distance of the far plane
    };

    virtual ~IHWCamera();

    /// Loads the camera into the renderer; here nothing.
    virtual void bind();

    /// World to eye.
    koLinear::AffineMatrix fViewTransform;

    /// Eye to clip space, in the order in which GL takes a matrix.
    koLinear::ProjMatrix fProjection;

    /// The view's extent, for who computes with it; the renderer loads fProjection.
    Frustum fFrustum;

    /// Set on the cameras that a light projects from.
    bool fIsProjector = false;
};

/// A light: colours, attenuation, place. Attenuation at distance d is
/// 1 / (fConstantAttenuation + fLinearAttenuation d + (sum of fFurtherAttenuationTerms) d^2).
class ORLOHOST_API IHWLight {
public:
    /// What kind of light it is: how it shines.
    enum LightType : uint32_t {
        kLightSpot = 0,        ///< from a point down -z, within a cone
        kLightDirectional = 1, ///< from infinitely far along +z
        kLightPoint = 2,
        kLightAmbient = 3,
    };

    IHWLight() = default;
    IHWLight(const IHWLight&) = delete;
    IHWLight& operator=(const IHWLight&) = delete;
    virtual ~IHWLight();

    /// Sets the type, and position and direction to what a light of this type has.
    virtual void setLightType(LightType type) = 0;

    /// Lets go of what the light keeps in the renderer.
    virtual void releaseLightResources() = 0;

    /// Gives the light so many cameras to project from.
    virtual void addProjector(unsigned int count) = 0;

    /// Takes its projecting cameras away.
    virtual void removeProjector() = 0;

    /// Makes it the renderer's light `unit`.
    virtual void bind(unsigned short unit) = 0;

    /// Switches the renderer's light `unit` off.
    virtual void unbind(unsigned short unit) = 0;

    koColor::Color fAmbientColor{0.0F, 0.0F, 0.0F, 1.0F};  ///< adds everywhere
    koColor::Color fDiffuseColor{1.0F, 1.0F, 1.0F, 1.0F};  ///< what surfaces scatter
    koColor::Color fSpecularColor{1.0F, 1.0F, 1.0F, 1.0F}; ///< what highlights show

    /// Half the opening of a spot's cone in degrees, 0 to 90, and how fast it fades from the axis, 0 to 128.
    float fSpotCutoffAngle = 45.0F;

    /// 0 is even across the cone.
    float fSpotExponent = 0.0F;

    float fConstantAttenuation = 1.0F;                ///< attenuation: see the class
    float fLinearAttenuation = 0.0F;                  ///< by the distance
    float fFurtherAttenuationTerms[2] = {0.0F, 0.0F}; ///< by its square; summed

    /// The light's own frame to the world.
    koLinear::ProjMatrix fLightTransform;

    /// As setLightType left it.
    LightType fLightType = kLightPoint;

    /// In the light's own frame: x, y, z, w (0 for infinitely far) and x, y, z and a fourth that nobody
    /// reads.
    float fPosition[4] = {0.0F, 0.0F, 0.0F, 1.0F};

    /// Of a spot, along the middle of its cone.
    float fSpotDirection[4] = {0.0F, 0.0F, 0.0F, 0.0F};

    /// Cameras that stand at the light, owned by it.
    std::vector<IHWCamera*> fProjectors;
};
