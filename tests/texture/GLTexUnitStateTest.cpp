#include "DoubleTest.h"

#include "texture/GLTexUnitState.h"

#include <random>

namespace {

class TexUnitState : public DoubleTest {};

using State = GLTexUnitState;

template <typename T>
T as(unsigned value) {
    return static_cast<T>(value);
}

TEST_F(TexUnitState, packsEachFieldWhereHostsLookForIt) {
    // The first bit of each field, and its width, beside what sets and gets it with all bits on.
    const struct {
        unsigned bit, width;
        std::function<void(State&, unsigned)> set;
        std::function<unsigned(const State&)> get;
    } kFields[] = {
        {0, 3, [](State& s, unsigned v) { s.setTextureFunction(as<State::TexEnvFunc>(v)); },
         [](const State& s) { return s.textureFunction(); }},
        {3, 3, [](State& s, unsigned v) { s.setCombinerFuncRGB(as<State::CombinerFunc>(v)); },
         [](const State& s) { return s.combinerFuncRGB(); }},
        {6, 3, [](State& s, unsigned v) { s.setCombinerFuncAlpha(as<State::CombinerFunc>(v)); },
         [](const State& s) { return s.combinerFuncAlpha(); }},
        {9, 2,
         [](State& s, unsigned v) {
             s.setCombinerSourceOpRGB(0, as<State::CombinerSource>(v), as<State::CombinerOperand>(0));
         },
         [](const State& s) { return s.combinerSourceRGB(0); }},
        {11, 2,
         [](State& s, unsigned v) {
             s.setCombinerSourceOpRGB(0, as<State::CombinerSource>(0), as<State::CombinerOperand>(v));
         },
         [](const State& s) { return s.combinerOperandRGB(0); }},
        {13, 2,
         [](State& s, unsigned v) {
             s.setCombinerSourceOpAlpha(0, as<State::CombinerSource>(v), as<State::CombinerOperand>(0));
         },
         [](const State& s) { return s.combinerSourceAlpha(0); }},
        {15, 1,
         [](State& s, unsigned v) {
             s.setCombinerSourceOpAlpha(0, as<State::CombinerSource>(0), as<State::CombinerOperand>(v));
         },
         [](const State& s) { return s.combinerOperandAlpha(0); }},
        {16, 2,
         [](State& s, unsigned v) {
             s.setCombinerSourceOpRGB(1, as<State::CombinerSource>(v), as<State::CombinerOperand>(0));
         },
         [](const State& s) { return s.combinerSourceRGB(1); }},
        {22, 1,
         [](State& s, unsigned v) {
             s.setCombinerSourceOpAlpha(1, as<State::CombinerSource>(0), as<State::CombinerOperand>(v));
         },
         [](const State& s) { return s.combinerOperandAlpha(1); }},
        {25, 2,
         [](State& s, unsigned v) {
             s.setCombinerSourceOpRGB(2, as<State::CombinerSource>(0), as<State::CombinerOperand>(v));
         },
         [](const State& s) { return s.combinerOperandRGB(2); }},
        {27, 2,
         [](State& s, unsigned v) {
             s.setCombinerSourceOpAlpha(2, as<State::CombinerSource>(v), as<State::CombinerOperand>(0));
         },
         [](const State& s) { return s.combinerSourceAlpha(7); }},
    };
    for (const auto& field : kFields) {
        State state;
        state.fState = {};
        field.set(state, 0xFFFFFFFFU);
        EXPECT_EQ(field.get(state), (1U << field.width) - 1) << field.bit;
        uint64_t word = 0;
        std::copy(state.fState.begin(), state.fState.end(), reinterpret_cast<unsigned char*>(&word));
        EXPECT_EQ(word, ((uint64_t{1} << field.width) - 1) << field.bit);
    }
    State state;
    state.fState = {};
    state.setCombinerScaleRGB(4);
    state.setCombinerScaleAlpha(2);
    EXPECT_EQ(state.fState, (std::array<uint8_t, 5>{0, 0, 0, 0x80, 0x01}));
}

TEST_F(TexUnitState, beginsAsReplaceAndResetsToIt) {
    State state;
    EXPECT_EQ(state.fState, (std::array<uint8_t, 5>{0, 0x10, 0x08, 0x04, 0}));
    EXPECT_EQ(state.fColor, (std::array<uint8_t, 4>{255, 255, 255, 255}));
    state.fState.fill(0xFF);
    state.fColor = {};
    EXPECT_NE(state, State());
    state.reset();
    EXPECT_EQ(state, State());
}

TEST_F(TexUnitState, ignoresWhatItCannotHold) {
    State state;
    state.setCombinerScaleRGB(4);
    state.setCombinerScaleAlpha(2);
    for (const int scale : {0, 3, 5, 8, 255}) {
        state.setCombinerScaleRGB(static_cast<unsigned char>(scale));
        state.setCombinerScaleAlpha(static_cast<unsigned char>(scale));
    }
    EXPECT_EQ(state.combinerScaleRGB(), 4);
    EXPECT_EQ(state.combinerScaleAlpha(), 2);
    const State before = state;
    state.setCombinerSourceOpRGB(3, State::kSourceConstant, State::kOperandAlpha);
    state.setCombinerSourceOpAlpha(~0U, State::kSourceConstant, State::kOperandOneMinusAlpha);
    EXPECT_EQ(state, before);
}

TEST_F(TexUnitState, sendsModeAndConstantAndForTheCombinerAllElse) {
    const auto env = [](GLenum name, GLint value) { return call("glTexEnvi", GL_TEXTURE_ENV, name, value); };
    const auto constant = call("glTexEnviv", GL_TEXTURE_ENV, GL_TEXTURE_ENV_COLOR, Values{1, 2, 3, 4});
    State state;
    state.fColor = {1, 2, 3, 4};
    const GLint modes[] = {GL_REPLACE, GL_MODULATE, GL_DECAL, GL_BLEND, GL_ADD};
    for (unsigned i = 0; i < 5; ++i) {
        clearRecorded();
        state.setTextureFunction(as<State::TexEnvFunc>(i));
        state.applyGL();
        EXPECT_EQ(recorded(), (Calls{env(GL_TEXTURE_ENV_MODE, modes[i]), constant}));
    }
    for (const unsigned unknown : {6U, 7U}) {
        clearRecorded();
        state.setTextureFunction(as<State::TexEnvFunc>(unknown));
        state.applyGL();
        EXPECT_EQ(recorded(), Calls{constant});
    }

    const GLint functions[] = {GL_REPLACE, GL_MODULATE, GL_ADD, 0x8574, 0x8575, 0x84E7, 0x86AE, 0x86AF};
    const GLint sources[] = {GL_TEXTURE, 0x8577, 0x8576, 0x8578};
    const GLint operands[] = {GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_SRC_COLOR, GL_ONE_MINUS_SRC_COLOR};
    std::mt19937 random(5);
    state.setTextureFunction(State::kEnvCombine);
    for (int round = 0; round < 40; ++round) {
        const unsigned rgb = random() % 8, alpha = random() % 8, scale = random() % 3;
        unsigned source[2][3];
        unsigned operand[2][3];
        for (unsigned i = 0; i < 3; ++i) {
            source[0][i] = random() % 4, operand[0][i] = random() % 4;
            source[1][i] = random() % 4, operand[1][i] = random() % 2;
            state.setCombinerSourceOpRGB(i, as<State::CombinerSource>(source[0][i]),
                                         as<State::CombinerOperand>(operand[0][i]));
            state.setCombinerSourceOpAlpha(i, as<State::CombinerSource>(source[1][i]),
                                           as<State::CombinerOperand>(operand[1][i]));
        }
        state.setCombinerFuncRGB(as<State::CombinerFunc>(rgb));
        state.setCombinerFuncAlpha(as<State::CombinerFunc>(alpha));
        state.setCombinerScaleRGB(static_cast<unsigned char>(1 << scale));
        state.setCombinerScaleAlpha(static_cast<unsigned char>(4 >> scale));
        clearRecorded();
        state.applyGL();
        EXPECT_EQ(recorded(),
                  (Calls{env(GL_TEXTURE_ENV_MODE, GL_COMBINE), constant, env(0x8571, functions[rgb]),
                         env(0x8572, functions[alpha]), env(0x8580, sources[source[0][0]]),
                         env(0x8581, sources[source[0][1]]), env(0x8590, operands[operand[0][0]]),
                         env(0x8591, operands[operand[0][1]]), env(0x8588, sources[source[1][0]]),
                         env(0x8589, sources[source[1][1]]), env(0x8598, operands[operand[1][0]]),
                         env(0x8599, operands[operand[1][1]]), env(0x8592, operands[operand[0][2]]),
                         env(0x859A, operands[operand[1][2]]), env(0x8582, sources[source[0][2]]),
                         env(0x858A, sources[source[1][2]]), env(0x8573, 1 << scale),
                         env(GL_ALPHA_SCALE, 4 >> scale)}));
    }
}

} // namespace
