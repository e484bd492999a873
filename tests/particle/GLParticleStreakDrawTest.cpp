#include "Particles.h"

#include "particle/GLParticleStreakDraw.h"

#include <cmath>

namespace {

class ParticleStreaks : public ParticleTest {
protected:
    static Calls streaks(Calls calls, double width = 5) {
        calls.insert(calls.begin(), {call("glGetFloatv", GL_CURRENT_COLOR, kOut), call("glLineWidth", width),
                                     call("glShadeModel", GL_SMOOTH), call("glBegin", GL_LINES)});
        calls.push_back(call("glEnd"));
        return calls;
    }

    /// One streak of a colour each for head and tail.
    static Calls streak(const std::string& head, const Values& from, const std::string& tail, float x,
                        float y = 0, float z = 0) {
        return {head, call("glVertex3fv", from), tail, call("glVertex3f", x, y, z)};
    }

    static void append(Calls& calls, const Calls& more) {
        calls.insert(calls.end(), more.begin(), more.end());
    }

    static constexpr float kTime = 0.0333F * 7.0F;
};

TEST_F(ParticleStreaks, fadesTheTailAndNotTheHead) {
    const Particles row = makeRow(2);
    row->setVelocities({3, 0, 0, 0, -6, 1});
    row->setColors({1, 0, 0, 1, 0, 1, 0, 0.5F});
    GLParticleStreakDraw drawer(*row);
    drawer.fTailFade = 0.5F;
    const auto color = [](double r, double g, double b, double a) { return call("glColor4f", r, g, b, a); };
    const auto both = [&](const std::string& head1, const std::string& tail1, const std::string& head2,
                          const std::string& tail2) {
        Calls calls = streak(head1, {0, 0, 0}, tail1, 0 - kTime * 3);
        append(calls, streak(head2, {1, 0, 0}, tail2, 1, kTime * 6, -kTime));
        return streaks(calls);
    };
    EXPECT_EQ(drawn(drawer), both(call("glColor4fv", Values{1, 0, 0, 1}), color(1, 0, 0, 0.5),
                                  call("glColor4fv", Values{0, 1, 0, 0.5}), color(0, 1, 0, 0.25)));

    drawer.fIgnoreParticleColors = true; // the current colour's alpha is 0.5
    EXPECT_EQ(drawn(drawer), both(color(0.25, 0.5, 0.75, 0.5), color(0.25, 0.5, 0.75, 0.25),
                                  color(0.25, 0.5, 0.75, 0.25), color(0.25, 0.5, 0.75, 0.125)));
    drawer.fNoTailFade = true;
    EXPECT_EQ(drawn(drawer), both(color(0.25, 0.5, 0.75, 0.5), color(0.25, 0.5, 0.75, 0.5),
                                  color(0.25, 0.5, 0.75, 0.25), color(0.25, 0.5, 0.75, 0.25)));

    drawer.fIgnoreParticleColors = false;
    drawer.fLit = true;
    drawer.fNormalMode = 0;
    const auto material = [](const Values& c) { return call("glMaterialfv", GL_FRONT, GL_DIFFUSE, c); };
    EXPECT_EQ(drawn(drawer), both(material({1, 0, 0, 1}), material({1, 0, 0, 0.5}), material({0, 1, 0, 0.5}),
                                  material({0, 1, 0, 0.25})));
}

TEST_F(ParticleStreaks, clampsItsWidthForGood) {
    const Particles none = makeParticles({});
    GLParticleStreakDraw drawer(*none);
    for (const float width : {0.25F, -3.0F, std::nanf("")}) {
        drawer.fLineWidth = width;
        EXPECT_EQ(drawn(drawer), streaks({}, 1));
        EXPECT_EQ(drawer.fLineWidth, 1);
    }
    drawer.fLineWidth = 2.5F;
    EXPECT_EQ(drawn(drawer), streaks({}, 2.5));
}

TEST_F(ParticleStreaks, drawsSamplesFiltersAndWhatDoesNotMove) {
    const Particles pair = makeParticles({0, 0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0}, 2);
    pair->fObjectColor = {0, 0, 1, 0.5F};
    GLParticleStreakDraw drawer(*pair);
    const std::string head = call("glColor4fv", Values{0, 0, 1, 0.5});
    const std::string tail = call("glColor4f", 0.0, 0.0, 1.0, 0.0);
    Calls expected;
    for (const int x : {0, 1, 2, 3})
        append(expected, streak(head, {static_cast<double>(x), 0, 0}, tail, static_cast<float>(x)));
    EXPECT_EQ(drawn(drawer), streaks(expected)) << "nothing moves, so that they have no length";

    pair->setVelocities({1, 0, 0, 2, 0, 0});
    pair->fFilter = {3, 1, 9};
    pair->fFilterEnabled = true;
    expected = streak(head, {3, 0, 0}, tail, 3 - kTime * 2);
    append(expected, streak(head, {1, 0, 0}, tail, 1 - kTime * 1));
    EXPECT_EQ(drawn(drawer), streaks(expected));
    drawer.fTailSize = 0;
    drawer.fLit = true;
    drawer.fNormalMode = GLParticlePointDraw::kAlongVelocity;
    const std::string normal = call("glNormal3f", 1.0, 0.0, 0.0);
    const std::string litHead = call("glMaterialfv", GL_FRONT, GL_DIFFUSE, Values{0, 0, 1, 0.5});
    const std::string litTail = call("glMaterialfv", GL_FRONT, GL_DIFFUSE, Values{0, 0, 1, 0});
    expected = {normal};
    append(expected, streak(litHead, {3, 0, 0}, litTail, 3));
    expected.push_back(normal);
    append(expected, streak(litHead, {1, 0, 0}, litTail, 1));
    EXPECT_EQ(drawn(drawer), streaks(expected));
}

TEST_F(ParticleStreaks, movesHeadAndTailOfACopyTogether) {
    const Particles row = makeRow(31);
    row->setVelocities(std::vector<float>(93, 1.0F));
    row->fFilterEnabled = true;
    for (uint32_t i = 0; i < 31; i += 3)
        row->fFilter.push_back(i);
    GLParticleStreakDraw drawer(*row);
    drawer.fMultiCount = 3;
    drawer.fMultiRadius = 2;
    drawer.fSeed = 11200;
    Calls expected;
    for (int i = 0; i < 31; i += 3) {
        for (int copy = 0; copy < 3; ++copy) {
            const float* o = GLParticleDrawBase::sfRandom3[(3 * i + 11200 + copy) % 11234];
            const float place = static_cast<float>(i) - kTime;
            append(expected, {call("glColor4fv", Values{1, 1, 1, 1}),
                              call("glVertex3f", static_cast<float>(i) + o[0] * 2, o[1] * 2, o[2] * 2),
                              call("glColor4f", 1.0, 1.0, 1.0, 0.0),
                              call("glVertex3f", place + o[0] * 2, -kTime + o[1] * 2, -kTime + o[2] * 2)});
        }
    }
    EXPECT_EQ(drawn(drawer), streaks(expected));
}

} // namespace
