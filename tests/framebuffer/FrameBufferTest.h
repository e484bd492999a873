#pragma once

#include "DoubleTest.h"

#include "framebuffer/GLFrameBuffer.h"
#include "gl/GLStartupContext.h"

inline std::string bound(GLuint framebuffer) {
    return call("glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, framebuffer);
}

inline koBufferFormat bufferFormat(uint32_t color = kRasterRGBA8, uint32_t depth = kRasterDepth24,
                                   uint32_t stencil = kRasterNoStencil, uint32_t textureType = 2,
                                   uint32_t sampling = kSamplingSingle) {
    return {static_cast<RasterFormat>(color), static_cast<RasterFormat>(depth),
            static_cast<RasterFormat>(stencil), static_cast<SamplingType>(sampling),
            static_cast<IHWTexture::TextureType>(textureType)};
}

/// As bufferFormat takes them.
inline std::array<uint32_t, 5> numbers(const koBufferFormat& format) {
    return {format.fColorFormat, format.fDepthFormat, format.fStencilFormat, format.fTextureType,
            format.fSamplingType};
}

/// A test on the recording GL with a start-up context on a display that was never opened, referenced once by
/// the host.
class FrameBufferTest : public DoubleTest {
protected:
    FrameBufferTest() : fStartup(new GLStartupContext(WindowWrapper(nullptr, 5, fakeDisplay()), nullptr)) {
        fStartup->ref();
        GLStartupContext::fpGlobalGLStartupContext = fStartup;
        script().values[GL_MAX_RENDERBUFFER_SIZE_EXT] = {64};
        clearRecorded();
    }

    // Framebuffer objects keep their references.
    ~FrameBufferTest() override { delete fStartup; }

    GLStartupContext& startup() { return *fStartup; }

    /// A window of the host's, 999 x 999.
    static void assign(GLFrameBuffer& buffer) {
        const WindowWrapper window(nullptr, 0x321, fakeDisplay());
        EXPECT_EQ(buffer.assignInWindow(nthContext(7), window, bufferFormat(), 999, 999), 0u);
    }

private:
    GLStartupContext* fStartup;
};
