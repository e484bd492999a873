#include "DriverTest.h"

#include "framebuffer/GLFrameBuffer.h"
#include "texture/GLTexture2D.h"

#include <cstring>
#include <functional>
#include <memory>

namespace {

using Array = std::unique_ptr<PixelArray2D>;

constexpr int kSide = 8;

/// Cube maps, pbuffers, and pixels between buffers, arrays and textures.
class DriverOffscreenRoads : public DriverTest {
protected:
    void TearDown() override {
        gl().glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
        // Framebuffer objects keep their references on the start-up context.
        while (startup().refCount() > 1)
            startup().unref();
        DriverTest::TearDown();
    }

    static koBufferFormat format(uint32_t color, uint32_t depth = 7,
                                 IHWTexture::TextureType type = IHWTexture::kTexture2D) {
        return {static_cast<RasterFormat>(color), static_cast<RasterFormat>(depth), kRasterNoStencil,
                kSamplingSingle, type};
    }

    void begin(GLFrameBuffer& buffer) {
        EXPECT_EQ(buffer.makeCurrent(), 1u);
        gl().glViewport(0, 0, kSide, kSide);
        gl().glMatrixMode(GL_PROJECTION);
        gl().glLoadIdentity();
        gl().glMatrixMode(GL_MODELVIEW);
        gl().glLoadIdentity();
        gl().glEnable(GL_DEPTH_TEST);
        gl().glDepthMask(GL_TRUE);
        gl().glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    }

    void clear(float red, float green, float blue, double depth = 1) {
        gl().glClearColor(red, green, blue, 1);
        gl().glClearDepth(depth);
        gl().glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    }

    /// A quad over everything from x on, at this window depth.
    void quad(float x, double windowDepth) {
        gl().glBegin(GL_QUADS);
        for (const auto& [cx, cy] : {std::pair{x, -1.0F}, {1.0F, -1.0F}, {1.0F, 1.0F}, {x, 1.0F}}) {
            gl().glTexCoord2f((cx + 1) / 2, (cy + 1) / 2);
            gl().glVertex3d(cx, cy, 2 * windowDepth - 1);
        }
        gl().glEnd();
    }

    template <typename T>
    static T at(const PixelArray2D& pixels, int x, int y, size_t channel = 0, size_t channels = 1) {
        T value;
        const size_t index = static_cast<size_t>(y * pixels.width() + x) * channels + channel;
        std::memcpy(&value, static_cast<const std::byte*>(pixels.data()) + index * sizeof value,
                    sizeof value);
        return value;
    }
};

TEST_F(DriverOffscreenRoads, eachCubeFaceIsDrawnByItsBit) {
    GLFrameBuffer buffer;
    ASSERT_EQ(buffer.createOffscreen(format(2, 15, IHWTexture::kTextureCubeMap), kSide, kSide), 0u);
    for (uint32_t face = 0; face < 6; ++face) {
        buffer.fCubeFaceMask = 1U << face;
        begin(buffer);
        clear(static_cast<float>(face) / 5, 1, 0);
        EXPECT_EQ(readPixel(3, 3), (Pixel{static_cast<int>(face) * 51, 255, 0, 255}));
    }
    gl().glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    buffer.fColorTextures[0]->bind();
    for (GLenum face = 0; face < 6; ++face) {
        GLubyte texels[kSide * kSide * 4];
        gl().glGetTexImage(GL_TEXTURE_CUBE_MAP_POSITIVE_X + face, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels);
        EXPECT_EQ(texels[100], face * 51) << face;
    }
}

TEST_F(DriverOffscreenRoads, aRegionIsReadTightly) {
    GLFrameBuffer buffer;
    ASSERT_EQ(buffer.createOffscreen(format(4, 6, IHWTexture::kTextureRectangle), kSide, kSide), 0u);
    begin(buffer);
    clear(0, 0.2F, 1);
    gl().glColor3f(1, 0, 0);
    quad(0, 0.5); // the right half
    // Three pixels of three bytes a row: no row starts at a multiple of four.
    const Array part(buffer.readColorBuffer(1, 2, 4, 3, 3, nullptr));
    ASSERT_NE(part, nullptr);
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 3; ++x) {
            EXPECT_EQ(at<GLubyte>(*part, x, y, 0, 3), x < 2 ? 0 : 255) << x << ", " << y;
            EXPECT_EQ(at<GLubyte>(*part, x, y, 1, 3), x < 2 ? 51 : 0) << x << ", " << y;
        }
    }
}

