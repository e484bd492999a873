#include "DriverTest.h"

#include "texture/GLNormalCubeMap.h"
#include "texture/GLTexUsage.h"
#include "texture/GLTexture2D.h"

#include <cmath>
#include <functional>
#include <numbers>

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

TEST_F(DriverTexUsage, wrapsAndShowsTheBorder) {
    const DrawTarget target(gl(), 1, 1);
    GLTexture2D texture(kRasterRGBA8, false);
    GLubyte texels[16];
    for (int i = 0; i < 16; ++i)
        texels[i] = static_cast<GLubyte>(40 + 40 * (i / 4)); // 40, 80, 120, 160
    texture.GLloadImage(texels, 4, 1);
    GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, Usage::kNearest, Usage::kNearest);
    GLTexUsage::setBorderColor(GL_TEXTURE_2D, koColor::Color(1.0F, 1.0F, 1.0F, 1.0F));
    gl().glEnable(GL_TEXTURE_2D);
    const int kBorder = 255;
    const auto inside = [](double s) {
        return 40 + 40 * std::clamp(static_cast<int>(std::floor(s * 4)), 0, 3);
    };
    const auto mirrored = [&](double s) {
        const double t = s - 2 * std::floor(s / 2);
        return inside(t < 1 ? t : 2 - t);
    };
    const std::function<int(double)> kModes[] = {
        inside,
        inside,
        [&](double s) { return s < 0 || s > 1 ? kBorder : inside(s); },
        [&](double s) { return inside(s - std::floor(s)); },
        mirrored,
        [&](double s) { return inside(std::abs(s)); },
        [&](double s) { return inside(std::abs(s)); }};
    for (unsigned mode = 0; mode < 7; ++mode) {
        const auto wrap = static_cast<Usage::WrapMode>(mode);
        for (const bool alongT : {false, true}) {
            GLTexUsage::setWrapMode(GL_TEXTURE_2D, alongT ? Usage::kRepeat : wrap,
                                    alongT ? wrap : Usage::kRepeat);
            for (double s = -1.9; s < 3; s += 0.25) {
                const Pixel pixel =
                    point(0, 0, 0, [&] { alongT ? gl().glTexCoord2d(0.1, s) : gl().glTexCoord2d(s, 0.5); });
                const int across = mode == 2 && (s < 0 || s > 1) ? kBorder : 40;
                EXPECT_EQ(pixel[0], alongT ? across : kModes[mode](s)) << "mode " << mode << " at " << s;
            }
        }
    }
}

TEST_F(DriverTexUsage, filters) {
    const DrawTarget target(gl(), 2, 2);
    GLTexture2D texture(kRasterRGBA8, false);
    const auto level = [&](unsigned number, unsigned side, std::array<GLubyte, 4> color) {
        std::vector<GLubyte> texels;
        for (unsigned i = 0; i < side * side; ++i)
            texels.insert(texels.end(), color.begin(), color.end());
        texture.GLloadImageLevel(texels.data(), number, side, side);
    };
    level(0, 4, {0, 0, 255, 255});
    level(1, 2, {0, 255, 0, 255});
    level(2, 1, {255, 0, 0, 255});
    gl().glEnable(GL_TEXTURE_2D);
    const auto minified = [&](double texelsPerPixel) {
        const double far = texelsPerPixel * 2 / 4;
        gl().glBegin(GL_QUADS);
        for (const auto& [x, y] : {std::pair{0, 0}, {1, 0}, {1, 1}, {0, 1}}) {
            gl().glTexCoord2d(x * far, y * far);
            gl().glVertex2i(2 * x - 1, 2 * y - 1);
        }
        gl().glEnd();
        return readPixel(0, 0);
    };
    const Pixel blue{0, 0, 255, 255};
    const Pixel green{0, 255, 0, 255};
    for (unsigned filter = 0; filter < 8; ++filter) {
        GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, static_cast<Usage::Filter>(filter), Usage::kLinear);
        const bool hasLevels = filter >= Usage::kTrilinear;
        EXPECT_EQ(minified(2.0), hasLevels ? green : blue) << filter;
        const bool mixesLevels = filter == Usage::kTrilinear || filter == Usage::kNearestMipmapLinear ||
                                 filter == Usage::kLinearMipmapLinear;
        const Pixel between = minified(2 * std::numbers::sqrt2); // half-way from level 1 to level 2
        if (mixesLevels) {
            EXPECT_NEAR(between[0], 128, 4) << filter;
        } else if (!hasLevels) {
            EXPECT_EQ(between, blue) << filter;
        }
    }

    GLTexture2D edge(kRasterIntensity8, false);
    GLubyte blackAndWhite[] = {0, 255, 0, 0};
    edge.GLloadImage(blackAndWhite, 2, 1);
    GLTexUsage::setWrapMode(GL_TEXTURE_2D, Usage::kClampToEdge, Usage::kClampToEdge);
    for (unsigned filter = 0; filter < 3; ++filter) {
        GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, Usage::kNearest, static_cast<Usage::Filter>(filter));
        EXPECT_NEAR(minified(0.8)[0], filter == 0 ? 0 : 0, 1);
        const Pixel right =
            (minified(0.8), readPixel(1, 0)); // s = 0.3 of 2 texels: 0.1 beyond the first's middle
        EXPECT_NEAR(right[0], filter == Usage::kNearest ? 0 : 255 * 0.1, 2) << filter;
    }
    GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, Usage::kLinear, Usage::kTrilinear);
    expectErrors({GL_INVALID_ENUM}); // mipmaps to magnify
}

