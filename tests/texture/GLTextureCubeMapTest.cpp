#include "DoubleTest.h"

#include "texture/GLTexture1D.h"
#include "texture/GLTexture3D.h"
#include "texture/GLTextureCubeMap.h"

namespace {

constexpr GLuint kFirst = nthName(NameKind::Texture);

class TextureCubeMap : public DoubleTest {
protected:
    /// Six sides in no particular order.
    template <typename Load>
    bool loadAll(Load load) {
        using Cube = IHWTexture;
        return load(8U, Cube::kNegativeZ, fPixels, Cube::kPositiveX, fPixels + 1, Cube::kNegativeY,
                    fPixels + 2, Cube::kPositiveZ, fPixels + 3, Cube::kNegativeX, fPixels + 4,
                    Cube::kPositiveY, fPixels + 5);
    }

    Calls side(GLenum face, int size, int place) {
        return {call("glTexImage2D", face, 0, GL_RGBA8, size, size, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                     static_cast<const void*>(fPixels + place))};
    }

    char fPixels[6] = {};
};

TEST_F(TextureCubeMap, loadsSidesInTheOrderOfTheArguments) {
    {
        EXPECT_EQ(GLTextureCubeMap().fRasterFormat, 14u);
        GLTextureCubeMap cube(kRasterRGBA8);
        EXPECT_EQ(cube.fTextureType, 5u);
        clearRecorded();
        EXPECT_TRUE(loadAll([&](auto... arguments) { return cube.GLLoadImage(arguments...); }));
        EXPECT_EQ(cube.fEdgeSize + cube.width() + cube.height(), 24u);
        cube.fEdgeSize = 4; // the size of one side is the stored one
        for (const uint32_t side : {2, 6})
            EXPECT_TRUE(cube.GLLoadImage(32, static_cast<IHWTexture::CubeMapSide>(side), fPixels));
        EXPECT_EQ(cube.fEdgeSize, 4u);
        EXPECT_TRUE(loadAll([&](auto... arguments) { return cube.GLLoadImageMipMap(arguments...); }));
        EXPECT_EQ(cube.fEdgeSize, 8u);
        EXPECT_EQ(GLTextureCubeMap::fsNumInstances_GLTextureCubeMap, 1);
    }
    EXPECT_EQ(GLTextureCubeMap::fsNumInstances_GLTextureCubeMap, 0);
    const Calls bound = {
        call("glPixelStorei", GL_UNPACK_ROW_LENGTH, 0), call("glPixelStorei", GL_UNPACK_ALIGNMENT, 1),
        call("glPixelStorei", GL_UNPACK_SKIP_ROWS, 0), call("glPixelStorei", GL_UNPACK_SKIP_PIXELS, 0),
        call("glBindTexture", 0x8513, kFirst + 1)};
    const Calls sides = side(0x851A, 8, 0) + side(0x8515, 8, 1) + side(0x8518, 8, 2) + side(0x8519, 8, 3) +
                        side(0x8516, 8, 4) + side(0x8517, 8, 5);
    const Calls mipmaps{call("glTexParameteri", 0x8513, 0x8191, 1)};
    const Calls deleted(2, call("glDeleteTextures", 1, Values{kFirst + 1})); // by both classes
    EXPECT_EQ(made(), bound + sides + bound + side(0x8517, 4, 0) + bound + side(0, 4, 0) + bound + mipmaps +
                          sides + deleted);

    failNext("glGenTextures");
    EXPECT_FALSE(GLTextureCubeMap().bind());
    EXPECT_EQ(made()[1], call("glDeleteTextures", 1, Values{0}));
}

TEST_F(TextureCubeMap, linesAndBlocksAreNamesAndNoMore) {
    {
        GLTexture1D line;
        GLTexture3D block;
        EXPECT_EQ(line.fTextureType * 10 + block.fTextureType, 14u);
        EXPECT_EQ(GLTexture1D::fsNumInstances_GLTexture1D * GLTexture3D::fsNumInstances_GLTexture3D, 1);
        clearRecorded();
        EXPECT_FALSE(line.bind() || block.bind());
    }
    EXPECT_EQ(made(), (Calls{call("glDeleteTextures", 1, Values{kFirst + 1}),
                             call("glDeleteTextures", 1, Values{kFirst})}));
    EXPECT_EQ(GLTexture1D::fsNumInstances_GLTexture1D + GLTexture3D::fsNumInstances_GLTexture3D, 0);
}

} // namespace
