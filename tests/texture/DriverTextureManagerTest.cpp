#include "DriverTest.h"

#include <cmath>

#include "texture/TextureManager.h"

namespace {

class DriverTextureManager : public DriverTest {
protected:
    /// Level 0 of what is bound to the target.
    std::vector<GLubyte> readBack(GLenum target, GLenum format, size_t bytes) {
        gl().glPixelStorei(GL_PACK_ALIGNMENT, 1);
        std::vector<GLubyte> texels(bytes);
        gl().glGetTexImage(target, 0, format, GL_UNSIGNED_BYTE, texels.data());
        return texels;
    }
};

TEST_F(DriverTextureManager, keepsEveryByteOfTheMaps) {
    generateRampMap();
    const std::vector<GLubyte> ramp = readBack(GL_TEXTURE_1D, GL_RED, 256);
    for (size_t k = 0; k < ramp.size(); ++k)
        EXPECT_EQ(ramp[k], k);

    generateNHKMap(16, 1, 8);
    const std::vector<GLubyte> nhk = readBack(GL_TEXTURE_2D, GL_LUMINANCE, 256);
    EXPECT_EQ(nhk[15], 0) << "row 0 is black, where 1 to any power would be white";
    EXPECT_EQ(nhk[16 * 15 + 15], 255);
    EXPECT_EQ(nhk[16 * 15 + 12], static_cast<int>(255 * std::pow(12.0 / 15.0, 8)));
    EXPECT_TRUE(gl().glIsEnabled(GL_TEXTURE_2D));

    generateNormalizeExponentiateMap(8, 8, 2.0F);
    const std::vector<GLubyte> normalized = readBack(GL_TEXTURE_2D, GL_LUMINANCE, 64);
    EXPECT_EQ(normalized[0], 0);
    EXPECT_EQ(normalized[1], 255);
    EXPECT_EQ(normalized[8 * 4 + 4], 127) << "(1/2)^2 / (1/2)";
    expectNoErrors();
}

TEST_F(DriverTextureManager, normalisesByLookUp) {
    auto* cube = new GLNormalCubeMap(128, true);
    cube->ref();
    cube->bind();
    const std::vector<GLubyte> side = readBack(GL_TEXTURE_CUBE_MAP_POSITIVE_X, GL_RGB, 3UL * 128 * 128);
    const size_t middle = 3UL * (64 * 128 + 64);
    EXPECT_EQ(side[middle], 255);
    EXPECT_NEAR(side[middle + 1], 127, 1);
    EXPECT_NEAR(side[middle + 2], 127, 1);
    gl().glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    gl().glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
    gl().glEnable(GL_TEXTURE_CUBE_MAP);
    const DrawTarget target(gl(), 1, 1);
    // Off the edges, where sides meet: a point on one is the mean of both on NVIDIA 580.159 and Mesa's
    // softpipe, by the wrap mode that the map is left with.
    for (const std::array<float, 3>& v :
         {std::array{3.0F, 4.0F, 0.0F}, {-0.1F, 0.3F, -0.2F}, {5.0F, -1.0F, 1.0F}}) {
        gl().glBegin(GL_POINTS);
        gl().glTexCoord3f(v[0], v[1], v[2]);
        gl().glVertex2f(0, 0);
        gl().glEnd();
        const float length = std::hypot(v[0], v[1], v[2]);
        const Pixel pixel = readPixel(0, 0);
        for (size_t i = 0; i < 3; ++i)
            EXPECT_NEAR(pixel[i], (v[i] / length + 1) / 2 * 255, 2.0);
    }
    gl().glDisable(GL_TEXTURE_CUBE_MAP);
    cube->unref();
    expectNoErrors();
}

TEST_F(DriverTextureManager, endsTheStartupContextWithItself) {
    auto* manager = new TextureManager;
    EXPECT_GE(manager->fMaxTextureSize, 1024);
    // Mesa 22.3.6 knows no HILO and refuses the six sides; NVIDIA 580.159 knows it.
    gl().glTexImage2D(GL_TEXTURE_CUBE_MAP_POSITIVE_X, 0, GL_SIGNED_HILO_NV, 1, 1, 0, GL_HILO_NV,
                      GL_UNSIGNED_SHORT, nullptr);
    const std::vector<GLenum> errors = pendingErrors();
    manager->normalizationHILOCubeMap();
    expectErrors(errors);
    manager->attenDistanceMap();
    expectNoErrors();
    delete manager;
    EXPECT_EQ(GLStartupContext::fpGlobalGLStartupContext, nullptr);
    forgetStartup();
}

} // namespace
