#include "Particles.h"

#include "particle/GLParticlePointDraw.h"

#include <cmath>

namespace {

class ParticlePoints : public ParticleTest {
protected:
    /// What comes before and after the particles of a draw, for an object colour that is white.
    static Calls points(Calls calls, const std::string& objectColor = call("glColor4fv", Values{1, 1, 1, 1}),
                        double size = 1) {
        calls.insert(calls.begin(), {call("glGetFloatv", GL_CURRENT_COLOR, kOut), call("glPointSize", size),
                                     call("glBegin", GL_POINTS), objectColor});
        calls.push_back(call("glEnd"));
        calls.push_back(call("glColor4f", 1.0, 1.0, 1.0, 1.0));
        return calls;
    }

    static std::string vertex(double x, double y = 0, double z = 0) {
        return call("glVertex3fv", Values{x, y, z});
    }

    static std::string material(const Values& color) {
        return call("glMaterialfv", GL_FRONT, GL_DIFFUSE, color);
    }

    /// The copies of a particle at the origin, from an entry of the table on.
    static Calls copies(int count, int64_t cursor, float radius) {
        Calls calls;
        for (int i = 0; i < count; ++i) {
            const float* entry = GLParticleDrawBase::sfRandom3[(cursor + i + 11234) % 11234];
            calls.push_back(call("glVertex3f", entry[0] * radius, entry[1] * radius, entry[2] * radius));
        }
        return calls;
    }
};

TEST_F(ParticlePoints, drawsPlacesAndColors) {
    const Particles row = makeRow(2);
    row->fPointSize = 3;
    row->fOpacity = 0.125F;
    row->fObjectColor = {1, 0, 0, 0.5F};
    GLParticlePointDraw drawer(*row);
    EXPECT_EQ(drawn(drawer), points({vertex(0), vertex(1)}, call("glColor4fv", Values{1, 0, 0, 0.5}), 3));
    drawer.fIgnoreParticleColors = true;
    EXPECT_EQ(drawn(drawer),
              points({vertex(0), vertex(1)}, call("glColor4fv", Values{0.25, 0.5, 0.75, 0.125}), 3));

    row->setColors({0, 1, 0, 1, 0, 0, 1, 0.75F});
    EXPECT_EQ(drawn(drawer), points({call("glColor4fv", Values{0.25, 0.5, 0.75, 1}), vertex(0),
                                     call("glColor4fv", Values{0.25, 0.5, 0.75, 0.75}), vertex(1)},
                                    call("glColor4fv", Values{0.25, 0.5, 0.75, 0.125}), 3));
    drawer.fIgnoreParticleColors = false;
    EXPECT_EQ(drawn(drawer), points({call("glColor4fv", Values{0, 1, 0, 1}), vertex(0),
                                     call("glColor4fv", Values{0, 0, 1, 0.75}), vertex(1)},
                                    call("glColor4fv", Values{1, 0, 0, 0.5}), 3));
    drawer.fLit = true;
    drawer.fNormalMode = GLParticlePointDraw::kNoNormal;
    EXPECT_EQ(drawn(drawer), points({material({0, 1, 0, 1}), vertex(0), material({0, 0, 1, 0.75}), vertex(1)},
                                    material({1, 0, 0, 0.5}), 3));
}

TEST_F(ParticlePoints, attenuatesOnlyWhereAskedAndOffered) {
    const Particles none = makeParticles({});
    none->fPointSize = 16;
    GLParticlePointDraw drawer(*none);
    EXPECT_EQ(drawn(drawer), points({}, call("glColor4fv", Values{1, 1, 1, 1}), 16));
    drawer.fDistanceAttenuation[1] = -1;
    drawer.fDistanceAttenuation[2] = 1;
    EXPECT_EQ(drawn(drawer), points({}, call("glColor4fv", Values{1, 1, 1, 1}), 16)) << "their sum is 0";
    drawer.fDistanceAttenuation[0] = 0.5F;
    Calls attenuated = points({}, call("glColor4fv", Values{1, 1, 1, 1}), 16);
    attenuated.insert(attenuated.begin(),
                      {call("glPointParameterfARB", GL_POINT_SIZE_MIN, 0.1F),
                       call("glPointParameterfARB", GL_POINT_SIZE_MAX, 16.0),
                       call("glPointParameterfvARB", GL_POINT_DISTANCE_ATTENUATION, Values{0.5, -1, 1})});
    EXPECT_EQ(drawn(drawer), attenuated);
    gl().fExtEnabled[kCapPointParameters] = false;
    EXPECT_EQ(drawn(drawer), points({}, call("glColor4fv", Values{1, 1, 1, 1}), 16));
}

TEST_F(ParticlePoints, drawsEverySampleAndWhatTheFilterNames) {
    const Particles pair = makeParticles({0, 0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0, 4, 0, 0, 5, 0, 0}, 3);
    pair->setColors({1, 0, 0, 1, 0, 1, 0, 1});
    const std::string red = call("glColor4fv", Values{1, 0, 0, 1});
    const std::string green = call("glColor4fv", Values{0, 1, 0, 1});
    GLParticlePointDraw drawer(*pair);
    const Calls all = points({red, vertex(0), vertex(1), vertex(2), green, vertex(3), vertex(4), vertex(5)});
    EXPECT_EQ(drawn(drawer), all);
    pair->fFilter = {4, 2, 6, 0xFFFFFFFF, 4};
    EXPECT_EQ(drawn(drawer), all);
    pair->fFilterEnabled = true;
    EXPECT_EQ(drawn(drawer), points({green, vertex(4), red, vertex(2), green, vertex(4)}));
    pair->fFilter.clear();
    EXPECT_EQ(drawn(drawer), all);
    delete drawer.fIterator;
    const uint32_t own[] = {5};
    drawer.setIterator(*new ParticleDataIterator(*pair, own, 1));
    EXPECT_EQ(drawn(drawer), points({green, vertex(5)}));
    delete drawer.fIterator;
    drawer.fIterator = nullptr;
    EXPECT_EQ(drawn(drawer), all);
}

TEST_F(ParticlePoints, drawsEveryThirdOfThirty) {
    const Particles row = makeRow(30);
    row->fFilterEnabled = true;
    Calls expected;
    for (uint32_t i = 0; i < 30; i += 3) {
        row->fFilter.push_back(i);
        expected.push_back(vertex(i));
    }
    GLParticlePointDraw drawer(*row);
    EXPECT_EQ(drawn(drawer), points(expected));
}

TEST_F(ParticlePoints, aimsTheNormalsOfLitPoints) {
    const Particles one = makeParticles({0, 3, 4, 0, 0, 2}, 2);
    GLParticlePointDraw drawer(*one);
    drawer.fLit = true;
    const std::string white = material({1, 1, 1, 1});
    const auto normal = [](double x, double y, double z) { return call("glNormal3f", x, y, z); };
    const auto lit = [&](Calls normals) {
        normals.insert(normals.end(), {vertex(0, 3, 4), vertex(0, 0, 2)});
        return points(normals, white);
    };
    EXPECT_EQ(drawn(drawer), lit({normal(0, -0.6F, -0.8F)})) << "toward the origin, of the first sample";
    for (const uint32_t mode : {1U, 3U, 0U, 4U, 77U}) {
        drawer.fNormalMode = mode;
        EXPECT_EQ(drawn(drawer), lit({})) << "without velocities, mode " << mode;
    }
    one->setVelocities({5, 0, 0});
    drawer.fNormalMode = GLParticlePointDraw::kAlongVelocity;
    EXPECT_EQ(drawn(drawer), lit({normal(1, 0, 0)}));
    drawer.fNormalMode = GLParticlePointDraw::kAgainstVelocity;
    EXPECT_EQ(drawn(drawer), lit({normal(-1, -0.0, -0.0)}));

    drawer.fNormalMode = GLParticlePointDraw::kTowardCamera;
    drawer.createAlignmentInfo({0, 3, 9}, {0, 1, 0}, {}, {});
    EXPECT_EQ(drawn(drawer), lit({normal(0, 0, 1)}));
    one->fFilter = {1, 0};
    one->fFilterEnabled = true;
    one->setColors({0, 0, 1, 1});
    const std::string blue = material({0, 0, 1, 1});
    const auto length = static_cast<float>(std::sqrt(58.0));
    EXPECT_EQ(drawn(drawer), points({blue, normal(0, 3 / length, 7 / length), vertex(0, 0, 2), blue,
                                     normal(0, 0, 1), vertex(0, 3, 4)},
                                    white))
        << "filtered, each sample looks for itself";

    float velocity[3] = {1e30F, 0, 0};
    float place[3] = {0, 3, 9};
    clearRecorded();
    drawer.setCurrentNormal(velocity, place);
    EXPECT_EQ(recorded(), Calls{}) << "at the camera";
    drawer.fNormalMode = GLParticlePointDraw::kAlongVelocity;
    drawer.setCurrentNormal(velocity, place);
    EXPECT_EQ(recorded(), Calls{normal(1, 0, 0)});
    delete drawer.fAlignmentInfo;
}

TEST_F(ParticlePoints, movesCopiesByTheTable) {
    const Particles pair = makeParticles({0, 0, 0, 0, 0, 0});
    GLParticlePointDraw drawer(*pair);
    drawer.fMultiCount = 4;
    drawer.fMultiRadius = 0.5F;
    drawer.fRandomBlock = 3;
    drawer.setObjectSeed("ab");
    Calls expected = copies(4, 3 * 64 + 98, 0.5F);
    const Calls second = copies(4, 4 + 3 * 64 + 98, 0.5F);
    expected.insert(expected.end(), second.begin(), second.end());
    EXPECT_EQ(drawn(drawer), points(expected));
    EXPECT_EQ(drawer.fRandomCursor, 8 + 3 * 64 + 98);
    EXPECT_EQ(drawn(drawer), points(expected)) << "the second time";

    pair->fFilter = {1};
    pair->fFilterEnabled = true;
    EXPECT_EQ(drawn(drawer), points(second)) << "filtered, the sample's number counts";
}

TEST_F(ParticlePoints, walksTheTableBeyond32BitsAndBelowZero) {
    const Particles pair = makeParticles({0, 0, 0, 0, 0, 0});
    pair->fFilter = {1};
    pair->fFilterEnabled = true;
    GLParticlePointDraw drawer(*pair);
    drawer.fMultiCount = 3;
    struct Case {
        int32_t block;
        uint32_t seed;
        int64_t cursor; ///< as a host sees it before the first copy
    };
    const Case cases[] = {
        {0, 11231, 0},                               // 3 + 11231 = 11234
        {0, 11230, 11233},                           // over the end
        {0, 0xFFFFFFFF, 2},                          // 2^32 + 2
        {0, 0x80000000, (-(1LL << 31) + 3) % 11234}, // below zero
        {-1, 0, -61},                                // below zero, from a block
        {-1, 60, -1},                                // through zero
        {0x7FFFFFFF, 0, -61},                        // 64 blocks over 32 bits
    };
    for (const Case& c : cases) {
        drawer.fRandomBlock = c.block;
        drawer.fSeed = c.seed;
        EXPECT_EQ(drawn(drawer), points(copies(3, c.cursor, 1))) << c.block << ' ' << c.seed;
        EXPECT_EQ(drawer.fRandomCursor, (c.cursor + 3) % 11234) << c.block << ' ' << c.seed;
    }
}

} // namespace
