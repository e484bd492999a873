#include "DoubleTest.h"
#include "FailingArrays.h"

#include "geometry/GLOcclusionQuery.h"

namespace {

constexpr double kFirst = nthName(NameKind::Query);

class OcclusionQuery : public DoubleTest {
protected:
    OcclusionQuery() {
        for (const char* name :
             {"glGetIntegerv", "glGetQueryivARB", "glGetQueryObjectivARB", "glGetQueryObjectuivARB",
              "glGetOcclusionQueryivNV", "glGetOcclusionQueryuivNV"})
            script().answers[name] = [this](const std::vector<Argument>& arguments) {
                *static_cast<GLint*>(arguments.back().pointer()) = fAnswer++;
                return uint64_t{0};
            };
    }

    /// What all operations on three queries call.
    Calls asked() {
        {
            GLOcclusionQuery queries;
            EXPECT_EQ(queries.fCounterBits, 24U);
            EXPECT_FALSE(queries.waitForQueriesToProcess()) << "none to wait for";
            EXPECT_TRUE(queries.generateQueries(3) && queries.beginQuery(2));
            EXPECT_TRUE(queries.endQuery(0)) << "whichever is named";
            queries.completeQueryRenders();
            fAnswer = -1;
            EXPECT_FALSE(queries.queryIsAvailable(1));
            EXPECT_TRUE(queries.waitForQueriesToProcess());
            EXPECT_EQ(fAnswer, 2) << "until there is more than 0";
            fAnswer = -5;
            EXPECT_EQ(queries.sampleCount(0), 4294967291U);
            EXPECT_TRUE(queries.generateQueries(1));
            EXPECT_FALSE(queries.generateQueries(0) || queries.generateQueries(0x80000000));
        }
        return made();
    }

    static void expectNothing(GLOcclusionQuery& queries, unsigned i) {
        EXPECT_FALSE(queries.beginQuery(i) || queries.endQuery(i) || queries.queryIsAvailable(i));
        EXPECT_EQ(queries.sampleCount(i), 0U);
        EXPECT_EQ(made(), Calls{}) << i;
    }

    const Values fThree = {kFirst, kFirst + 1, kFirst + 2};
    int fAnswer = 24; ///< what the next query is answered; one more each time
};

TEST_F(OcclusionQuery, asksByARBWhereItIsOffered) {
    const auto poll = [](int i) { return call("glGetQueryObjectivARB", kFirst + i, 0x8867, kOut); };
    EXPECT_EQ(asked(), (Calls{call("glGetQueryivARB", 0x8914, 0x8864, kOut), call("glGenQueriesARB", 3, kOut),
                              call("glBeginQueryARB", 0x8914, kFirst + 2), call("glEndQueryARB", 0x8914),
                              poll(1), poll(2), poll(2), call("glGetQueryObjectuivARB", kFirst, 0x8866, kOut),
                              call("glDeleteQueriesARB", 3, fThree), call("glGenQueriesARB", 1, kOut),
                              call("glDeleteQueriesARB", 1, Values{kFirst + 3})}));
}

TEST_F(OcclusionQuery, asksByNVOtherwise) {
    gl().fExtEnabled[kCapOcclusionQuery] = false;
    const auto poll = [](int i) { return call("glGetOcclusionQueryivNV", kFirst + i, 0x8867, kOut); };
    EXPECT_EQ(
        asked(),
        (Calls{call("glGetIntegerv", 0x8864, kOut), call("glGenOcclusionQueriesNV", 3, kOut),
               call("glBeginOcclusionQueryNV", kFirst + 2), call("glEndOcclusionQueryNV"), call("glFlush"),
               poll(1), poll(2), poll(2), call("glGetOcclusionQueryuivNV", kFirst, 0x8866, kOut),
               call("glDeleteOcclusionQueriesNV", 3, fThree), call("glGenOcclusionQueriesNV", 1, kOut),
               call("glDeleteOcclusionQueriesNV", 1, Values{kFirst + 3})}));
}

TEST_F(OcclusionQuery, doesNothingOutOfRangeWithoutSupportAndWithoutMemory) {
    GLOcclusionQuery queries;
    EXPECT_TRUE(queries.generateQueries(3));
    made();
    expectNothing(queries, 3);
    expectNothing(queries, ~0U);
    theArraysFail = true;
    EXPECT_FALSE(queries.generateQueries(4));
    theArraysFail = false;
    EXPECT_EQ(made(), Calls{call("glDeleteQueriesARB", 3, fThree)});
    expectNothing(queries, 0);

    fAnswer = 0;
    EXPECT_FALSE(GLOcclusionQuery().generateQueries(4)) << "no counter";
    gl().fExtEnabled[kCapOcclusionQuery] = gl().fExtEnabled[kCapNVOcclusionQuery] = false;
    made();
    GLOcclusionQuery none;
    EXPECT_FALSE(none.generateQueries(4));
    none.completeQueryRenders();
    expectNothing(none, 0);
}

} // namespace
