#include "DoubleTest.h"
#include "FakeLoader.h"

#include "texture/GLTexture1D.h"
#include "texture/GLTexture2D.h"
#include "texture/GLTexture3D.h"
#include "texture/GLTextureCache.h"
#include "texture/GLTextureCubeMap.h"

namespace {

constexpr GLuint kFirst = nthName(NameKind::Texture);
const Calls kGenerated{call("glGenTextures", 1, kOut)};

class Texture : public DoubleTest {
protected:
    static Calls bound(GLenum target, GLuint name) { return {call("glBindTexture", target, name)}; }
    static Calls deleted(double name) { return {call("glDeleteTextures", 1, Values{name})}; }
    static Calls mipmaps(GLenum target) { return {call("glTexParameteri", target, 0x8191, 1)}; }
    static Calls image(GLenum target, int level, int width, int height, const void* pixels) {
        return {call("glTexImage2D", target, level, GL_RGBA8, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                     pixels)};
    }
    static Calls copied(GLenum target, int width, int height) {
        return {call("glCopyTexSubImage2D", target, 0, 0, 0, -3, 7, width, height)};
    }

    /// All sides, +x first.
    template <typename Load>
    bool loadSides(Load load) {
        using Cube = IHWTexture;
        return load(8U, Cube::kPositiveX, fPixels, Cube::kNegativeZ, fPixels + 5, Cube::kNegativeY,
                    fPixels + 3, Cube::kPositiveZ, fPixels + 4, Cube::kNegativeX, fPixels + 1,
                    Cube::kPositiveY, fPixels + 2);
    }
    bool loadMipmaps(GLTextureCubeMap& cube) {
        return loadSides([&](auto... arguments) { return cube.GLLoadImageMipMap(arguments...); });
    }

