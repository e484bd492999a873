#include "texture/GLTexUnitState.h"

#include "gl/GLFunctionTable.h"

#include <algorithm>

namespace {

/// A run of bits in the packed state.
struct Field {
    unsigned first;
    unsigned width;
};

constexpr Field kFunction{0, 3};
constexpr Field kFunctionRGB{3, 3};
constexpr Field kFunctionAlpha{6, 3};
constexpr Field kScaleRGB{30, 2};
constexpr Field kScaleAlpha{32, 2};

constexpr unsigned argumentStart(unsigned i) {
    return 9 + 7 * std::min(i, 2U);
}
constexpr Field sourceRGB(unsigned i) {
    return {argumentStart(i), 2};
}
constexpr Field operandRGB(unsigned i) {
    return {argumentStart(i) + 2, 2};
}
constexpr Field sourceAlpha(unsigned i) {
    return {argumentStart(i) + 4, 2};
}
constexpr Field operandAlpha(unsigned i) {
    return {argumentStart(i) + 6, 1};
}

using State = std::array<uint8_t, 5>;

uint64_t wordOf(const State& state) {
    uint64_t word = 0;
    for (size_t i = 0; i < state.size(); ++i)
        word |= uint64_t{state[i]} << (8 * i);
    return word;
}

unsigned get(const State& state, Field field) {
    return static_cast<unsigned>(wordOf(state) >> field.first) & ((1U << field.width) - 1U);
}

void set(State& state, Field field, unsigned value) {
    const uint64_t mask = ((uint64_t{1} << field.width) - 1U) << field.first;
    const uint64_t word = (wordOf(state) & ~mask) | ((uint64_t{value} << field.first) & mask);
    for (size_t i = 0; i < state.size(); ++i)
        state[i] = static_cast<uint8_t>(word >> (8 * i));
}

void setScale(State& state, Field exponent, unsigned char scale) {
    if (scale == 1 || scale == 2 || scale == 4)
        set(state, exponent, scale / 2U);
}

unsigned char getScale(const State& state, Field exponent) {
    return static_cast<unsigned char>(1U << get(state, exponent));
}

} // namespace

void GLTexUnitState::reset() {
    fState = {};
    for (const unsigned i : {0U, 1U, 2U})
        set(fState, operandRGB(i), kOperandColor);
    fColor.fill(255);
}

void GLTexUnitState::setTextureFunction(TexEnvFunc function) {
    set(fState, kFunction, function);
}

void GLTexUnitState::setCombinerFuncRGB(CombinerFunc function) {
    set(fState, kFunctionRGB, function);
}

void GLTexUnitState::setCombinerFuncAlpha(CombinerFunc function) {
    set(fState, kFunctionAlpha, function);
}

void GLTexUnitState::setCombinerSourceOpRGB(unsigned int i, CombinerSource source, CombinerOperand operand) {
    if (i > 2)
        return;
    set(fState, sourceRGB(i), source);
    set(fState, operandRGB(i), operand);
}

void GLTexUnitState::setCombinerSourceOpAlpha(unsigned int i, CombinerSource source,
                                              CombinerOperand operand) {
    if (i > 2)
        return;
    set(fState, sourceAlpha(i), source);
    set(fState, operandAlpha(i), operand);
}

void GLTexUnitState::setCombinerScaleRGB(unsigned char scale) {
    setScale(fState, kScaleRGB, scale);
}

void GLTexUnitState::setCombinerScaleAlpha(unsigned char scale) {
    setScale(fState, kScaleAlpha, scale);
}

GLTexUnitState::TexEnvFunc GLTexUnitState::textureFunction() const {
    return static_cast<TexEnvFunc>(get(fState, kFunction));
}

GLTexUnitState::CombinerFunc GLTexUnitState::combinerFuncRGB() const {
    return static_cast<CombinerFunc>(get(fState, kFunctionRGB));
}

GLTexUnitState::CombinerFunc GLTexUnitState::combinerFuncAlpha() const {
    return static_cast<CombinerFunc>(get(fState, kFunctionAlpha));
}

GLTexUnitState::CombinerSource GLTexUnitState::combinerSourceRGB(unsigned int i) const {
    return static_cast<CombinerSource>(get(fState, sourceRGB(i)));
}

GLTexUnitState::CombinerOperand GLTexUnitState::combinerOperandRGB(unsigned int i) const {
    return static_cast<CombinerOperand>(get(fState, operandRGB(i)));
}

GLTexUnitState::CombinerSource GLTexUnitState::combinerSourceAlpha(unsigned int i) const {
    return static_cast<CombinerSource>(get(fState, sourceAlpha(i)));
}

GLTexUnitState::CombinerOperand GLTexUnitState::combinerOperandAlpha(unsigned int i) const {
    return static_cast<CombinerOperand>(get(fState, operandAlpha(i)));
}

unsigned char GLTexUnitState::combinerScaleRGB() const {
    return getScale(fState, kScaleRGB);
}

unsigned char GLTexUnitState::combinerScaleAlpha() const {
    return getScale(fState, kScaleAlpha);
}

void GLTexUnitState::applyGL() const {
    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    const auto send = [gl](GLenum name, GLint value) { gl->glTexEnvi(GL_TEXTURE_ENV, name, value); };

    if (textureFunction() < TexEnvFuncTable.size())
        send(GL_TEXTURE_ENV_MODE, TexEnvFuncTable[textureFunction()]);
    const GLint color[] = {fColor[0], fColor[1], fColor[2], fColor[3]};
    gl->glTexEnviv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_COLOR, color);
    if (textureFunction() != kEnvCombine)
        return;

    send(GL_COMBINE_RGB, CombinerFuncTable[combinerFuncRGB()]);
    send(GL_COMBINE_ALPHA, CombinerFuncTable[combinerFuncAlpha()]);

    send(GL_SOURCE0_RGB, CombinerSourceTable[combinerSourceRGB(0)]);
    send(GL_SOURCE1_RGB, CombinerSourceTable[combinerSourceRGB(1)]);
    send(GL_OPERAND0_RGB, CombinerOperandTable[combinerOperandRGB(0)]);
    send(GL_OPERAND1_RGB, CombinerOperandTable[combinerOperandRGB(1)]);

    send(GL_SOURCE0_ALPHA, CombinerSourceTable[combinerSourceAlpha(0)]);
    send(GL_SOURCE1_ALPHA, CombinerSourceTable[combinerSourceAlpha(1)]);
    send(GL_OPERAND0_ALPHA, CombinerOperandTable[combinerOperandAlpha(0)]);
    send(GL_OPERAND1_ALPHA, CombinerOperandTable[combinerOperandAlpha(1)]);

    send(GL_OPERAND2_RGB, CombinerOperandTable[combinerOperandRGB(2)]);
    send(GL_OPERAND2_ALPHA, CombinerOperandTable[combinerOperandAlpha(2)]);
    send(GL_SOURCE2_RGB, CombinerSourceTable[combinerSourceRGB(2)]);
    send(GL_SOURCE2_ALPHA, CombinerSourceTable[combinerSourceAlpha(2)]);

    send(GL_RGB_SCALE, combinerScaleRGB());
    send(GL_ALPHA_SCALE, combinerScaleAlpha());
}
