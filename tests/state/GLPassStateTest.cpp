#include "DoubleTest.h"

#include "state/GLPassState.h"

#include <cstring>
#include <limits>

namespace {

using Bytes = std::array<int, 10>;

Bytes bytes(const GLPassState& state) {
    unsigned char raw[10];
    std::memcpy(raw, &state, sizeof raw);
    Bytes result;
    std::copy(std::begin(raw), std::end(raw), result.begin());
    return result;
}

template <typename Enum>
Enum value(unsigned number) {
    return static_cast<Enum>(number);
}

class PassState : public DoubleTest {
protected:
    using Test = GLPassState::TestCondition;
    using Op = GLPassState::StencilOp;
    using Factor = GLPassState::BlendFactor;

    static Calls applied(const GLPassState& state, bool withStencil) {
        clearRecorded();
        state.applyGL(withStencil);
        return recorded();
    }
};

TEST_F(PassState, resetKeepsTheUnusedBits) {
    EXPECT_EQ(bytes(GLPassState()), (Bytes{0xAF, 0x01, 0, 0xFF, 0, 0, 0xFF, 0, 0x08, 0x20}));
    GLPassState state;
    std::memset(static_cast<void*>(&state), 0xFF, sizeof state);
    state.reset();
    EXPECT_EQ(bytes(state), (Bytes{0xAF, 0xF9, 0, 0xFF, 0x00, 0xF8, 0xFF, 0xC0, 0x08, 0xA0}));
}

// Each setter over a record of zeros and one of ones: the word in which it writes, and nothing beside it.
TEST_F(PassState, settersWriteTheirFieldAlone) {
    using State = GLPassState;
    const struct {
        void (*set)(State&);
        size_t byte;
        int overZeros, overOnes;
    } kCases[] = {
        {[](State& s) { s.setColorMask(true, false, false, true); }, 0, 0x0009, 0xFFF9},
        {[](State& s) { s.setColorMask(false, true, false, false); }, 0, 0x0002, 0xFFF2},
        {[](State& s) { s.setDepthMask(true); }, 0, 0x0010, 0xFFFF},
        {[](State& s) { s.setDepthMask(false); }, 0, 0x0000, 0xFFEF},
        {[](State& s) { s.setDepthFunc(value<Test>(8 + 5)); }, 0, 0x00A0, 0xFFBF},
        {[](State& s) { s.setStencilFunc(value<Test>(2)); }, 0, 0x0040, 0xFF5F}, // the depth function
        {[](State& s) { s.setAlphaFunc(value<Test>(8 + 6), 127.9F); }, 1, 0x7F06, 0x7FFE},
        {[](State& s) { s.setStencilWriteMask(0x5A); }, 3, 0x005A, 0xFF5A},
        {[](State& s) { s.setStencilRef(200); }, 4, 0x0640, 0xFE47},
        {[](State& s) { s.setStencilReadMask(0x3C); }, 6, 0x003C, 0xFF3C},
        {[](State& s) { s.setStencilOpSFail(value<Op>(8 + 3)); }, 7, 0x0003, 0xFFFB},
        {[](State& s) { s.setStencilOpZFail(value<Op>(5)); }, 7, 0x0028, 0xFFEF},
        {[](State& s) { s.setStencilOpZPass(value<Op>(7)); }, 8, 0x0007, 0xFFFF},
        {[](State& s) { s.setBlendFuncFactors(value<Factor>(26), value<Factor>(3)); }, 8, 0x01D0, 0xF9D7},
        {[](State& s) { s.setLogicOp(value<State::LogicOp>(16 + 5)); }, 8, 0x2800, 0xAFFF},
    };
    for (const auto& c : kCases) {
        for (const auto& [fill, word] : {std::pair{0, c.overZeros}, {0xFF, c.overOnes}}) {
            State state;
            std::memset(static_cast<void*>(&state), fill, sizeof state);
            c.set(state);
            Bytes expected;
            expected.fill(fill);
            expected[c.byte] = word & 0xFF;
            expected[c.byte + 1] = word >> 8;
            EXPECT_EQ(bytes(state), expected) << "case " << &c - kCases;
        }
    }
}

TEST_F(PassState, truncatesTheAlphaReference) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    for (const auto& [reference, stored] :
         std::initializer_list<std::pair<float, int>>{{0.99F, 0},
                                                      {255.9F, 255},
                                                      {256.0F, 0},
                                                      {300.0F, 44},
                                                      {-0.9F, 0},
                                                      {-1.5F, 255},
                                                      {2147483520.0F, 128},
                                                      {2147483648.0F, 0},
                                                      {-2147483648.0F, 0},
                                                      {-2147483904.0F, 0},
                                                      {kInfinity, 0},
                                                      {-kInfinity, 0},
                                                      {std::numeric_limits<float>::quiet_NaN(), 0}}) {
        GLPassState state;
        state.setAlphaFunc(GLPassState::kTestAlways, reference);
        EXPECT_EQ(bytes(state)[2], stored) << reference;
    }
}

