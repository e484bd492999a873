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

    const Calls fBound = {
        call("glPixelStorei", GL_UNPACK_ROW_LENGTH, 0), call("glPixelStorei", GL_UNPACK_ALIGNMENT, 1),
        call("glPixelStorei", GL_UNPACK_SKIP_ROWS, 0), call("glPixelStorei", GL_UNPACK_SKIP_PIXELS, 0),
        call("glBindTexture", 0x8513, kFirst)};

    Calls sides() {
        Calls calls;
        const char* pixels = fPixels;
        for (const GLenum face : {0x851A, 0x8515, 0x8518, 0x8519, 0x8516, 0x8517})
            calls.push_back(call("glTexImage2D", face, 0, GL_RGBA8, 8, 8, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                                 static_cast<const void*>(pixels++)));
        return calls;
    }

    static Calls joined(Calls a, const Calls& b) {
        a.insert(a.end(), b.begin(), b.end());
        return a;
    }

    char fPixels[6] = {};
};

TEST_F(TextureCubeMap, loadsSixSidesInTheOrderOfTheArguments) {
    GLTextureCubeMap cube(kRasterRGBA8);
    EXPECT_EQ(cube.fTextureType, 5u);
    clearRecorded();
    EXPECT_TRUE(loadAll([&](auto... arguments) { return cube.GLLoadImage(arguments...); }));
    EXPECT_EQ(recorded(), joined(fBound, sides()));
    EXPECT_EQ(cube.fEdgeSize, 8u);
    EXPECT_EQ(cube.width() + cube.height(), 16u);
}

TEST_F(TextureCubeMap, oneSideHasTheStoredSize) {
    GLTextureCubeMap cube;
    EXPECT_EQ(cube.fRasterFormat, 14u);
    cube.fEdgeSize = 4;
    clearRecorded();
    for (const auto side : {IHWTexture::kPositiveY, static_cast<IHWTexture::CubeMapSide>(6)})
        EXPECT_TRUE(cube.GLLoadImage(32, side, fPixels));
    const auto image = [&](GLenum face) {
        return Calls{call("glTexImage2D", face, 0, GL_RGBA8, 4, 4, 0, GL_RGB, GL_UNSIGNED_BYTE,
                          static_cast<const void*>(fPixels))};
    };
    EXPECT_EQ(recorded(), joined(joined(fBound, image(0x8517)), joined(fBound, image(0))));
    EXPECT_EQ(cube.fEdgeSize, 4u);
}

TEST_F(TextureCubeMap, letsGLMakeMipmaps) {
    GLTextureCubeMap cube(kRasterRGBA8);
    clearRecorded();
    EXPECT_TRUE(loadAll([&](auto... arguments) { return cube.GLLoadImageMipMap(arguments...); }));
    EXPECT_EQ(recorded(), joined(joined(fBound, {call("glTexParameteri", 0x8513, 0x8191, 1)}), sides()));
    EXPECT_EQ(cube.fEdgeSize, 8u);
}

TEST_F(TextureCubeMap, ofNoNameBindsNothing) {
    script().failing = {{"glGenTextures", 1}};
    GLTextureCubeMap cube;
    clearRecorded();
    EXPECT_FALSE(cube.bind());
    EXPECT_EQ(recorded(), Calls{});
}

TEST_F(TextureCubeMap, namesGoAndInstancesAreCounted) {
    {
        const GLTextureCubeMap cube;
        GLTexture1D line;
        GLTexture3D block;
        EXPECT_EQ(line.fTextureType, 1u);
        EXPECT_EQ(block.fTextureType, 4u);
        EXPECT_EQ(GLTextureCubeMap::fsNumInstances_GLTextureCubeMap, 1);
        EXPECT_EQ(GLTexture1D::fsNumInstances_GLTexture1D, 1);
        EXPECT_EQ(GLTexture3D::fsNumInstances_GLTexture3D, 1);
        clearRecorded();
        EXPECT_FALSE(line.bind() || block.bind());
    }
    EXPECT_EQ(recorded(), (Calls{call("glDeleteTextures", 1, Values{kFirst + 2}),
                                 call("glDeleteTextures", 1, Values{kFirst + 1}),
                                 call("glDeleteTextures", 1, Values{kFirst}),
                                 call("glDeleteTextures", 1, Values{kFirst})}));
    EXPECT_EQ(ledger(NameKind::Texture).strayDeletions, 1) << "the cube map's second";
    EXPECT_EQ(GLTextureCubeMap::fsNumInstances_GLTextureCubeMap, 0);
    EXPECT_EQ(GLTexture1D::fsNumInstances_GLTexture1D + GLTexture3D::fsNumInstances_GLTexture3D, 0);
}

} // namespace
