#include "DriverTest.h"

#include "texture/GLTexUsage.h"
#include "texture/GLTexture2D.h"
#include "texture/GLTextureCubeMap.h"

namespace {

class DriverTextureCubeMap : public DriverTest {
protected:
    void SetUp() override {
        DriverTest::SetUp();
        for (GLubyte side = 0; side < 6; ++side)
            fSides[side].assign(4UL * 4UL * 3UL, static_cast<GLubyte>(40 * side + 20));
    }

    template <typename Load>
    bool loadSix(Load load) {
        using Side = IHWTexture::CubeMapSide;
        return load(4U, Side(0), fSides[0].data(), Side(3), fSides[3].data(), Side(5), fSides[5].data(),
                    Side(1), fSides[1].data(), Side(4), fSides[4].data(), Side(2),
                    fSides[2].data()); // +x first: see GLLoadImageMipMap
    }

    /// Every direction shows its side, through that filter.
    void expectSides(IHWTexUsage::Filter filter) {
        const DrawTarget target(gl(), 1, 1);
        GLTexUsage::setMinMagFilter(GL_TEXTURE_CUBE_MAP, filter, IHWTexUsage::kNearest);
        gl().glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
        gl().glEnable(GL_TEXTURE_CUBE_MAP);
        for (int side = 0; side < 6; ++side) {
            float direction[3] = {0.2F, -0.3F, 0.1F};
            direction[side / 2] = side % 2 == 0 ? 1.0F : -1.0F;
            gl().glBegin(GL_POINTS);
            gl().glTexCoord3fv(direction);
            gl().glVertex2f(0, 0);
            gl().glEnd();
            EXPECT_EQ(readPixel(0, 0)[1], 40 * side + 20) << side;
        }
        gl().glDisable(GL_TEXTURE_CUBE_MAP);
    }

    GLint levelSize(GLint level) {
        GLint size = 0;
        gl().glGetTexLevelParameteriv(GL_TEXTURE_CUBE_MAP_NEGATIVE_Y, level, GL_TEXTURE_WIDTH, &size);
        return size;
    }

    std::array<std::vector<GLubyte>, 6> fSides;
};

TEST_F(DriverTextureCubeMap, showsEachSideInItsDirection) {
    GLTextureCubeMap cube(kRasterRGB8);
    EXPECT_TRUE(loadSix([&](auto... arguments) { return cube.GLLoadImage(arguments...); }));
    expectSides(IHWTexUsage::kNearest);
    fSides[2].assign(fSides[2].size(), 7);
    EXPECT_TRUE(cube.GLLoadImage(4, IHWTexture::kPositiveY, fSides[2].data()));
    GLubyte back[48];
    gl().glGetTexImage(GL_TEXTURE_CUBE_MAP_POSITIVE_Y, 0, GL_RGB, GL_UNSIGNED_BYTE, back);
    EXPECT_EQ(back[47], 7);
    expectNoErrors();
    cube.GLLoadImage(4, static_cast<IHWTexture::CubeMapSide>(6), fSides[0].data());
    expectErrors({GL_INVALID_ENUM});
}

TEST_F(DriverTextureCubeMap, mipmapsComeFromGLOrFromGLU) {
    for (const bool automatic : {true, false}) {
        gl().fExtEnabled[kCapGenerateMipmap] = automatic;
        GLTextureCubeMap cube(kRasterRGB8);
        EXPECT_TRUE(loadSix([&](auto... arguments) { return cube.GLLoadImageMipMap(arguments...); }))
            << automatic;
        EXPECT_EQ(levelSize(1), 2) << automatic;
        EXPECT_EQ(levelSize(2), 1) << automatic;
        expectSides(IHWTexUsage::kTrilinear);
        expectNoErrors();
    }
}

TEST_F(DriverTextureCubeMap, imagesOfUnusualSizesAreGLsToJudge) {
    GLint largest = 0;
    gl().glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largest);
    GLTexture2D texture(kRasterAlpha8, false);
    std::vector<GLubyte> row(static_cast<size_t>(largest) +
                             3); // older GLs count two texels of border besides
    EXPECT_TRUE(texture.GLloadImage(row.data(), static_cast<unsigned>(largest) + 3, 1));
    expectErrors({GL_INVALID_VALUE});
    EXPECT_TRUE(texture.GLloadImage(row.data(), static_cast<unsigned>(largest), 1));
    EXPECT_TRUE(texture.GLloadImage(row.data(), 0, 0));
    EXPECT_TRUE(texture.GLloadImageMipmap(row.data(), 0, 0));
    expectNoErrors();
}

TEST_F(DriverTextureCubeMap, compressesOnRequest) {
    if (!gl().usable(kCapTextureCompressionS3TC))
        GTEST_SKIP() << "this driver doesn't offer S3TC";
    GLTexture2D texture(kRasterRGBA8, false);
    texture.fCompressionRequest = true;
    std::vector<GLubyte> green;
    for (int i = 0; i < 64; ++i)
        green.insert(green.end(), {0, 255, 0, 128});
    texture.GLloadImage(green.data(), 8, 8);
    GLint compressed = 0;
    gl().glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_COMPRESSED_ARB, &compressed);
    EXPECT_EQ(compressed, 1);
    GLubyte back[256];
    gl().glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, back);
    EXPECT_EQ(back[1], 255);
    EXPECT_NEAR(back[3], 128, 2);
    expectNoErrors();
}

} // namespace
