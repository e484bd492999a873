#include "DriverTest.h"

#include "framebuffer/GLFrameBuffer.h"
#include "texture/GLTexture2D.h"

#include <cstring>
#include <memory>

namespace {

class DriverFrameBuffer : public DriverTest {
protected:
    void TearDown() override {
        // Framebuffer objects keep their references on the start-up context.
        while (startup().refCount() > 1)
            startup().unref();
        DriverTest::TearDown();
    }

    static uint32_t create(GLFrameBuffer& buffer, uint32_t color, uint32_t depth, uint32_t stencil,
                           IHWTexture::TextureType type = IHWTexture::kTexture2D) {
        return buffer.createOffscreen({static_cast<RasterFormat>(color), static_cast<RasterFormat>(depth),
                                       static_cast<RasterFormat>(stencil), kSamplingSingle, type},
                                      16, 8);
    }

    GLint bits(GLenum parameter) {
        GLint value = -1;
        gl().glGetIntegerv(parameter, &value);
        return value;
    }

    /// Whether the driver draws into colours with a stencil of that format and no depth, tried by hand.
    bool takesWithoutDepth(GLenum stencil) {
        GLuint framebuffer = 0;
        GLuint buffers[2] = {};
        gl().glGenFramebuffersEXT(1, &framebuffer);
        gl().glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, framebuffer);
        gl().glGenRenderbuffersEXT(2, buffers);
        const GLenum kParts[2][2] = {{GL_RGBA8, GL_COLOR_ATTACHMENT0_EXT},
                                     {stencil, GL_STENCIL_ATTACHMENT_EXT}};
        for (int i = 0; i < 2; ++i) {
            gl().glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, buffers[i]);
            gl().glRenderbufferStorageEXT(GL_RENDERBUFFER_EXT, kParts[i][0], 16, 8);
            gl().glFramebufferRenderbufferEXT(GL_FRAMEBUFFER_EXT, kParts[i][1], GL_RENDERBUFFER_EXT,
                                              buffers[i]);
        }
        const GLenum status = gl().glCheckFramebufferStatusEXT(GL_FRAMEBUFFER_EXT);
        gl().glDeleteFramebuffersEXT(1, &framebuffer);
        gl().glDeleteRenderbuffersEXT(2, buffers);
        return status == GL_FRAMEBUFFER_COMPLETE_EXT;
    }

    /// (64, 128, 255, 51) with a red square at x 4 to 7, y 2 to 5.
    void paint(GLFrameBuffer& buffer) {
        ASSERT_EQ(buffer.makeCurrent(), 1u);
        EXPECT_TRUE(buffer.resizeViewport(16, 8, 0, 0));
        gl().glClearColor(64 / 255.0F, 128 / 255.0F, 1, 0.2F);
        gl().glClearDepth(0.25);
        gl().glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        gl().glEnable(GL_SCISSOR_TEST);
        gl().glScissor(4, 2, 4, 4);
        gl().glClearColor(1, 0, 0, 1);
        gl().glClear(GL_COLOR_BUFFER_BIT);
        gl().glDisable(GL_SCISSOR_TEST);
    }

    /// One pixel of an array, of which `stride` bytes travel a pixel.
    template <typename T, size_t kCount>
    static std::array<T, kCount> at(const PixelArray2D& pixels, int x, int y, size_t stride) {
        std::array<T, kCount> value;
        const auto index =
            static_cast<size_t>(y) * static_cast<size_t>(pixels.width()) + static_cast<size_t>(x);
        std::memcpy(&value, static_cast<const std::byte*>(pixels.data()) + index * stride, sizeof value);
        return value;
    }
};

TEST_F(DriverFrameBuffer, readsEachPixelType) {
    GLFrameBuffer buffer;
    ASSERT_EQ(create(buffer, 2, 7, 16), 0u);
    paint(buffer);
    std::unique_ptr<PixelArray2D> read[9];
    for (unsigned type : {0, 1, 2, 3, 4, 8}) {
        read[type].reset(buffer.readColorBuffer(type, 0, 0, 0, 0, nullptr));
        ASSERT_NE(read[type], nullptr) << type;
        EXPECT_EQ(read[type]->width(), 16);
        EXPECT_EQ(read[type]->height(), 8);
    }
    using testing::ElementsAre;
    EXPECT_THAT((at<GLubyte, 1>(*read[0], 0, 7, 1)), ElementsAre(51));
    EXPECT_THAT((at<GLubyte, 1>(*read[0], 7, 5, 1)), ElementsAre(255));
    EXPECT_THAT((at<GLubyte, 3>(*read[1], 8, 5, 3)), ElementsAre(64, 128, 255));
    EXPECT_THAT((at<GLubyte, 3>(*read[1], 4, 2, 3)), ElementsAre(255, 0, 0));
    EXPECT_THAT((at<GLubyte, 4>(*read[2], 4, 1, 4)), ElementsAre(64, 128, 255, 51));
    EXPECT_THAT((at<GLubyte, 4>(*read[2], 7, 5, 4)), ElementsAre(255, 0, 0, 255));
    EXPECT_THAT((at<GLushort, 4>(*read[3], 4, 5, 8)), ElementsAre(0x3C00, 0, 0, 0x3C00));
    EXPECT_THAT((at<float, 4>(*read[4], 3, 5, 16)),
                ElementsAre(testing::FloatNear(64 / 255.0F, 1e-6F), testing::FloatNear(128 / 255.0F, 1e-6F),
                            1, testing::FloatNear(0.2F, 1e-6F)));
    EXPECT_THAT((at<float, 1>(*read[8], 15, 7, 4)), ElementsAre(testing::FloatNear(0.25F, 1e-6F)));
    gl().glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
}

