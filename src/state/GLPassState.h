#pragma once

#include "gl/EntryMacros.h"
#include "gl/Export.h"

#include <array>
#include <cstdint>

/// The fixed-function raster state of one rendering pass in ten bytes, so that a host can keep one per pass
/// and compare them cheaply.
///
/// It holds values only: alpha test, stencil test, blending and logic operation are enabled elsewhere.
/// Setters keep as many low bits of their argument as the field has. A stencil operation of 6 or 7 and a
/// blend factor of 11 to 15 are stored but have no GL counterpart: applyGL then leaves that one call out.
class ORLOGL_API GLPassState {
public:
    /// When a depth, stencil or alpha test passes; indexes the table of GL's own.
    enum TestCondition : uint32_t {
        kTestAlways,
        kTestNever,
        kTestEqual,
        kTestNotEqual,
        kTestLess,
        kTestLessEqual,
        kTestGreater,
        kTestGreaterEqual,
    };

    /// What becomes of a stencil value; indexes the table of GL's own.
    enum StencilOp : uint32_t {
        kStencilKeep,
        kStencilZero,
        kStencilReplace,
        kStencilIncrement,
        kStencilDecrement,
        kStencilInvert,
    };

    /// What colours are multiplied by before they are added; indexes the table of GL's own.
    enum BlendFactor : uint32_t {
        kBlendZero,
        kBlendOne,
        kBlendSourceColor,
        kBlendOneMinusSourceColor,
        kBlendDestinationColor,
        kBlendOneMinusDestinationColor,
        kBlendSourceAlpha,
        kBlendOneMinusSourceAlpha,
        kBlendDestinationAlpha,
        kBlendOneMinusDestinationAlpha,
        kBlendSourceAlphaSaturate,
    };

    /// How written and stored bits are joined; indexes the table of GL's own.
    enum LogicOp : uint32_t {
        kLogicClear,
        kLogicSet,
        kLogicCopy,
        kLogicCopyInverted,
        kLogicNoOp,
        kLogicInvert,
        kLogicAnd,
        kLogicNand,
        kLogicOr,
        kLogicNor,
        kLogicXor,
        kLogicEquivalent,
        kLogicAndReverse,
        kLogicAndInverted,
        kLogicOrReverse,
        kLogicOrInverted,
    };

    GLPassState() { reset(); }

    /// Colour writes on, depth writes off, depth test less-or-equal, alpha test never with reference 0,
    /// stencil always/keep with all bits, blending one/zero, logic no-op. The unused bits stay as they are.
    void reset();

    /// Which channels are written.
    void setColorMask(bool red, bool green, bool blue, bool alpha);

    /// Whether depth is written.
    void setDepthMask(bool write);

    /// When a depth passes against the stored one.
    void setDepthFunc(TestCondition condition);

    /// The reference is given in 0 to 255, cut to a whole number, its low 8 bits kept; 0 where it is beyond
    /// the range of int or not a number.
    void setAlphaFunc(TestCondition condition, float reference);

    /// The bits of reference and stored value that the stencil test compares.
    void setStencilReadMask(unsigned char mask);

    /// The bits of the stencil that are written.
    void setStencilWriteMask(unsigned char mask);

    /// Sets the *depth* condition: the stencil condition stays "always". Hosts set this one before
    /// setDepthFunc.
    void setStencilFunc(TestCondition condition);

    /// What the stored stencil value is compared with.
    void setStencilRef(unsigned char reference);

    /// When the stencil test fails.
    void setStencilOpSFail(StencilOp operation);

    /// When the stencil test passes and the depth test fails.
    void setStencilOpZFail(StencilOp operation);

    /// When both pass.
    void setStencilOpZPass(StencilOp operation);

    /// What the new and the stored colour are multiplied by.
    void setBlendFuncFactors(BlendFactor source, BlendFactor destination);

    /// How new and stored bits are joined where logic operations are enabled.
    void setLogicOp(LogicOp operation);

    /// Sends the state to the current context; the stencil calls only when asked. Needs the table. Nothing is
    /// cached or read back.
    void applyGL(bool withStencil) const;

