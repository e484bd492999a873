#pragma once

#include "gl/Export.h"
#include "texture/GLAttenuationLightMap.h"
#include "texture/GLNormalCubeMap.h"
#include "texture/GLTextureCache.h"

#include <array>
#include <cstdint>

/// The textures that lighting and shading need and that are computed, not loaded. Each is made when it is
/// first asked for and kept until the manager goes, so that all who ask share one.
///
///     new TextureManager;   // with a current context; GLTextureManager points at it from here on
///     GLuint ramp = GLTextureManager->rampTextureMap();
///
/// Everything but round2 needs the table and a current context. A map that could not be made (0, null) is
/// tried again when asked for the next time. A cube map or attenuation map that could be made, but without
/// memory for its images, stays as it is. docs/procedural-maps.md lists contents, formats and what GL state
/// each leaves behind.
///
/// Images go to GL at the unpack state in force, whatever its alignment. Have no row length set, nothing
/// skipped and no unpack buffer bound while a map is made: GL would read beyond the image, and may crash.
///
/// One per process. It ends the start-up context with itself, over the heads of who still holds references:
/// destroy frame buffers first, and the manager last of all.
class ORLOGL_API TextureManager {
public:
    TextureManager();
    ~TextureManager();

    TextureManager(const TextureManager&) = delete;
    TextureManager& operator=(const TextureManager&) = delete;

    GLTextureCache* textureCache() const; ///< made on first need

    /// 128 texels along an edge, as RGB8 and as HILO; the manager holds the one reference.
    GLNormalCubeMap* normalizationCubeMap();
    GLNormalCubeMap* normalizationHILOCubeMap(); ///< the same in the HILO format, where it is offered

    /// The two textures of one GLAttenuationLightMap of 128 x 128.
    GLTexture2D* attenDistanceMap();
    GLTexture2D* attenExponentMap(); ///< made with the attenuation map

    /// From 255 down to 0 over 512 texels of a 1D luminance texture.
    uint32_t atten1DMapId();

    /// Oddity: generateNHKMap of the first call's arguments, whatever later calls ask for.
    uint32_t nhkMapId(int size, int minExponent, int maxExponent);

    /// Oddity: generateNormalizeExponentiateMap, one for each bucket of exponents
    /// (find_closest_normexp_index), made of the first arguments that fall into it.
    uint32_t normalizeExponentiateMapId(int width, int height, float exponent);

    /// generateRampMap.
    uint32_t rampTextureMap();

    /// 1D alpha textures of two texels, 0 and 255, and the other way round: looked up with a projected
    /// coordinate they cut away what lies behind the projector.
    uint32_t spotProjTextureMask();
    uint32_t shadowProjTextureMask(); ///< the other way round

    /// The nearest power of two, the larger of two that are equally near; 0 for 0 and below, at most 2^30.
    static int round2(int n);

    int32_t fMaxTextureSize = 0;                            ///< texels a side, as the table had it
    int32_t fMaxCubeMapSize = 0;                            ///< 0 where kCapTextureCubeMap is not usable
    mutable GLTextureCache* fTextureCache = nullptr;        ///< null until asked for
    GLNormalCubeMap* fNormalizationCubeMap = nullptr;       ///< null until asked for
    GLNormalCubeMap* fNormalizationHILOCubeMap = nullptr;   ///< null until asked for
    GLAttenuationLightMap* fAttenuationLightMap = nullptr;  ///< null until asked for
    uint32_t fAtten1DMap = 0;                               ///< GL's name, 0 until asked for
    uint32_t fNHKMap = 0;                                   ///< GL's name, 0 until asked for
    std::array<uint32_t, 129> fNormalizeExponentiateMaps{}; ///< by bucket, 1 to 128
    uint32_t fRampMap = 0;                                  ///< GL's name, 0 until asked for
    uint32_t fSpotProjTextureMask = 0;                      ///< GL's name, 0 until asked for
    uint32_t fShadowProjTextureMask = 0;                    ///< GL's name, 0 until asked for

private:
    GLAttenuationLightMap* attenuationLightMap();
};

/// The manager made last. Not cleared when it goes.
ORLOGL_API extern TextureManager* GLTextureManager;

// The generators make a new texture and give its name; 0, and nothing done, without memory and for negative
// sizes. They need what the manager needs.

/// Specular highlights: b^e cut to a byte, b = i / (n - 1) along s and e from `lo` to `hi` along t; black in
/// row 0. n x n luminance, filtered linearly, clamped to its edges. Leaves it bound and GL_TEXTURE_2D
/// enabled.
ORLOGL_API uint32_t generateNHKMap(int n, int lo, int hi);

/// Normalises and raises to a power at once: (s / sqrt(t))^p cut to a byte, s = i / w, t = j / h; white where
/// it is beyond 1, black at (0, 0), but white everywhere for p = 0. w x h, otherwise as generateNHKMap.
ORLOGL_API uint32_t generateNormalizeExponentiateMap(int w, int h, float p);

/// A quarter of the exponent, cut, between 1 and 128; 128 too for what is -1 or less.
ORLOGL_API int find_closest_normexp_index(float p);

/// A 1D intensity texture of 256 texels that hold their own number. Sets no parameters: with the default
/// filter it shows nothing. Leaves it bound.
ORLOGL_API uint32_t generateRampMap();
