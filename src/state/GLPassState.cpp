#include "state/GLPassState.h"

#include "gl/GLFunctionTable.h"

#include <climits>

namespace {

/// Toward zero; 0 for what an int can't hold.
uint8_t truncatedToByte(float value) {
    // -INT_MIN is the first float beyond the range.
    constexpr auto kBeyond = -static_cast<float>(INT_MIN);
    if (!(value >= -kBeyond && value < kBeyond))
        return 0;
    return static_cast<uint8_t>(static_cast<int>(value));
}

} // namespace

void GLPassState::reset() {
    setColorMask(true, true, true, true);
    setDepthMask(false);
    setDepthFunc(kTestLessEqual);
    setAlphaFunc(kTestNever, 0.0F);
    setStencilWriteMask(255);
    fStencilFunction = kTestAlways;
    setStencilRef(0);
    setStencilReadMask(255);
    setStencilOpSFail(kStencilKeep);
    setStencilOpZFail(kStencilKeep);
    setStencilOpZPass(kStencilKeep);
    setBlendFuncFactors(kBlendOne, kBlendZero);
    setLogicOp(kLogicNoOp);
}

void GLPassState::setColorMask(bool red, bool green, bool blue, bool alpha) {
    fRedWriteMask = red;
    fGreenWriteMask = green;
    fBlueWriteMask = blue;
    fAlphaWriteMask = alpha;
}

void GLPassState::setDepthMask(bool write) {
    fDepthWriteMask = write;
}

void GLPassState::setDepthFunc(TestCondition condition) {
    fDepthFunction = condition & 7U;
}

void GLPassState::setAlphaFunc(TestCondition condition, float reference) {
    fAlphaFunction = condition & 7U;
    fAlphaReference = truncatedToByte(reference);
}

void GLPassState::setStencilReadMask(unsigned char mask) {
    fStencilReadMask = mask;
}

void GLPassState::setStencilWriteMask(unsigned char mask) {
    fStencilWriteMask = mask;
}

void GLPassState::setStencilFunc(TestCondition condition) {
    // Oddity: the depth field, not the stencil field: hosts count on stencil passes drawing with "always".
    fDepthFunction = condition & 7U;
}

void GLPassState::setStencilRef(unsigned char reference) {
    fStencilReference = reference;
}

void GLPassState::setStencilOpSFail(StencilOp operation) {
    fStencilFailOperation = operation & 7U;
}

void GLPassState::setStencilOpZFail(StencilOp operation) {
    fDepthFailOperation = operation & 7U;
}

void GLPassState::setStencilOpZPass(StencilOp operation) {
    fDepthPassOperation = operation & 7U;
}

void GLPassState::setBlendFuncFactors(BlendFactor source, BlendFactor destination) {
    fSourceBlendFactor = source & 15U;
    fDestinationBlendFactor = destination & 15U;
}

void GLPassState::setLogicOp(LogicOp operation) {
    fLogicOperation = operation & 15U;
}

void GLPassState::applyGL(bool withStencil) const {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    gl->glColorMask(fRedWriteMask, fGreenWriteMask, fBlueWriteMask, fAlphaWriteMask);
    gl->glDepthMask(fDepthWriteMask);
    gl->glDepthFunc(TestConditionTable[fDepthFunction]);
    gl->glAlphaFunc(TestConditionTable[fAlphaFunction], static_cast<float>(fAlphaReference / 255.0));
    if (withStencil) {
        gl->glStencilMask(fStencilWriteMask);
        gl->glStencilFunc(TestConditionTable[fStencilFunction], fStencilReference, fStencilReadMask);
        if (fStencilFailOperation < StencilOpTable.size() && fDepthFailOperation < StencilOpTable.size() &&
            fDepthPassOperation < StencilOpTable.size())
            gl->glStencilOp(StencilOpTable[fStencilFailOperation], StencilOpTable[fDepthFailOperation],
                            StencilOpTable[fDepthPassOperation]);
    }
    if (fSourceBlendFactor < BlendFactorTable.size() && fDestinationBlendFactor < BlendFactorTable.size())
        gl->glBlendFunc(BlendFactorTable[fSourceBlendFactor], BlendFactorTable[fDestinationBlendFactor]);
    gl->glLogicOp(LogicOpTable[fLogicOperation]);
}
