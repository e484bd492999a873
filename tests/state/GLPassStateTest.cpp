#include "DoubleTest.h"

#include "state/GLPassState.h"

#include <bit>
#include <limits>

namespace {

using Bytes = std::array<uint8_t, 10>;
using Condition = GLPassState::TestCondition;
using Op = GLPassState::StencilOp;
using Factor = GLPassState::BlendFactor;
using testing::ElementsAre;

class PassState : public DoubleTest {
protected:
    static Calls applied(const GLPassState& state, bool withStencil) {
        state.applyGL(withStencil);
        return made();
    }
};

TEST_F(PassState, keepsWhatItIsToldInTenBytesAndAppliesItInOrder) {
    EXPECT_EQ(std::bit_cast<Bytes>(GLPassState()), (Bytes{0xAF, 1, 0, 0xFF, 0, 0, 0xFF, 0, 8, 0x20}));
    Bytes ones;
    ones.fill(0xFF);
    auto state = std::bit_cast<GLPassState>(ones);
    state.reset();
    EXPECT_EQ(std::bit_cast<Bytes>(state), (Bytes{0xAF, 0xF9, 0, 0xFF, 0, 0xF8, 0xFF, 0xC0, 8, 0xA0}));

    // Values that have a bit too many.
    state.setColorMask(false, true, false, false);
    state.setDepthMask(true);
    state.setStencilFunc(Condition(8 + 6)); // the depth function
    state.setAlphaFunc(Condition(8 + 3), 51);
    state.setStencilWriteMask(0x5A);
    state.setStencilRef(200);
    state.setStencilReadMask(0x3C);
    state.setStencilOpSFail(Op(8 + 1));
    state.setStencilOpZFail(Op(8 + 5));
    state.setStencilOpZPass(Op(8 + 2));
    state.setBlendFuncFactors(Factor(16 + 6), Factor(16 + 7));
    state.setLogicOp(GLPassState::LogicOp(16 + 10));
    EXPECT_EQ(std::bit_cast<Bytes>(state), (Bytes{0xD2, 0xFB, 51, 0x5A, 0x40, 0xFE, 0x3C, 0xE9, 0xB2, 0xD3}));
    const Calls start{call("glColorMask", 0, 1, 0, 0), call("glDepthMask", 1),
                      call("glDepthFunc", GL_GREATER), call("glAlphaFunc", GL_NOTEQUAL, 0.2)};
    const Calls stencil{call("glStencilMask", 0x5A), call("glStencilFunc", GL_ALWAYS, 200, 0x3C)};
    const Calls operations{call("glStencilOp", GL_ZERO, GL_INVERT, GL_REPLACE)};
    const Calls blend{call("glBlendFunc", GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)};
    const Calls logic{call("glLogicOp", GL_XOR)};
    EXPECT_EQ(applied(state, true), start + stencil + operations + blend + logic);
    EXPECT_EQ(applied(state, false), start + blend + logic);

    // The one call of a value that GL has no constant for is left out.
    for (const auto set : {&GLPassState::setStencilOpSFail, &GLPassState::setStencilOpZFail,
                           &GLPassState::setStencilOpZPass}) {
        GLPassState unknown = state;
        (unknown.*set)(Op(6));
        EXPECT_EQ(applied(unknown, true), start + stencil + blend + logic);
    }
    for (const auto& [source, destination] : {std::pair{11, 0}, {0, 11}}) {
        state.setBlendFuncFactors(Factor(source), Factor(destination));
        EXPECT_EQ(applied(state, false), start + logic);
    }
    state.setColorMask(true, false, false, true);
    state.setDepthFunc(Condition(8 + 2));
    EXPECT_THAT(applied(state, false),
                testing::IsSupersetOf({call("glColorMask", 1, 0, 0, 1), call("glDepthFunc", GL_EQUAL)}));
}

TEST_F(PassState, truncatesTheAlphaReference) {
    using Limits = std::numeric_limits<float>;
    std::vector<int> stored;
    for (const float reference : {0.99F, 255.9F, 256.0F, 300.0F, -0.9F, -1.5F, 2147483520.0F, 2147483648.0F,
                                  -2147483904.0F, Limits::infinity(), Limits::quiet_NaN()}) {
        GLPassState state;
        state.setAlphaFunc(GLPassState::kTestAlways, reference);
        stored.push_back(state.fAlphaReference);
    }
    EXPECT_THAT(stored, ElementsAre(0, 255, 0, 44, 0, 255, 128, 0, 0, 0, 0));
}

TEST_F(PassState, translatesByTable) {
    EXPECT_THAT(TestConditionTable, ElementsAre(0x207, 0x200, 0x202, 0x205, 0x201, 0x203, 0x204, 0x206));
    EXPECT_THAT(StencilOpTable, ElementsAre(0x1E00, 0, 0x1E01, 0x1E02, 0x1E03, 0x150A));
    EXPECT_THAT(BlendFactorTable,
                ElementsAre(0, 1, 0x300, 0x301, 0x306, 0x307, 0x302, 0x303, 0x304, 0x305, 0x308));
    EXPECT_THAT(LogicOpTable, ElementsAre(0x1500, 0x150F, 0x1503, 0x150C, 0x1505, 0x150A, 0x1501, 0x150E,
                                          0x1507, 0x1508, 0x1506, 0x1509, 0x1502, 0x1504, 0x150B, 0x150D));
}

} // namespace
