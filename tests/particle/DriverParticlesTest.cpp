#include "DriverTest.h"

#include "particle/GLParticlePointDraw.h"
#include "particle/GLParticleSpriteDraw.h"
#include "particle/GLParticleStreakDraw.h"
#include "texture/GLTexture2D.h"

#include <cmath>
#include <memory>

namespace {

struct Unref {
    void operator()(koSharedObject::SharedObject* object) const { object->unref(); }
};
template <typename T>
using Shared = std::unique_ptr<T, Unref>;

/// A picture of 64 x 64, seen from (0, 0, 10): x and y from -32 to 32, a unit to a pixel.
class DriverParticles : public DriverTest {
protected:
    static constexpr int kSize = 64;

    void SetUp() override {
        DriverTest::SetUp();
        fTarget = std::make_unique<DrawTarget>(gl(), kSize, kSize);
        gl().glMatrixMode(GL_PROJECTION);
        gl().glLoadIdentity();
        gl().glOrtho(-32, 32, -32, 32, -100, 100);
        gl().glMatrixMode(GL_MODELVIEW);
        gl().glLoadIdentity();
        clear();
    }
    void TearDown() override {
        fTarget.reset();
        DriverTest::TearDown();
    }

    void clear() {
        gl().glClearColor(0, 0, 0, 0);
        gl().glClear(GL_COLOR_BUFFER_BIT);
        gl().glColor4f(1, 1, 1, 1);
    }

    static Shared<ParticleData> particlesAt(std::vector<float> positions) {
        Shared<ParticleData> particles(new ParticleData);
        particles->ref();
        EXPECT_TRUE(particles->setPositions(std::move(positions)));
        return particles;
    }

    static void lookFromFront(GLParticleSpriteDraw& drawer) {
        koLinear::Point eye(0, 0, 1e6);
        koLinear::Vector up(0, 1, 0);
        drawer.setCamPositionOS(eye);
        drawer.setCamUpVectorOS(up);
    }

