#pragma once

#include "texture/GLTextureCubeMap.h"

/// A cube map that normalises: looked up with a vector of any length, a texel holds the unit vector of that
/// direction. For per-pixel lighting, where interpolated vectors have lost their length.
///
/// Filters and wrap modes are the user's to set (GLTexUsage); the default filter shows nothing, as there is
/// only level 0. The sides are uploaded without the base class, so its sizes stay 0.
class ORLOGL_API GLNormalCubeMap : public GLTextureCubeMap {
public:
    /// `size` texels along an edge; for `rgb` see makeNormalizeVectorCubeMap. Leaves the cube map bound.
    GLNormalCubeMap(int size, bool rgb);
    ~GLNormalCubeMap() override;

    /// How many there are, for leak hunts.
    static int32_t fsNumInstances_GLNormalCubeMap;
};

/// Fills the six sides of the cube map bound to the active unit; without memory and for a negative size
/// nothing is done. Needs the table, a current context, and an unpack state as the TextureManager says.
///
/// The centre of the texel in column i and row j stands at s = 2 (i + 1/2) / size - 1 and t likewise of j,
/// and looks along (1, -t, -s) on the side of +x, (-1, -t, s) of -x, (s, 1, t) of +y, (s, -1, -t) of -y, (s,
/// -t, 1) of +z and (-s, -t, -1) of -z, in single precision.
///
/// With `rgb`: GL_RGB8, each component c of the unit vector as the byte (c + 1) / 2 * 255, rounded. Without:
/// GL_SIGNED_HILO_NV, x and y as 32767 c + 32768, cut to whole numbers; z follows from them. Drivers without
/// GL_NV_texture_shader refuse that format, six times.
ORLOGL_API void makeNormalizeVectorCubeMap(int size, bool rgb);