TEST_F(PassState, appliesInOrder) {
    EXPECT_EQ(applied(GLPassState(), true),
              (Calls{call("glColorMask", 1, 1, 1, 1), call("glDepthMask", 0), call("glDepthFunc", GL_LEQUAL),
                     call("glAlphaFunc", GL_NEVER, 0.0), call("glStencilMask", 255),
                     call("glStencilFunc", GL_ALWAYS, 0, 255), call("glStencilOp", GL_KEEP, GL_KEEP, GL_KEEP),
                     call("glBlendFunc", GL_ONE, GL_ZERO), call("glLogicOp", GL_NOOP)}));

    GLPassState state;
    state.setColorMask(false, true, false, true);
    state.setDepthMask(true);
    state.setStencilFunc(GLPassState::kTestGreater);
    state.setAlphaFunc(GLPassState::kTestNotEqual, 51);
    state.setStencilWriteMask(0x0F);
    state.setStencilRef(200);
    state.setStencilReadMask(0xF0);
    state.setStencilOpSFail(GLPassState::kStencilZero);
    state.setStencilOpZFail(GLPassState::kStencilInvert);
    state.setStencilOpZPass(GLPassState::kStencilReplace);
    state.setBlendFuncFactors(GLPassState::kBlendSourceAlpha, GLPassState::kBlendOneMinusSourceAlpha);
    state.setLogicOp(GLPassState::kLogicXor);
    Calls expected = {call("glColorMask", 0, 1, 0, 1),
                      call("glDepthMask", 1),
                      call("glDepthFunc", GL_GREATER),
                      call("glAlphaFunc", GL_NOTEQUAL, 0.2),
                      call("glStencilMask", 0x0F),
                      call("glStencilFunc", GL_ALWAYS, 200, 0xF0),
                      call("glStencilOp", GL_ZERO, GL_INVERT, GL_REPLACE),
                      call("glBlendFunc", GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA),
                      call("glLogicOp", GL_XOR)};
    const GLPassState copy = state;
    EXPECT_EQ(applied(copy, true), expected);
    expected.erase(expected.begin() + 4, expected.begin() + 7);
    EXPECT_EQ(applied(state, false), expected);
}

TEST_F(PassState, leavesOutACallWithoutATranslation) {
    const std::string blend = call("glBlendFunc", GL_ONE, GL_ZERO);
    const std::string stencil = call("glStencilOp", GL_KEEP, GL_KEEP, GL_KEEP);
    const Calls all = applied(GLPassState(), true);
    const auto without = [&all](const std::string& left) {
        Calls rest = all;
        std::erase(rest, left);
        return rest;
    };
    for (unsigned op : {6, 7}) {
        GLPassState states[3];
        states[0].setStencilOpSFail(value<Op>(op));
        states[1].setStencilOpZFail(value<Op>(op));
        states[2].setStencilOpZPass(value<Op>(op));
        for (const GLPassState& state : states)
            EXPECT_EQ(applied(state, true), without(stencil)) << op;
    }
    for (unsigned factor : {11, 15}) {
        GLPassState states[2];
        states[0].setBlendFuncFactors(value<Factor>(factor), GLPassState::kBlendZero);
        states[1].setBlendFuncFactors(GLPassState::kBlendOne, value<Factor>(factor));
        for (const GLPassState& state : states)
            EXPECT_EQ(applied(state, true), without(blend)) << factor;
    }
}

TEST_F(PassState, translatesByTable) {
    using testing::ElementsAre;
    EXPECT_THAT(TestConditionTable, ElementsAre(0x207, 0x200, 0x202, 0x205, 0x201, 0x203, 0x204, 0x206));
    EXPECT_THAT(StencilOpTable, ElementsAre(0x1E00, 0, 0x1E01, 0x1E02, 0x1E03, 0x150A));
    EXPECT_THAT(BlendFactorTable,
                ElementsAre(0, 1, 0x300, 0x301, 0x306, 0x307, 0x302, 0x303, 0x304, 0x305, 0x308));
    EXPECT_THAT(LogicOpTable, ElementsAre(0x1500, 0x150F, 0x1503, 0x150C, 0x1505, 0x150A, 0x1501, 0x150E,
                                          0x1507, 0x1508, 0x1506, 0x1509, 0x1502, 0x1504, 0x150B, 0x150D));
}

} // namespace
