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
    row->setVelocities({3, 0, 0, 0, -6, 0});
    row->setColors({1, 0, 0, 1, 0, 1, 0, 0.5F});
    GLParticleStreakDraw drawer(*row);
    drawer.fTailFade = 0.5F;
    const auto both = [&](const Calls& head1, const Calls& tail1, const Calls& head2, const Calls& tail2) {
        return streaks(streak(head1, 0, tail1, 0 - kTime * 3) + streak(head2, 1, tail2, 1, kTime * 6));
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
    drawer.fNormalMode = GLParticlePointDraw::kAlongVelocity;
    const auto normal = [](double x, double y) { return Calls{call("glNormal3f", x, y, 0.0)}; };
    EXPECT_EQ(drawn(drawer), both(normal(1, 0) + material({1, 0, 0, 1}), material({1, 0, 0, 0.5}),
                                  normal(0, -1) + material({0, 1, 0, 0.5}), material({0, 1, 0, 0.25})));
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
}

TEST_F(ParticleStreaks, movesHeadAndTailOfACopyTogether) {
    const Particles row = makeParticles({1, 2, 3, 0, 0, 0, 1, 2, 3});
    row->setVelocities(std::vector<float>(9, 1.0F));
    row->fFilterEnabled = true;
    row->fFilter = {0, 2};
    GLParticleStreakDraw drawer(*row);
    drawer.fMultiCount = 3;
    drawer.fMultiRadius = 2;
    drawer.fSeed = 11230; // four before the table's end
    Calls expected;
    for (const uint32_t i : row->fFilter) {
        for (uint32_t copy = 0; copy < 3; ++copy) {
            const float* o = GLParticleDrawBase::sfRandom3[(3 * i + 11230 + copy) % 11234];
            const float head[3] = {1 + o[0] * 2, 2 + o[1] * 2, 3 + o[2] * 2};
            expected = expected + color(Values{1, 1, 1, 1}) +
                       Calls{call("glVertex3f", head[0], head[1], head[2])} + color(1, 1, 1, 0) +
                       Calls{call("glVertex3f", head[0] - kTime, head[1] - kTime, head[2] - kTime)};
        }
    }
    EXPECT_EQ(drawn(drawer), streaks(expected));
}

} // namespace
