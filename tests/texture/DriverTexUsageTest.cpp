#include "DriverTest.h"

#include "texture/GLNormalCubeMap.h"
#include "texture/GLTexUsage.h"
#include "texture/GLTexture2D.h"

#include <cmath>
#include <functional>

namespace {

using Usage = IHWTexUsage;

/// Draws single points and looks where in the texture they fall.
class DriverTexUsage : public DriverTest {
protected:
    void SetUp() override {
        DriverTest::SetUp();
        gl().glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
    }

    /// A texture whose texel in column i and row j is (4i, 4j), enabled.
    void bindProbe(GLTexture2D& probe) {
        std::vector<GLubyte> texels;
        for (int j = 0; j < 64; ++j) {
            for (int i = 0; i < 64; ++i)
                texels.insert(texels.end(),
                              {static_cast<GLubyte>(4 * i), static_cast<GLubyte>(4 * j), 0, 255});
        }
        probe.GLloadImage(texels.data(), 64, 64);
        GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, Usage::kNearest, Usage::kNearest);
        gl().glEnable(GL_TEXTURE_2D);
    }

    /// What a point shows at that place in front of an orthographic eye that looks along -z at a box of 20.
    Pixel point(
        double x, double y, double z, const std::function<void()>& before = [] {}) {
        gl().glMatrixMode(GL_PROJECTION);
        gl().glLoadIdentity();
        gl().glOrtho(x - 1, x + 1, y - 1, y + 1, -20, 20); // about the point, so that it is in the middle
        gl().glMatrixMode(GL_MODELVIEW);
        gl().glBegin(GL_POINTS);
        before();
        gl().glVertex3d(x, y, z);
        gl().glEnd();
        return readPixel(0, 0);
    }

    void expectCoordinates(const Pixel& pixel, double s, double t) {
        EXPECT_NEAR(pixel[0] / 256.0, s - std::floor(s), 1 / 64.0);
        EXPECT_NEAR(pixel[1] / 256.0, t - std::floor(t), 1 / 64.0);
    }
};

TEST_F(DriverTexUsage, wrapsFiltersAndShowsTheBorder) {
    const DrawTarget target(gl(), 1, 1);
    GLTexture2D texture(kRasterIntensity8, false);
    GLubyte texels[] = {40, 80, 120, 160};
    texture.GLloadImage(texels, 4, 1);
    gl().glEnable(GL_TEXTURE_2D);
    GLTexUsage::setWrapMode(GL_TEXTURE_2D, Usage::kMirroredRepeat, Usage::kClampToBorder);
    GLTexUsage::setBorderColor(GL_TEXTURE_2D, koColor::Color(1.0F, 1.0F, 1.0F, 1.0F));
    const auto shown = [&](double s, double t) {
        return point(0, 0, 0, [&] { gl().glTexCoord2d(s, t); })[0];
    };
    GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, Usage::kNearest, Usage::kNearest);
    EXPECT_EQ(shown(0.6, 0.5), 120);
    EXPECT_EQ(shown(1.1, 0.5), 160);
    EXPECT_EQ(shown(1.9, 0.5), 40);
    EXPECT_EQ(shown(0.6, 1.5), 255);
    GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, Usage::kNearest, Usage::kLinear);
    EXPECT_NEAR(shown(0.5, 0.5), 100, 1) << "coordinates that don't change magnify";
    expectNoErrors();
}

