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

    bool loadTexture() { return fTexture.GLloadImageMipmap(fPixels, 8, 2); }
    bool loadCube() {
        using Side = IHWTexture::CubeMapSide;
        return fCube.GLLoadImageMipMap(4, Side(5), fPixels, Side(4), fPixels + 1, Side(3), fPixels + 2,
                                       Side(2), fPixels + 3, Side(1), fPixels + 4, Side(0), fPixels + 5);
    }

    char fPixels[6] = {};
    GLTexture2D fTexture{kRasterIntensity8, false};
    GLTextureCubeMap fCube{kRasterRGBA8};
};

TEST_F(GLUMipmaps, areMadeOfOneImageAndOfSixSides) {
    EXPECT_TRUE(loadTexture() && loadCube());
    Calls expected = {call("build", GL_TEXTURE_2D, GL_INTENSITY8, 8, 2, GL_LUMINANCE, GL_UNSIGNED_BYTE,
                           static_cast<const void*>(fPixels))};
    for (int i = 0; i < 6; ++i)
        expected.push_back(call("build", 0x851A - i, GL_RGBA8, 4, 4, GL_RGBA, GL_UNSIGNED_BYTE,
                                static_cast<const void*>(fPixels + i)));
    EXPECT_EQ(gluCalls, expected);
    EXPECT_THAT(recorded(), testing::Not(testing::Contains(testing::StartsWith("glTex"))));

    gluAnswer = 100900; // an image that GLU refuses
    EXPECT_TRUE(loadTexture()) << "only a missing GLU is a failure";
    EXPECT_FALSE(loadCube());
}

TEST_F(GLUMipmaps, withoutGLUNothingIsMade) {
    missingLibraries() = {"libGLU.so.1", "libGLU.so"};
    clearRecorded();
    EXPECT_FALSE(loadTexture());
    EXPECT_EQ(made(), Calls{call("glBindTexture", GL_TEXTURE_2D, fTexture.textureName())});
    EXPECT_FALSE(loadCube());
    EXPECT_EQ(loaderCalls(), (Calls{call("dlopen", "libGLU.so.1", 1), call("dlopen", "libGLU.so", 1)}));
}

} // namespace
