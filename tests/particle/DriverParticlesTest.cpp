#include "DriverTest.h"

#include "particle/GLParticlePointDraw.h"

#include <algorithm>
#include <cmath>

namespace {

using DriverParticles = DriverTest;

TEST_F(DriverParticles, pointsShrinkWithDistance) {
    constexpr int kSize = 64;
    const DrawTarget target(gl(), kSize, kSize);
    gl().glMatrixMode(GL_PROJECTION);
    gl().glFrustum(-1, 1, -1, 1, 1, 100);
    gl().glMatrixMode(GL_MODELVIEW);
    GLfloat sizes[2] = {1, 1}; // of the driver's, the largest need be no more than 1
    gl().glGetFloatv(GL_ALIASED_POINT_SIZE_RANGE, sizes);
    const float full = std::min(24.0F, 4 * std::floor(sizes[1] / 4));
    const auto side = [&](float distance) {
        auto* one = new ParticleData;
        one->setPositions({0, 0, -distance});
        one->fPointSize = full;
        GLParticlePointDraw drawer(*one);
        drawer.fDistanceAttenuation[2] = 1.0F / 16; // full size at 4, half at 8, a quarter at 16
        gl().glClear(GL_COLOR_BUFFER_BIT);
        drawer.draw(nullptr, nullptr);
        std::vector<GLubyte> reds(size_t{kSize} * kSize);
        gl().glReadPixels(0, 0, kSize, kSize, GL_RED, GL_UNSIGNED_BYTE, reds.data());
        return std::sqrt(std::ranges::count(reds, 255));
    };
    EXPECT_EQ(side(4), full);
    EXPECT_EQ(side(8), full / 2);
    EXPECT_EQ(side(16), full / 4);
    EXPECT_EQ(side(1), full) << "nearer, they are as large as the data say and no larger";
    const GLfloat none[] = {1, 0, 0};
    gl().glPointParameterfv(GL_POINT_DISTANCE_ATTENUATION, none);
}

} // namespace
