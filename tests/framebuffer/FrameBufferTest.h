#pragma once

#include "DoubleTest.h"

#include "framebuffer/GLFrameBuffer.h"
#include "gl/GLStartupContext.h"

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

    static std::string startupMadeCurrent() {
        return call("glXMakeCurrent", fakeDisplay(), nthName(NameKind::XWindow), nthContext());
    }

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
