#pragma once

#include "scene/View.h"
#include "shading/SkyLight.h"

#include <gl/GLFunctionTable.h>
#include <texture/GLTexture2D.h>

namespace orloview {

/// The sky as it is seen behind everything. Uploads when it is drawn first. Needs a current context to draw
/// and to go, and the sky to stay.
class Backdrop {
public:
    explicit Backdrop(const SkyLight& sky) : fSky(sky) {}
    ~Backdrop();

    Backdrop(const Backdrop&) = delete;
    Backdrop& operator=(const Backdrop&) = delete;

    /// Fills the viewport; nothing where there are no shaders. Leaves the depth test off and unit 0 without
    /// a texture.
    void draw(const View& view);

private:
    void prepare();

    const SkyLight& fSky;
    GLTexture2D* fTexture = nullptr;
    GLhandleARB fProgram = 0;
};

} // namespace orloview