TEST_F(DriverTexUsage, anisotropyReachesTheDriver) {
    GLTexture2D texture(kRasterRGBA8, false);
    texture.bind();
    GLfloat largest = 0;
    GLfloat set = 0;
    gl().glGetFloatv(GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT, &largest);
    ASSERT_GT(largest, 1);
    GLTexUsage::setFilterAnisotropic(GL_TEXTURE_2D, true);
    gl().glGetTexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, &set);
    EXPECT_EQ(set, largest);
    GLTexUsage::setFilterAnisotropic(GL_TEXTURE_2D, false);
    gl().glGetTexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, &set);
    EXPECT_EQ(set, 1);
}

TEST_F(DriverTexUsage, generatesFromPlaceAndNormal) {
    const DrawTarget target(gl(), 1, 1);
    GLTexture2D probe(kRasterRGBA8, false);
    bindProbe(probe);
    Usage::GenMode linear[] = {Usage::kGenObjectLinear, Usage::kGenObjectLinear, Usage::kGenNone,
                               Usage::kGenNone};
    GLTexUsage::setTexGenMode(GL_TEXTURE_2D, linear);
    expectCoordinates(point(0.3, 0.7, 0), 0.3, 0.7);

    Usage::GenMode sphere[] = {Usage::kGenSphereMap, Usage::kGenSphereMap, Usage::kGenNone, Usage::kGenNone};
    GLTexUsage::setTexGenMode(GL_TEXTURE_2D, sphere);
    for (const std::array<double, 3>& place :
         {std::array{0.0, 0.0, -5.0}, {2.0, -1.0, -4.0}, {-3.0, 0.5, -2.0}}) {
        const double n[] = {0.0, 0.6, 0.8};
        const double length = std::hypot(place[0], place[1], place[2]);
        const double u[] = {place[0] / length, place[1] / length, place[2] / length};
        const double along = 2 * (n[0] * u[0] + n[1] * u[1] + n[2] * u[2]);
        const double r[] = {u[0] - along * n[0], u[1] - along * n[1], u[2] - along * n[2]};
        const double m = 2 * std::sqrt(r[0] * r[0] + r[1] * r[1] + (r[2] + 1) * (r[2] + 1));
        const Pixel pixel = point(place[0], place[1], place[2], [&] { gl().glNormal3dv(n); });
        expectCoordinates(pixel, r[0] / m + 0.5, r[1] / m + 0.5);
    }
    gl().glDisable(GL_TEXTURE_2D);

    auto* cube = new GLNormalCubeMap(64, true);
    cube->ref();
    cube->bind();
    GLTexUsage::setMinMagFilter(GL_TEXTURE_CUBE_MAP, Usage::kNearest, Usage::kNearest);
    for (const auto mode : {Usage::kGenNormalMap, Usage::kGenReflectionMap}) {
        Usage::GenMode modes[] = {mode, mode, mode, Usage::kGenNone};
        GLTexUsage::setTexGenMode(GL_TEXTURE_CUBE_MAP, modes);
        const double n[] = {0.36, 0.48, 0.8};
        const Pixel pixel = point(0, 0, -3, [&] { gl().glNormal3dv(n); });
        // Seen along (0, 0, -1): reflected to u - 2 n (n . u).
        const double r[] = {1.6 * n[0], 1.6 * n[1], 1.6 * n[2] - 1};
        const double* wanted = mode == Usage::kGenNormalMap ? n : r;
        for (size_t i = 0; i < 3; ++i)
            EXPECT_NEAR(pixel[i], (wanted[i] + 1) / 2 * 255, 4) << mode;
    }
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
