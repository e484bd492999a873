#include "Particles.h"

#include "particle/GLParticleStreakDraw.h"

#include <cmath>

namespace {

constexpr float kTime = 0.0333F * 7.0F;

/// A whole draw.
Calls streaks(const Calls& particles, double width = 5) {
    return Calls{call("glGetFloatv", GL_CURRENT_COLOR, kOut), call("glLineWidth", width),
                 call("glShadeModel", GL_SMOOTH), call("glBegin", GL_LINES)} +
           particles + Calls{call("glEnd")};
}

/// One streak of a colour each for head and tail.
Calls streak(const Calls& head, double from, const Calls& tail, float x, float y = 0, float z = 0) {
    return head + Calls{call("glVertex3fv", Values{from, 0, 0})} + tail + Calls{call("glVertex3f", x, y, z)};
}

class ParticleStreaks : public ParticleTest {};

TEST_F(ParticleStreaks, fadesTheTailAndNotTheHead) {
    const Particles row = makeRow(2);
    row->setVelocities({3, 0, 0, 0, -6, 1});
    row->setColors({1, 0, 0, 1, 0, 1, 0, 0.5F});
    GLParticleStreakDraw drawer(*row);
    drawer.fTailFade = 0.5F;
    const auto both = [&](const Calls& head1, const Calls& tail1, const Calls& head2, const Calls& tail2) {
        return streaks(streak(head1, 0, tail1, 0 - kTime * 3) +
                       streak(head2, 1, tail2, 1, kTime * 6, -kTime));
    };
    const auto current = [](double alpha) { return color(0.25, 0.5, 0.75, alpha); };
    EXPECT_EQ(drawn(drawer), both(color(Values{1, 0, 0, 1}), color(1, 0, 0, 0.5), color(Values{0, 1, 0, 0.5}),
                                  color(0, 1, 0, 0.25)));
    drawer.fIgnoreParticleColors = true; // the current colour's alpha is 0.5
    EXPECT_EQ(drawn(drawer), both(current(0.5), current(0.25), current(0.25), current(0.125)));
    drawer.fNoTailFade = true;
    EXPECT_EQ(drawn(drawer), both(current(0.5), current(0.5), current(0.25), current(0.25)));
    drawer.fIgnoreParticleColors = false;
    drawer.fLit = true;
    drawer.fNormalMode = 0;
    EXPECT_EQ(drawn(drawer), both(material({1, 0, 0, 1}), material({1, 0, 0, 0.5}), material({0, 1, 0, 0.5}),
                                  material({0, 1, 0, 0.25})));
}

TEST_F(ParticleStreaks, clampsItsWidthForGood) {
    const Particles none = makeParticles({});
    GLParticleStreakDraw drawer(*none);
    for (const float width : {0.25F, std::nanf(""), 2.5F}) {
        drawer.fLineWidth = width;
        EXPECT_EQ(drawn(drawer), streaks({}, width > 1 ? width : 1));
        EXPECT_EQ(drawer.fLineWidth, width > 1 ? width : 1);
    }
}

TEST_F(ParticleStreaks, drawsSamplesFiltersAndWhatDoesNotMove) {
    const Particles pair = makeRow(4, 2);
    pair->fObjectColor = {0, 0, 1, 0.5F};
    GLParticleStreakDraw drawer(*pair);
    const Calls head = color(Values{0, 0, 1, 0.5});
    const Calls tail = color(0, 0, 1, 0);
    EXPECT_EQ(drawn(drawer), streaks(streak(head, 0, tail, 0) + streak(head, 1, tail, 1) +
                                     streak(head, 2, tail, 2) + streak(head, 3, tail, 3)));
    pair->setVelocities({1, 0, 0, 2, 0, 0});
    pair->fFilter = {3, 1, 9};
    pair->fFilterEnabled = true;
    EXPECT_EQ(drawn(drawer),
              streaks(streak(head, 3, tail, 3 - kTime * 2) + streak(head, 1, tail, 1 - kTime)));
    drawer.fTailSize = 0;
    drawer.fLit = true;
    drawer.fNormalMode = GLParticlePointDraw::kAlongVelocity;
    const Calls normal{call("glNormal3f", 1.0, 0.0, 0.0)};
    const Calls litHead = material({0, 0, 1, 0.5});
    const Calls litTail = material({0, 0, 1, 0});
    EXPECT_EQ(drawn(drawer),
              streaks(normal + streak(litHead, 3, litTail, 3) + normal + streak(litHead, 1, litTail, 1)));
}

TEST_F(ParticleStreaks, movesHeadAndTailOfACopyTogether) {
    const Particles row = makeRow(31);
    row->setVelocities(std::vector<float>(93, 1.0F));
    row->fFilterEnabled = true;
    GLParticleStreakDraw drawer(*row);
    drawer.fMultiCount = 3;
    drawer.fMultiRadius = 2;
    drawer.fSeed = 11200;
    Calls expected;
    for (uint32_t i = 0; i < 31; i += 3) {
        row->fFilter.push_back(i);
        for (uint32_t copy = 0; copy < 3; ++copy) {
            const float* o = GLParticleDrawBase::sfRandom3[(3 * i + 11200 + copy) % 11234];
            const auto x = static_cast<float>(i);
            expected = expected + color(Values{1, 1, 1, 1}) +
                       Calls{call("glVertex3f", x + o[0] * 2, o[1] * 2, o[2] * 2)} + color(1, 1, 1, 0) +
                       Calls{call("glVertex3f", x - kTime + o[0] * 2, -kTime + o[1] * 2, -kTime + o[2] * 2)};
        }
    }
    EXPECT_EQ(drawn(drawer), streaks(expected));
}

} // namespace
