#include "DoubleTest.h"

#include "texture/GLTexUnitState.h"

namespace {

using State = GLTexUnitState;
using Func = State::CombinerFunc;
using Source = State::CombinerSource;
using Operand = State::CombinerOperand;

class TexUnitState : public DoubleTest {
protected:
    static std::string env(GLenum name, int value) { return call("glTexEnvi", GL_TEXTURE_ENV, name, value); }
    static std::string constant(const Values& color) {
        return call("glTexEnviv", GL_TEXTURE_ENV, 0x2201, color);
    }
};

TEST_F(TexUnitState, beginsAsReplaceAndSendsModeAndConstantAlone) {
    State state;
    EXPECT_EQ(state.fState, (std::array<uint8_t, 5>{0, 0x10, 0x08, 0x04, 0}));
    state.fState.fill(0xFF);
    state.fColor = {};
    EXPECT_NE(state, State());
    state.reset();
    EXPECT_EQ(state, State());
    for (const unsigned function : {0, 1, 2, 3, 4, 6, 7}) {
        state.setTextureFunction(State::TexEnvFunc(function));
        state.applyGL();
    }
    const std::string white = constant({255, 255, 255, 255});
    EXPECT_EQ(made(), (Calls{env(0x2200, 0x1E01), white, env(0x2200, 0x2100), white, env(0x2200, 0x2101),
                             white, env(0x2200, 0x0BE2), white, env(0x2200, 0x0104), white, white, white}));
}

TEST_F(TexUnitState, packsTellsAndSendsTheCombiner) {
    using testing::ElementsAre;
    EXPECT_THAT(CombinerFuncTable,
                ElementsAre(0x1E01, 0x2100, 0x0104, 0x8574, 0x8575, 0x84E7, 0x86AE, 0x86AF));
    EXPECT_THAT(CombinerSourceTable, ElementsAre(0x1702, 0x8577, 0x8576, 0x8578));
    EXPECT_THAT(CombinerOperandTable, ElementsAre(0x302, 0x303, 0x300, 0x301));
    // Both functions, then RGB and alpha source and operand of each argument; both scales; all of it packed.
    const std::tuple<std::array<unsigned, 14>, unsigned, unsigned, std::array<uint8_t, 5>> kCases[] = {
        {{3, 6, 3, 1, 2, 1, 1, 3, 0, 0, 2, 0, 3, 1}, 4, 2, {0x9D, 0xCF, 0x0D, 0xB9, 0x01}},
        {{4, 1, 0, 2, 1, 0, 2, 0, 3, 1, 1, 3, 0, 0}, 1, 4, {0x65, 0x30, 0xF2, 0x06, 0x02}}};
    State state;
    state.setTextureFunction(State::kEnvCombine);
    state.fColor = {1, 2, 3, 4};
    for (const auto& [fields, scaleRGB, scaleAlpha, packed] : kCases) {
        const auto& f = fields;
        constexpr unsigned kTooHigh = 64;
        state.setCombinerFuncRGB(Func(f[0] + kTooHigh));
        state.setCombinerFuncAlpha(Func(f[1] + kTooHigh));
        // Arguments beyond the third and other scales are ignored.
        for (unsigned i : {0U, 1U, 2U, 3U, ~0U}) {
            const unsigned* of = &f[i < 3 ? 2 + 4 * i : 2];
            state.setCombinerSourceOpRGB(i, Source(of[0] + kTooHigh), Operand(of[1] + kTooHigh));
            state.setCombinerSourceOpAlpha(i, Source(of[2] + kTooHigh), Operand(of[3] + kTooHigh));
        }
        for (const unsigned scale : {1, 0, 3, 5, 8, 255}) {
            state.setCombinerScaleRGB(static_cast<unsigned char>(scale == 1 ? scaleRGB : scale));
            state.setCombinerScaleAlpha(static_cast<unsigned char>(scale == 1 ? scaleAlpha : scale));
        }
        EXPECT_EQ(state.fState, packed);
        std::vector<unsigned> told{state.combinerFuncRGB(), state.combinerFuncAlpha()};
        for (const unsigned i : {0, 1, 7})
            told.insert(told.end(), {state.combinerSourceRGB(i), state.combinerOperandRGB(i),
                                     state.combinerSourceAlpha(i), state.combinerOperandAlpha(i)});
        EXPECT_THAT(told, testing::ElementsAreArray(f));

        state.applyGL();
        const auto source = [&](GLenum name, size_t i) { return env(name, CombinerSourceTable[f[i]]); };
        const auto operand = [&](GLenum name, size_t i) { return env(name, CombinerOperandTable[f[i]]); };
        EXPECT_EQ(made(),
                  (Calls{env(0x2200, 0x8570), constant({1, 2, 3, 4}), env(0x8571, CombinerFuncTable[f[0]]),
                         env(0x8572, CombinerFuncTable[f[1]]), source(0x8580, 2), source(0x8581, 6),
                         operand(0x8590, 3), operand(0x8591, 7), source(0x8588, 4), source(0x8589, 8),
                         operand(0x8598, 5), operand(0x8599, 9), operand(0x8592, 11), operand(0x859A, 13),
                         source(0x8582, 10), source(0x858A, 12), env(0x8573, scaleRGB),
                         env(GL_ALPHA_SCALE, scaleAlpha)}));
    }
}

} // namespace
