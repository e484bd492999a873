#include "DriverTest.h"

#include <Cg/cgGL.h>

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

namespace {

/// Effects on a real OpenGL: the states that passes set and reset, and what a pixel shows of them.
class DriverCgEffects : public DriverTest {
protected:
    void SetUp() override {
        DriverTest::SetUp();
        fTarget = std::make_unique<DrawTarget>(gl(), 4, 4);
        fContext = cgCreateContext();
        cgGLRegisterStates(fContext);
        cgGLRegisterStates(fContext); // does nothing
        gl().glClearColor(0, 0, 0, 0);
    }
    void TearDown() override {
        cgDestroyContext(fContext);
        EXPECT_EQ(cgGetError(), CG_NO_ERROR);
        fTarget.reset();
        DriverTest::TearDown();
    }

    CGeffect read(const std::string& source) {
        const CGeffect effect = cgCreateEffect(fContext, source.c_str(), nullptr);
        EXPECT_NE(effect, nullptr) << source << cgGetLastListing(fContext);
        return effect;
    }
    CGpass passOf(const std::string& states) {
        return cgGetFirstPass(cgGetFirstTechnique(read("technique T { pass p { " + states + " } }")));
    }

    std::vector<double> state(GLenum name, size_t count) {
        double values[16] = {};
        if (name != 0)
            gl().glGetDoublev(name, values);
        return {values, values + count};
    }

    void quad(float z = 0, bool isTurned = false) {
        const std::pair<float, float> corners[] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
        gl().glBegin(GL_QUADS);
        for (int i = 0; i < 4; ++i) {
            const auto& [x, y] = corners[isTurned ? 3 - i : i];
            gl().glTexCoord2f(x, y);
            gl().glVertex3f(x, y, z);
        }
        gl().glEnd();
    }

    void expectPixel(const Pixel& wanted, const char* what, int x = 1) {
        const Pixel pixel = readPixel(x, 1);
        for (size_t i = 0; i < 4; ++i)
            EXPECT_NEAR(pixel[i], wanted[i], 2) << what << ", channel " << i;
    }

    /// Draws by each pass of a technique, one over the other.
    void drawBy(CGtechnique technique) {
        EXPECT_TRUE(cgValidateTechnique(technique)) << cgGetLastListing(fContext);
        for (CGpass pass = cgGetFirstPass(technique); pass; pass = cgGetNextPass(pass)) {
            cgSetPassState(pass);
            quad();
            cgResetPassState(pass);
        }
    }

