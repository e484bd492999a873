#pragma once

#include "gl/EntryMacros.h"
#include "gl/Export.h"

#include <array>
#include <cstdint>

/// The texture environment of one unit in nine bytes: how the unit joins its texture with what comes from the
/// units before it. Small, so that a host can keep one per unit and compare and copy them cheaply.
///
///     GLTexUnitState detail;
///     detail.setTextureFunction(GLTexUnitState::kEnvCombine);
///     detail.setCombinerFuncRGB(GLTexUnitState::kCombineAddSigned);
///     detail.setCombinerSourceOpRGB(1, GLTexUnitState::kSourcePrevious, GLTexUnitState::kOperandColor);
///     detail.applyGL();
///
/// Setters keep as many low bits of their argument as the field has.
class ORLOGL_API GLTexUnitState {
public:
    /// How a unit's texture meets what comes in; indexes the table of GL's own.
    enum TexEnvFunc : uint32_t {
        kEnvReplace,
        kEnvModulate,
        kEnvDecal,
        kEnvBlend,
        kEnvAdd,
        kEnvCombine, ///< by the combiner functions below, which nothing else heeds
    };

    /// Of the arguments 0, 1 and 2. The dot products are for colours: GL refuses them for alpha.
    enum CombinerFunc : uint32_t {
        kCombineReplace,     ///< 0
        kCombineModulate,    ///< 0 * 1
        kCombineAdd,         ///< 0 + 1
        kCombineAddSigned,   ///< 0 + 1 - 1/2
        kCombineInterpolate, ///< 0 * 2 + 1 * (1 - 2)
        kCombineSubtract,    ///< 0 - 1
        kCombineDot3RGB,     ///< 4 (0 - 1/2) . (1 - 1/2), to red, green and blue
        kCombineDot3RGBA,    ///< the same, to alpha too
    };

    /// Where a combiner takes an argument from; indexes the table of GL's own.
    enum CombinerSource : uint32_t {
        kSourceTexture,
        kSourcePrimaryColor,
        kSourceConstant, ///< see applyGL
        kSourcePrevious, ///< the unit before; the primary colour on unit 0
    };

    /// Alpha arguments have the first two only.
    enum CombinerOperand : uint32_t {
        kOperandAlpha,
        kOperandOneMinusAlpha,
        kOperandColor,
        kOperandOneMinusColor,
    };

    GLTexUnitState() { reset(); }

    /// Replace, with the texture's colour and alpha for every argument, both scales 1, a white constant.
    void reset();

    /// Also kCombine, which the combiner's own settings are for.
    void setTextureFunction(TexEnvFunc function);
    void setCombinerFuncRGB(CombinerFunc function);   ///< of red, green and blue
    void setCombinerFuncAlpha(CombinerFunc function); ///< of alpha

    /// Argument i; nothing for an i above 2.
    void setCombinerSourceOpRGB(unsigned int i, CombinerSource source, CombinerOperand operand);

    /// The same of alpha, for argument i, 0 to 2.
    void setCombinerSourceOpAlpha(unsigned int i, CombinerSource source, CombinerOperand operand);

    /// 1, 2 or 4; any other changes nothing.
    void setCombinerScaleRGB(unsigned char scale);

    /// The same of alpha.
    void setCombinerScaleAlpha(unsigned char scale);

    TexEnvFunc textureFunction() const;     ///< as set
    CombinerFunc combinerFuncRGB() const;   ///< as set
    CombinerFunc combinerFuncAlpha() const; ///< as set

    /// Argument i. Oddity: unlike the setters these take every i above 1 for 2.
    CombinerSource combinerSourceRGB(unsigned int i) const;
    CombinerOperand combinerOperandRGB(unsigned int i) const;   ///< of argument i, 0 to 2
    CombinerSource combinerSourceAlpha(unsigned int i) const;   ///< of argument i, 0 to 2
    CombinerOperand combinerOperandAlpha(unsigned int i) const; ///< of argument i, 0 to 2

    unsigned char combinerScaleRGB() const;   ///< 1, 2 or 4
    unsigned char combinerScaleAlpha() const; ///< 1, 2 or 4

    /// Sends the state to the active unit of the current context, and needs the table for it: the function
    /// and the constant, and for kEnvCombine the rest. The constant reaches GL as integers, which GL takes
    /// for parts of the largest integer: it is black in practice. A function beyond kEnvCombine is not sent.
    void applyGL() const;

    /// Whether every bit is the same.
    bool operator==(const GLTexUnitState&) const = default;

    /// Bit 0 is the lowest of byte 0; a field may lie across a byte's end. From bit 0: function 3, combiner
    /// functions 3 and 3, then for each argument source 2 and operand 2 of RGB and source 2 and operand 1 of
    /// alpha, then the scales' exponents, 2 and 2.
    std::array<uint8_t, 5> fState{};

    /// Red, green, blue, alpha.
    std::array<uint8_t, 4> fColor{};
};
static_assert(sizeof(GLTexUnitState) == 9);

/// GL's constant for each value of the enumerations above.
inline constexpr ORLOGL_API std::array<GLint, 6> TexEnvFuncTable = {GL_REPLACE, GL_MODULATE, GL_DECAL,
                                                                    GL_BLEND,   GL_ADD,      GL_COMBINE};
static_assert(TexEnvFuncTable.size() == GLTexUnitState::kEnvCombine + 1);

inline constexpr ORLOGL_API std::array<GLint, 8> CombinerFuncTable = {
    GL_REPLACE, GL_MODULATE, GL_ADD, GL_ADD_SIGNED, GL_INTERPOLATE, GL_SUBTRACT, GL_DOT3_RGB, GL_DOT3_RGBA};
static_assert(CombinerFuncTable.size() == GLTexUnitState::kCombineDot3RGBA + 1);

inline constexpr ORLOGL_API std::array<GLint, 4> CombinerSourceTable = {GL_TEXTURE, GL_PRIMARY_COLOR,
                                                                        GL_CONSTANT, GL_PREVIOUS};
static_assert(CombinerSourceTable.size() == GLTexUnitState::kSourcePrevious + 1);

inline constexpr ORLOGL_API std::array<GLint, 4> CombinerOperandTable = {
    GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_SRC_COLOR, GL_ONE_MINUS_SRC_COLOR};
static_assert(CombinerOperandTable.size() == GLTexUnitState::kOperandOneMinusColor + 1);
