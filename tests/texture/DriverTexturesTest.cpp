#include "DriverTest.h"

#include "texture/GLTexUsage.h"
#include "texture/TextureManager.h"

#include <cmath>

namespace {

using Usage = IHWTexUsage;

/// Draws single points and looks which texel they show.
class DriverTextures : public DriverTest {
protected:
    using Vector = std::array<double, 3>;

    /// A point with these coordinates at that place in front of an orthographic eye that looks along -z.
    Pixel shown(const Vector& coordinates, const Vector& place = {}) {
        const DrawTarget target(gl(), 1, 1);
        gl().glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
        gl().glMatrixMode(GL_PROJECTION);
        gl().glLoadIdentity();
        gl().glOrtho(place[0] - 1, place[0] + 1, place[1] - 1, place[1] + 1, -20, 20); // in the middle
        gl().glMatrixMode(GL_MODELVIEW);
        gl().glBegin(GL_POINTS);
        gl().glTexCoord3dv(coordinates.data());
        gl().glVertex3dv(place.data());
        gl().glEnd();
        return readPixel(0, 0);
    }

    static void expectNear(const Pixel& pixel, const std::vector<double>& wanted, double tolerance) {
        for (size_t i = 0; i < wanted.size(); ++i)
            EXPECT_NEAR(pixel[i], wanted[i], tolerance) << "channel " << i;
    }

    /// Binds a texture whose texel in column i and row j is (4i, 4j).
    void loadProbe(GLTexture2D& probe) {
        std::vector<GLubyte> texels;
        for (unsigned t = 0; t < 64 * 64; ++t)
            texels.insert(texels.end(),
                          {static_cast<GLubyte>(t % 64 * 4), static_cast<GLubyte>(t / 64 * 4), 0, 255});
        probe.GLloadImage(texels.data(), 64, 64);
        GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, Usage::kNearest, Usage::kNearest);
        gl().glEnable(GL_TEXTURE_2D);
    }

    static void expectTexel(const Pixel& pixel, double s, double t) {
        expectNear(pixel, {256 * (s - std::floor(s)), 256 * (t - std::floor(t))}, 4);
    }
};

TEST_F(DriverTextures, areProjectedFromAView) {
    GLTexture2D probe(kRasterRGBA8, false);
    loadProbe(probe);
    const koLinear::ProjMatrix view(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -2, 1, -0.5, 1); // a place
    float frustum[] = {-1, 1, -1, 1, 1, 10};
    GLTexUsage::setTexGenMode(Usage::kProjPerspective, view, frustum);
    for (const Vector& p : {Vector{0, 0, 0}, {1, 2, -1.5}}) {
        // GL takes eye planes through the inverse of the matrix in force: the view's.
        const double e[] = {p[0] + 2, p[1] - 1, p[2] + 0.5};
        const double q = 0.5 * (e[0] + e[1] + e[2]) + 1;
        expectTexel(shown({}, p), 0.5 * e[0] / q, 0.5 * e[1] / q);
    }
}

TEST_F(DriverTextures, arePlacedByTheTextureMatrix) {
    GLTexture2D probe(kRasterRGBA8, false);
    loadProbe(probe);
    const double u = 0.3;
    const double v = 0.4;
    float offset[] = {0.15F, 0.05F};
    float repeat[] = {2, 3};
    float pivot[] = {0.5F, 0.25F};
    float turn[] = {1, 0.5F};
    // About the middle: (x, y) to (1 - y, x); then moved, then scaled.
    GLTexUsage::setTransform(offset, repeat, 90.0F);
    expectTexel(shown({u, v}), 2 * (1 - v - 0.15), 3 * (u - 0.05));
    // Moved; turned about -turn: p' = R (p + turn) - turn; scaled about -pivot.
    const double x = -(v + 0.05 + 0.5) - 1;
    const double y = (u + 0.15 + 1) - 0.5;
    GLTexUsage::setTransform(offset, repeat, pivot, 90.0F, turn);
    expectTexel(shown({u, v}), 2 * (x + 0.5) - 0.5, 3 * (y + 0.25) - 0.25);
}

TEST_F(DriverTextures, haveMipmapsOfGLsMakingOrGLUs) {
    gl().glEnable(GL_TEXTURE_CUBE_MAP);
    std::array<std::vector<GLubyte>, 6> sides;
    for (size_t i = 0; i < 6; ++i)
        sides[i].assign(4UL * 4 * 3, static_cast<GLubyte>(40 * i + 20));
    const auto side = [](uint32_t i) { return static_cast<IHWTexture::CubeMapSide>(i); };
    for (const bool automatic : {true, false}) {
        gl().fExtEnabled[kCapGenerateMipmap] = automatic;
        GLTextureCubeMap cube(kRasterRGB8);
        // +x first: see GLLoadImageMipMap.
        EXPECT_TRUE(cube.GLLoadImageMipMap(4, side(0), sides[0].data(), side(3), sides[3].data(), side(5),
                                           sides[5].data(), side(1), sides[1].data(), side(4),
                                           sides[4].data(), side(2), sides[2].data()));
        GLTexUsage::setMinMagFilter(GL_TEXTURE_CUBE_MAP, Usage::kTrilinear, Usage::kNearest);
        for (uint32_t i = 0; i < 6; ++i) {
            Vector direction = {0.2, -0.3, 0.1};
            direction[i / 2] = i % 2 == 0 ? 1 : -1;
            EXPECT_EQ(shown(direction)[1], 40 * i + 20) << automatic << i;
        }
    }
}

TEST_F(DriverTextures, normaliseAndEndTheStartupContext) {
    auto* manager = new TextureManager;
    manager->normalizationCubeMap()->bind();
    GLTexUsage::setMinMagFilter(GL_TEXTURE_CUBE_MAP, Usage::kLinear, Usage::kLinear);
    gl().glEnable(GL_TEXTURE_CUBE_MAP);
    // Off the edges, where sides meet: a point on one is the mean of both on some drivers, by the wrap mode
    // that the map is left with.
    for (const Vector& v : {Vector{3, 4, 0}, {-0.1, 0.3, -0.2}, {5, -1, 1}}) {
        const double half = 127.5 / std::hypot(v[0], v[1], v[2]);
        expectNear(shown(v), {127.5 + v[0] * half, 127.5 + v[1] * half, 127.5 + v[2] * half}, 2);
    }
    expectNoErrors();
    delete manager;
    EXPECT_EQ(GLStartupContext::fpGlobalGLStartupContext, nullptr);
    forgetStartup();
}

} // namespace