    // Bytes 0 to 3.
    uint8_t fRedWriteMask : 1 = 0;             ///< 1: written
    uint8_t fGreenWriteMask : 1 = 0;           ///< 1: written
    uint8_t fBlueWriteMask : 1 = 0;            ///< 1: written
    uint8_t fAlphaWriteMask : 1 = 0;           ///< 1: written
    uint8_t fDepthWriteMask : 1 = 0;           ///< 1: written
    uint8_t fDepthFunction : 3 = 0;            ///< a TestCondition
    uint8_t fAlphaFunction : 3 = 0;            ///< a TestCondition
    uint8_t fUnusedAfterAlphaFunction : 5 = 0; ///< 0
    uint8_t fAlphaReference = 0;               ///< 0 to 255
    uint8_t fStencilWriteMask = 0;             ///< a bit for each of the stencil's
    // The word at byte 4, then bytes 6 and 7.
    uint16_t fStencilFunction : 3 = 0;              ///< a TestCondition
    uint16_t fStencilReference : 8 = 0;             ///< 0 to 255
    uint16_t fUnusedAfterStencilReference : 5 = 0;  ///< 0
    uint8_t fStencilReadMask = 0;                   ///< a bit for each of the stencil's
    uint8_t fStencilFailOperation : 3 = 0;          ///< a StencilOp
    uint8_t fDepthFailOperation : 3 = 0;            ///< a StencilOp
    uint8_t fUnusedAfterDepthFailOperation : 2 = 0; ///< 0
    // The word at byte 8.
    uint16_t fDepthPassOperation : 3 = 0;        ///< a StencilOp
    uint16_t fSourceBlendFactor : 4 = 0;         ///< a BlendFactor
    uint16_t fDestinationBlendFactor : 4 = 0;    ///< a BlendFactor
    uint16_t fLogicOperation : 4 = 0;            ///< a LogicOp
    uint16_t fUnusedAfterLogicOperation : 1 = 0; ///< 0
};
static_assert(sizeof(GLPassState) == 10);

/// GL's constant for each value of the enumerations above.
inline constexpr ORLOGL_API std::array<GLenum, 8> TestConditionTable = {
    GL_ALWAYS, GL_NEVER, GL_EQUAL, GL_NOTEQUAL, GL_LESS, GL_LEQUAL, GL_GREATER, GL_GEQUAL};
static_assert(TestConditionTable.size() == GLPassState::kTestGreaterEqual + 1);

inline constexpr ORLOGL_API std::array<GLenum, 6> StencilOpTable = {GL_KEEP, GL_ZERO, GL_REPLACE,
                                                                    GL_INCR, GL_DECR, GL_INVERT};
static_assert(StencilOpTable.size() == GLPassState::kStencilInvert + 1);

inline constexpr ORLOGL_API std::array<GLenum, 11> BlendFactorTable = {GL_ZERO,
                                                                       GL_ONE,
                                                                       GL_SRC_COLOR,
                                                                       GL_ONE_MINUS_SRC_COLOR,
                                                                       GL_DST_COLOR,
                                                                       GL_ONE_MINUS_DST_COLOR,
                                                                       GL_SRC_ALPHA,
                                                                       GL_ONE_MINUS_SRC_ALPHA,
                                                                       GL_DST_ALPHA,
                                                                       GL_ONE_MINUS_DST_ALPHA,
                                                                       GL_SRC_ALPHA_SATURATE};
static_assert(BlendFactorTable.size() == GLPassState::kBlendSourceAlphaSaturate + 1);

inline constexpr ORLOGL_API std::array<GLenum, 16> LogicOpTable = {
    GL_CLEAR,       GL_SET,          GL_COPY,       GL_COPY_INVERTED, GL_NOOP, GL_INVERT,
    GL_AND,         GL_NAND,         GL_OR,         GL_NOR,           GL_XOR,  GL_EQUIV,
    GL_AND_REVERSE, GL_AND_INVERTED, GL_OR_REVERSE, GL_OR_INVERTED};
static_assert(LogicOpTable.size() == GLPassState::kLogicOrInverted + 1);
