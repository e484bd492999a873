#pragma once

#include "draw/DrawableScene.h"
#include "draw/StudioLights.h"
#include "scene/View.h"

#include <framebuffer/GLFrameBuffer.h>
#include <orlohost/koColor.h>

namespace orloview {

/// How a frame looks, apart from what is in it.
struct FrameLook {
    int width = 0;
    int height = 0;
    koColor::Color background; ///< linear, multiplied by its alpha
    bool wireframe = false;
    float pointSize = 3.0F; ///< pixels
    float lineWidth = 1.0F;
};

/// Draws one frame: the road from the library's frame buffer to the last group. Needs the context that the
/// buffer lives in current. What stands in the buffer afterwards is linear, colour multiplied by alpha.
void drawFrame(GLFrameBuffer& target, const View& view, StudioLights& lights, DrawableScene& drawable,
               const FrameLook& look);

} // namespace orloview
