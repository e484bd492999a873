#include "Particles.h"

#include "particle/GLParticlePointDraw.h"
#include "particle/GLParticleStreakDraw.h"

#include <cmath>

namespace {

class ParticlePoints : public ParticleTest {
protected:
    static Calls points(const Calls& objectColor, const Calls& particles, double size = 1) {
        return Calls{call("glGetFloatv", GL_CURRENT_COLOR, kOut), call("glPointSize", size),
                     call("glBegin", GL_POINTS)} +
               objectColor + particles + Calls{call("glEnd")} + color(1, 1, 1, 1);
    }

    /// The copies of a particle at (1, 2, 3), from an entry of the table on.
    static Calls copies(int count, int64_t cursor, float radius) {
        Calls calls;
        for (int i = 0; i < count; ++i) {
            const float* o = GLParticleDrawBase::sfRandom3[(cursor + i + 11234) % 11234];
            calls.push_back(call("glVertex3f", 1 + o[0] * radius, 2 + o[1] * radius, 3 + o[2] * radius));
        }
        return calls;
    }
};

TEST_F(ParticlePoints, haveTheirSizeAndColors) {
    const Particles row = makeRow(2);
    row->fPointSize = 3;
    row->fOpacity = 0.125F;
    row->fObjectColor = {0, 0, 1, 0.75F};
    GLParticlePointDraw drawer(*row);
    const auto current = [](double alpha) { return color(Values{0.25, 0.5, 0.75, alpha}); };
    const Values blue{0, 0, 1, 0.75};
    const Calls plain = points(color(blue), vertex(0) + vertex(1), 3);
    EXPECT_EQ(drawn(drawer), plain);
    drawer.fDistanceAttenuation[1] = -1;
    drawer.fDistanceAttenuation[2] = 1;
    EXPECT_EQ(drawn(drawer), plain) << "their sum is 0";
    drawer.fDistanceAttenuation[0] = 0.5F;
    const Calls attenuation{call("glPointParameterfARB", GL_POINT_SIZE_MIN, 0.1F),
                            call("glPointParameterfARB", GL_POINT_SIZE_MAX, 3.0),
                            call("glPointParameterfvARB", GL_POINT_DISTANCE_ATTENUATION, Values{0.5, -1, 1})};
    EXPECT_EQ(drawn(drawer), attenuation + plain);
    gl().fExtEnabled[kCapPointParameters] = false;
    EXPECT_EQ(drawn(drawer), plain);

    drawer.fIgnoreParticleColors = true;
    EXPECT_EQ(drawn(drawer), points(current(0.125), vertex(0) + vertex(1), 3));
    row->setColors({1, 0, 0, 1, 0, 1, 0, 0.5F});
    EXPECT_EQ(drawn(drawer), points(current(0.125), current(1) + vertex(0) + current(0.5) + vertex(1), 3));
    drawer.fIgnoreParticleColors = false;
    EXPECT_EQ(drawn(drawer), points(color(blue), color(kRed) + vertex(0) + color(kGreen) + vertex(1), 3));
    drawer.fLit = true;
    drawer.fNormalMode = GLParticlePointDraw::kNoNormal;
    EXPECT_EQ(drawn(drawer),
              points(material(blue), material(kRed) + vertex(0) + material(kGreen) + vertex(1), 3));
}

TEST_F(ParticlePoints, areEverySampleOrWhatTheFilterNames) {
    const Particles pair = makeRow(6, 3);
    pair->setColors({1, 0, 0, 1, 0, 1, 0, 0.5F});
    const Calls white = color(kWhite);
    const Calls red = color(kRed);
    const Calls green = color(kGreen);
    GLParticlePointDraw drawer(*pair);
    const Calls all =
        points(white, red + vertex(0) + vertex(1) + vertex(2) + green + vertex(3) + vertex(4) + vertex(5));
    pair->fFilter = {4, 2, 6, 0xFFFFFFFF, 4};
    EXPECT_EQ(drawn(drawer), all);
    pair->fFilterEnabled = true;
    EXPECT_EQ(drawn(drawer), points(white, green + vertex(4) + red + vertex(2) + green + vertex(4)));
    pair->fFilter.clear();
    delete drawer.fIterator;
    const uint32_t own[] = {5};
    drawer.setIterator(*new ParticleDataIterator(*pair, own, 1));
    EXPECT_EQ(drawn(drawer), all) << "the data are not filtered, whatever the iterator says";
}

TEST_F(ParticlePoints, lookWhereTheirNormalModeSays) {
    const Particles one = makeParticles({2, 3, 6, 0, 0, 2}, 2);
    GLParticlePointDraw drawer(*one);
    drawer.fLit = true;
    const Calls white = material(kWhite);
    const auto lit = [&](const Calls& first) {
        return points(white, first + vertex(2, 3, 6) + vertex(0, 0, 2));
    };
    EXPECT_EQ(drawn(drawer), lit(normal(-2 / 7.0, -3 / 7.0, -6 / 7.0)))
        << "toward the origin, of the first sample";
    const std::map<uint32_t, Calls> modes{
        {0, {}}, {1, normal(1, 0, 0)}, {3, normal(-1, -0.0, -0.0)}, {77, {}}};
    for (const auto& [mode, first] : modes) {
        SCOPED_TRACE(mode);
        drawer.fNormalMode = mode;
        one->setVelocities({});
        EXPECT_EQ(drawn(drawer), lit({})) << "without velocities";
        one->setVelocities({5, 0, 0});
        EXPECT_EQ(drawn(drawer), lit(first));
    }
    drawer.fNormalMode = GLParticlePointDraw::kTowardCamera;
    drawer.createAlignmentInfo({2, 3, 9}, {0, 1, 0}, {}, {});
    one->fFilter = {1, 0};
    one->fFilterEnabled = true;
    const double length = std::sqrt(62.0);
    EXPECT_EQ(drawn(drawer), points(white, normal(2 / length, 3 / length, 7 / length) + vertex(0, 0, 2) +
                                               normal(0, 0, 1) + vertex(2, 3, 6)))
        << "filtered, each sample looks for itself";
    float velocity[3] = {1e30F, 0, 0};
    float place[3] = {2, 3, 9};
    drawer.setCurrentNormal(velocity, place); // none at the camera
    drawer.fNormalMode = GLParticlePointDraw::kAlongVelocity;
    drawer.setCurrentNormal(velocity, place);
    EXPECT_EQ(made(), normal(1, 0, 0));
    delete drawer.fAlignmentInfo;
}

TEST_F(ParticlePoints, haveCopiesThatTheTableMoves) {
    const Particles pair = makeParticles({1, 2, 3, 1, 2, 3});
    GLParticlePointDraw drawer(*pair);
    const Calls white = color(kWhite);
    drawer.fMultiCount = 3;
    drawer.fMultiRadius = 0.5F;
    pair->fFilter = {1};
    const struct {
        int32_t block;
        uint32_t seed;
        int64_t cursor; ///< as a host sees it before the second particle
    } cases[] = {
        {3, 98, 3 * 64 + 98 + 3},
        {0, 11231, 0},                               // 3 + 11231 = 11234
        {0, 11230, 11233},                           // over the end
        {0, 0xFFFFFFFF, 2},                          // 2^32 + 2
        {0, 0x80000000, (-(1LL << 31) + 3) % 11234}, // below zero
        {-1, 60, -1},                                // through zero, from a block
        {0x7FFFFFFF, 0, -61},                        // 64 blocks over 32 bits
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.block) + ' ' + std::to_string(c.seed));
        drawer.fRandomBlock = c.block;
        drawer.fSeed = c.seed;
        const Calls second = copies(3, c.cursor, 0.5F);
        for (const bool filtered : {false, true}) { // the sample's number counts
            pair->fFilterEnabled = filtered;
            EXPECT_EQ(drawn(drawer),
                      points(white, filtered ? second : copies(3, c.cursor - 3, 0.5F) + second));
            EXPECT_EQ(drawer.fRandomCursor, (c.cursor + 3) % 11234);
        }
    }
}