TEST_F(DriverFrameBuffer, readsARegionTightly) {
    GLFrameBuffer buffer;
    ASSERT_EQ(create(buffer, 2, 15, 16), 0u);
    paint(buffer);
    // Three pixels of three bytes a row: no row starts at a multiple of four.
    const std::unique_ptr<PixelArray2D> part(buffer.readColorBuffer(1, 6, 4, 3, 3, nullptr));
    ASSERT_NE(part, nullptr);
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 3; ++x) {
            const bool red = x < 2 && y < 2;
            EXPECT_EQ((at<GLubyte, 3>(*part, x, y, 3)),
                      (red ? std::array<GLubyte, 3>{255, 0, 0} : std::array<GLubyte, 3>{64, 128, 255}))
                << x << ", " << y;
        }
    }
    const std::unique_ptr<PixelArray2D> all(buffer.readColorBuffer(2, 0, 0, 99, 99, nullptr));
    EXPECT_EQ(all->width(), 16);
    EXPECT_EQ(all->height(), 8);
    gl().glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
}

TEST_F(DriverFrameBuffer, rendersIntoItsTextures) {
    GLFrameBuffer buffer;
    ASSERT_EQ(create(buffer, 4, 6, 16, IHWTexture::kTextureRectangle), 0u);
    paint(buffer);
    gl().glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    EXPECT_TRUE(buffer.fColorTextures[0]->bind());
    std::array<std::array<float, 4>, 128> color = {};
    gl().glGetTexImage(GL_TEXTURE_RECTANGLE_ARB, 0, GL_RGBA, GL_FLOAT, color.data());
    EXPECT_THAT(color[2 * 16 + 4], testing::ElementsAre(1, 0, 0, 1));
    EXPECT_NEAR(color[1 * 16 + 4][3], 0.2, 1e-6);
    EXPECT_TRUE(buffer.fDepthTexture->bind());
    std::array<float, 128> depth = {};
    gl().glGetTexImage(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, GL_FLOAT, depth.data());
    EXPECT_NEAR(depth[127], 0.25, 1.0 / 65535);
}

TEST_F(DriverFrameBuffer, isCompleteAsTheDriverSays) {
    const struct {
        uint32_t color, depth, stencil;
        IHWTexture::TextureType type;
        uint32_t result;
    } kCases[] = {
        {2, 7, 16, IHWTexture::kTexture2D, 0},  {1, 6, 16, IHWTexture::kTexture2D, 0},
        {14, 7, 16, IHWTexture::kTexture2D, 0}, {4, 7, 16, IHWTexture::kTextureRectangle, 0},
        {2, 7, 12, IHWTexture::kTexture2D, 0},  {14, 15, 16, IHWTexture::kTexture2D, 2},
        {6, 15, 16, IHWTexture::kTexture2D, 2}, {7, 15, 16, IHWTexture::kTexture2D, 2},
        {9, 15, 16, IHWTexture::kTexture2D, 2}, {2, 7, 10, IHWTexture::kTexture2D, 2},
        {2, 7, 16, IHWTexture::kTexture1D, 2},
    };
    for (const auto& c : kCases) {
        GLFrameBuffer buffer;
        EXPECT_EQ(create(buffer, c.color, c.depth, c.stencil, c.type), c.result)
            << c.color << ", " << c.depth << ", " << c.stencil;
        EXPECT_EQ(bits(GL_FRAMEBUFFER_BINDING_EXT), 0);
        if (c.result != 0)
            continue;
        EXPECT_EQ(buffer.makeCurrent(), 1u);
        EXPECT_EQ(bits(GL_STENCIL_BITS), 0) << c.stencil;
        gl().glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
        expectNoErrors();
    }
    // A stencil without a depth: Mesa 22.3.6 takes each of them, NVIDIA 580.159 those of 8 bits.
    for (const auto& [stencil, stored] : {std::pair{10U, GL_STENCIL_INDEX1_EXT},
                                          {11U, GL_STENCIL_INDEX4_EXT},
                                          {12U, GL_STENCIL_INDEX},
                                          {13U, GL_STENCIL_INDEX16_EXT},
                                          {99U, GL_STENCIL_INDEX8_EXT}}) {
        const bool isTaken = takesWithoutDepth(static_cast<GLenum>(stored));
        GLFrameBuffer buffer;
        EXPECT_EQ(create(buffer, 2, 15, stencil), isTaken ? 0U : 2U) << stencil;
        if (isTaken) {
            EXPECT_EQ(buffer.makeCurrent(), 1u);
            EXPECT_GE(bits(GL_STENCIL_BITS), 1) << stencil;
        }
        gl().glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
        expectNoErrors();
    }
    EXPECT_EQ(GLTexture2D::fsNumInstances_GLTexture2D, 0);
}

TEST_F(DriverFrameBuffer, refusesWhatIsTooLarge) {
    GLFrameBuffer buffer;
    const auto beyond = static_cast<unsigned>(bits(GL_MAX_RENDERBUFFER_SIZE_EXT)) + 1;
    EXPECT_EQ(buffer.createOffscreen(koBufferFormat(), beyond, 1), 4u);
    EXPECT_EQ(buffer.createOffscreen(koBufferFormat(), 1, beyond), 4u);
    EXPECT_FALSE(gl().glIsFramebufferEXT(1)) << "nothing was generated";
}

} // namespace
