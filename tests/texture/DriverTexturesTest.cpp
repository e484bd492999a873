// What no whole program shows: where projections and placements put a texture.

#include "DriverTest.h"

#include "texture/GLTexUsage.h"
#include "texture/GLTexture2D.h"

#include <cmath>

namespace {

using Vector = std::array<double, 3>;

class DriverTextures : public DriverTest {
protected:
    /// Draws a point with these coordinates at that place, in front of an orthographic eye that looks along
    /// -z. It shows the texel (s, t) of a texture whose texel in column i and row j is (4i, 4j).
    void expectTexel(const Vector& coordinates, const Vector& place, double s, double t) {
        const DrawTarget target(gl(), 1, 1);
        gl().glMatrixMode(GL_PROJECTION);
        gl().glLoadIdentity();
        gl().glOrtho(place[0] - 1, place[0] + 1, place[1] - 1, place[1] + 1, -20, 20); // in the middle
        gl().glMatrixMode(GL_MODELVIEW);
        gl().glBegin(GL_POINTS);
        gl().glTexCoord3dv(coordinates.data());
        gl().glVertex3dv(place.data());
        gl().glEnd();
        const Pixel pixel = readPixel(0, 0);
        EXPECT_NEAR(pixel[0], 256 * (s - std::floor(s)), 4);
        EXPECT_NEAR(pixel[1], 256 * (t - std::floor(t)), 4);
    }
};

TEST_F(DriverTextures, arePlacedByTheTextureMatrixAndProjectedFromAView) {
    std::vector<GLubyte> texels;
    for (unsigned t = 0; t < 64 * 64; ++t)
        texels.insert(texels.end(), {GLubyte(t % 64 * 4), GLubyte(t / 64 * 4), 0, 255});
    GLTexture2D probe(kRasterRGBA8, false);
    probe.GLloadImage(texels.data(), 64, 64);
    GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, IHWTexUsage::kNearest, IHWTexUsage::kNearest);
    gl().glEnable(GL_TEXTURE_2D);
    gl().glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);

    const double u = 0.3;
    const double v = 0.4;
    float offset[] = {0.15F, 0.05F};
    float repeat[] = {2, 3};
    float pivot[] = {0.5F, 0.25F};
    float turn[] = {1, 0.5F};
    // About the middle: (x, y) to (1 - y, x); then moved, then scaled.
    GLTexUsage::setTransform(offset, repeat, 90.0F);
    expectTexel({u, v}, {}, 2 * (1 - v - 0.15), 3 * (u - 0.05));
    // Moved; turned about -turn: p' = R (p + turn) - turn; scaled about -pivot.
    const double x = -(v + 0.05 + 0.5) - 1;
    const double y = (u + 0.15 + 1) - 0.5;
    GLTexUsage::setTransform(offset, repeat, pivot, 90.0F, turn);
    expectTexel({u, v}, {}, 2 * (x + 0.5) - 0.5, 3 * (y + 0.25) - 0.25);

    GLTexUsage::setTransform(koLinear::ProjMatrix());
    const koLinear::ProjMatrix view(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -2, 1, -0.5, 1); // a place
    float frustum[] = {-1, 1, -1, 1, 1, 10};
    GLTexUsage::setTexGenMode(IHWTexUsage::kProjPerspective, view, frustum);
    for (const Vector& p : {Vector{0, 0, 0}, {1, 2, -1.5}}) {
        // GL takes eye planes through the inverse of the matrix in force: the view's.
        const double e[] = {p[0] + 2, p[1] - 1, p[2] + 0.5};
        const double q = 0.5 * (e[0] + e[1] + e[2]) + 1;
        expectTexel({}, p, 0.5 * e[0] / q, 0.5 * e[1] / q);
    }
}

} // namespace
