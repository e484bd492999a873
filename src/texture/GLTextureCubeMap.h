#pragma once

#include "texture/IGLTexture.h"

/// A cube map: six square images of one size.
///
///     auto* sky = new GLTextureCubeMap(kRasterRGB8);
///     sky->ref();
///     sky->GLLoadImage(256, IHWTexture::kPositiveX, px, IHWTexture::kNegativeX, nx, ...);
///
/// Uploads set the unpack state to tightly packed rows (row length 0, alignment 1, nothing skipped) and leave
/// it so, and leave the cube map bound to the active unit. A side beyond the six reaches GL as target 0,
/// which GL refuses with GL_INVALID_ENUM. Where and how the map is applied: GLTexUsage.
class ORLOGL_API GLTextureCubeMap : public IGLTexture {
public:
    GLTextureCubeMap();

    /// Of that format; six sides without storage.
    explicit GLTextureCubeMap(RasterFormat format);
    ~GLTextureCubeMap() override;

    /// False without a name.
    bool bind() override;

    /// Makes level 0 of one side, of the stored size: `size` is not looked at. Load all six first, or set
    /// fEdgeSize. Always true.
    bool GLLoadImage(unsigned size, CubeMapSide side, void* pixels);

    /// Stores the size and makes level 0 of six sides, in the order of the arguments. Always true.
    bool GLLoadImage(unsigned size, CubeMapSide side1, void* pixels1, CubeMapSide side2, void* pixels2,
                     CubeMapSide side3, void* pixels3, CubeMapSide side4, void* pixels4, CubeMapSide side5,
                     void* pixels5, CubeMapSide side6, void* pixels6);

    /// The same with all levels: by GL's automatic mipmaps where offered, otherwise by GLU. False when GLU
    /// refuses the last side, and without a GLU where it is needed.
    ///
    /// Begin with +x. Mesa (22.3) makes the levels of whatever side comes from those of +x, and crashes where
    /// that has no image yet.
    bool GLLoadImageMipMap(unsigned size, CubeMapSide side1, void* pixels1, CubeMapSide side2, void* pixels2,
                           CubeMapSide side3, void* pixels3, CubeMapSide side4, void* pixels4,
                           CubeMapSide side5, void* pixels5, CubeMapSide side6, void* pixels6);

    /// How many there are, for leak hunts.
    static int32_t fsNumInstances_GLTextureCubeMap;

    /// Texels along an edge of every side, as the six-side forms stored it.
    uint32_t fEdgeSize = 0;

private:
    struct SideImage {
        CubeMapSide side;
        void* pixels;
    };
    void storeEdgeSize(unsigned size);
    void loadSide(const SideImage& image);
    bool loadSideWithMipmaps(const SideImage& image);
};
