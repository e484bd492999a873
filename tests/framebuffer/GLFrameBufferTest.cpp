#include "FrameBufferTest.h"

#include "texture/GLTexture2D.h"

namespace {

class FrameBuffer : public FrameBufferTest {
protected:
    static std::string current() { return on("glXMakeCurrent", 0x321, nthContext(7)); }

    static void expectEmpty(const GLFrameBuffer& buffer) {
        for (const koBufferFormat& format : {buffer.fRequestedFormat, buffer.fActualFormat})
            EXPECT_EQ(numbers(format), numbers(bufferFormat(14, 15, 16, 3)));
        EXPECT_EQ(buffer.fKind | buffer.fFramebufferId | buffer.fColorAttachmentCount, 0u);
        EXPECT_EQ(buffer.fDepthRenderbufferId | buffer.fStencilRenderbufferId | buffer.fCubeFaceMask, 0u);
        EXPECT_EQ(buffer.fWidth | buffer.fHeight | buffer.fDrawable, 0u);
        EXPECT_TRUE(buffer.fGLXDrawableFlag && !buffer.fFramebufferObjectFlag && !buffer.fOwnsDrawable);
        EXPECT_FALSE(buffer.fFunctionTable || buffer.fDepthTexture || buffer.fContext || buffer.fDisplay);
        EXPECT_EQ(buffer.fColorTextures, (std::array<IGLTexture*, 16>{}));
        for (uint32_t i = 0; i < 16; ++i)
            EXPECT_EQ(buffer.fAttachmentPoints[i], GL_COLOR_ATTACHMENT0_EXT + i);
    }
};

TEST_F(FrameBuffer, callsNothingWhileItIsEmptyAtFirstAndAfterClear) {
    GLFrameBuffer buffer;
    EXPECT_EQ(GLFrameBuffer::fsNumInstances_GLFrameBuffer, 1);
    expectEmpty(buffer);
    EXPECT_EQ(buffer.makeCurrent(), 0u);
    buffer.swapBuffers();
    buffer.resizeWindow(3, 4);
    EXPECT_FALSE(buffer.resizeViewport(1, 1, 0, 0));
    std::array<int, 2> size = {-1, -1};
    buffer.getDimensions(&size[0], &size[1]);
    EXPECT_EQ(size, (std::array{0, 0}));

    assign(buffer);
    buffer.fKind = GLFrameBuffer::kOffscreen;
    buffer.fOwnsDrawable = true;
    buffer.fPbuffer = 0x321;
    buffer.fRequestedFormat = buffer.fActualFormat = bufferFormat(1, 1, 1, 1, 1);
    buffer.fFramebufferObjectFlag = true;
    buffer.fGLXDrawableFlag = false;
    buffer.fFramebufferId = buffer.fColorAttachmentCount = buffer.fDepthRenderbufferId = 3;
    buffer.fStencilRenderbufferId = buffer.fCubeFaceMask = buffer.fWidth = buffer.fHeight = 4;
    buffer.fDrawable = 5;
    buffer.fAttachmentPoints.fill(0);
    buffer.fColorTextures.fill(reinterpret_cast<IGLTexture*>(8));
    buffer.fDepthTexture = reinterpret_cast<GLTexture2D*>(8);
    EXPECT_EQ(buffer.clearInternalState(), 0u);
    expectEmpty(buffer);
    EXPECT_EQ(buffer.fPbuffer, 0x321u) << "alone is left";
    for (int i = 0; i < 2; ++i)
        buffer.deleteInternalState();
    EXPECT_EQ(recorded(), Calls{});
    EXPECT_EQ(startup().refCount(), 1) << "gives back no more than it took";
    EXPECT_EQ(GLFrameBuffer::fsNumInstances_GLFrameBuffer, -1) << "falls at every one";
}

TEST_F(FrameBuffer, aWindowBecomesTheTarget) {
    GLFrameBuffer buffer;
    assign(buffer);
    buffer.fOwnsDrawable = true;
    buffer.fColorAttachmentCount = 1;
    failNext("glXMakeCurrent");
    EXPECT_EQ(buffer.makeCurrent(), 1u) << "whatever GLX answers";
    EXPECT_EQ(made(), (Calls{current(), bound(0), call("glDrawBuffer", GL_BACK)}));
    for (bool* flag : {&buffer.fOwnsDrawable, &gl().fExtEnabled[kCapFramebufferObject]}) {
        *flag = false;
        EXPECT_EQ(buffer.makeCurrent(), 1u);
        EXPECT_EQ(made(), Calls{current()});
        *flag = true;
    }
    buffer.fKind = 3;
    EXPECT_EQ(buffer.makeCurrent(), 0u);
    buffer.fGLXDrawableFlag = false;
    buffer.swapBuffers(); // of a framebuffer object
    buffer.fGLXDrawableFlag = true;
    for (Display* display : {static_cast<Display*>(nullptr), fakeDisplay()}) {
        buffer.fDisplay = display;
        buffer.swapBuffers();
        buffer.resizeWindow(30, 40);
        buffer.fFunctionTable = nullptr;
    }
    EXPECT_EQ(recorded(), Calls{}) << "without a display or a table";
    buffer.clearInternalState();
}

TEST_F(FrameBuffer, aWindowIsMeasuredByItsViewport) {
    GLFrameBuffer buffer;
    assign(buffer);
    script().values[GL_MAX_VIEWPORT_DIMS] = {250, 170};
    gl().glViewport(10, 20, 300, 200);
    std::array<int, 2> size = {};
    buffer.getDimensions(&size[0], &size[1]);
    EXPECT_EQ(size, (std::array{290, 180}));
    std::array<unsigned, 4> place = {};
    buffer.viewportSize(place[2], place[3], place[0], place[1]);
    EXPECT_EQ(place, (std::array{10U, 20U, 300U, 200U}));

    // By its sum alone (1), by the limit as well (2), set (3), or not even measured (0).
    const std::array<unsigned, 5> kCases[] = {
        {0, 5, 0, 0, 0},          {5, 0, 0, 0, 0},
        {241, 1, 50, 0, 1},       {1, 151, 0, 30, 1},
        {240, 150, 50, 30, 3},    {251, 1, 0, 0, 2},
        {1, 171, 0, 0, 2},        {250, 170, 0, 0, 3},
        {5, 5, 0xFFFFFFFD, 0, 3}, {5, 5, 0x7FFFFFFF, 0x7FFFFFFF, 3},
    };
    for (const auto& [w, h, x, y, steps] : kCases) {
        gl().glViewport(10, 20, 300, 200);
        clearRecorded();
        EXPECT_EQ(buffer.resizeViewport(w, h, x, y), steps == 3);
        Calls expected = {current(), current(), call("glGetIntegerv", GL_VIEWPORT, kOut),
                          call("glGetIntegerv", GL_MAX_VIEWPORT_DIMS, kOut),
                          call("glViewport", int(x), int(y), w, h)};
        expected.resize(steps == 0 ? 1 : steps + 2);
        EXPECT_EQ(made(), expected) << w << " x " << h << " at " << x << ", " << y;
    }
    buffer.clearInternalState();
}

TEST_F(FrameBuffer, isNotReleasedWithoutAStartupContextThatHasGL) {
    GLFrameBuffer buffer;
    assign(buffer);
    for (GLStartupContext* useless :
         {static_cast<GLStartupContext*>(nullptr), new GLStartupContext(nullptr)}) {
        GLStartupContext::fpGlobalGLStartupContext = useless;
        buffer.deleteInternalState();
        delete useless;
    }
    EXPECT_EQ(GLFrameBuffer::fsNumInstances_GLFrameBuffer, 1) << "not even the count falls";
    EXPECT_EQ(buffer.fContext, nthContext(7));
    EXPECT_EQ(recorded(), Calls{});
}

} // namespace
