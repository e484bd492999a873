#include "DoubleTest.h"

#include "texture/GLTexture2D.h"

namespace {

constexpr GLuint kFirst = nthName(NameKind::Texture);
const Calls kGenerated{call("glGenTextures", 1, kOut)};

Calls image(GLenum target, int level, unsigned width, unsigned height, const void* pixels) {
    return {
        call("glTexImage2D", target, level, GL_RGBA8, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels)};
}

Calls copied(GLenum target, int width, int height) {
    return {call("glCopyTexSubImage2D", target, 0, 0, 0, -3, 7, width, height)};
}

Calls deleted(GLenum target, GLuint name) {
    return {call("glBindTexture", target, 0), call("glDeleteTextures", 1, Values{1.0 * name})};
}

class Texture2D : public DoubleTest {
protected:
    char fPixels[4] = {};
};

TEST_F(Texture2D, ownsOneNameAndRemembersTheSizeOfLevelZero) {
    {
        GLTexture2D plain;
        EXPECT_EQ(plain.fTextureType, IHWTexture::kTexture2D);
        EXPECT_EQ(plain.fRasterFormat, 14u);
        EXPECT_EQ(plain.width() + plain.height(), 0u);
        const auto shared = makeShared<GLTexture2D>(kRasterRGBA8, false);
        EXPECT_EQ(GLTexture2D::fsNumInstances_GLTexture2D, 2);
    }
    EXPECT_EQ(GLTexture2D::fsNumInstances_GLTexture2D, 0);
    EXPECT_EQ(made(),
              kGenerated + kGenerated + deleted(GL_TEXTURE_2D, kFirst + 1) + deleted(GL_TEXTURE_2D, kFirst));

    GLTexture2D texture(kRasterRGBA8, false);
    const Calls bound{call("glBindTexture", GL_TEXTURE_2D, kFirst + 2)};
    EXPECT_TRUE(texture.GLloadImageLevel(fPixels, 2, 2, 1));
    EXPECT_EQ(texture.width(), 0u);
    EXPECT_TRUE(texture.GLloadImageMipmap(fPixels, 8, 4));
    EXPECT_EQ(texture.width() * 10 + texture.height(), 84u);
    EXPECT_FALSE(texture.fAllocated) << "left as it was";
    EXPECT_TRUE(texture.GLloadImageLevel(fPixels, 0, 4, 2));
    EXPECT_EQ(texture.width() * 10 + texture.height(), 42u);
    EXPECT_TRUE(texture.fAllocated);
    EXPECT_EQ(made(), kGenerated + bound + image(GL_TEXTURE_2D, 2, 2, 1, fPixels) + bound +
                          Calls{call("glTexParameteri", GL_TEXTURE_2D, 0x8191, 1)} +
                          image(GL_TEXTURE_2D, 0, 8, 4, fPixels) + bound +
                          image(GL_TEXTURE_2D, 0, 4, 2, fPixels));

    failNext("glGenTextures");
    GLTexture2D unnamed;
    EXPECT_FALSE(unnamed.bind());
    EXPECT_EQ(made(), kGenerated);
}

TEST_F(Texture2D, makesStorageForACopyOnlyWhenTheSizeChanges) {
    GLTexture2D texture(kRasterRGBA8, false);
    texture.setWidthHeight(4, 4); // a size alone is no storage
    clearRecorded();
    for (const auto& [width, height, anew] :
         {std::tuple{4, 4, true}, {4, 4, false}, {8, 4, true}, {8, 2, true}, {8, 2, false}}) {
        EXPECT_TRUE(texture.GLloadRenderedImage(-3, 7, width, height));
        EXPECT_EQ(made(), Calls{call("glBindTexture", GL_TEXTURE_2D, kFirst)} +
                              (anew ? image(GL_TEXTURE_2D, 0, width, height, nullptr) : Calls{}) +
                              copied(GL_TEXTURE_2D, width, height));
    }
}

TEST_F(Texture2D, uploadsEachFormatByItsRow) {
    const struct {
        GLenum store, data, type;
    } kRows[] = {
        {GL_ALPHA8, GL_ALPHA, GL_UNSIGNED_BYTE},
        {GL_RGB8, GL_RGB, GL_UNSIGNED_BYTE},
        {GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE},
        {GL_RGBA16F_ARB, GL_RGBA, 0x140B},
        {GL_RGBA32F_ARB, GL_RGBA, GL_FLOAT},
        {GL_INTENSITY8, GL_LUMINANCE, GL_UNSIGNED_BYTE},
        {GL_DEPTH_COMPONENT16, GL_DEPTH_COMPONENT, GL_UNSIGNED_SHORT},
        {GL_DEPTH_COMPONENT24, GL_DEPTH_COMPONENT, GL_UNSIGNED_INT},
        {GL_RGBA8, GL_RGB, GL_UNSIGNED_BYTE},
        {0x88F0, 0x84F9, 0x84FA},
        {GL_RGBA8, GL_RGB, GL_UNSIGNED_BYTE}, // and all that follow
    };
    for (uint32_t format : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 14, -1}) {
        const auto& row = kRows[std::min(format, 10u)];
        GLTexture2D texture(static_cast<RasterFormat>(format), false);
        texture.fCompressionRequest = format != kRasterRGBA8; // only RGBA8 heeds it
        EXPECT_TRUE(texture.GLloadImage(fPixels, 5, 3));
        EXPECT_EQ(recorded().back(), call("glTexImage2D", GL_TEXTURE_2D, 0, row.store, 5, 3, 0, row.data,
                                          row.type, static_cast<const void*>(fPixels)))
            << format;
    }
    GLTexture2D texture(kRasterRGBA8, false);
    texture.fCompressionRequest = true;
    EXPECT_EQ(texture.sysPixelFormat(), 0x83F3u);
    gl().fExtEnabled[56] = false;
    EXPECT_EQ(texture.sysPixelFormat(), GLenum{GL_RGBA8});
}

TEST_F(Texture2D, isARectangleOnlyWhereOffered) {
    {
        GLTexture2D rectangle(kRasterRGBA8, true);
        EXPECT_EQ(rectangle.fTextureType, IHWTexture::kTextureRectangle);
        EXPECT_FALSE(rectangle.GLloadImageLevel(fPixels, 0, 1, 1) ||
                     rectangle.GLloadImageMipmap(fPixels, 1, 1));
        EXPECT_EQ(rectangle.width(), 0u);
        EXPECT_TRUE(rectangle.GLloadImage(fPixels, 3, 5));
        EXPECT_TRUE(rectangle.GLloadRenderedImage(-3, 7, 5, 3));
    }
    const Calls bound{call("glBindTexture", 0x84F5, kFirst)};
    EXPECT_EQ(made(), kGenerated + bound + image(0x84F5, 0, 3, 5, fPixels) + bound +
                          image(0x84F5, 0, 5, 3, nullptr) + copied(0x84F5, 5, 3) + deleted(0x84F5, kFirst));
    gl().fExtEnabled[19] = false;
    EXPECT_EQ(GLTexture2D(kRasterRGBA8, true).fTextureType, IHWTexture::kTexture2D);
}

} // namespace
