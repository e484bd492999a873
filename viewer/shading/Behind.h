#pragma once

#include "draw/Canvas.h"
#include "scene/View.h"

#include <functional>

#include <texture/GLTexture2D.h>

namespace orloview {

/// What stands behind surfaces that are seen through, as their shaders read it (docs/shading-networks.md):
/// the frame without them, smaller and smaller. Needs a GLSession, also to go.
class Behind {
public:
    /// Pixels each way of the largest.
    static constexpr int kSide = 1024;

    /// Throws Failure (kExitNoGL).
    Behind();
    ~Behind();

    Behind(const Behind&) = delete;
    Behind& operator=(const Behind&) = delete;

    /// Draws it for a view; `draw` draws the frame of that view, kSide pixels each way, to a frame buffer.
    /// Leaves the start-up context current.
    void update(const View& view, const std::function<void(GLFrameBuffer&)>& draw);

    GLuint texture() const { return fLevels->textureName(); }

    /// Eye space to the largest, 0 to 1.
    const koLinear::ProjMatrix& eyeToMap() const { return fEyeToMap; }

private:
    void makeSmaller();

    Canvas fCanvas;
    GLTexture2D* fLevels;
    koLinear::ProjMatrix fEyeToMap;
};

} // namespace orloview
