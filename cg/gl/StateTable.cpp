#include "StateTable.h"

#include <algorithm>
#include <cmath>

// What each state of a pass is called, and the calls that set it. Effects that were written for Direct3D have
// other names for much of it: what is one number there and one of several in a call of OpenGL's leaves the
// others as they are.

namespace orlocg {

namespace {

const StateCalls& gl() {
    return stateCalls();
}

constexpr StateWord kTests[] = {{"Never", GL_NEVER},       {"Less", GL_LESS},     {"LEqual", GL_LEQUAL},
                                {"LessEqual", GL_LEQUAL},  {"Equal", GL_EQUAL},   {"Greater", GL_GREATER},
                                {"NotEqual", GL_NOTEQUAL}, {"GEqual", GL_GEQUAL}, {"GreaterEqual", GL_GEQUAL},
                                {"Always", GL_ALWAYS}};

constexpr StateWord kFactors[] = {{"Zero", GL_ZERO},
                                  {"One", GL_ONE},
                                  {"SrcColor", GL_SRC_COLOR},
                                  {"OneMinusSrcColor", GL_ONE_MINUS_SRC_COLOR},
                                  {"InvSrcColor", GL_ONE_MINUS_SRC_COLOR},
                                  {"SrcAlpha", GL_SRC_ALPHA},
                                  {"OneMinusSrcAlpha", GL_ONE_MINUS_SRC_ALPHA},
                                  {"InvSrcAlpha", GL_ONE_MINUS_SRC_ALPHA},
                                  {"DstAlpha", GL_DST_ALPHA},
                                  {"DestAlpha", GL_DST_ALPHA},
                                  {"OneMinusDstAlpha", GL_ONE_MINUS_DST_ALPHA},
                                  {"OneMinusDestAlpha", GL_ONE_MINUS_DST_ALPHA},
                                  {"InvDestAlpha", GL_ONE_MINUS_DST_ALPHA},
                                  {"DstColor", GL_DST_COLOR},
                                  {"DestColor", GL_DST_COLOR},
                                  {"OneMinusDstColor", GL_ONE_MINUS_DST_COLOR},
                                  {"OneMinusDestColor", GL_ONE_MINUS_DST_COLOR},
                                  {"InvDestColor", GL_ONE_MINUS_DST_COLOR},
                                  {"SrcAlphaSaturate", GL_SRC_ALPHA_SATURATE},
                                  {"SrcAlphaSat", GL_SRC_ALPHA_SATURATE},
                                  {"ConstantColor", GL_CONSTANT_COLOR},
                                  {"BlendFactor", GL_CONSTANT_COLOR},
                                  {"OneMinusConstantColor", GL_ONE_MINUS_CONSTANT_COLOR},
                                  {"InvBlendFactor", GL_ONE_MINUS_CONSTANT_COLOR},
                                  {"ConstantAlpha", GL_CONSTANT_ALPHA},
                                  {"OneMinusConstantAlpha", GL_ONE_MINUS_CONSTANT_ALPHA}};

constexpr StateWord kEquations[] = {{"FuncAdd", GL_FUNC_ADD},
                                    {"Add", GL_FUNC_ADD},
                                    {"FuncSubtract", GL_FUNC_SUBTRACT},
                                    {"Subtract", GL_FUNC_SUBTRACT},
                                    {"FuncReverseSubtract", GL_FUNC_REVERSE_SUBTRACT},
                                    {"RevSubtract", GL_FUNC_REVERSE_SUBTRACT},
                                    {"Min", GL_MIN},
                                    {"Max", GL_MAX}};

constexpr StateWord kFaces[] = {{"Front", GL_FRONT}, {"Back", GL_BACK}, {"FrontAndBack", GL_FRONT_AND_BACK}};

/// Numbers are those of Direct3D, which programs set parameters to.
constexpr StateWord kCullModes[] = {
    {"D3DCULL_NONE", 1}, {"D3DCULL_CW", 2}, {"D3DCULL_CCW", 3},
    {"None", GL_NONE},   {"CW", GL_CW},     {"CCW", GL_CCW},
    {"Front", GL_FRONT}, {"Back", GL_BACK}, {"FrontAndBack", GL_FRONT_AND_BACK}};

constexpr StateWord kWindings[] = {{"CW", GL_CW}, {"CCW", GL_CCW}};

constexpr StateWord kFills[] = {
    {"Point", GL_POINT}, {"Line", GL_LINE},   {"Wireframe", GL_LINE}, {"Fill", GL_FILL},
    {"Solid", GL_FILL},  {"Front", GL_FRONT}, {"Back", GL_BACK},      {"FrontAndBack", GL_FRONT_AND_BACK}};

constexpr StateWord kChannels[] = {{"Red", 1}, {"Green", 2}, {"Blue", 4}, {"Alpha", 8}, {"All", 15}};

constexpr StateWord kLogicOps[] = {{"Clear", GL_CLEAR},
                                   {"And", GL_AND},
                                   {"AndReverse", GL_AND_REVERSE},
                                   {"Copy", GL_COPY},
                                   {"AndInverted", GL_AND_INVERTED},
                                   {"Noop", GL_NOOP},
                                   {"Xor", GL_XOR},
                                   {"Or", GL_OR},
                                   {"Nor", GL_NOR},
                                   {"Equiv", GL_EQUIV},
                                   {"Invert", GL_INVERT},
                                   {"OrReverse", GL_OR_REVERSE},
                                   {"CopyInverted", GL_COPY_INVERTED},
                                   {"OrInverted", GL_OR_INVERTED},
                                   {"Nand", GL_NAND},
                                   {"Set", GL_SET}};

constexpr StateWord kStencilOps[] = {{"Keep", GL_KEEP},
                                     {"Zero", GL_ZERO},
                                     {"Replace", GL_REPLACE},
                                     {"Incr", GL_INCR},
                                     {"IncrSat", GL_INCR},
                                     {"Decr", GL_DECR},
                                     {"DecrSat", GL_DECR},
                                     {"Invert", GL_INVERT},
                                     {"IncrWrap", GL_INCR_WRAP},
                                     {"DecrWrap", GL_DECR_WRAP},
                                     {"Front", GL_FRONT},
                                     {"Back", GL_BACK},
                                     {"FrontAndBack", GL_FRONT_AND_BACK}};

constexpr StateWord kFaceTests[] = {
    {"Front", GL_FRONT},       {"Back", GL_BACK},     {"FrontAndBack", GL_FRONT_AND_BACK},
    {"Never", GL_NEVER},       {"Less", GL_LESS},     {"LEqual", GL_LEQUAL},
    {"LessEqual", GL_LEQUAL},  {"Equal", GL_EQUAL},   {"Greater", GL_GREATER},
    {"NotEqual", GL_NOTEQUAL}, {"GEqual", GL_GEQUAL}, {"GreaterEqual", GL_GEQUAL},
    {"Always", GL_ALWAYS}};

constexpr StateWord kFogModes[] = {{"Linear", GL_LINEAR}, {"Exp", GL_EXP}, {"Exp2", GL_EXP2}};

constexpr StateWord kFogSources[] = {{"FragmentDepth", GL_FRAGMENT_DEPTH}, {"FogCoord", GL_FOG_COORD}};

constexpr StateWord kShadeModels[] = {{"Flat", GL_FLAT}, {"Smooth", GL_SMOOTH}, {"Gouraud", GL_SMOOTH}};

constexpr StateWord kColorControls[] = {{"SingleColor", GL_SINGLE_COLOR},
                                        {"SeparateSpecular", GL_SEPARATE_SPECULAR_COLOR},
                                        {"SeparateSpecularColor", GL_SEPARATE_SPECULAR_COLOR}};

constexpr StateWord kEnvironments[] = {{"Modulate", GL_MODULATE}, {"Decal", GL_DECAL},
                                       {"Blend", GL_BLEND},       {"Replace", GL_REPLACE},
                                       {"Add", GL_ADD},           {"Combine", GL_COMBINE}};

GLenum word(double number) {
    return static_cast<GLenum>(number);
}

GLint whole(double number) {
    return static_cast<GLint>(std::clamp(number, -2147483648.0, 2147483647.0));
}

/// A mask of 32 bits, which is beyond an int where all are set.
GLuint bits(double number) {
    return number >= 2147483647.0 ? 0xFFFFFFFFU : static_cast<GLuint>(whole(number));
}

GLint current(GLenum name) {
    GLint value[4] = {};
    gl().glGetIntegerv(name, value);
    return value[0];
}

std::array<float, 4> floats(StateNumbers v) {
    std::array<float, 4> all{};
    std::transform(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(std::min<size_t>(v.size(), 4)),
                   all.begin(), [](double number) { return static_cast<float>(number); });
    return all;
}

void toggle(StateNumbers v, GLenum what, int index) {
    const GLenum capability = what + static_cast<GLenum>(index);
    v[0] != 0.0 ? gl().glEnable(capability) : gl().glDisable(capability);
}

/// A texture's capability, of the unit with that index.
void toggleTexture(StateNumbers v, GLenum what, int index) {
    openGL()->activeTexture(GL_TEXTURE0 + static_cast<GLenum>(index));
    toggle(v, what, 0);
    openGL()->activeTexture(GL_TEXTURE0);
}

void setAlphaTest(StateNumbers v, GLenum, int) {
    GLfloat reference = 0.0F;
    gl().glGetFloatv(GL_ALPHA_TEST_REF, &reference);
    gl().glAlphaFunc(word(v[0]), v.size() > 1 ? static_cast<GLfloat>(v[1]) : reference);
}

/// Of 255 where it is no part of 1.
void setAlphaReference(StateNumbers v, GLenum, int) {
    gl().glAlphaFunc(static_cast<GLenum>(current(GL_ALPHA_TEST_FUNC)),
                     static_cast<GLfloat>(v[0] < 1.0 ? v[0] : v[0] / 255.0));
}

void setBlendFactors(StateNumbers v, GLenum, int) {
    gl().glBlendFunc(word(v[0]), word(v[1]));
}

void setAllBlendFactors(StateNumbers v, GLenum, int) {
    gl().glBlendFuncSeparate(word(v[0]), word(v[1]), word(v[2]), word(v[3]));
}

/// One of the four, or of colour and alpha those of the same side.
void setBlendFactor(StateNumbers v, GLenum what, int) {
    constexpr std::array<GLenum, 4> kNames = {GL_BLEND_SRC_RGB, GL_BLEND_DST_RGB, GL_BLEND_SRC_ALPHA,
                                              GL_BLEND_DST_ALPHA};
    std::array<GLenum, 4> factors{};
    for (size_t i = 0; i < kNames.size(); ++i) {
        const bool isMeant = kNames[i] == what || what == (i % 2 == 0 ? GL_BLEND_SRC : GL_BLEND_DST);
        factors[i] = isMeant ? word(v[0]) : static_cast<GLenum>(current(kNames[i]));
    }
    gl().glBlendFuncSeparate(factors[0], factors[1], factors[2], factors[3]);
}

void setBlendEquation(StateNumbers v, GLenum, int) {
    gl().glBlendEquation(word(v[0]));
}

void setBlendEquations(StateNumbers v, GLenum, int) {
    gl().glBlendEquationSeparate(word(v[0]), word(v[1]));
}

void setAlphaEquation(StateNumbers v, GLenum, int) {
    gl().glBlendEquationSeparate(static_cast<GLenum>(current(GL_BLEND_EQUATION_RGB)), word(v[0]));
}

void setBlendColor(StateNumbers v, GLenum, int) {
    const std::array<float, 4> c = floats(v);
    gl().glBlendColor(c[0], c[1], c[2], c[3]);
}

void setClearColor(StateNumbers v, GLenum, int) {
    const std::array<float, 4> c = floats(v);
    gl().glClearColor(c[0], c[1], c[2], c[3]);
}

void setClearDepth(StateNumbers v, GLenum, int) {
    gl().glClearDepth(v[0]);
}

void setClearStencil(StateNumbers v, GLenum, int) {
    gl().glClearStencil(whole(v[0]));
}

void setClipPlane(StateNumbers v, GLenum, int index) {
    gl().glClipPlane(GL_CLIP_PLANE0 + static_cast<GLenum>(index), v.data());
}

/// Four numbers, or the bits of one.
void setColorMask(StateNumbers v, GLenum, int) {
    const auto isOn = [&](size_t i) -> GLboolean {
        return v.size() == 4 ? v[i] != 0.0 : (bits(v[0]) >> i & 1U) != 0U;
    };
    gl().glColorMask(isOn(0), isOn(1), isOn(2), isOn(3));
}

void setCullFace(StateNumbers v, GLenum, int) {
    gl().glCullFace(word(v[0]));
}

/// The side that isn't drawn. Direct3D names it by the way round its corners are seen, and its fronts are
/// clockwise: CCW are backs, whichever way round they are here.
void setCullMode(StateNumbers v, GLenum, int) {
    constexpr std::array<GLenum, 4> kNumbers = {GL_NONE, GL_NONE, GL_CW, GL_CCW};
    const GLenum given = word(v[0]);
    const GLenum mode = given < kNumbers.size() ? kNumbers[given] : given;
    if (mode == GL_NONE)
        return gl().glDisable(GL_CULL_FACE);
    gl().glEnable(GL_CULL_FACE);
    gl().glCullFace(mode == GL_CCW ? GL_BACK : (mode == GL_CW ? GL_FRONT : mode));
}

void setDepthFunc(StateNumbers v, GLenum, int) {
    gl().glDepthFunc(word(v[0]));
}

void setDepthMask(StateNumbers v, GLenum, int) {
    gl().glDepthMask(v[0] != 0.0 ? GL_TRUE : GL_FALSE);
}

void setDepthRange(StateNumbers v, GLenum, int) {
    gl().glDepthRange(v[0], v[1]);
}

void setFog(StateNumbers v, GLenum what, int) {
    const std::array<float, 4> numbers = floats(v);
    gl().glFogfv(what, numbers.data());
}

void setFogWord(StateNumbers v, GLenum what, int) {
    gl().glFogi(what, whole(v[0]));
}

void setFrontFace(StateNumbers v, GLenum, int) {
    gl().glFrontFace(word(v[0]));
}

void setLight(StateNumbers v, GLenum what, int index) {
    const std::array<float, 4> numbers = floats(v);
    gl().glLightfv(GL_LIGHT0 + static_cast<GLenum>(index), what, numbers.data());
}

void setLightModel(StateNumbers v, GLenum what, int) {
    const std::array<float, 4> numbers = floats(v);
    gl().glLightModelfv(what, numbers.data());
}

void setLightModelWord(StateNumbers v, GLenum what, int) {
    gl().glLightModeli(what, whole(v[0]));
}

void setLineStipple(StateNumbers v, GLenum, int) {
    gl().glLineStipple(whole(v[0]), static_cast<GLushort>(bits(v[1]) & 0xFFFFU));
}

void setLineWidth(StateNumbers v, GLenum, int) {
    gl().glLineWidth(static_cast<GLfloat>(v[0]));
}

void setLogicOp(StateNumbers v, GLenum, int) {
    gl().glLogicOp(word(v[0]));
}

void setMaterial(StateNumbers v, GLenum what, int) {
    const std::array<float, 4> numbers = floats(v);
    gl().glMaterialfv(GL_FRONT_AND_BACK, what, numbers.data());
}

void setPointSize(StateNumbers v, GLenum, int) {
    gl().glPointSize(static_cast<GLfloat>(v[0]));
}

void setPointNumber(StateNumbers v, GLenum what, int) {
    gl().glPointParameterf(what, static_cast<GLfloat>(v[0]));
}

void setPointNumbers(StateNumbers v, GLenum what, int) {
    const std::array<float, 4> numbers = floats(v);
    gl().glPointParameterfv(what, numbers.data());
}

/// A mode, or a face and its mode.
void setPolygonMode(StateNumbers v, GLenum, int) {
    gl().glPolygonMode(v.size() > 1 ? word(v[0]) : GL_FRONT_AND_BACK, word(v[v.size() - 1]));
}

void setPolygonOffset(StateNumbers v, GLenum, int) {
    gl().glPolygonOffset(static_cast<GLfloat>(v[0]), static_cast<GLfloat>(v[1]));
}

/// One of the two, of filled polygons: the offset is a part of the whole depth.
void setDepthBias(StateNumbers v, GLenum what, int) {
    constexpr double kSteps = 1 << 24;
    GLfloat factor = 0.0F;
    GLfloat units = 0.0F;
    gl().glGetFloatv(GL_POLYGON_OFFSET_FACTOR, &factor);
    gl().glGetFloatv(GL_POLYGON_OFFSET_UNITS, &units);
    if (what == GL_POLYGON_OFFSET_FACTOR)
        factor = static_cast<GLfloat>(v[0]);
    else
        units = static_cast<GLfloat>(v[0] * kSteps);
    gl().glPolygonOffset(factor, units);
    factor != 0.0F || units != 0.0F ? gl().glEnable(GL_POLYGON_OFFSET_FILL)
                                    : gl().glDisable(GL_POLYGON_OFFSET_FILL);
}

void setSampleCoverage(StateNumbers v, GLenum, int) {
    gl().glSampleCoverage(static_cast<GLfloat>(v[0]), v[1] != 0.0 ? GL_TRUE : GL_FALSE);
}

/// A box; without a size, as large as the viewport.
void setScissor(StateNumbers v, GLenum, int) {
    std::array<GLint, 4> box{};
    std::transform(v.begin(), v.end(), box.begin(), whole);
    if (box[2] < 0 || box[3] < 0)
        gl().glGetIntegerv(GL_VIEWPORT, box.data());
    gl().glScissor(box[0], box[1], box[2], box[3]);
}

void setShadeModel(StateNumbers v, GLenum, int) {
    gl().glShadeModel(word(v[0]));
}

/// All three, or the test alone.
void setStencilTest(StateNumbers v, GLenum, int) {
    gl().glStencilFunc(word(v[0]), v.size() > 1 ? whole(v[1]) : current(GL_STENCIL_REF),
                       v.size() > 2 ? bits(v[2]) : static_cast<GLuint>(current(GL_STENCIL_VALUE_MASK)));
}

void setStencilTests(StateNumbers v, GLenum, int) {
    gl().glStencilFuncSeparate(word(v[0]), word(v[1]), whole(v[2]), bits(v[3]));
}

void setStencilReference(StateNumbers v, GLenum, int) {
    gl().glStencilFunc(static_cast<GLenum>(current(GL_STENCIL_FUNC)), whole(v[0]),
                       static_cast<GLuint>(current(GL_STENCIL_VALUE_MASK)));
}

void setStencilMask(StateNumbers v, GLenum, int) {
    gl().glStencilMask(bits(v[0]));
}

void setStencilMasks(StateNumbers v, GLenum, int) {
    gl().glStencilMaskSeparate(word(v[0]), bits(v[1]));
}

/// All three, or what is done where it passes.
void setStencilOps(StateNumbers v, GLenum what, int) {
    if (v.size() == 3)
        return gl().glStencilOp(word(v[0]), word(v[1]), word(v[2]));
    constexpr std::array<GLenum, 3> kNames = {GL_STENCIL_FAIL, GL_STENCIL_PASS_DEPTH_FAIL,
                                              GL_STENCIL_PASS_DEPTH_PASS};
    std::array<GLenum, 3> operations{};
    for (size_t i = 0; i < kNames.size(); ++i)
        operations[i] = kNames[i] == what ? word(v[0]) : static_cast<GLenum>(current(kNames[i]));
    gl().glStencilOp(operations[0], operations[1], operations[2]);
}

void setAllStencilOps(StateNumbers v, GLenum, int) {
    gl().glStencilOpSeparate(word(v[0]), word(v[1]), word(v[2]), word(v[3]));
}

/// Sixteen numbers, row by row.
void setMatrix(StateNumbers v, GLenum what, int index) {
    std::array<double, 16> columns{};
    for (size_t i = 0; i < columns.size(); ++i)
        columns[i] = v.size() == 16 ? v[i % 4 * 4 + i / 4] : (i % 5 == 0 ? 1.0 : 0.0);
    const GLint mode = current(GL_MATRIX_MODE);
    openGL()->activeTexture(GL_TEXTURE0 + static_cast<GLenum>(index));
    gl().glMatrixMode(what);
    gl().glLoadMatrixd(columns.data());
    openGL()->activeTexture(GL_TEXTURE0);
    gl().glMatrixMode(static_cast<GLenum>(mode));
}

void setEnvironment(StateNumbers v, GLenum what, int index) {
    openGL()->activeTexture(GL_TEXTURE0 + static_cast<GLenum>(index));
    const std::array<float, 4> numbers = floats(v);
    if (what == GL_TEXTURE_ENV_MODE)
        gl().glTexEnvi(GL_TEXTURE_ENV, what, whole(v[0]));
    else
        gl().glTexEnvfv(GL_TEXTURE_ENV, what, numbers.data());
    openGL()->activeTexture(GL_TEXTURE0);
}

constexpr int kLights = 8;
constexpr int kPlanes = 6;
constexpr int kUnits = 8; ///< of OpenGL's own functions
constexpr double kAllBits = 4294967295.0;

constexpr NumberState onOff(const char* name, GLenum what, bool usual = false, int indices = 1) {
    return {name, CG_BOOL, {}, 0, 1, {usual ? 1.0 : 0.0}, 1, toggle, what, indices};
}

constexpr NumberState oneWord(const char* name, StateWords words, GLenum usual,
                              void (*apply)(StateNumbers, GLenum, int), GLenum what = 0) {
    return {name, CG_INT, words, 1, 1, {static_cast<double>(usual)}, 1, apply, what};
}

constexpr NumberState oneNumber(const char* name, double usual, void (*apply)(StateNumbers, GLenum, int),
                                GLenum what = 0, int indices = 1) {
    return {name, CG_FLOAT, {}, 0, 1, {usual}, 1, apply, what, indices};
}

constexpr NumberState color(const char* name, std::array<double, 4> usual,
                            void (*apply)(StateNumbers, GLenum, int), GLenum what = 0, int indices = 1) {
    return {name, CG_FLOAT4, {}, 0, 4, usual, 4, apply, what, indices};
}

constexpr NumberState kStates[] = {
    onOff("AlphaBlendEnable", GL_BLEND),
    onOff("AlphaTestEnable", GL_ALPHA_TEST),
    onOff("AutoNormalEnable", GL_AUTO_NORMAL),
    onOff("BlendEnable", GL_BLEND),
    onOff("ClipPlaneEnable", GL_CLIP_PLANE0, false, kPlanes),
    onOff("ColorLogicOpEnable", GL_COLOR_LOGIC_OP),
    onOff("CullFaceEnable", GL_CULL_FACE),
    onOff("DepthTestEnable", GL_DEPTH_TEST),
    onOff("DitherEnable", GL_DITHER, true),
    onOff("FogEnable", GL_FOG),
    onOff("LightEnable", GL_LIGHT0, false, kLights),
    onOff("Lighting", GL_LIGHTING),
    onOff("LightingEnable", GL_LIGHTING),
    onOff("LineSmoothEnable", GL_LINE_SMOOTH),
    onOff("LineStippleEnable", GL_LINE_STIPPLE),
    onOff("LogicOpEnable", GL_COLOR_LOGIC_OP),
    onOff("MultisampleEnable", GL_MULTISAMPLE, true),
    onOff("MultiSampleAntialias", GL_MULTISAMPLE, true),
    onOff("NormalizeEnable", GL_NORMALIZE),
    onOff("NormalizeNormals", GL_NORMALIZE),
    onOff("PointSmoothEnable", GL_POINT_SMOOTH),
    onOff("PointSpriteEnable", GL_POINT_SPRITE),
    onOff("PolygonOffsetFillEnable", GL_POLYGON_OFFSET_FILL),
    onOff("PolygonOffsetLineEnable", GL_POLYGON_OFFSET_LINE),
    onOff("PolygonOffsetPointEnable", GL_POLYGON_OFFSET_POINT),
    onOff("PolygonSmoothEnable", GL_POLYGON_SMOOTH),
    onOff("PolygonStippleEnable", GL_POLYGON_STIPPLE),
    onOff("RescaleNormalEnable", GL_RESCALE_NORMAL),
    onOff("SampleAlphaToCoverageEnable", GL_SAMPLE_ALPHA_TO_COVERAGE),
    onOff("SampleAlphaToOneEnable", GL_SAMPLE_ALPHA_TO_ONE),
    onOff("SampleCoverageEnable", GL_SAMPLE_COVERAGE),
    onOff("ScissorTestEnable", GL_SCISSOR_TEST),
    onOff("SpecularEnable", GL_COLOR_SUM),
    onOff("SRGBWriteEnable", GL_FRAMEBUFFER_SRGB),
    onOff("StencilEnable", GL_STENCIL_TEST),
    onOff("StencilTestEnable", GL_STENCIL_TEST),
    onOff("VertexProgramPointSizeEnable", GL_VERTEX_PROGRAM_POINT_SIZE),
    onOff("VertexProgramTwoSideEnable", GL_VERTEX_PROGRAM_TWO_SIDE),
    onOff("ZEnable", GL_DEPTH_TEST),
    {"Texture1DEnable", CG_BOOL, {}, 0, 1, {0}, 1, toggleTexture, GL_TEXTURE_1D, kUnits},
    {"Texture2DEnable", CG_BOOL, {}, 0, 1, {0}, 1, toggleTexture, GL_TEXTURE_2D, kUnits},
    {"Texture3DEnable", CG_BOOL, {}, 0, 1, {0}, 1, toggleTexture, GL_TEXTURE_3D, kUnits},
    {"TextureCubeMapEnable", CG_BOOL, {}, 0, 1, {0}, 1, toggleTexture, GL_TEXTURE_CUBE_MAP, kUnits},
    {"TextureRectangleEnable", CG_BOOL, {}, 0, 1, {0}, 1, toggleTexture, GL_TEXTURE_RECTANGLE, kUnits},

    {"AlphaFunc", CG_FLOAT2, kTests, 1, 1, {GL_ALWAYS, 0}, 2, setAlphaTest},
    oneNumber("AlphaRef", 0, setAlphaReference),
    color("BlendColor", {0, 0, 0, 0}, setBlendColor),
    oneWord("BlendEquation", kEquations, GL_FUNC_ADD, setBlendEquation),
    {"BlendEquationSeparate", CG_INT2, kEquations, 2, 2, {GL_FUNC_ADD, GL_FUNC_ADD}, 2, setBlendEquations},
    {"BlendFunc", CG_INT2, kFactors, 2, 2, {GL_ONE, GL_ZERO}, 2, setBlendFactors},
    {"BlendFuncSeparate", CG_INT4, kFactors, 4, 4, {GL_ONE, GL_ZERO, GL_ONE, GL_ZERO}, 4, setAllBlendFactors},
    oneWord("BlendOp", kEquations, GL_FUNC_ADD, setBlendEquation),
    oneWord("BlendOpAlpha", kEquations, GL_FUNC_ADD, setAlphaEquation),
    oneWord("DestBlend", kFactors, GL_ZERO, setBlendFactor, GL_BLEND_DST),
    oneWord("DestBlendAlpha", kFactors, GL_ZERO, setBlendFactor, GL_BLEND_DST_ALPHA),
    oneWord("SrcBlend", kFactors, GL_ONE, setBlendFactor, GL_BLEND_SRC),
    oneWord("SrcBlendAlpha", kFactors, GL_ONE, setBlendFactor, GL_BLEND_SRC_ALPHA),
    color("ClearColor", {0, 0, 0, 0}, setClearColor),
    oneNumber("ClearDepth", 1, setClearDepth),
    oneNumber("ClearStencil", 0, setClearStencil),
    color("ClipPlane", {0, 0, 0, 0}, setClipPlane, 0, kPlanes),
    {"ColorMask", CG_BOOL4, kChannels, 0, 1, {1, 1, 1, 1}, 4, setColorMask},
    {"ColorWriteEnable", CG_BOOL4, kChannels, 0, 1, {1, 1, 1, 1}, 4, setColorMask},
    oneWord("CullFace", kFaces, GL_BACK, setCullFace),
    oneWord("CullMode", kCullModes, GL_NONE, setCullMode),
    oneNumber("DepthBias", 0, setDepthBias, GL_POLYGON_OFFSET_UNITS),
    oneNumber("SlopeScaleDepthBias", 0, setDepthBias, GL_POLYGON_OFFSET_FACTOR),
    oneWord("DepthFunc", kTests, GL_LESS, setDepthFunc),
    oneWord("ZFunc", kTests, GL_LESS, setDepthFunc),
    {"DepthMask", CG_BOOL, {}, 0, 1, {1}, 1, setDepthMask},
    {"ZWriteEnable", CG_BOOL, {}, 0, 1, {1}, 1, setDepthMask},
    {"DepthRange", CG_FLOAT2, {}, 0, 2, {0, 1}, 2, setDepthRange},
    oneWord("FillMode", kFills, GL_FILL, setPolygonMode),
    color("FogColor", {0, 0, 0, 0}, setFog, GL_FOG_COLOR),
    oneWord("FogCoordSrc", kFogSources, GL_FRAGMENT_DEPTH, setFogWord, GL_FOG_COORD_SRC),
    oneNumber("FogDensity", 1, setFog, GL_FOG_DENSITY),
    oneNumber("FogEnd", 1, setFog, GL_FOG_END),
    oneWord("FogMode", kFogModes, GL_EXP, setFogWord, GL_FOG_MODE),
    oneNumber("FogStart", 0, setFog, GL_FOG_START),
    oneWord("FrontFace", kWindings, GL_CCW, setFrontFace),
    color("LightAmbient", {0, 0, 0, 1}, setLight, GL_AMBIENT, kLights),
    oneNumber("LightConstantAttenuation", 1, setLight, GL_CONSTANT_ATTENUATION, kLights),
    color("LightDiffuse", {1, 1, 1, 1}, setLight, GL_DIFFUSE, kLights),
    oneNumber("LightLinearAttenuation", 0, setLight, GL_LINEAR_ATTENUATION, kLights),
    color("LightPosition", {0, 0, 1, 0}, setLight, GL_POSITION, kLights),
    oneNumber("LightQuadraticAttenuation", 0, setLight, GL_QUADRATIC_ATTENUATION, kLights),
    color("LightSpecular", {1, 1, 1, 1}, setLight, GL_SPECULAR, kLights),
    oneNumber("LightSpotCutoff", 180, setLight, GL_SPOT_CUTOFF, kLights),
    color("LightSpotDirection", {0, 0, -1, 0}, setLight, GL_SPOT_DIRECTION, kLights),
    oneNumber("LightSpotExponent", 0, setLight, GL_SPOT_EXPONENT, kLights),
    color("LightModelAmbient", {0.2, 0.2, 0.2, 1}, setLightModel, GL_LIGHT_MODEL_AMBIENT),
    oneWord("LightModelColorControl", kColorControls, GL_SINGLE_COLOR, setLightModelWord,
            GL_LIGHT_MODEL_COLOR_CONTROL),
    {"LightModelLocalViewerEnable",
     CG_BOOL,
     {},
     0,
     1,
     {0},
     1,
     setLightModelWord,
     GL_LIGHT_MODEL_LOCAL_VIEWER},
    {"LocalViewer", CG_BOOL, {}, 0, 1, {0}, 1, setLightModelWord, GL_LIGHT_MODEL_LOCAL_VIEWER},
    {"LightModelTwoSideEnable", CG_BOOL, {}, 0, 1, {0}, 1, setLightModelWord, GL_LIGHT_MODEL_TWO_SIDE},
    {"LineStipple", CG_INT2, {}, 0, 2, {1, 65535}, 2, setLineStipple},
    oneNumber("LineWidth", 1, setLineWidth),
    oneWord("LogicOp", kLogicOps, GL_COPY, setLogicOp),
    color("MaterialAmbient", {0.2, 0.2, 0.2, 1}, setMaterial, GL_AMBIENT),
    color("MaterialDiffuse", {0.8, 0.8, 0.8, 1}, setMaterial, GL_DIFFUSE),
    color("MaterialEmission", {0, 0, 0, 1}, setMaterial, GL_EMISSION),
    color("MaterialEmissive", {0, 0, 0, 1}, setMaterial, GL_EMISSION),
    oneNumber("MaterialPower", 0, setMaterial, GL_SHININESS),
    oneNumber("MaterialShininess", 0, setMaterial, GL_SHININESS),
    color("MaterialSpecular", {0, 0, 0, 1}, setMaterial, GL_SPECULAR),
    {"ModelViewMatrix", CG_FLOAT4x4, {}, 0, 16, {}, 16, setMatrix, GL_MODELVIEW},
    {"ProjectionMatrix", CG_FLOAT4x4, {}, 0, 16, {}, 16, setMatrix, GL_PROJECTION},
    {"TextureMatrix", CG_FLOAT4x4, {}, 0, 16, {}, 16, setMatrix, GL_TEXTURE, kUnits},
    {"PointDistanceAttenuation",
     CG_FLOAT3,
     {},
     0,
     3,
     {1, 0, 0},
     3,
     setPointNumbers,
     GL_POINT_DISTANCE_ATTENUATION},
    oneNumber("PointFadeThresholdSize", 1, setPointNumber, GL_POINT_FADE_THRESHOLD_SIZE),
    oneNumber("PointSize", 1, setPointSize),
    oneNumber("PointSizeMax", 64, setPointNumber, GL_POINT_SIZE_MAX),
    oneNumber("PointSizeMin", 0, setPointNumber, GL_POINT_SIZE_MIN),
    {"PolygonMode", CG_INT2, kFills, 2, 1, {GL_FRONT_AND_BACK, GL_FILL}, 2, setPolygonMode},
    {"PolygonOffset", CG_FLOAT2, {}, 0, 2, {0, 0}, 2, setPolygonOffset},
    {"SampleCoverage", CG_FLOAT2, {}, 0, 2, {1, 0}, 2, setSampleCoverage},
    color("ScissorBox", {0, 0, -1, -1}, setScissor),
    oneWord("ShadeMode", kShadeModels, GL_SMOOTH, setShadeModel),
    oneWord("ShadeModel", kShadeModels, GL_SMOOTH, setShadeModel),
    oneWord("StencilDepthFail", kStencilOps, GL_KEEP, setStencilOps, GL_STENCIL_PASS_DEPTH_FAIL),
    oneWord("StencilFail", kStencilOps, GL_KEEP, setStencilOps, GL_STENCIL_FAIL),
    {"StencilFunc", CG_INT3, kTests, 1, 1, {GL_ALWAYS, 0, kAllBits}, 3, setStencilTest},
    {"StencilFuncSeparate",
     CG_INT4,
     kFaceTests,
     2,
     4,
     {GL_FRONT_AND_BACK, GL_ALWAYS, 0, kAllBits},
     4,
     setStencilTests},
    oneNumber("StencilMask", kAllBits, setStencilMask),
    {"StencilMaskSeparate", CG_INT2, kFaces, 1, 2, {GL_FRONT_AND_BACK, kAllBits}, 2, setStencilMasks},
    {"StencilOp", CG_INT3, kStencilOps, 3, 3, {GL_KEEP, GL_KEEP, GL_KEEP}, 3, setStencilOps},
    {"StencilOpSeparate",
     CG_INT4,
     kStencilOps,
     4,
     4,
     {GL_FRONT_AND_BACK, GL_KEEP, GL_KEEP, GL_KEEP},
     4,
     setAllStencilOps},
    oneWord("StencilPass", kStencilOps, GL_KEEP, setStencilOps, GL_STENCIL_PASS_DEPTH_PASS),
    oneNumber("StencilRef", 0, setStencilReference),
    oneNumber("StencilWriteMask", kAllBits, setStencilMask),
    oneWord("StencilZFail", kStencilOps, GL_KEEP, setStencilOps, GL_STENCIL_PASS_DEPTH_FAIL),
    {"TextureEnvColor", CG_FLOAT4, {}, 0, 4, {0, 0, 0, 0}, 4, setEnvironment, GL_TEXTURE_ENV_COLOR, kUnits},
    {"TextureEnvMode",
     CG_INT,
     kEnvironments,
     1,
     1,
     {GL_MODULATE},
     1,
     setEnvironment,
     GL_TEXTURE_ENV_MODE,
     kUnits},
};

} // namespace

std::span<const NumberState> numberStates() {
    return kStates;
}

} // namespace orlocg
