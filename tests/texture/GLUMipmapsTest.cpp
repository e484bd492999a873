#include "DoubleTest.h"
#include "FakeLoader.h"

#include "texture/GLTexture2D.h"
#include "texture/GLTextureCubeMap.h"

namespace {

Calls gluCalls;
GLint gluAnswer = 0;

GLint build2DMipmaps(GLenum target, GLint store, GLsizei width, GLsizei height, GLenum format, GLenum type,
                     const void* pixels) {
    gluCalls.push_back(call("build", target, store, width, height, format, type, pixels));
    return gluAnswer;
}

/// Where GL makes no mipmaps.
class GLUMipmaps : public DoubleTest {
protected:
    GLUMipmaps() {
        gl().fExtEnabled[kCapGenerateMipmap] = false;
        resetLoader();
        replacedSymbols() = {{"gluBuild2DMipmaps", reinterpret_cast<void*>(build2DMipmaps)}};
    }

    bool loadCube(GLTextureCubeMap& cube) {
        using Side = IHWTexture::CubeMapSide;
        return cube.GLLoadImageMipMap(4, Side(5), fPixels, Side(4), fPixels + 1, Side(3), fPixels + 2,
                                      Side(2), fPixels + 3, Side(1), fPixels + 4, Side(0), fPixels + 5);
    }

    char fPixels[6] = {};
};

TEST_F(GLUMipmaps, areMadeOfOneImageAndOfSixSides) {
    GLTexture2D texture(kRasterIntensity8, false);
    GLTextureCubeMap cube(kRasterRGBA8);
    clearRecorded();
    EXPECT_TRUE(texture.GLloadImageMipmap(fPixels, 8, 2));
    EXPECT_TRUE(loadCube(cube));
    Calls expected = {call("build", GL_TEXTURE_2D, GL_INTENSITY8, 8, 2, GL_LUMINANCE, GL_UNSIGNED_BYTE,
                           static_cast<const void*>(fPixels))};
    for (int i = 0; i < 6; ++i)
        expected.push_back(call("build", 0x851A - i, GL_RGBA8, 4, 4, GL_RGBA, GL_UNSIGNED_BYTE,
                                static_cast<const void*>(fPixels + i)));
    EXPECT_EQ(gluCalls, expected);
    EXPECT_EQ(cube.fEdgeSize, 4u);
    for (const std::string& made : recorded())
        EXPECT_EQ(made.find("glTex"), std::string::npos) << made;

    gluAnswer = 100900; // an image that GLU refuses
    EXPECT_TRUE(texture.GLloadImageMipmap(fPixels, 8, 2)) << "only a missing GLU is a failure";
    EXPECT_FALSE(loadCube(cube));
}

TEST_F(GLUMipmaps, withoutGLUNothingIsMade) {
    GLTexture2D texture(kRasterRGBA8, false);
    GLTextureCubeMap cube(kRasterRGBA8);
    clearRecorded();
    missingLibraries() = {"libGLU.so.1", "libGLU.so"};
    EXPECT_FALSE(texture.GLloadImageMipmap(nullptr, 8, 4));
    EXPECT_EQ(recorded(), Calls{call("glBindTexture", GL_TEXTURE_2D, texture.textureName())});
    EXPECT_FALSE(loadCube(cube));
    EXPECT_EQ(loaderCalls(), (Calls{call("dlopen", "libGLU.so.1", 1), call("dlopen", "libGLU.so", 1)}));
}

} // namespace
