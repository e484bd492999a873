#include "DoubleTest.h"
#include "FailingArrays.h"

#include "geometry/GLOcclusionQuery.h"

namespace {

constexpr double kFirst = nthName(NameKind::Query);

class OcclusionQuery : public DoubleTest {
protected:
    OcclusionQuery() {
        script().values[GL_PIXEL_COUNTER_BITS_NV] = {24};
        for (const char* name : {"glGetQueryivARB", "glGetQueryObjectivARB", "glGetQueryObjectuivARB",
                                 "glGetOcclusionQueryivNV", "glGetOcclusionQueryuivNV"})
            script().answers[name] = [this](const std::vector<Argument>& arguments) {
                *static_cast<GLint*>(arguments[2].pointer()) = fAnswer--;
                return uint64_t{0};
            };
    }

    int fAnswer = 32; ///< what the next query is answered; one less each time
};

TEST_F(OcclusionQuery, asksByEitherExtension) {
    for (const bool arb : {true, false}) {
        gl().fExtEnabled[kCapOcclusionQuery] = arb;
        fAnswer = 32;
        const auto each = [&](const Calls& byARB, const Calls& byNV) {
            EXPECT_EQ(made(), arb ? byARB : byNV);
        };
        GLOcclusionQuery queries;
        each({call("glGetQueryivARB", 0x8914, 0x8864, kOut)}, {call("glGetIntegerv", 0x8864, kOut)});
        EXPECT_EQ(queries.fUseARB, arb);
        EXPECT_EQ(queries.fCounterBits, arb ? 32u : 24u);

        EXPECT_TRUE(queries.generateQueries(3));
        each({call("glGenQueriesARB", 3, kOut)}, {call("glGenOcclusionQueriesNV", 3, kOut)});
        const double name = queries.fNames[2];
        EXPECT_TRUE(queries.beginQuery(2));
        EXPECT_TRUE(queries.endQuery(0)) << "whichever is named";
        queries.completeQueryRenders();
        each({call("glBeginQueryARB", 0x8914, name), call("glEndQueryARB", 0x8914)},
             {call("glBeginOcclusionQueryNV", name), call("glEndOcclusionQueryNV"), call("glFlush")});

        for (const int answer : {1, 0, -1}) {
            fAnswer = answer;
            EXPECT_EQ(queries.queryIsAvailable(2), answer > 0);
            each({call("glGetQueryObjectivARB", name, 0x8867, kOut)},
                 {call("glGetOcclusionQueryivNV", name, 0x8867, kOut)});
        }
        fAnswer = -5;
        EXPECT_EQ(queries.sampleCount(2), 4294967291u);
        each({call("glGetQueryObjectuivARB", name, 0x8866, kOut)},
             {call("glGetOcclusionQueryuivNV", name, 0x8866, kOut)});

        const Values old{queries.fNames[0] * 1.0, queries.fNames[1] * 1.0, queries.fNames[2] * 1.0};
        EXPECT_TRUE(queries.generateQueries(1));
        each({call("glDeleteQueriesARB", 3, old), call("glGenQueriesARB", 1, kOut)},
             {call("glDeleteOcclusionQueriesNV", 3, old), call("glGenOcclusionQueriesNV", 1, kOut)});
        EXPECT_FALSE(queries.generateQueries(0) || queries.generateQueries(0x80000000));
        EXPECT_EQ(queries.fCount, 1u);
        const double last = queries.fNames[0];
        queries.reset();
        EXPECT_EQ(queries.fNames, nullptr);
        each({call("glDeleteQueriesARB", 1, Values{last})},
             {call("glDeleteOcclusionQueriesNV", 1, Values{last})});
    }
    EXPECT_TRUE(ledger(NameKind::Query).live.empty());
}

TEST_F(OcclusionQuery, waitsForTheLastOne) {
    GLOcclusionQuery queries;
    EXPECT_FALSE(queries.waitForQueriesToProcess());
    ASSERT_TRUE(queries.generateQueries(2));
    clearRecorded();
    int polls = 0;
    script().answers["glGetQueryObjectivARB"] = [&](const std::vector<Argument>& arguments) {
        *static_cast<GLint*>(arguments[2].pointer()) = ++polls == 4 ? 1 : 0;
        return uint64_t{0};
    };
    EXPECT_TRUE(queries.waitForQueriesToProcess());
    EXPECT_EQ(made(), Calls(4, call("glGetQueryObjectivARB", kFirst + 1, 0x8867, kOut)));
}

TEST_F(OcclusionQuery, outOfRangeWithoutSupportAndWithoutMemoryNothingIsDone) {
    const auto expectNothing = [](GLOcclusionQuery& queries, unsigned i) {
        EXPECT_FALSE(queries.beginQuery(i) || queries.endQuery(i) || queries.queryIsAvailable(i));
        EXPECT_EQ(queries.sampleCount(i), 0u);
        EXPECT_EQ(made(), Calls{});
    };
    GLOcclusionQuery queries;
    ASSERT_TRUE(queries.generateQueries(2));
    clearRecorded();
    expectNothing(queries, 2);
    expectNothing(queries, ~0U);

    theArraysFail = true;
    EXPECT_FALSE(queries.generateQueries(4));
    theArraysFail = false;
    EXPECT_EQ(queries.fCount, 0u);
    EXPECT_EQ(made(), Calls{call("glDeleteQueriesARB", 2, Values{kFirst, kFirst + 1})});
    expectNothing(queries, 0);

    for (const GLCapability capability : {kCapOcclusionQuery, kCapNVOcclusionQuery})
        gl().fExtSupported[capability] = false;
    GLOcclusionQuery none;
    EXPECT_FALSE(none.generateQueries(4));
    EXPECT_EQ(none.fCount, 0u);
    none.completeQueryRenders();
    EXPECT_FALSE(none.waitForQueriesToProcess());
    expectNothing(none, 0);

    gl().fExtSupported[kCapOcclusionQuery] = true;
    fAnswer = 0; // the extension without a counter
    GLOcclusionQuery counterless;
    EXPECT_FALSE(counterless.generateQueries(4));
}

} // namespace