/// With depth and stencil in one; colour alone of a format that nothing is drawn into.
TEST_F(DriverOffscreenRoads, completenessIsTheDrivers) {
    for (const auto& [color, stencil, result] :
         {std::array{2U, 12U, 0U}, {14U, 16U, 0U}, {9U, 16U, 2U}, {2U, 10U, 2U}}) {
        koBufferFormat wanted = format(color, color == 9 ? 15 : 7);
        wanted.fStencilFormat = static_cast<RasterFormat>(stencil);
        GLFrameBuffer buffer;
        EXPECT_EQ(buffer.createOffscreen(wanted, kSide, kSide), result) << color << ", " << stencil;
        EXPECT_EQ(buffer.makeCurrent(), result == 0 ? 1U : 0U);
        gl().glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
        expectNoErrors();
    }
}

TEST_F(DriverOffscreenRoads, depthComesBackAsItWasDrawnAndHidesWhenWrittenBack) {
    GLFrameBuffer buffer;
    ASSERT_EQ(buffer.createOffscreen(format(4), kSide, kSide), 0u);
    begin(buffer);
    clear(0, 0, 0);
    gl().glColor3f(1, 0, 0);
    quad(0, 0.25); // the right half
    const Array depth(buffer.readDepthBuffer());
    const Array bytes(buffer.readDepthBufferInBytes());
    const Array part(buffer.readDepthBuffer(3, -2, 2, 1));
    EXPECT_NEAR(at<float>(*depth, 7, 7), 0.25, 1.0 / (1 << 23));
    EXPECT_EQ(at<float>(*depth, 0, 7), 1.0F);
    EXPECT_NEAR(at<GLubyte>(*bytes, 7, 0), 64, 1);
    EXPECT_EQ(at<GLubyte>(*bytes, 0, 0), 255);
    EXPECT_EQ(at<float>(*part, 0, 0), 1.0F);
    EXPECT_EQ(at<float>(*part, 1, 0), at<float>(*depth, 4, 0));

    // Written back into a cleared buffer it hides what lies behind, on the right half.
    clear(0, 0, 0);
    gl().glDepthFunc(GL_ALWAYS);
    gl().glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    gl().glMatrixMode(GL_PROJECTION);
    gl().glLoadIdentity();
    gl().glOrtho(0, kSide, 0, kSide, -1, 1);
    buffer.writeDepthBuffer(*depth);
    begin(buffer);
    gl().glDepthFunc(GL_LESS);
    gl().glColor3f(0, 1, 0);
    quad(-1, 0.5);
    EXPECT_EQ(readPixel(1, 4), (Pixel{0, 255, 0, 255}));
    EXPECT_EQ(readPixel(6, 4), (Pixel{0, 0, 0, 255})) << "behind what was written back";
    const Array again(buffer.readDepthBuffer(6, 4, 1, 1));
    EXPECT_EQ(at<float>(*again, 0, 0), at<float>(*depth, 6, 4)) << "to the bit";
}

TEST_F(DriverOffscreenRoads, floatColourComesBackToTheBitAndIsDrawnBack) {
    GLFrameBuffer buffer;
    ASSERT_EQ(buffer.createOffscreen(format(4, 15), kSide, kSide), 0u);
    begin(buffer);
    gl().glDisable(GL_DEPTH_TEST);
    const PixelArray2D picture(koSysPixelFormat(4, 16), kSide, kSide);
    std::vector<float> values;
    for (int i = 0; i < kSide * kSide * 4; ++i)
        values.push_back(static_cast<float>(i) / 7.0F - 10.0F); // below 0 and above 1
    std::memcpy(const_cast<void*>(picture.data()), values.data(), picture.byteCount());
    gl().glMatrixMode(GL_PROJECTION);
    gl().glOrtho(0, kSide, 0, kSide, -1, 1);
    buffer.writeCurrentColorBuffer(picture);
    const Array back(buffer.readCurrentColorBuffer(static_cast<PixelArray2D*>(nullptr)));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(std::memcmp(back->data(), values.data(), back->byteCount()), 0);
}

TEST_F(DriverOffscreenRoads, whatIsRenderedIsDrawnWith) {
    GLFrameBuffer first;
    GLFrameBuffer second;
    ASSERT_EQ(first.createOffscreen(format(2), kSide, kSide), 0u);
    ASSERT_EQ(second.createOffscreen(format(2), kSide, kSide), 0u);
    begin(first);
    clear(1, 0, 0);
    gl().glColor3f(0, 0, 1);
    quad(0, 0.5);
    auto* copy = new GLTexture2D(kRasterRGB8, false);
    copy->ref();
    first.readCurrentColorBuffer(copy, 0);
    auto* depth = new GLTexture2D(kRasterDepth24, false);
    depth->ref();
    first.readDepthBuffer(depth);
    expectErrors({GL_INVALID_ENUM}); // GL_DEPTH is no read buffer
    GLfloat depths[kSide * kSide];
    gl().glGetTexImage(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, GL_FLOAT, depths);
    EXPECT_NEAR(depths[kSide - 1], 0.5, 1e-6);
    EXPECT_EQ(depths[0], 1.0F);

    begin(second);
    gl().glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
    for (IGLTexture* texture : {first.fColorTextures[0], static_cast<IGLTexture*>(copy)}) {
        clear(0, 1, 0);
        texture->bind();
        gl().glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        gl().glEnable(GL_TEXTURE_2D);
        quad(-1, 0.5);
        gl().glDisable(GL_TEXTURE_2D);
        EXPECT_EQ(readPixel(1, 1), (Pixel{255, 0, 0, 255}));
        EXPECT_EQ(readPixel(6, 1), (Pixel{0, 0, 255, 255}));
    }
    copy->unref();
    depth->unref();
    expectNoErrors();
}

