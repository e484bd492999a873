#include "Particles.h"

#include "particle/GLParticlePointDraw.h"

#include <cmath>

namespace {

const Calls kWhite = color(Values{1, 1, 1, 1});

Calls vertex(double x, double y = 0, double z = 0) {
    return {call("glVertex3fv", Values{x, y, z})};
}

Calls normal(double x, double y, double z) {
    return {call("glNormal3f", x, y, z)};
}

/// A whole draw.
Calls points(const Calls& objectColor, const Calls& particles, double size = 1) {
    return Calls{call("glGetFloatv", GL_CURRENT_COLOR, kOut), call("glPointSize", size),
                 call("glBegin", GL_POINTS)} +
           objectColor + particles + Calls{call("glEnd")} + color(1, 1, 1, 1);
}

/// The copies of a particle at (1, 2, 3), from an entry of the table on.
Calls copies(int count, int64_t cursor, float radius) {
    Calls calls;
    for (int i = 0; i < count; ++i) {
        const float* entry = GLParticleDrawBase::sfRandom3[(cursor + i + 11234) % 11234];
        calls.push_back(
            call("glVertex3f", 1 + entry[0] * radius, 2 + entry[1] * radius, 3 + entry[2] * radius));
    }
    return calls;
}

class ParticlePoints : public ParticleTest {};

TEST_F(ParticlePoints, drawsPlacesAndColors) {
    const Particles row = makeRow(2);
    row->fPointSize = 3;
    row->fOpacity = 0.125F;
    row->fObjectColor = {1, 0, 0, 0.5F};
    GLParticlePointDraw drawer(*row);
    const auto current = [](double alpha) { return color(Values{0.25, 0.5, 0.75, alpha}); };
    const Values red{1, 0, 0, 0.5};
    const Values green{0, 1, 0, 1};
    const Values blue{0, 0, 1, 0.75};
    EXPECT_EQ(drawn(drawer), points(color(red), vertex(0) + vertex(1), 3));
    drawer.fIgnoreParticleColors = true;
    EXPECT_EQ(drawn(drawer), points(current(0.125), vertex(0) + vertex(1), 3));
    row->setColors({0, 1, 0, 1, 0, 0, 1, 0.75F});
    EXPECT_EQ(drawn(drawer), points(current(0.125), current(1) + vertex(0) + current(0.75) + vertex(1), 3));
    drawer.fIgnoreParticleColors = false;
    EXPECT_EQ(drawn(drawer), points(color(red), color(green) + vertex(0) + color(blue) + vertex(1), 3));
    drawer.fLit = true;
    drawer.fNormalMode = GLParticlePointDraw::kNoNormal;
    EXPECT_EQ(drawn(drawer),
              points(material(red), material(green) + vertex(0) + material(blue) + vertex(1), 3));
}

TEST_F(ParticlePoints, attenuatesOnlyWhereAskedAndOffered) {
    const Particles none = makeParticles({});
    none->fPointSize = 16;
    GLParticlePointDraw drawer(*none);
    const Calls plain = points(kWhite, {}, 16);
    drawer.fDistanceAttenuation[1] = -1;
    drawer.fDistanceAttenuation[2] = 1;
    EXPECT_EQ(drawn(drawer), plain) << "their sum is 0";
    drawer.fDistanceAttenuation[0] = 0.5F;
    const Calls attenuation{call("glPointParameterfARB", GL_POINT_SIZE_MIN, 0.1F),
                            call("glPointParameterfARB", GL_POINT_SIZE_MAX, 16.0),
                            call("glPointParameterfvARB", GL_POINT_DISTANCE_ATTENUATION, Values{0.5, -1, 1})};
    EXPECT_EQ(drawn(drawer), attenuation + plain);
    gl().fExtEnabled[kCapPointParameters] = false;
    EXPECT_EQ(drawn(drawer), plain);
}

TEST_F(ParticlePoints, drawsEverySampleAndWhatTheFilterNames) {
    const Particles pair = makeRow(6, 3);
    pair->setColors({1, 0, 0, 1, 0, 1, 0, 1});
    const Calls red = color(Values{1, 0, 0, 1});
    const Calls green = color(Values{0, 1, 0, 1});
    GLParticlePointDraw drawer(*pair);
    const Calls all =
        points(kWhite, red + vertex(0) + vertex(1) + vertex(2) + green + vertex(3) + vertex(4) + vertex(5));
    pair->fFilter = {4, 2, 6, 0xFFFFFFFF, 4};
    EXPECT_EQ(drawn(drawer), all);
    pair->fFilterEnabled = true;
    EXPECT_EQ(drawn(drawer), points(kWhite, green + vertex(4) + red + vertex(2) + green + vertex(4)));
    pair->fFilter.clear();
    EXPECT_EQ(drawn(drawer), all);
    delete drawer.fIterator;
    const uint32_t own[] = {5};
    drawer.setIterator(*new ParticleDataIterator(*pair, own, 1));
    EXPECT_EQ(drawn(drawer), all) << "the data are not filtered, whatever the iterator says";
    pair->fFilter = {2};
    EXPECT_EQ(drawn(drawer), points(kWhite, red + vertex(2)));
}

TEST_F(ParticlePoints, aimsTheNormalsOfLitPoints) {
    const Particles one = makeParticles({2, 3, 6, 0, 0, 2}, 2);
    GLParticlePointDraw drawer(*one);
    drawer.fLit = true;
    const Calls white = material({1, 1, 1, 1});
    const auto lit = [&](const Calls& first) {
        return points(white, first + vertex(2, 3, 6) + vertex(0, 0, 2));
    };
    EXPECT_EQ(drawn(drawer), lit(normal(-2 / 7.0, -3 / 7.0, -6 / 7.0)))
        << "toward the origin, of the first sample";
    for (const uint32_t mode : {1U, 3U, 0U, 77U}) {
        drawer.fNormalMode = mode;
        EXPECT_EQ(drawn(drawer), lit({})) << "without velocities, mode " << mode;
    }
    one->setVelocities({5, 0, 0});
    drawer.fNormalMode = GLParticlePointDraw::kAlongVelocity;
    EXPECT_EQ(drawn(drawer), lit(normal(1, 0, 0)));
    drawer.fNormalMode = GLParticlePointDraw::kAgainstVelocity;
    EXPECT_EQ(drawn(drawer), lit(normal(-1, -0.0, -0.0)));

    drawer.fNormalMode = GLParticlePointDraw::kTowardCamera;
    drawer.createAlignmentInfo({2, 3, 9}, {0, 1, 0}, {}, {});
    one->fFilter = {1, 0};
    one->fFilterEnabled = true;
    one->setColors({0, 0, 1, 1});
    const Calls blue = material({0, 0, 1, 1});
    const double length = std::sqrt(62.0);
    EXPECT_EQ(drawn(drawer), points(white, blue + normal(2 / length, 3 / length, 7 / length) +
                                               vertex(0, 0, 2) + blue + normal(0, 0, 1) + vertex(2, 3, 6)))
        << "filtered, each sample looks for itself";

    float velocity[3] = {1e30F, 0, 0};
    float place[3] = {2, 3, 9};
    drawer.setCurrentNormal(velocity, place);
    EXPECT_EQ(made(), Calls{}) << "at the camera";
    drawer.fNormalMode = GLParticlePointDraw::kAlongVelocity;
    drawer.setCurrentNormal(velocity, place);
    EXPECT_EQ(made(), normal(1, 0, 0));
    delete drawer.fAlignmentInfo;
}

TEST_F(ParticlePoints, movesCopiesByTheTable) {
    const Particles pair = makeParticles({1, 2, 3, 1, 2, 3});
    GLParticlePointDraw drawer(*pair);
    drawer.fMultiCount = 4;
    drawer.fMultiRadius = 0.5F;
    drawer.fRandomBlock = 3;
    drawer.fSeed = 98;
    const Calls second = copies(4, 4 + 3 * 64 + 98, 0.5F);
    for (int times = 0; times < 2; ++times) {
        EXPECT_EQ(drawn(drawer), points(kWhite, copies(4, 3 * 64 + 98, 0.5F) + second));
        EXPECT_EQ(drawer.fRandomCursor, 8 + 3 * 64 + 98);
    }
    pair->fFilter = {1};
    pair->fFilterEnabled = true;
    EXPECT_EQ(drawn(drawer), points(kWhite, second)) << "filtered, the sample's number counts";

    // Beyond 32 bits and below zero.
    drawer.fMultiCount = 3;
    drawer.fMultiRadius = 1;
    const struct {
        int32_t block;
        uint32_t seed;
        int64_t cursor; ///< as a host sees it before the first copy
    } cases[] = {
        {0, 11231, 0},                               // 3 + 11231 = 11234
        {0, 11230, 11233},                           // over the end
        {0, 0xFFFFFFFF, 2},                          // 2^32 + 2
        {0, 0x80000000, (-(1LL << 31) + 3) % 11234}, // below zero
        {-1, 60, -1},                                // through zero, from a block
        {0x7FFFFFFF, 0, -61},                        // 64 blocks over 32 bits
    };
    for (const auto& c : cases) {
        drawer.fRandomBlock = c.block;
        drawer.fSeed = c.seed;
        EXPECT_EQ(drawn(drawer), points(kWhite, copies(3, c.cursor, 1))) << c.block << ' ' << c.seed;
        EXPECT_EQ(drawer.fRandomCursor, (c.cursor + 3) % 11234) << c.block << ' ' << c.seed;
    }
}

} // namespace