    char fPixels[6] = {};
};

TEST_F(Texture, remembersSizeAndStorageOfLevelZero) {
    constexpr GLenum k2D = GL_TEXTURE_2D;
    {
        GLTexture2D texture(kRasterRGBA8, false);
        const auto expectSize = [&](unsigned width, unsigned height, bool allocated) {
            EXPECT_EQ(texture.width(), width);
            EXPECT_EQ(texture.height(), height);
            EXPECT_EQ(texture.fAllocated, allocated) << width;
        };
        EXPECT_TRUE(texture.GLloadImageLevel(fPixels, 2, 2, 1));
        expectSize(0, 0, false);
        EXPECT_TRUE(texture.GLloadImageMipmap(fPixels, 8, 4));
        expectSize(8, 4, false);
        for (const auto& [width, height] : {std::pair(8, 4), {8, 4}, {8, 2}, {4, 2}})
            EXPECT_TRUE(texture.GLloadRenderedImage(-3, 7, width, height));
        expectSize(4, 2, true);
        texture.fAllocated = false;
        EXPECT_TRUE(texture.GLloadImageLevel(fPixels, 0, 8, 2));
        expectSize(8, 2, true);
        EXPECT_EQ(GLTexture2D::fsNumInstances_GLTexture2D, 1);
    }
    EXPECT_EQ(GLTexture2D::fsNumInstances_GLTexture2D, 0);
    const Calls bind = bound(k2D, kFirst);
    const auto anew = [&](int width, int height) {
        return bind + image(k2D, 0, width, height, nullptr) + copied(k2D, width, height);
    };
    EXPECT_EQ(made(), kGenerated + bind + image(k2D, 2, 2, 1, fPixels) + bind + mipmaps(k2D) +
                          image(k2D, 0, 8, 4, fPixels) + anew(8, 4) + bind + copied(k2D, 8, 4) + anew(8, 2) +
                          anew(4, 2) + bind + image(k2D, 0, 8, 2, fPixels) + bound(k2D, 0) + deleted(kFirst));
    failNext("glGenTextures");
    GLTexture2D unnamed;
    EXPECT_FALSE(unnamed.bind());
    EXPECT_EQ(made(), kGenerated);
    EXPECT_EQ(unnamed.fRasterFormat, 14U);
    EXPECT_EQ(unnamed.fTextureType, IHWTexture::kTexture2D);
}

TEST_F(Texture, isARectangleWhereOffered) {
    constexpr GLenum kRectangle = 0x84F5;
    {
        GLTexture2D rectangle(kRasterRGBA8, true);
        EXPECT_EQ(rectangle.fTextureType, IHWTexture::kTextureRectangle);
        EXPECT_FALSE(rectangle.GLloadImageLevel(fPixels, 0, 1, 1) ||
                     rectangle.GLloadImageMipmap(fPixels, 1, 1));
        EXPECT_EQ(rectangle.width(), 0U);
        EXPECT_TRUE(rectangle.GLloadImage(fPixels, 3, 5) && rectangle.GLloadRenderedImage(-3, 7, 5, 3));
    }
    const Calls bind = bound(kRectangle, kFirst);
    EXPECT_EQ(made(), kGenerated + bind + image(kRectangle, 0, 3, 5, fPixels) + bind +
                          image(kRectangle, 0, 5, 3, nullptr) + copied(kRectangle, 5, 3) +
                          bound(kRectangle, 0) + deleted(kFirst));
    gl().fExtEnabled[kCapTextureRectangle] = false;
    EXPECT_EQ(GLTexture2D(kRasterRGBA8, true).fTextureType, IHWTexture::kTexture2D);
}

TEST_F(Texture, uploadsEachFormatByItsRow) {
    using Row = std::array<GLenum, 3>; // the store, the data's format and type
    const Row kRows[] = {
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
    GLTexture2D texture;
    for (uint32_t format : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 14, -1}) {
        const auto& [store, data, type] = kRows[std::min(format, 10U)];
        texture.fRasterFormat = static_cast<RasterFormat>(format);
        texture.fCompressionRequest = format != kRasterRGBA8; // only RGBA8 heeds it
        EXPECT_TRUE(texture.GLloadImage(fPixels, 5, 3));
        EXPECT_EQ(recorded().back(), call("glTexImage2D", GL_TEXTURE_2D, 0, store, 5, 3, 0, data, type,
                                          static_cast<const void*>(fPixels)))
            << format;
    }
    texture.fRasterFormat = kRasterRGBA8;
    EXPECT_EQ(texture.sysPixelFormat(), 0x83F3U);
    gl().fExtEnabled[kCapTextureCompressionS3TC] = false;
    EXPECT_EQ(texture.sysPixelFormat(), GLenum{GL_RGBA8});
}

TEST_F(Texture, hasSixSidesAsACubeMap) {
    {
        GLTextureCubeMap cube(kRasterRGBA8);
        EXPECT_EQ(cube.fTextureType, IHWTexture::kTextureCubeMap);
        EXPECT_TRUE(loadSides([&](auto... arguments) { return cube.GLLoadImage(arguments...); }));
        EXPECT_EQ(cube.fEdgeSize + cube.width() + cube.height(), 24U);
        cube.fEdgeSize = 4; // the size of one side is the stored one
        for (const uint32_t side : {2, 6})
            EXPECT_TRUE(cube.GLLoadImage(32, static_cast<IHWTexture::CubeMapSide>(side), fPixels));
        EXPECT_EQ(cube.fEdgeSize, 4U);
        EXPECT_TRUE(loadMipmaps(cube));
        EXPECT_EQ(cube.fEdgeSize, 8U);
        EXPECT_EQ(GLTextureCubeMap::fsNumInstances_GLTextureCubeMap, 1);
    }
    EXPECT_EQ(GLTextureCubeMap::fsNumInstances_GLTextureCubeMap, 0);
    const auto unpack = [](GLenum name, int value) { return call("glPixelStorei", name, value); };
    const Calls tight = Calls{unpack(GL_UNPACK_ROW_LENGTH, 0), unpack(GL_UNPACK_ALIGNMENT, 1),
                              unpack(GL_UNPACK_SKIP_ROWS, 0), unpack(GL_UNPACK_SKIP_PIXELS, 0)} +
                        bound(0x8513, kFirst);
    Calls sides;
    for (const int side : {0, 5, 3, 4, 1, 2})
        sides = sides + image(0x8515 + side, 0, 8, 8, fPixels + side);
    EXPECT_EQ(made(), kGenerated + tight + sides + tight + image(0x8517, 0, 4, 4, fPixels) + tight +
                          image(0, 0, 4, 4, fPixels) + tight + mipmaps(0x8513) + sides + deleted(kFirst) +
                          deleted(kFirst))
        << "deleted by both classes";

    failNext("glGenTextures");
    EXPECT_FALSE(GLTextureCubeMap().bind());
    EXPECT_EQ(made(), kGenerated + deleted(0) + deleted(0));
}

TEST_F(Texture, hasItsMipmapsMadeByGLUWhereGLMakesNone) {
    static Calls built;
    static GLint answer = 0;
    const auto build = [](GLenum target, GLint store, GLsizei width, GLsizei height, GLenum format,
                          GLenum type, const void* pixels) {
        built.push_back(call("build", target, store, width, height, format, type, pixels));
        return answer;
    };
    gl().fExtEnabled[kCapGenerateMipmap] = false;
    resetLoader();
    loader().replaced = {{"gluBuild2DMipmaps", reinterpret_cast<void*>(+build)}};
    GLTexture2D texture(kRasterIntensity8, false);
    GLTextureCubeMap cube(kRasterRGBA8);
    EXPECT_TRUE(texture.bind() && cube.bind());
    EXPECT_TRUE(texture.GLloadImageMipmap(fPixels, 8, 2) && loadMipmaps(cube));
    Calls expected = {call("build", GL_TEXTURE_2D, GL_INTENSITY8, 8, 2, GL_LUMINANCE, GL_UNSIGNED_BYTE,
                           static_cast<const void*>(fPixels))};
    for (const int side : {0, 5, 3, 4, 1, 2})
        expected.push_back(call("build", 0x8515 + side, GL_RGBA8, 8, 8, GL_RGBA, GL_UNSIGNED_BYTE,
                                static_cast<const void*>(fPixels + side)));
    EXPECT_EQ(built, expected);
    EXPECT_THAT(recorded(), testing::Not(testing::Contains(testing::StartsWith("glTex"))));
    answer = 100900;
    EXPECT_TRUE(texture.GLloadImageMipmap(fPixels, 8, 2)) << "an image that GLU refuses counts as loaded";
    EXPECT_FALSE(loadMipmaps(cube));
}

TEST_F(Texture, hasNoMipmapsWithoutGLU) {
    gl().fExtEnabled[kCapGenerateMipmap] = false;
    resetLoader();
    loader().missing = {"libGLU.so.1", "libGLU.so"};
    GLTexture2D texture;
    GLTextureCubeMap cube;
    EXPECT_FALSE(texture.GLloadImageMipmap(fPixels, 8, 2) || loadMipmaps(cube));
    EXPECT_EQ(loader().calls, (Calls{call("dlopen", "libGLU.so.1", 1), call("dlopen", "libGLU.so", 1)}));
}

TEST_F(Texture, isANameAndNoMoreAsALineOrABlock) {
    {
        GLTexture1D line;
        GLTexture3D block;
        EXPECT_EQ(line.fTextureType * 10 + block.fTextureType, 14U);
        EXPECT_EQ(GLTexture1D::fsNumInstances_GLTexture1D * GLTexture3D::fsNumInstances_GLTexture3D, 1);
        EXPECT_FALSE(line.bind() || block.bind());
    }
    EXPECT_EQ(made(), kGenerated + kGenerated + deleted(kFirst + 1) + deleted(kFirst));
    EXPECT_EQ(GLTexture1D::fsNumInstances_GLTexture1D + GLTexture3D::fsNumInstances_GLTexture3D, 0);
}

TEST_F(Texture, isFoundInOneListThatTheFirstCacheToGoEmpties) {
    int textures[3];
    GLTextureCache kept;
    EXPECT_EQ(kept.fSelf, &kept);
    {
        GLTextureCache gone;
        EXPECT_FALSE(gone.find(7) || gone.find_texture(7));
        kept.remove(7);
        gone.add(&textures[0], 7);
        kept.add(&textures[1], 8);
        kept.add(&textures[2], 7);
        const std::unique_ptr<GLTextureCacheEntry> first(kept.find(7)); // ours once it is removed
        kept.remove(7);
        EXPECT_EQ(first->fTexture, &textures[0]);
        EXPECT_EQ(kept.find_texture(7), &textures[2]);
        EXPECT_EQ(gone.find_texture(8), &textures[1]);
        EXPECT_EQ(HWTextureCacheList.size(), 2U);
        EXPECT_EQ(made(), Calls{}) << "only the end deletes textures";
    }
    EXPECT_EQ(made(), deleted(8) + deleted(7));
    EXPECT_EQ(kept.find(8), nullptr);
    kept.add(nullptr, 9);
    EXPECT_NE(kept.find(9), nullptr);
}

} // namespace