TEST_F(DriverTexUsage, generatesFromPlaceAndNormal) {
    const DrawTarget target(gl(), 1, 1);
    GLTexture2D probe(kRasterRGBA8, false);
    bindProbe(probe);
    Usage::GenMode linear[] = {Usage::kGenObjectLinear, Usage::kGenObjectLinear, Usage::kGenNone,
                               Usage::kGenNone};
    GLTexUsage::setTexGenMode(GL_TEXTURE_2D, linear);
    expectCoordinates(point(0.3, 0.7, 0), 0.3, 0.7);
    gl().glDisable(GL_TEXTURE_2D);

    auto* cube = new GLNormalCubeMap(64, true);
    cube->ref();
    cube->bind();
    GLTexUsage::setMinMagFilter(GL_TEXTURE_CUBE_MAP, Usage::kNearest, Usage::kNearest);
    Usage::GenMode reflection[] = {Usage::kGenReflectionMap, Usage::kGenReflectionMap,
                                   Usage::kGenReflectionMap, Usage::kGenNone};
    GLTexUsage::setTexGenMode(GL_TEXTURE_CUBE_MAP, reflection);
    const double n[] = {0.36, 0.48, 0.8};
    const Pixel pixel = point(0, 0, -3, [&] { gl().glNormal3dv(n); });
    // Seen along u = (0, 0, -1): reflected to u - 2 n (n . u).
    const double r[] = {1.6 * n[0], 1.6 * n[1], 1.6 * n[2] - 1};
    for (size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(pixel[i], (r[i] + 1) / 2 * 255, 4);
    Usage::GenMode none[4] = {};
    GLTexUsage::setTexGenMode(GL_TEXTURE_2D, none);
    EXPECT_FALSE(gl().glIsEnabled(GL_TEXTURE_CUBE_MAP) || gl().glIsEnabled(GL_TEXTURE_GEN_S));
    cube->unref();
    expectNoErrors();
}

TEST_F(DriverTexUsage, projectsFromAView) {
    const DrawTarget target(gl(), 1, 1);
    GLTexture2D probe(kRasterRGBA8, false);
    bindProbe(probe);
    koLinear::ProjMatrix view; // the projector stands at (-2, 1, -0.5)
    view[3][0] = -2;
    view[3][1] = 1;
    view[3][2] = -0.5;
    float frustum[] = {-1, 1, -1, 1, 1, 10};
    for (const auto type : {Usage::kProjPerspective, Usage::kProjOrthographic}) {
        GLTexUsage::setTexGenMode(type, view, frustum);
        for (const std::array<double, 3>& p : {std::array{0.0, 0.0, 0.0}, {1.0, 2.0, -1.5}}) {
            // GL takes eye planes through the inverse of the matrix in force: the view's.
            const double e[] = {p[0] + 2, p[1] - 1, p[2] + 0.5};
            const double q = 0.5 * (e[0] + e[1] + e[2]) + 1;
            expectCoordinates(point(p[0], p[1], p[2]), 0.5 * e[0] / q, 0.5 * e[1] / q);
        }
    }
    GLint depth = 0;
    gl().glGetIntegerv(GL_PROJECTION_STACK_DEPTH, &depth);
    EXPECT_EQ(depth, 1);
    expectNoErrors();
}

TEST_F(DriverTexUsage, placesByTheTextureMatrix) {
    const DrawTarget target(gl(), 1, 1);
    GLTexture2D probe(kRasterRGBA8, false);
    bindProbe(probe);
    const double u = 0.3;
    const double v = 0.4;
    const auto shown = [&] { return point(0, 0, 0, [&] { gl().glTexCoord2d(u, v); }); };
    koLinear::ProjMatrix matrix;
    matrix[0][0] = 0.5;
    matrix[0][1] = 0.25;
    matrix[3][1] = 0.1;
    GLTexUsage::setTransform(matrix);
    expectCoordinates(shown(), 0.5 * u, 0.25 * u + v + 0.1);

    float offset[] = {0.15F, 0.05F};
    float repeat[] = {2, 3};
    float none[] = {0, 0};
    float pivot[] = {0.5F, 0.25F};
    float turn[] = {1, 0.5F};
    GLTexUsage::setTransform(offset, none, 0.0F);
    expectCoordinates(shown(), u - 0.15, v - 0.05);
    GLTexUsage::setTransform(offset, repeat,
                             90.0F); // about the middle: (x, y) to (1 - y, x), then moved, then scaled
    expectCoordinates(shown(), 2 * (1 - v - 0.15), 3 * (u - 0.05));
    GLTexUsage::setTransform(offset, none, pivot, 0.0F, turn);
    expectCoordinates(shown(), u + 0.15, v + 0.05);
    GLTexUsage::setTransform(offset, repeat, pivot, 90.0F, turn);
    // Moved; turned about -turn: p' = R (p + turn) - turn; scaled about -pivot.
    const double x = -(v + 0.05 + 0.5) - 1;
    const double y = (u + 0.15 + 1) - 0.5;
    expectCoordinates(shown(), 2 * (x + 0.5) - 0.5, 3 * (y + 0.25) - 0.25);
    GLTexUsage::setTransform(koLinear::ProjMatrix());
}

} // namespace