class ParticleStreaks : public ParticleTest {
protected:
    static constexpr float kTime = 0.0333F * 7.0F;

    static Calls streaks(const Calls& particles, double width = 5) {
        return Calls{call("glGetFloatv", GL_CURRENT_COLOR, kOut), call("glLineWidth", width),
                     call("glShadeModel", GL_SMOOTH), call("glBegin", GL_LINES)} +
               particles + Calls{call("glEnd")};
    }
    static Calls streak(const Calls& head, double from, const Calls& tail, float x, float y = 0) {
        return head + vertex(from) + tail + Calls{call("glVertex3f", x, y, 0.0)};
    }
};

TEST_F(ParticleStreaks, fadeTheirTailsAndNotTheirHeads) {
    const Particles row = makeRow(4, 2);
    row->fObjectColor = {0, 0, 1, 0.5F};
    GLParticleStreakDraw drawer(*row);
    const Calls blue = color(Values{0, 0, 1, 0.5});
    const Calls gone = color(0, 0, 1, 0);
    for (const float width : {0.25F, std::nanf(""), 2.5F}) {
        drawer.fLineWidth = width;
        EXPECT_EQ(drawn(drawer), streaks(streak(blue, 0, gone, 0) + streak(blue, 1, gone, 1) +
                                             streak(blue, 2, gone, 2) + streak(blue, 3, gone, 3),
                                         width > 1 ? width : 1));
        EXPECT_EQ(drawer.fLineWidth, width > 1 ? width : 1);
    }
    drawer.fTailFade = 0.5F;
    row->setVelocities({3, 0, 0, 0, -6, 0});
    row->setColors({1, 0, 0, 1, 0, 1, 0, 0.5F});
    row->fFilter = {1, 9, 2};
    row->fFilterEnabled = true;
    const auto both = [&](const Calls& head1, const Calls& tail1, const Calls& head2, const Calls& tail2) {
        return streaks(streak(head1, 1, tail1, 1 - kTime * 3) + streak(head2, 2, tail2, 2, kTime * 6), 2.5);
    };
    const auto current = [](double alpha) { return color(0.25, 0.5, 0.75, alpha); };
    EXPECT_EQ(drawn(drawer), both(color(kRed), color(1, 0, 0, 0.5), color(kGreen), color(0, 1, 0, 0.25)));
    drawer.fIgnoreParticleColors = true; // the current colour's alpha is 0.5
    EXPECT_EQ(drawn(drawer), both(current(0.5), current(0.25), current(0.25), current(0.125)));
    drawer.fNoTailFade = true;
    EXPECT_EQ(drawn(drawer), both(current(0.5), current(0.5), current(0.25), current(0.25)));
    drawer.fIgnoreParticleColors = false;
    drawer.fLit = true;
    drawer.fNormalMode = GLParticlePointDraw::kAlongVelocity;
    EXPECT_EQ(drawn(drawer), both(normal(1, 0, 0) + material(kRed), material({1, 0, 0, 0.5}),
                                  normal(0, -1, 0) + material(kGreen), material({0, 1, 0, 0.25})));
}

TEST_F(ParticleStreaks, moveHeadAndTailOfACopyTogether) {
    const Particles row = makeParticles({1, 2, 3, 0, 0, 0, 1, 2, 3});
    row->setVelocities(std::vector<float>(9, 1.0F));
    row->fFilterEnabled = true;
    row->fFilter = {0, 2};
    GLParticleStreakDraw drawer(*row);
    drawer.fMultiCount = 3;
    drawer.fMultiRadius = 2;
    drawer.fSeed = 11230; // four before the table's end
    Calls expected;
    for (const uint32_t entry : {0, 1, 2, 6, 7, 8}) {
        const float* o = GLParticleDrawBase::sfRandom3[(entry + 11230) % 11234];
        const float head[3] = {1 + o[0] * 2, 2 + o[1] * 2, 3 + o[2] * 2};
        expected = expected + color(kWhite) + Calls{call("glVertex3f", head[0], head[1], head[2])} +
                   color(1, 1, 1, 0) +
                   Calls{call("glVertex3f", head[0] - kTime, head[1] - kTime, head[2] - kTime)};
    }
    EXPECT_EQ(drawn(drawer), streaks(expected));
}

} // namespace
