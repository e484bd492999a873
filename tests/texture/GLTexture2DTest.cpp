#include "DoubleTest.h"

#include "texture/GLTexture2D.h"

namespace {

constexpr GLuint kFirst = nthName(NameKind::Texture);

/// Deletes by the last unref, as hosts do.
template <typename T>
struct Unref {
    void operator()(T* object) const { object->unref(); }
};
using TexturePtr = std::unique_ptr<GLTexture2D, Unref<GLTexture2D>>;

TexturePtr make(RasterFormat format, bool rectangle = false) {
    TexturePtr texture(new GLTexture2D(format, rectangle));
    texture->ref();
    clearRecorded();
    return texture;
}

std::string image(GLenum target, int level, unsigned width, unsigned height, const void* pixels) {
    return call("glTexImage2D", target, level, GL_RGBA8, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
}

class Texture2D : public DoubleTest {
protected:
    char fPixels[4] = {};
};

TEST_F(Texture2D, ownsOneName) {
    {
        GLTexture2D plain;
        EXPECT_EQ(plain.fTextureType, IHWTexture::kTexture2D);
        EXPECT_EQ(plain.fRasterFormat, 14u);
        EXPECT_FALSE(plain.fAllocated);
        EXPECT_EQ(plain.textureName(), kFirst);
        EXPECT_EQ(plain.width() + plain.height(), 0u);
        EXPECT_EQ(GLTexture2D::fsNumInstances_GLTexture2D, 1);
        auto* shared = new GLTexture2D(kRasterRGBA8, false);
        EXPECT_EQ(GLTexture2D::fsNumInstances_GLTexture2D, 2);
        shared->ref();
        shared->ref();
        shared->unref();
        EXPECT_EQ(ledger(NameKind::Texture).deleted, 0);
        shared->unref();
        EXPECT_EQ(GLTexture2D::fsNumInstances_GLTexture2D, 1);
    }
    EXPECT_EQ(GLTexture2D::fsNumInstances_GLTexture2D, 0);
    EXPECT_EQ(recorded(),
              (Calls{call("glGenTextures", 1, kOut), call("glGenTextures", 1, kOut),
                     call("glBindTexture", GL_TEXTURE_2D, 0), call("glDeleteTextures", 1, Values{kFirst + 1}),
                     call("glBindTexture", GL_TEXTURE_2D, 0), call("glDeleteTextures", 1, Values{kFirst})}));
}

TEST_F(Texture2D, withoutANameBindsNothing) {
    script().failing = {{"glGenTextures", 1}};
    const TexturePtr texture = make(kRasterRGBA8);
    EXPECT_FALSE(texture->bind());
    EXPECT_EQ(recorded(), Calls{});
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
    for (uint32_t format : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 14, 16, 99, -1}) {
        const auto& row = kRows[std::min(format, 10u)];
        const TexturePtr texture = make(static_cast<RasterFormat>(format));
        texture->fCompressionRequest = format != kRasterRGBA8; // only RGBA8 heeds it
        EXPECT_TRUE(texture->GLloadImage(fPixels, 5, 3));
        EXPECT_EQ(recorded(), (Calls{call("glBindTexture", GL_TEXTURE_2D, texture->textureName()),
                                     call("glTexImage2D", GL_TEXTURE_2D, 0, row.store, 5, 3, 0, row.data,
                                          row.type, static_cast<const void*>(fPixels))}))
            << format;
    }
}

TEST_F(Texture2D, compressesOnRequestWhereOffered) {
    const TexturePtr texture = make(kRasterRGBA8);
    texture->fCompressionRequest = true;
    EXPECT_EQ(texture->sysPixelFormat(), 0x83F3u);
    for (bool* flag : {&gl().fExtSupported[56], &gl().fExtEnabled[56], &texture->fCompressionRequest}) {
        *flag = false;
        EXPECT_EQ(texture->sysPixelFormat(), GLenum{GL_RGBA8});
        *flag = true;
    }
}

TEST_F(Texture2D, isARectangleOnlyWhereOffered) {
    {
        const TexturePtr rectangle = make(kRasterRGBA8, true);
        EXPECT_EQ(rectangle->fTextureType, IHWTexture::kTextureRectangle);
        EXPECT_FALSE(rectangle->GLloadImageLevel(fPixels, 0, 1, 1));
        EXPECT_FALSE(rectangle->GLloadImageMipmap(fPixels, 1, 1));
        EXPECT_EQ(rectangle->width(), 0u);
        EXPECT_EQ(recorded(), Calls{});
        EXPECT_TRUE(rectangle->GLloadImage(fPixels, 3, 5));
        EXPECT_TRUE(rectangle->GLloadRenderedImage(1, 2, 5, 3));
    }
    EXPECT_EQ(recorded(),
              (Calls{call("glBindTexture", 0x84F5, kFirst), image(0x84F5, 0, 3, 5, fPixels),
                     call("glBindTexture", 0x84F5, kFirst), image(0x84F5, 0, 5, 3, nullptr),
                     call("glCopyTexSubImage2D", 0x84F5, 0, 0, 0, 1, 2, 5, 3),
                     call("glBindTexture", 0x84F5, 0), call("glDeleteTextures", 1, Values{kFirst})}));
    for (bool* flag : {&gl().fExtSupported[19], &gl().fExtEnabled[19]}) {
        *flag = false;
        EXPECT_EQ(make(kRasterRGBA8, true)->fTextureType, IHWTexture::kTexture2D);
        *flag = true;
    }
}

TEST_F(Texture2D, storesTheSizeOfLevelZeroAlone) {
    const TexturePtr texture = make(kRasterRGBA8);
    EXPECT_TRUE(texture->GLloadImageLevel(fPixels, 2, 2, 1));
    EXPECT_EQ(texture->width(), 0u);
    EXPECT_FALSE(texture->fAllocated);
    EXPECT_TRUE(texture->GLloadImageLevel(fPixels, 0, 8, 4));
    EXPECT_TRUE(texture->fAllocated);
    EXPECT_EQ(texture->width(), 8u);
    EXPECT_EQ(texture->height(), 4u);
    const std::string bound = call("glBindTexture", GL_TEXTURE_2D, kFirst);
    EXPECT_EQ(recorded(), (Calls{bound, image(GL_TEXTURE_2D, 2, 2, 1, fPixels), bound,
                                 image(GL_TEXTURE_2D, 0, 8, 4, fPixels)}));
}

TEST_F(Texture2D, letsGLMakeMipmaps) {
    const TexturePtr texture = make(kRasterRGBA8);
    EXPECT_TRUE(texture->GLloadImageMipmap(fPixels, 8, 4));
    EXPECT_EQ(recorded(), (Calls{call("glBindTexture", GL_TEXTURE_2D, kFirst),
                                 call("glTexParameteri", GL_TEXTURE_2D, 0x8191, 1),
                                 image(GL_TEXTURE_2D, 0, 8, 4, fPixels)}));
    EXPECT_FALSE(texture->fAllocated) << "left as it was";
    EXPECT_EQ(texture->width(), 8u);
    EXPECT_EQ(texture->height(), 4u);
}

TEST_F(Texture2D, makesStorageForACopyOnlyWhenTheSizeChanges) {
    const TexturePtr texture = make(kRasterRGBA8);
    texture->setWidthHeight(4, 4); // a size alone is no storage
    const std::string bound = call("glBindTexture", GL_TEXTURE_2D, kFirst);
    Calls expected;
    for (const auto& [width, height, anew] :
         {std::tuple{4, 4, true}, {4, 4, false}, {8, 4, true}, {8, 2, true}, {8, 2, false}}) {
        EXPECT_TRUE(texture->GLloadRenderedImage(-3, 7, width, height));
        expected.push_back(bound);
        if (anew)
            expected.push_back(image(GL_TEXTURE_2D, 0, width, height, nullptr));
        expected.push_back(call("glCopyTexSubImage2D", GL_TEXTURE_2D, 0, 0, 0, -3, 7, width, height));
    }
    EXPECT_EQ(recorded(), expected);
    EXPECT_TRUE(texture->fAllocated);
    EXPECT_EQ(texture->height(), 2u);
}

} // namespace
