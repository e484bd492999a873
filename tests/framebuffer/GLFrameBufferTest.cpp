#include "FrameBufferTest.h"

#include "texture/GLTexture2D.h"

namespace {

class FrameBuffer : public FrameBufferTest {
protected:
    static std::string made(Drawable drawable) {
        return call("glXMakeCurrent", fakeDisplay(), drawable, nthContext(7));
    }
};

TEST_F(FrameBuffer, startsEmptyAndCallsNothing) {
    {
        GLFrameBuffer buffer;
        EXPECT_EQ(GLFrameBuffer::fsNumInstances_GLFrameBuffer, 1);
        EXPECT_EQ(buffer.fKind, 0u);
        EXPECT_FALSE(buffer.isOffscreen());
        EXPECT_TRUE(buffer.fGLXDrawableFlag);
        EXPECT_EQ(buffer.fRequestedFormat.fColorFormat, 14u);
        EXPECT_EQ(buffer.fActualFormat.fTextureType, 3u);
        for (uint32_t i = 0; i < 16; ++i)
            EXPECT_EQ(buffer.fAttachmentPoints[i], 0x8CE0 + i);

        EXPECT_EQ(buffer.makeCurrent(), 0u);
        EXPECT_EQ(buffer.makeCurrentWindowed(), 0u);
        buffer.swapBuffers();
        buffer.resizeWindow(3, 4);
        EXPECT_FALSE(buffer.resizeViewport(1, 1, 0, 0));
        int width = -1;
        int height = -1;
        buffer.getDimensions(&width, &height);
        EXPECT_EQ(width, 0);
        EXPECT_EQ(height, 0);
    }
    EXPECT_EQ(recorded(), Calls{});
    EXPECT_EQ(startup().refCount(), 1) << "gives back no more than it took";
    EXPECT_EQ(GLFrameBuffer::fsNumInstances_GLFrameBuffer, 0);
}

TEST_F(FrameBuffer, clearForgetsAllButThePbuffer) {
    GLFrameBuffer buffer;
    adopt(buffer, GLFrameBuffer::kOffscreen);
    buffer.fRequestedFormat.fColorFormat = buffer.fActualFormat.fDepthFormat = kRasterRGB8;
    buffer.fFramebufferObjectFlag = true;
    buffer.fGLXDrawableFlag = false;
    buffer.fFramebufferId = buffer.fColorAttachmentCount = buffer.fDepthRenderbufferId = 3;
    buffer.fStencilRenderbufferId = buffer.fCubeFaceMask = buffer.fWidth = buffer.fHeight = 4;
    buffer.fDrawable = 5;
    buffer.fAttachmentPoints.fill(0);
    buffer.fColorTextures.fill(reinterpret_cast<IGLTexture*>(8));
    buffer.fDepthTexture = reinterpret_cast<GLTexture2D*>(8);
    EXPECT_EQ(buffer.clearInternalState(), 0u);

    EXPECT_EQ(buffer.fRequestedFormat.fColorFormat, kRasterNoColor);
    EXPECT_EQ(buffer.fActualFormat.fDepthFormat, kRasterNoDepth);
    EXPECT_EQ(buffer.fFunctionTable, nullptr);
    EXPECT_FALSE(buffer.fFramebufferObjectFlag || buffer.fOwnsDrawable);
    EXPECT_TRUE(buffer.fGLXDrawableFlag);
    EXPECT_EQ(buffer.fKind | buffer.fFramebufferId | buffer.fColorAttachmentCount, 0u);
    EXPECT_EQ(buffer.fDepthRenderbufferId | buffer.fStencilRenderbufferId | buffer.fCubeFaceMask, 0u);
    EXPECT_EQ(buffer.fWidth | buffer.fHeight, 0u);
    EXPECT_THAT(buffer.fColorTextures, testing::Each(nullptr));
    EXPECT_EQ(buffer.fAttachmentPoints[15], 0x8CEFu);
    EXPECT_EQ(buffer.fDepthTexture, nullptr);
    EXPECT_EQ(buffer.fContext, nullptr);
    EXPECT_EQ(buffer.fDisplay, nullptr);
    EXPECT_EQ(buffer.fDrawable, 0u);
    EXPECT_EQ(buffer.fPbuffer, 0x321u);
    EXPECT_EQ(recorded(), Calls{});
}

TEST_F(FrameBuffer, deletesADepthRenderbuffer) {
    GLFrameBuffer buffer;
    buffer.fFunctionTable = &gl();
    buffer.fGLXDrawableFlag = false;
    buffer.fKind = GLFrameBuffer::kOffscreen;
    buffer.fDepthRenderbufferId = 31;
    buffer.fFramebufferId = 21;
    buffer.fColorAttachmentCount = 2; // the first slot is empty
    auto* texture = new GLTexture2D;
    texture->ref();
    texture->ref();
    buffer.fColorTextures[1] = texture;
    clearRecorded();
    auto* const beyondTheCount = reinterpret_cast<IGLTexture*>(8);
    buffer.fColorTextures[2] = beyondTheCount;
    for (int i = 0; i < 2; ++i)
        buffer.deleteInternalState();
    EXPECT_EQ(buffer.fColorTextures[1], nullptr);
    EXPECT_EQ(buffer.fColorTextures[2], beyondTheCount);
    EXPECT_EQ(texture->refCount(), 1);
    EXPECT_EQ(recorded(), (Calls{call("glDeleteRenderbuffersEXT", 1, Values{31}),
                                 call("glDeleteFramebuffersEXT", 1, Values{21})}));
    EXPECT_EQ(buffer.fKind, 0u);
    EXPECT_EQ(buffer.fColorAttachmentCount, 0u);
    texture->unref();
}

TEST_F(FrameBuffer, aWindowBecomesTheTarget) {
    GLFrameBuffer buffer;
    adopt(buffer, GLFrameBuffer::kWindowed);
    const std::string unbound = call("glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, 0);
    script().answers["glXMakeCurrent"] = [](const auto&) { return 0; };
    EXPECT_EQ(buffer.makeCurrent(), 1u) << "whatever GLX answers";
    EXPECT_EQ(recorded(), (Calls{made(0x321), unbound}));

    buffer.fColorAttachmentCount = 1;
    clearRecorded();
    buffer.makeCurrent();
    EXPECT_EQ(recorded(), (Calls{made(0x321), unbound, call("glDrawBuffer", GL_BACK)}));

    for (bool* flag : {&buffer.fOwnsDrawable, &gl().fExtSupported[71], &gl().fExtEnabled[71]}) {
        *flag = false;
        clearRecorded();
        EXPECT_EQ(buffer.makeCurrent(), 1u);
        EXPECT_EQ(recorded(), Calls{made(0x321)});
        *flag = true;
    }
    buffer.fKind = 3;
    clearRecorded();
    EXPECT_EQ(buffer.makeCurrent(), 0u);
    EXPECT_EQ(recorded(), Calls{});

    adopt(buffer, GLFrameBuffer::kOffscreen);
    buffer.fPbuffer = 0x654;
    buffer.makeCurrentWindowed();
    EXPECT_EQ(recorded(), Calls{made(0x654)});
    buffer.clearInternalState();
}

TEST_F(FrameBuffer, aWindowIsMeasuredByItsViewport) {
    GLFrameBuffer buffer;
    adopt(buffer, GLFrameBuffer::kWindowed);
    buffer.fOwnsDrawable = false;
    buffer.fWidth = buffer.fHeight = 999;
    script().values[GL_MAX_VIEWPORT_DIMS] = {250, 170};
    gl().glViewport(10, 20, 300, 200);
    int width = 0;
    int height = 0;
    clearRecorded();
    buffer.getDimensions(&width, &height);
    EXPECT_EQ(width, 290);
    EXPECT_EQ(height, 180);
    const Calls measured = {made(0x321), call("glGetIntegerv", GL_VIEWPORT, kOut)};
    EXPECT_EQ(recorded(), measured);
    unsigned w = 0;
    unsigned h = 0;
    unsigned x = 0;
    unsigned y = 0;
    buffer.viewportSize(w, h, x, y);
    EXPECT_EQ((std::array{w, h, x, y}), (std::array{300U, 200U, 10U, 20U}));

    // By its sum alone (1), by the limit as well (2), set (3), or not even measured (0).
    const struct {
        unsigned width, height, x, y;
        int steps;
    } kCases[] = {
        {0, 5, 0, 0, 0},          {5, 0, 0, 0, 0},
        {241, 1, 50, 0, 1},       {1, 151, 0, 30, 1},
        {240, 150, 50, 30, 3},    {251, 1, 0, 0, 2},
        {1, 171, 0, 0, 2},        {250, 170, 0, 0, 3},
        {5, 5, 0xFFFFFFFD, 0, 3}, {5, 5, 0x7FFFFFFF, 0x7FFFFFFF, 3},
    };
    for (const auto& c : kCases) {
        gl().glViewport(10, 20, 300, 200);
        clearRecorded();
        EXPECT_EQ(buffer.resizeViewport(c.width, c.height, c.x, c.y), c.steps == 3);
        Calls expected = {made(0x321)};
        if (c.steps >= 1)
            expected.insert(expected.end(), measured.begin(), measured.end());
        if (c.steps >= 2)
            expected.push_back(call("glGetIntegerv", GL_MAX_VIEWPORT_DIMS, kOut));
        if (c.steps >= 3)
            expected.push_back(
                call("glViewport", static_cast<int>(c.x), static_cast<int>(c.y), c.width, c.height));
        EXPECT_EQ(recorded(), expected) << c.width << " x " << c.height << " at " << c.x << ", " << c.y;
    }
    buffer.clearInternalState();
}

TEST_F(FrameBuffer, swapsAndResizesItsWindow) {
    GLFrameBuffer buffer;
    adopt(buffer, GLFrameBuffer::kWindowed);
    buffer.swapBuffers();
    buffer.resizeWindow(30, 40);
    buffer.fGLXDrawableFlag = false;
    buffer.swapBuffers();
    EXPECT_EQ(recorded(), (Calls{call("glXSwapBuffers", fakeDisplay(), 0x321),
                                 call("XResizeWindow", fakeDisplay(), 0x321, 30, 40), call("glXWaitX")}));

    clearRecorded();
    buffer.fGLXDrawableFlag = true;
    buffer.fDisplay = nullptr;
    buffer.swapBuffers();
    buffer.resizeWindow(30, 40);
    buffer.fDisplay = fakeDisplay();
    buffer.fFunctionTable = nullptr;
    buffer.swapBuffers();
    buffer.resizeWindow(30, 40);
    EXPECT_EQ(recorded(), Calls{}) << "without a table or display";
    buffer.clearInternalState();
}

TEST_F(FrameBuffer, releasesItsWindowOnce) {
    const Calls context = {call("glXMakeCurrent", fakeDisplay(), 0, nullptr),
                           call("glXDestroyContext", fakeDisplay(), nthContext(7))};
    const auto also = [&](const char* name, XID drawable) {
        return context + Calls{call(name, fakeDisplay(), drawable)};
    };
    const Calls pbuffer = context + Calls{call("glXMakeContextCurrent", fakeDisplay(), 0, 0, nullptr),
                                          call("glXDestroyPbuffer", fakeDisplay(), 0x321)};
    const struct {
        GLFrameBuffer::Kind kind;
        bool glxWindows;
        bool drawable;
        Calls calls;
    } kCases[] = {
        {GLFrameBuffer::kWindowed, true, true, also("glXDestroyWindow", 0x321)},
        {GLFrameBuffer::kWindowed, false, true, also("XDestroyWindow", 0)},
        {GLFrameBuffer::kWindowed, true, false, context},
        {GLFrameBuffer::kOffscreen, true, true, pbuffer},
        {GLFrameBuffer::kOffscreen, false, true, also("XDestroyWindow", 0x321)},
        {GLFrameBuffer::kOffscreen, true, false, context},
    };
    for (const auto& c : kCases) {
        gl().fExtEnabled[kCapGLXWindow] = c.glxWindows;
        GLFrameBuffer buffer;
        adopt(buffer, c.kind);
        if (!c.drawable)
            buffer.fPbuffer = buffer.fDrawable = 0;
        const int instances = GLFrameBuffer::fsNumInstances_GLFrameBuffer;
        clearRecorded();
        buffer.deleteInternalState();
        EXPECT_EQ(recorded(), c.calls) << c.kind << c.glxWindows << c.drawable;
        EXPECT_EQ(buffer.fKind, 0u);
        EXPECT_EQ(buffer.fPbuffer | buffer.fDrawable, 0u);
        EXPECT_EQ(GLFrameBuffer::fsNumInstances_GLFrameBuffer, instances - 1);
        clearRecorded();
        buffer.deleteInternalState();
        EXPECT_EQ(recorded(), Calls{}) << "a second release";
        EXPECT_EQ(GLFrameBuffer::fsNumInstances_GLFrameBuffer, instances - 2) << "falls at every release";
    }
    EXPECT_EQ(startup().refCount(), 1);
}

TEST_F(FrameBuffer, leavesAnAdoptedWindowAlone) {
    GLFrameBuffer buffer;
    adopt(buffer, GLFrameBuffer::kWindowed);
    buffer.fOwnsDrawable = false;
    const int instances = GLFrameBuffer::fsNumInstances_GLFrameBuffer;
    buffer.deleteInternalState();
    EXPECT_EQ(GLFrameBuffer::fsNumInstances_GLFrameBuffer, instances - 1);
    EXPECT_EQ(recorded(), Calls{});

    // Without a start-up context, or with one that has no GL context, not even the count falls.
    buffer.fOwnsDrawable = true;
    for (GLStartupContext* useless :
         {static_cast<GLStartupContext*>(nullptr), new GLStartupContext(nullptr)}) {
        GLStartupContext::fpGlobalGLStartupContext = useless;
        buffer.deleteInternalState();
        EXPECT_EQ(GLFrameBuffer::fsNumInstances_GLFrameBuffer, instances - 1);
        EXPECT_EQ(buffer.fContext, nthContext(7));
        delete useless;
    }
    EXPECT_EQ(recorded(), Calls{});
}

} // namespace
