#pragma once

#include <framebuffer/GLFrameBuffer.h>

namespace orloview {

/// A framebuffer object that a frame is drawn in, in linear colours: half floats, or bytes where floats
/// aren't offered.
///
/// Lives in the start-up context: make that current to draw in it. Needs a GLSession, also to go.
class Canvas {
public:
    /// Throws Failure: kExitUsage when the size, pixels each way, is beyond the driver's limit; kExitNoGL
    /// when GL can't do it.
    Canvas(int width, int height);

    /// The largest width and height.
    static int largestSide();

    /// The largest width and height of a frame, of which a canvas may hold a part.
    static int largestFrame();

    GLFrameBuffer& target() { return fTarget; }

    /// What is drawn, as a texture.
    IGLTexture& texture() { return *fTarget.fColorTextures[0]; }

private:
    GLFrameBuffer fTarget;
};

} // namespace orloview
