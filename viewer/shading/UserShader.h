#pragma once

#include "scene/View.h"
#include "texture/SceneTextures.h"

#include <functional>
#include <string>
#include <vector>

namespace orloview {

/// A shader of the user's, in the place of all materials.
///
/// What it finds: GL's own attributes, matrices and lights; the base colour as GL's colour and the
/// coordinates of its texture as set 0, those of the normal map as set 2, the texture matrices of these
/// units; baseColorMap with hasBaseColorMap, normalMap with hasNormalMap; lightCount.
///
/// Needs a current context of the share group to be made, used and ended.
class UserShader {
public:
    UserShader() = default;
    virtual ~UserShader() = default;

    UserShader(const UserShader&) = delete;
    UserShader& operator=(const UserShader&) = delete;

    /// Makes it current.
    virtual void bind() = 0;

    /// Tells it of the textures that lie on units 0 and 2; null for none. Needs it current.
    virtual void setTextures(const TextureLayer* base, const TextureLayer* normal) = 0;

    /// Draws something by `draw`, whose own space leads to the world so; as often as it has to be. Needs it
    /// current.
    virtual void draw(const koLinear::AffineMatrix& /*toWorld*/, const std::function<void()>& draw) {
        draw();
    }

    /// Leaves no shader current.
    virtual void unbind() = 0;

    /// What holds for a frame of that view and so many pixels.
    virtual void beginFrame(const View& /*view*/, int /*width*/, int /*height*/) {}

    /// What time it is from now on, in seconds.
    virtual void setTime(double /*seconds*/) {}

    /// What it does without, a line each.
    virtual std::vector<std::string> warnings() const { return {}; }
};

} // namespace orloview
