#include "MesaFixture.h"

#include "framebuffer/GLFrameBuffer.h"

#include <X11/Xutil.h>

namespace {

class MesaWindow : public MesaTest {
protected:
    static koBufferFormat wanted() {
        return {kRasterRGBA8, kRasterDepth24, kRasterStencil8, kSamplingSingle, IHWTexture::kTexture2D};
    }

    static constexpr int kGLXBadWindow = 12;

    int glxError(int code) {
        int opcode = 0;
        int event = 0;
        int first = 0;
        EXPECT_TRUE(XQueryExtension(display(), "GLX", &opcode, &event, &first));
        return first + code;
    }
};

TEST_F(MesaWindow, drawsIntoItsChild) {
    const Window host = XCreateSimpleWindow(display(), DefaultRootWindow(display()), 0, 0, 64, 48, 0, 0, 0);
    XMapWindow(display(), host);
    GLFrameBuffer buffer;
    ASSERT_EQ(buffer.createInWindow(WindowWrapper(nullptr, host, display()), wanted()), 0u);
    XMapWindow(display(), buffer.fWindow.fbWindow());
    ASSERT_EQ(buffer.makeCurrent(), 1u);
    gl().glViewport(0, 0, 64, 48);
    gl().glClearColor(1, 0, 0, 1);
    gl().glClear(GL_COLOR_BUFFER_BIT);
    expectNoErrors();
    buffer.swapBuffers();
    XImage* image = XGetImage(display(), buffer.fWindow.fbWindow(), 0, 0, 64, 48, AllPlanes, ZPixmap);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(XGetPixel(image, 10, 10) & 0xFFFFFF, 0xFF0000u);
    XDestroyImage(image);
    XSync(display(), 0);
    EXPECT_THAT(xErrors(), testing::IsEmpty());
    buffer.deleteInternalState();
    XSync(display(), 0);
    printf("codes:");
    for (int c : xErrors())
        printf(" %d", c);
    printf("\n");
    xErrors().clear();
    XDestroyWindow(display(), host);
}

} // namespace