    std::vector<GLubyte> picture() {
        std::vector<GLubyte> pixels(size_t{kSize} * kSize * 4);
        gl().glReadPixels(0, 0, kSize, kSize, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        return pixels;
    }

    /// The largest size of a range of the driver's, which need be no more than 1.
    float largest(GLenum range) {
        GLfloat sizes[2] = {1, 1};
        gl().glGetFloatv(range, sizes);
        return std::floor(sizes[1]);
    }

    /// Pixels that something was drawn on.
    int covered() {
        const std::vector<GLubyte> pixels = picture();
        int count = 0;
        for (size_t i = 3; i < pixels.size(); i += 4)
            count += pixels[i] != 0;
        return count;
    }

    bool isCovered(int x, int y) { return readPixel(x + 32, y + 32)[3] != 0; }

private:
    std::unique_ptr<DrawTarget> fTarget;
};

TEST_F(DriverParticles, aSpriteCoversItsSquare) {
    const auto one = particlesAt({4, 0, 0});
    one->addData("scaleX", {20});
    one->addData("scaleY", {10});
    GLParticleSpriteDraw drawer(*one);
    lookFromFront(drawer);
    drawer.draw(nullptr, nullptr);
    EXPECT_EQ(covered(), 200);
    EXPECT_TRUE(isCovered(-6, -5) && isCovered(13, 4));

    clear(); // a quarter turn: as high as it was wide
    one->addData("twist", {90});
    drawer.draw(nullptr, nullptr);
    EXPECT_NEAR(covered(), 200, 30); // its edges fall on the pixels' edges, give or take a bit
    EXPECT_TRUE(isCovered(0, -9) && isCovered(7, 8));
    EXPECT_FALSE(isCovered(-6, 0) || isCovered(13, 0));

    clear(); // by 45 degrees a square stands on its corner: sqrt(200) to each side
    one->addData("scaleX", {20});
    one->addData("scaleY", {20});
    one->addData("twist", {45});
    drawer.draw(nullptr, nullptr);
    EXPECT_EQ(covered(), 420); // the pixels whose middles are within |x| + |y| <= 14
    EXPECT_TRUE(isCovered(4, 13) && isCovered(4, -14) && isCovered(17, 0) && isCovered(-9, 0));
    EXPECT_FALSE(isCovered(4, 15) || isCovered(14, 9));
}

TEST_F(DriverParticles, spritesShowTheirTexturesTheRightWayUp) {
    // Red, green below; blue, white above; and a texture all yellow.
    GLubyte quarters[16] = {255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 255, 255, 255, 255};
    GLubyte yellow[4] = {255, 255, 0, 255};
    const Shared<GLTexture2D> first(new GLTexture2D(kRasterRGBA8, false));
    const Shared<GLTexture2D> second(new GLTexture2D(kRasterRGBA8, false));
    first->ref();
    second->ref();
    first->GLloadImage(quarters, 2, 2);
    second->GLloadImage(yellow, 1, 1);
    std::vector<IHWTexture*> textures = {first.get(), second.get()};
    IHWTexPlacement placement;
    placement.fMinFilter = IHWTexUsage::kNearest;
    placement.fMagFilter = IHWTexUsage::kNearest;

    const auto three = particlesAt({-16, 0, 0, 0, 0, 0, 16, 0, 0});
    for (const char* scale : {"scaleX", "scaleY"})
        three->addData(scale, {12, 12, 12});
    three->addData("textureNumber", {0, 0, 0});
    GLParticleSpriteDraw drawer(*three);
    lookFromFront(drawer);
    drawer.fTextureCycling = true;
    drawer.draw(&placement, &textures);
    const auto pixel = [&](int x, int y) { return readPixel(x + 32, y + 32); };
    const auto expectQuarters = [&](Pixel lowerLeft, Pixel lowerRight, Pixel upperLeft, Pixel upperRight) {
        EXPECT_EQ(pixel(-20, -4), lowerLeft);
        EXPECT_EQ(pixel(-13, -4), lowerRight);
        EXPECT_EQ(pixel(-20, 4), upperLeft);
        EXPECT_EQ(pixel(-13, 4), upperRight);
    };
    const Pixel red{255, 0, 0, 255};
    const Pixel green{0, 255, 0, 255};
    const Pixel blue{0, 0, 255, 255};
    const Pixel white{255, 255, 255, 255};
    expectQuarters(red, green, blue, white);
    EXPECT_EQ(pixel(0, 0), (Pixel{255, 255, 0, 255}));
    EXPECT_EQ(pixel(16, 0), (Pixel{255, 255, 0, 255}));

    clear(); // a quarter turn counter-clockwise takes what is at the lower left to the lower right
    three->addData("twist", {90, 0, 0});
    drawer.draw(&placement, &textures);
    expectQuarters(blue, red, white, green);
    gl().glDisable(GL_TEXTURE_2D);
}

TEST_F(DriverParticles, aStreakFadesFromHeadToTail) {
    const auto one = particlesAt({20, 0.5F, 0});
    one->setVelocities({40 / (0.0333F * 7), 0, 0}); // 40 pixels long
    one->setColors({1, 0.5F, 0, 1});
    GLParticleStreakDraw drawer(*one);
    drawer.fLineWidth = std::min(3.0F, largest(GL_ALIASED_LINE_WIDTH_RANGE));
    drawer.fTailFade = 0.25F;
    drawer.draw(nullptr, nullptr);
    for (int x = -19; x < 20; x += 3) {
        const double alpha = 0.25 + 0.75 * (x + 0.5 + 20) / 40;
        EXPECT_NEAR(readPixel(x + 32, 32)[3], 255 * alpha, 3) << x;
        EXPECT_EQ(readPixel(x + 32, 32)[0], 255);
        EXPECT_NEAR(readPixel(x + 32, 32)[1], 128, 1);
    }
    EXPECT_FALSE(isCovered(-22, 0) || isCovered(22, 0) || isCovered(0, 4) || isCovered(0, -4));
    EXPECT_NEAR(covered(), 40 * drawer.fLineWidth, 3);
}

TEST_F(DriverParticles, pointsShrinkWithDistance) {
    gl().glMatrixMode(GL_PROJECTION);
    gl().glLoadIdentity();
    gl().glFrustum(-1, 1, -1, 1, 1, 100);
    gl().glMatrixMode(GL_MODELVIEW);
    const float full = std::min(24.0F, 4 * std::floor(largest(GL_ALIASED_POINT_SIZE_RANGE) / 4));
    const auto side = [&](float distance) {
        const auto one = particlesAt({0, 0, -distance});
        one->fPointSize = full;
        GLParticlePointDraw drawer(*one);
        drawer.fDistanceAttenuation[2] = 1.0F / 16; // full size at 4, half at 8, a quarter at 16
        clear();
        drawer.draw(nullptr, nullptr);
        return std::sqrt(covered());
    };
    EXPECT_EQ(side(4), full);
    EXPECT_EQ(side(8), full / 2);
    EXPECT_EQ(side(16), full / 4);
    EXPECT_EQ(side(1), full) << "nearer, they are as large as the data say and no larger";
    const GLfloat none[] = {1, 0, 0};
    gl().glPointParameterfv(GL_POINT_DISTANCE_ATTENUATION, none);
}

TEST_F(DriverParticles, copiesLieWhereTheyLayBefore) {
    const auto few = particlesAt({0, 0, 0, 10, 10, 0});
    std::vector<GLubyte> first;
    for (int run = 0; run < 2; ++run) {
        GLParticlePointDraw drawer(*few);
        drawer.setObjectSeed("smoke");
        drawer.fMultiCount = 40;
        drawer.fMultiRadius = 8;
        clear();
        drawer.draw(nullptr, nullptr);
        EXPECT_GT(covered(), 50);
        if (run == 0)
            first = picture();
    }
    EXPECT_EQ(picture(), first);
}

} // namespace
