// What no whole program shows: pixels that are written back, textures that hold what was rendered, and each
// road to a window, where what stands in the X window is looked at.

#include "DriverTest.h"

#include "framebuffer/GLFrameBuffer.h"
#include "texture/GLTexture2D.h"

#include <X11/Xutil.h>

#include <algorithm>
#include <memory>

namespace {

constexpr Pixel kRed = {255, 0, 0, 255};
constexpr Pixel kGreen = {0, 255, 0, 255};
constexpr Pixel kBlue = {0, 0, 255, 255};

const koBufferFormat kFormat(kRasterRGBA8, kRasterDepth24, kRasterStencil8, kSamplingSingle,
                             IHWTexture::kTexture2D);

class DriverFrameBuffer : public DriverTest {
protected:
    void clear(const Pixel& color) {
        gl().glClearColor(color[0] / 255.0F, color[1] / 255.0F, color[2] / 255.0F, 1);
        gl().glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    }

    /// Over everything from x on, at this window depth.
    void fill(const Pixel& color, float x, double windowDepth) {
        gl().glColor3f(color[0] / 255.0F, color[1] / 255.0F, color[2] / 255.0F);
        gl().glDepthRange(windowDepth, windowDepth);
        gl().glRectf(x, -1, 1, 1);
        gl().glDepthRange(0, 1);
    }

    void expectHalves(const Pixel& left, const Pixel& right) {
        EXPECT_EQ(readPixel(1, 1), left);
        EXPECT_EQ(readPixel(6, 1), right);
    }

    /// Green with a blue rectangle of 3 x 2 in the lower left corner; (0, 0) is at the upper left for X.
    void expectShown(GLFrameBuffer& buffer, Window window, int width, int height) {
        ASSERT_EQ(buffer.makeCurrent(), 1u);
        gl().glViewport(0, 0, width, height);
        clear(kGreen);
        gl().glEnable(GL_SCISSOR_TEST);
        gl().glScissor(0, 0, 3, 2);
        clear(kBlue);
        gl().glDisable(GL_SCISSOR_TEST);
        buffer.swapBuffers();
        gl().glXWaitGL();
        const auto [w, h] = std::pair{static_cast<unsigned>(width), static_cast<unsigned>(height)};
        XImage* const image = XGetImage(display(), window, 0, 0, w, h, AllPlanes, ZPixmap);
        ASSERT_NE(image, nullptr);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                ASSERT_EQ(XGetPixel(image, x, y) & 0xFFFFFF, x < 3 && y >= height - 2 ? 0x0000FFu : 0x00FF00u)
                    << x << ", " << y;
        XDestroyImage(image);
    }
};

TEST_F(DriverFrameBuffer, whatIsReadCanBeWrittenBack) {
    GLFrameBuffer buffer;
    ASSERT_EQ(buffer.createOffscreen(kFormat, 8, 8), 0u);
    ASSERT_EQ(buffer.makeCurrent(), 1u);
    gl().glViewport(0, 0, 8, 8);
    gl().glEnable(GL_DEPTH_TEST);
    clear(kGreen);
    fill(kRed, 0, 0.25F); // the right half
    const std::unique_ptr<PixelArray2D> color(buffer.readColorBuffer(2, 0, 0, 0, 0, nullptr));
    const std::unique_ptr<PixelArray2D> depth(buffer.readDepthBuffer());
    GLTexture2D texture(kRasterRGB8, false);
    buffer.readCurrentColorBuffer(&texture, 0);
    GLubyte texels[64][3];
    gl().glGetTexImage(GL_TEXTURE_2D, 0, GL_RGB, GL_UNSIGNED_BYTE, texels);
    EXPECT_EQ(texels[7][0], 255);
    GLTexture2D depthTexture(kRasterDepth24, false);
    buffer.readDepthBuffer(&depthTexture);
    expectErrors({GL_INVALID_ENUM}); // GL_DEPTH is no read buffer
    GLfloat depths[64];
    gl().glGetTexImage(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, GL_FLOAT, depths);
    EXPECT_NEAR(depths[7], 0.25, 1e-6);
    EXPECT_EQ(depths[0], 1.0F);

    gl().glMatrixMode(GL_PROJECTION);
    gl().glOrtho(0, 8, 0, 8, -1, 1);
    clear(kBlue);
    gl().glDepthFunc(GL_ALWAYS);
    gl().glDepthMask(GL_FALSE);
    buffer.writeCurrentColorBuffer(*color);
    expectHalves(kGreen, kRed);
    gl().glDepthMask(GL_TRUE);
    gl().glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    buffer.writeDepthBuffer(*depth);
    gl().glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    gl().glDepthFunc(GL_LESS);
    gl().glLoadIdentity();
    fill(kBlue, -1, 0.5F);
    expectHalves(kBlue, kRed); // which lies before what was drawn last
}

TEST_F(DriverFrameBuffer, eachWindowIsSeenAndFollowsItsHost) {
    using Vetoes = std::vector<GLCapability>;
    for (const auto& [portably, vetoed] : {std::pair{true, Vetoes{}},
                                           {true, {kCapGLXFBConfig}},
                                           {false, {}},
                                           {false, {kCapSGIXChooseFBConfig, kCapGLXFBConfig}},
                                           {false, {kCapGLXWindow}}}) {
        for (GLCapability capability : vetoed)
            gl().fExtEnabled[capability] = false;
        const Window host =
            XCreateSimpleWindow(display(), DefaultRootWindow(display()), 0, 0, 40, 30, 0, 0, 0x123456);
        XMapWindow(display(), host);
        const auto create =
            portably ? &GLFrameBuffer::createInWindowPortably : &GLFrameBuffer::createInWindow;
        GLFrameBuffer buffer;
        const uint32_t result = (buffer.*create)(WindowWrapper(nullptr, host, display()), kFormat);
        // One driver by NVIDIA (580.159) refuses the lists of visuals that createInWindow has.
        EXPECT_TRUE(result == 0 || (!portably && result == 2)) << result;
        if (result == 0) {
            XMapWindow(display(), buffer.fWindow.fbWindow());
            expectShown(buffer, buffer.fWindow.fbWindow(), 40, 30);
            XResizeWindow(display(), host, 75, 50);
            buffer.resizeWindow(75, 50);
            expectShown(buffer, host, 75, 50);
        }
        expectXErrors({});
        buffer.deleteInternalState();
        XSync(display(), 0);
        EXPECT_LE(xErrors().size(), portably ? 0u : 1u) << "Mesa has one for what createInWindow made";
        xErrors().clear();
        XDestroyWindow(display(), host);
        std::fill_n(gl().fExtEnabled, kCapabilityCount, true);
        startup().makeCurrent();
    }
}

} // namespace