TEST_F(DriverOffscreenRoads, aPbufferIsDrawnIntoAndRead) {
    const WindowWrapper window(nullptr, DefaultRootWindow(display()), display());
    ASSERT_TRUE(gl().usable(kCapGLXPbuffer) && gl().usable(kCapGLXFBConfig));
    GLFrameBuffer buffer;
    ASSERT_EQ(buffer.createPbufferPortably(window, format(2), kSide, kSide), 0u);
    EXPECT_EQ(buffer.fActualFormat.fColorFormat, kRasterRGBA8);
    EXPECT_EQ(buffer.fWidth, static_cast<unsigned>(kSide));
    begin(buffer);
    clear(0, 0, 0.2F);
    gl().glColor3f(1, 0, 0);
    quad(0, 0.5);
    EXPECT_EQ(readPixel(1, 1), (Pixel{0, 0, 51, 255}));
    const Array pixels(buffer.readColorBuffer(1, 6, 0, 1, 1, nullptr));
    EXPECT_EQ(at<GLubyte>(*pixels, 0, 0), 255);
    const Array depth(buffer.readDepthBuffer());
    EXPECT_NEAR(at<float>(*depth, 7, 7), 0.5, 1e-6);
    auto* copy = new GLTexture2D(kRasterRGB8, false); // shared with all other contexts
    copy->ref();
    buffer.readCurrentColorBuffer(copy, 0);
    buffer.deleteInternalState();
    startup().makeCurrent();
    copy->bind();
    GLubyte texels[kSide * kSide * 4];
    gl().glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels);
    EXPECT_EQ(texels[4 * (kSide - 1)], 255);
    copy->unref();
    expectXErrors({});

    // A single-buffered one is made and measured. What is drawn into it is another matter: Mesa 22.3 raises
    // BadMatch whenever it is flushed, and gives nothing back with softpipe.
    GLFrameBuffer single;
    ASSERT_EQ(single.createOffscreen(window, format(2), kSide, kSide, false), 0u);
    begin(single);
    EXPECT_EQ(gl().glGetError(), GLenum{GL_NO_ERROR});
    EXPECT_EQ(single.fWidth, static_cast<unsigned>(kSide));
    single.deleteInternalState();
    startup().makeCurrent();
    XSync(display(), 0);
    EXPECT_THAT(xErrors(), testing::Each(BadMatch));
    xErrors().clear();
}

TEST_F(DriverOffscreenRoads, roundsOfEachKindKeepMemoryLevel) {
    const WindowWrapper window(nullptr, DefaultRootWindow(display()), display());
    const struct {
        const char* name;
        std::function<uint32_t(GLFrameBuffer&)> create;
    } kKinds[] = {
        {"2D", [](GLFrameBuffer& b) { return b.createOffscreen(format(2), 32, 32); }},
        {"rectangle",
         [](GLFrameBuffer& b) {
             return b.createOffscreen(format(4, 6, IHWTexture::kTextureRectangle), 32, 32);
         }},
        {"cube",
         [](GLFrameBuffer& b) {
             return b.createOffscreen(format(2, 15, IHWTexture::kTextureCubeMap), 32, 32);
         }},
        {"pbuffer", [&](GLFrameBuffer& b) { return b.createOffscreen(window, format(2), 32, 32, false); }},
    };
    for (const auto& kind : kKinds) {
        const auto rounds = [&](int count) {
            for (int i = 0; i < count; ++i) {
                GLFrameBuffer buffer;
                ASSERT_EQ(kind.create(buffer), 0u) << kind.name;
                buffer.deleteInternalState();
                startup().makeCurrent();
                while (startup().refCount() > 1)
                    startup().unref();
            }
        };
        rounds(300);
        const long before = residentPages();
        rounds(1000);
        EXPECT_LT(residentPages() - before, 150) << kind.name;
        GLuint next = 0;
        gl().glGenTextures(1, &next);
        gl().glDeleteTextures(1, &next);
        for (GLuint name = 1; name <= next; ++name)
            EXPECT_FALSE(gl().glIsTexture(name) || gl().glIsFramebufferEXT(name))
                << kind.name << ": " << name << " is left";
    }
    XSync(display(), 0);
}

} // namespace
