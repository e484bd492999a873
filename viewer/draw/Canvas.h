#pragma once

#include <cstdint>

#include <framebuffer/GLFrameBuffer.h>

namespace orloview {

/// What a frame is drawn in, in linear colours: half floats, or bytes where floats aren't offered. Needs a
/// GLSession, also to go, and leaves the start-up context current then.
class Canvas {
public:
    enum class Kind : std::uint8_t {
        Picture,      ///< a framebuffer object
        FloatPicture, ///< the same with whole floats where they are offered
        CubeMap,      ///< one whose colours are a cube map; the width counts
        Pbuffer,      ///< a pbuffer with a context of its own; bytes
    };

    /// Throws Failure: kExitUsage when the size, pixels each way, is beyond the driver's limit; kExitNoGL
    /// when GL can't do it.
    Canvas(Kind kind, int width, int height);
    ~Canvas();

    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    /// The context that it lives in, which drawFrame needs.
    void makeCurrent();

    /// The largest width and height.
    static int largestSide();

    /// The largest width and height of a frame, of which a canvas may hold a part.
    static int largestFrame();

    GLFrameBuffer& target() { return fTarget; }

    /// What is drawn, as a texture. A pbuffer has none.
    IGLTexture& texture() { return *fTarget.fColorTextures[0]; }

private:
    void createFramebuffer(Kind kind, int width, int height);
    void createPbuffer(int width, int height);

    /// False for pbuffers of some drivers, which draw them blank without a word.
    bool givesBackWhatIsDrawn();

    GLFrameBuffer fTarget;
};

} // namespace orloview
