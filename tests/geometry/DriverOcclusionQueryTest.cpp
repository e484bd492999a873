#include "DriverTest.h"

#include "geometry/GLOcclusionQuery.h"

namespace {

class DriverOcclusionQuery : public DriverTest {};

TEST_F(DriverOcclusionQuery, countsThePixelsThatPass) {
    constexpr int kSide = 32;
    const DrawTarget target(gl(), kSide, kSide);
    gl().glOrtho(0, kSide, 0, kSide, -1, 1);
    gl().glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    gl().glEnable(GL_DEPTH_TEST);
    const auto rectangle = [&](int left, int bottom, int right, int top, float depth) {
        gl().glBegin(GL_QUADS);
        for (const auto& [x, y] : {std::pair{left, bottom}, {right, bottom}, {right, top}, {left, top}})
            gl().glVertex3f(static_cast<float>(x), static_cast<float>(y), -depth);
        gl().glEnd();
    };
    const struct {
        int left, bottom, right, top;
        float depth;
        uint32_t seen;
    } kRectangles[] = {
        {4, 4, 20, 12, 0.0F, 16 * 8},     // all of it
        {12, 4, 28, 12, 0.5F, 8 * 8},     // half behind the first
        {4, 4, 20, 12, 0.25F, 0},         // hidden
        {-10, 20, 100, 24, 0.0F, 32 * 4}, // cut by the target
        {40, 40, 50, 50, 0.0F, 0},        // outside
        {5, 5, 6, 6, -0.5F, 1},           // in front
    };
    GLOcclusionQuery queries;
    EXPECT_TRUE(queries.fUseARB);
    GLint bits = 0; // 64 on Mesa 22.3.6
    gl().glGetQueryivARB(GL_SAMPLES_PASSED_ARB, GL_QUERY_COUNTER_BITS_ARB, &bits);
    EXPECT_EQ(queries.fCounterBits, static_cast<uint32_t>(bits));
    ASSERT_TRUE(queries.generateQueries(std::size(kRectangles)));
    unsigned i = 0;
    for (const auto& r : kRectangles) {
        EXPECT_TRUE(queries.beginQuery(i));
        rectangle(r.left, r.bottom, r.right, r.top, r.depth);
        EXPECT_TRUE(queries.endQuery(i++));
    }
    queries.completeQueryRenders();
    EXPECT_TRUE(queries.waitForQueriesToProcess());
    i = 0;
    for (const auto& r : kRectangles) {
        EXPECT_TRUE(queries.queryIsAvailable(i));
        EXPECT_EQ(queries.sampleCount(i), r.seen) << i;
        ++i;
    }
    expectNoErrors();
}

} // namespace
