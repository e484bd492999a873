#pragma once

#include "DoubleTest.h"

#include "framebuffer/GLFrameBuffer.h"
#include "gl/GLStartupContext.h"

/// A call that begins with the display, as all of X's and most of GLX's do.
template <typename... Arguments>
std::string on(const char* name, const Arguments&... arguments) {
    return call(name, fakeDisplay(), arguments...);
}

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

    /// A window or pbuffer as a create operation leaves it, with one reference on the start-up context.
    void adopt(GLFrameBuffer& buffer, GLFrameBuffer::Kind kind) {
        buffer.fKind = kind;
        buffer.fFunctionTable = &gl();
        buffer.fDisplay = fakeDisplay();
        buffer.fContext = nthContext(7);
        (kind == GLFrameBuffer::kOffscreen ? buffer.fPbuffer : buffer.fDrawable) = 0x321;
        buffer.fOwnsDrawable = true;
    }

private:
    GLStartupContext* fStartup;
};