    std::unique_ptr<DrawTarget> fTarget;
    CGcontext fContext = nullptr;
};

struct StateCase {
    const char* states;
    GLenum what;
    std::vector<double> set;
    std::vector<double> usual;
};

TEST_F(DriverCgEffects, setStatesAndWhatOpenGLBeginsWith) {
    const StateCase cases[] = {
        {"AlphaTestEnable = true;", GL_ALPHA_TEST, {1}, {0}},
        {"alphablendenable = TRUE;", GL_BLEND, {1}, {0}},
        {"DitherEnable = 0;", GL_DITHER, {0}, {1}},
        {"LightEnable[3] = true;", GL_LIGHT3, {1}, {0}},
        {"ClipPlaneEnable[1] = true;", GL_CLIP_PLANE1, {1}, {0}},
        {"ZEnable = true;", GL_DEPTH_TEST, {1}, {0}},
        {"StencilTestEnable = true;", GL_STENCIL_TEST, {1}, {0}},
        {"Texture2DEnable[0] = true;", GL_TEXTURE_2D, {1}, {0}},
        {"AlphaFunc = float2(GEqual, 0.5);", GL_ALPHA_TEST_FUNC, {GL_GEQUAL}, {GL_ALWAYS}},
        {"AlphaRef = 51;", GL_ALPHA_TEST_REF, {0.2}, {0}},
        {"BlendColor = {0.25, 0.5, 0.75, 1};", GL_BLEND_COLOR, {0.25, 0.5, 0.75, 1}, {0, 0, 0, 0}},
        {"BlendEquation = Max;", GL_BLEND_EQUATION, {GL_MAX}, {GL_FUNC_ADD}},
        {"BlendEquationSeparate = int2(FuncAdd, Min);", GL_BLEND_EQUATION_ALPHA, {GL_MIN}, {GL_FUNC_ADD}},
        {"BlendFunc = int2(SrcAlpha, OneMinusSrcAlpha);", GL_BLEND_DST, {GL_ONE_MINUS_SRC_ALPHA}, {GL_ZERO}},
        {"BlendFuncSeparate = int4(One, Zero, DestColor, One);",
         GL_BLEND_SRC_ALPHA,
         {GL_DST_COLOR},
         {GL_ONE}},
        {"SrcBlend = INVDESTALPHA;", GL_BLEND_SRC, {GL_ONE_MINUS_DST_ALPHA}, {GL_ONE}},
        {"DestBlend = One;", GL_BLEND_DST_ALPHA, {GL_ONE}, {GL_ZERO}},
        {"DestBlendAlpha = SrcAlpha;", GL_BLEND_DST_ALPHA, {GL_SRC_ALPHA}, {GL_ZERO}},
        {"BlendOpAlpha = RevSubtract;", GL_BLEND_EQUATION_ALPHA, {GL_FUNC_REVERSE_SUBTRACT}, {GL_FUNC_ADD}},
        {"ClearColor = {0.25, 0.5, 0.75, 1};", GL_COLOR_CLEAR_VALUE, {0.25, 0.5, 0.75, 1}, {0, 0, 0, 0}},
        {"ClearDepth = 0.5;", GL_DEPTH_CLEAR_VALUE, {0.5}, {1}},
        {"ClearStencil = 3;", GL_STENCIL_CLEAR_VALUE, {3}, {0}},
        {"ColorMask = bool4(true, false, true, false);", GL_COLOR_WRITEMASK, {1, 0, 1, 0}, {1, 1, 1, 1}},
        {"ColorWriteEnable = Red | Alpha;", GL_COLOR_WRITEMASK, {1, 0, 0, 1}, {1, 1, 1, 1}},
        {"CullFace = FrontAndBack;", GL_CULL_FACE_MODE, {GL_FRONT_AND_BACK}, {GL_BACK}},
        {"CullMode = CW;", GL_CULL_FACE_MODE, {GL_FRONT}, {GL_FRONT}},
        {"CullMode = 3;", GL_CULL_FACE, {1}, {0}},
        {"DepthBias = 0.5;", GL_POLYGON_OFFSET_UNITS, {1 << 23}, {0}},
        {"SlopeScaleDepthBias = 2;", GL_POLYGON_OFFSET_FILL, {1}, {0}},
        {"DepthFunc = LEqual;", GL_DEPTH_FUNC, {GL_LEQUAL}, {GL_LESS}},
        {"ZWriteEnable = false;", GL_DEPTH_WRITEMASK, {0}, {1}},
        {"DepthRange = float2(0.25, 0.5);", GL_DEPTH_RANGE, {0.25, 0.5}, {0, 1}},
        {"FillMode = Wireframe;", GL_POLYGON_MODE, {GL_LINE, GL_LINE}, {GL_FILL, GL_FILL}},
        {"PolygonMode = int2(FrontAndBack, Point);",
         GL_POLYGON_MODE,
         {GL_POINT, GL_POINT},
         {GL_FILL, GL_FILL}},
        {"FogColor = {1, 0.5, 0, 1};", GL_FOG_COLOR, {1, 0.5, 0, 1}, {0, 0, 0, 0}},
        {"FogMode = Linear;", GL_FOG_MODE, {GL_LINEAR}, {GL_EXP}},
        {"FogEnd = 7;", GL_FOG_END, {7}, {1}},
        {"FrontFace = CW;", GL_FRONT_FACE, {GL_CW}, {GL_CCW}},
        {"LightModelAmbient = {0, 1, 0, 1};", GL_LIGHT_MODEL_AMBIENT, {0, 1, 0, 1}, {0.2, 0.2, 0.2, 1}},
        {"LightModelTwoSideEnable = true;", GL_LIGHT_MODEL_TWO_SIDE, {1}, {0}},
        {"LineStipple = int2(2, 0x0F0F);", GL_LINE_STIPPLE_PATTERN, {0x0F0F}, {0xFFFF}},
        {"LineWidth = 3;", GL_LINE_WIDTH, {3}, {1}},
        {"LogicOp = Xor;", GL_LOGIC_OP_MODE, {GL_XOR}, {GL_COPY}},
        {"ModelViewMatrix = {2,0,0,5, 0,1,0,0, 0,0,1,0, 0,0,0,1};",
         GL_MODELVIEW_MATRIX,
         {2, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 5, 0, 0, 1},
         {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
        {"PointSize = 4;", GL_POINT_SIZE, {4}, {1}},
        {"PointDistanceAttenuation = {1, 2, 3};", GL_POINT_DISTANCE_ATTENUATION, {1, 2, 3}, {1, 0, 0}},
        {"PolygonOffset = float2(1, 2);", GL_POLYGON_OFFSET_UNITS, {2}, {0}},
        {"SampleCoverage = float2(0.5, true);", GL_SAMPLE_COVERAGE_VALUE, {0.5}, {1}},
        {"ScissorBox = {1, 2, 3, 4};", GL_SCISSOR_BOX, {1, 2, 3, 4}, {0, 0, 4, 4}},
        {"ShadeModel = Flat;", GL_SHADE_MODEL, {GL_FLAT}, {GL_SMOOTH}},
        {"StencilFunc = int3(Equal, 5, 15);", GL_STENCIL_FUNC, {GL_EQUAL}, {GL_ALWAYS}},
        {"StencilFuncSeparate = int4(Back, Less, 1, 255);", GL_STENCIL_BACK_FUNC, {GL_LESS}, {GL_ALWAYS}},
        {"StencilOp = int3(Keep, Invert, Replace);", GL_STENCIL_PASS_DEPTH_FAIL, {GL_INVERT}, {GL_KEEP}},
        {"StencilOpSeparate = int4(Back, Keep, Keep, IncrWrap);",
         GL_STENCIL_BACK_PASS_DEPTH_PASS,
         {GL_INCR_WRAP},
         {GL_KEEP}},
        {"StencilZFail = IncrSat;", GL_STENCIL_PASS_DEPTH_FAIL, {GL_INCR}, {GL_KEEP}},
        {"StencilMask = 15;", GL_STENCIL_WRITEMASK, {15}, {4294967295.0}},
        {"TextureEnvMode[0] = Replace; Texture[1] = NULL;", 0, {}, {}},
        {"LightDiffuse[1] = {1, 0, 0, 1}; MaterialShininess = 5; TextureMatrix[1] = {1,0,0,0, 0,1,0,0, "
         "0,0,1,0, 0,0,0,1};",
         0,
         {},
         {}},
    };
    for (const StateCase& each : cases) {
        const CGpass pass = passOf(each.states);
        EXPECT_TRUE(cgValidateTechnique(cgGetPassTechnique(pass))) << each.states;
        cgSetPassState(pass);
        EXPECT_EQ(gl().glGetError(), GLenum{GL_NO_ERROR}) << each.states;
        EXPECT_THAT(state(each.what, each.set.size()),
                    testing::Pointwise(testing::DoubleNear(1e-6), each.set))
            << each.states;
        cgResetPassState(pass);
        EXPECT_EQ(gl().glGetError(), GLenum{GL_NO_ERROR}) << each.states;
        EXPECT_THAT(state(each.what, each.usual.size()),
                    testing::Pointwise(testing::DoubleNear(1e-6), each.usual))
            << each.states;
    }
    gl().glCullFace(GL_BACK); // which CullMode = None leaves
    for (const char* wrong :
         {"DepthFunc = Sometimes;", "DepthFunc = 3;", "BlendFunc = One;", "LightEnable[8] = true;",
          "ClearColor = {1, 2, 3};", "NoSuchState = 1;", "FragmentProgram = 1;", "Texture[0] = <nothing>;",
          "VertexProgram = compile glslf main();", "FragmentProgram = compile glslf nothing();",
          "GeometryProgram = compile gp4gp main();"}) {
        const CGpass pass = passOf(wrong);
        EXPECT_FALSE(cgValidateTechnique(cgGetPassTechnique(pass))) << wrong;
        cgSetPassState(pass);
        EXPECT_EQ(gl().glGetError(), GLenum{GL_NO_ERROR}) << wrong;
    }
    EXPECT_NE(cgGetError(), CG_NO_ERROR);
}

TEST_F(DriverCgEffects, blendTwoPassesAndLeaveNothingBehind) {
    const CGeffect effect = read(R"(
float4 first = {0.5, 0.25, 0, 1};
float4 second = {0.25, 0.25, 0.5, 0.5};
bool blends = true;
struct V { float4 at : POSITION; };
V place(float4 p : POSITION) { V v; v.at = p; return v; }
float4 paint(uniform float4 c) : COLOR { return c; }
PixelShader paints[2] = { compile ps_2_0 paint(first), compile ps_2_0 paint(second) };
technique Both {
    pass { VertexShader = compile vs_2_0 place(); PixelShader = (paints[0]); }
    pass { VertexShader = compile vs_2_0 place(); PixelShader = paints[1];
           AlphaBlendEnable = <blends>; SrcBlend = SrcAlpha; DestBlend = One; }
})");
    const CGtechnique technique = cgGetFirstTechnique(effect);
    gl().glClear(GL_COLOR_BUFFER_BIT);
    drawBy(technique);
    expectPixel({159, 96, 64, 255}, "one over the other");
    cgSetParameter4f(cgGetNamedEffectParameter(effect, "first"), 0, 0, 0, 0);
    drawBy(technique);
    expectPixel({32, 32, 64, 64}, "with another parameter");
    cgSetParameter1i(cgGetNamedEffectParameter(effect, "blends"), 0);
    drawBy(technique);
    expectPixel({64, 64, 128, 128}, "without blending");
    gl().glColor4f(0, 1, 0, 1);
    quad();
    expectPixel({0, 255, 0, 255}, "OpenGL's own functions again");
}

TEST_F(DriverCgEffects, hideBehindAndCullUntilTheyAreReset) {
    const CGtechnique technique = cgGetFirstTechnique(read(
        "float4 red() : COLOR { return float4(1, 0, 0, 1); } technique T { pass { FragmentProgram = compile "
        "arbfp1 red(); DepthTestEnable = true; DepthFunc = Less; DepthMask = false; CullFaceEnable = true; "
        "CullFace = Back; ColorMask = bool4(true, true, true, false); } }"));
    ASSERT_TRUE(cgValidateTechnique(technique)) << cgGetLastListing(fContext);
    const CGpass pass = cgGetFirstPass(technique);
    bool isSet = true;
    const auto draw = [&](float depthThere, bool isTurned) {
        gl().glClearDepth(depthThere);
        gl().glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        if (isSet)
            cgSetPassState(pass);
        quad(0, isTurned);
        cgResetPassState(pass);
    };
    draw(1, false);
    expectPixel({255, 0, 0, 0}, "in front, alpha masked");
    EXPECT_EQ(readDepth(1, 1), 1) << "no depth written";
    draw(0.25F, false);
    expectPixel({0, 0, 0, 0}, "behind");
    draw(1, true);
    expectPixel({0, 0, 0, 0}, "turned away");
    isSet = false;
    gl().glColor4f(0, 0, 1, 1);
    draw(0.25F, true);
    expectPixel({0, 0, 255, 255}, "nothing hides any more");
    gl().glClearDepth(1);
}

TEST_F(DriverCgEffects, giveTexturesTheStatesOfTheirSamplers) {
    const CGeffect effect = read(R"(
texture map < string ResourceName = "map.png"; >;
sampler2D tiled = sampler_state { Texture = <map>; MinFilter = Point; MagFilter = Nearest; MipFilter = None;
                                  AddressU = Clamp; WrapT = Repeat; MaxAnisotropy = 1; };
sampler2D given = sampler_state { MinFilter = Linear; MagFilter = Point; MipFilter = Linear; GenerateMipmap = true; };
sampler2D idle { Texture = <map>; MinFilter = Sometimes; };
void place(float4 p : POSITION, float2 t : TEXCOORD0, out float4 o : POSITION, out float2 u : TEXCOORD0) { o = p; u = t; }
float4 show(float2 u : TEXCOORD0, uniform sampler2D s, uniform float far) : COLOR { return tex2D(s, u * far); }
technique Named { pass { VertexProgram = compile glslv place(); FragmentProgram = compile glslf show(tiled, 9); } }
technique Unit { pass { Sampler[0] = <tiled>; Texture2DEnable[0] = true; TextureEnvMode[0] = Replace; } }
technique Given { pass { VertexProgram = compile glslv place(); FragmentProgram = compile glslf show(given, 0.25); } }
)");
    GLuint textures[2];
    gl().glGenTextures(2, textures);
    const GLubyte texels[] = {255, 0, 0, 255, 0, 0, 255, 255};
    const CGparameter given = cgGetNamedEffectParameter(effect, "given");
    cgGLSetupSampler(given, textures[1]);
    for (const GLuint texture : textures) {
        gl().glBindTexture(GL_TEXTURE_2D, texture);
        gl().glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels);
    }
    gl().glBindTexture(GL_TEXTURE_2D, 0);
    const auto number = [&](GLuint texture, GLenum what) {
        GLint value = 0;
        gl().glBindTexture(GL_TEXTURE_2D, texture);
        gl().glGetTexParameteriv(GL_TEXTURE_2D, what, &value);
        gl().glBindTexture(GL_TEXTURE_2D, 0);
        return static_cast<GLenum>(value);
    };
    cgGLSetTextureParameter(cgGetNamedEffectParameter(effect, "map"), textures[0]);
    gl().glClear(GL_COLOR_BUFFER_BIT);
    drawBy(cgGetNamedTechnique(effect, "Named"));
    expectPixel({255, 0, 0, 255}, "clamped on the left");
    expectPixel({0, 0, 255, 255}, "and on the right", 2);
    EXPECT_EQ(number(textures[0], GL_TEXTURE_MIN_FILTER), GLenum{GL_NEAREST});
    EXPECT_EQ(number(textures[0], GL_TEXTURE_WRAP_S), GLenum{GL_CLAMP_TO_EDGE});
    EXPECT_EQ(number(textures[0], GL_TEXTURE_WRAP_T), GLenum{GL_REPEAT});
    gl().glClear(GL_COLOR_BUFFER_BIT);
    drawBy(cgGetNamedTechnique(effect, "Unit"));
    expectPixel({0, 0, 255, 255}, "by OpenGL's own functions", 3);
    EXPECT_EQ(cgGLGetTextureParameter(given), textures[1]);
    EXPECT_EQ(number(textures[1], GL_TEXTURE_MIN_FILTER), GLenum{GL_LINEAR_MIPMAP_LINEAR});
    EXPECT_EQ(number(textures[1], GL_TEXTURE_MAG_FILTER), GLenum{GL_NEAREST});
    drawBy(cgGetNamedTechnique(effect, "Given"));
    expectPixel({255, 0, 0, 255}, "repeated on the right", 2);
    const CGstateassignment filter =
        cgGetNamedSamplerStateAssignment(cgGetNamedEffectParameter(effect, "idle"), "MinFilter");
    EXPECT_FALSE(cgCallStateValidateCallback(filter));
    cgGLSetupSampler(cgGetNamedEffectParameter(effect, "map"), textures[1]);
    EXPECT_EQ(cgGetError(), CG_INVALID_PARAMETER_ERROR) << "no sampler";
    gl().glDeleteTextures(2, textures);
}

} // namespace
