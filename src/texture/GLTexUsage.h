#pragma once

#include "gl/EntryMacros.h"
#include "gl/Export.h"
#include "orlohost/HWInterfaces.h"
#include "orlohost/koColor.h"
#include "orlohost/koLinear.h"

#include <array>

/// How the texture bound to a target of the active unit is applied: wrap and filter, border, generated
/// coordinates, the texture matrix. Keeps nothing but the driver's largest anisotropy: all else is GL state
/// of the current context and unit. Needs the table and a current context.
///
///     texture->bind();
///     GLTexUsage::setWrapMode(GL_TEXTURE_2D, IHWTexUsage::kRepeat, IHWTexUsage::kClampToEdge);
///     GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, IHWTexUsage::kTrilinear, IHWTexUsage::kLinear);
///
/// No argument is checked against what the driver offers: GL refuses with GL_INVALID_ENUM what it doesn't
/// know (a mipmap filter for magnification; repeating a rectangle texture). Of a wrap mode or filter beyond
/// its enumeration GL is told nothing: that one parameter stays.
class ORLOGL_API GLTexUsage {
public:
    /// Along s and t.
    static void setWrapMode(unsigned target, IHWTexUsage::WrapMode s, IHWTexUsage::WrapMode t);

    /// For a texture drawn smaller, and larger, than it is.
    static void setMinMagFilter(unsigned target, IHWTexUsage::Filter min, IHWTexUsage::Filter mag);

    /// What lies beyond a texture with a clamping wrap.
    static void setBorderColor(unsigned target, const koColor::Color& color);

    /// The largest anisotropy that the driver has, or none (1). Without GL_EXT_texture_filter_anisotropic at
    /// the first call this and all later calls do nothing.
    static void setFilterAnisotropic(unsigned target, bool enable);

    /// Generation of s, t, r and q, of four modes. Enables cube mapping on the unit for GL_TEXTURE_CUBE_MAP
    /// and disables it for any other target. kGenEyeLinear and the host's own modes leave a coordinate as it
    /// is: eye planes come with the projection below.
    static void setTexGenMode(unsigned target, IHWTexUsage::GenMode* modes);

    /// Coordinates projected from a light or camera, whose *eye-to-world* matrix is `view`. Set with the
    /// matrix of the world's camera in force as model-view matrix. Of a vertex at (x, y, z) as the projector
    /// sees it they are s = x / 2, t = y / 2, r = z / 2 and q = 1 + (x + y + z) / 2.
    ///
    /// Type and frustum (left, right, bottom, top, near, far) have no influence on them: they make a
    /// projection matrix, through which GL takes no plane. GL refuses an empty frustum all the same.
    ///
    /// Leaves the generation of all four coordinates enabled, GL_MODELVIEW current, and both stacks as they
    /// were.
    static void setTexGenMode(IHWTexUsage::ProjType type, const koLinear::ProjMatrix& view, float* frustum);

    /// The texture matrix, as it is or from placement: `offset`, `repeat` and the pivots are two numbers,
    /// `rotate` is in degrees. It is coordinates that are placed, so that the picture goes the other way: as
    /// seen it turns clockwise. A repeat of (0, 0) means that nothing is scaled. All leave GL_MODELVIEW
    /// current.
    ///
    /// The short form turns coordinates about (0.5, 0.5), moves them by -offset, then scales them. The long
    /// form moves them by +offset, turns them, then scales them; what stays in its place when they are turned
    /// or scaled is *minus* the pivot.
    static void setTransform(const koLinear::ProjMatrix& matrix);

    /// The short form.
    static void setTransform(float* offset, float* repeat, float rotate);

    /// The long form.
    static void setTransform(float* offset, float* repeat, float* repeatPivot, float rotate,
                             float* rotatePivot);

    /// GL's constant for each value of the enumerations of IHWTexUsage.
    static constexpr std::array<GLint, 7> fsWrapModes = {
        GL_CLAMP,           GL_CLAMP_TO_EDGE,    GL_CLAMP_TO_BORDER,         GL_REPEAT,
        GL_MIRRORED_REPEAT, GL_MIRROR_CLAMP_EXT, GL_MIRROR_CLAMP_TO_EDGE_EXT};
    static_assert(fsWrapModes.size() == IHWTexUsage::kMirrorClampToEdge + 1);

    /// GL's name for each filter.
    static constexpr std::array<GLint, 8> fsFilterModes = {GL_NEAREST,
                                                           GL_LINEAR,
                                                           GL_LINEAR,
                                                           GL_LINEAR_MIPMAP_LINEAR,
                                                           GL_NEAREST_MIPMAP_NEAREST,
                                                           GL_NEAREST_MIPMAP_LINEAR,
                                                           GL_LINEAR_MIPMAP_NEAREST,
                                                           GL_LINEAR_MIPMAP_LINEAR};
    static_assert(fsFilterModes.size() == IHWTexUsage::kLinearMipmapLinear + 1);

    /// For hosts that set a coordinate by themselves; setTexGenMode leaves eye-linear out.
    static constexpr std::array<GLint, 10> fsTexGenModes = {
        0, GL_OBJECT_LINEAR, GL_EYE_LINEAR, GL_SPHERE_MAP, GL_REFLECTION_MAP, GL_NORMAL_MAP, 0, 0, 0, 0};
    static_assert(fsTexGenModes.size() == IHWTexUsage::kGenHost9 + 1);

    /// The driver's largest anisotropy; -2 until the first call asks for it, -1 where there is none.
    static float fsMaxAnisotropy;
};
