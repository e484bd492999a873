#include "DriverTest.h"

#include "EntryPointNames.h"

#include <Cg/cgGL.h>

#include <array>
#include <cmath>
#include <dlfcn.h>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

namespace {

/// Programs bound through the runtime, and what a pixel shows of them.
class DriverCgGL : public DriverTest {
protected:
    void SetUp() override {
        DriverTest::SetUp();
        fTarget = std::make_unique<DrawTarget>(gl(), 4, 4);
        fContext = cgCreateContext();
        gl().glClearColor(0, 0, 0, 0);
    }
    void TearDown() override {
        cgGLDisableProfile(CG_PROFILE_ARBVP1);
        cgGLDisableProfile(CG_PROFILE_ARBFP1);
        cgDestroyContext(fContext);
        EXPECT_EQ(cgGetError(), CG_NO_ERROR);
        fTarget.reset();
        DriverTest::TearDown();
    }

    CGprogram load(const std::string& source, CGprofile profile = CG_PROFILE_ARBFP1) {
        const CGprogram program =
            cgCreateProgram(fContext, CG_SOURCE, source.c_str(), profile, "main", nullptr);
        EXPECT_NE(program, nullptr) << source << cgGetLastListing(fContext);
        if (program)
            cgGLLoadProgram(program);
        EXPECT_EQ(cgGetError(), CG_NO_ERROR) << cgGetLastListing(fContext);
        return program;
    }

    /// Loads, binds and enables.
    CGprogram use(const std::string& source, CGprofile profile = CG_PROFILE_ARBFP1) {
        const CGprogram program = load(source, profile);
        cgGLBindProgram(program);
        cgGLEnableProfile(profile);
        return program;
    }

    Pixel drawn() {
        gl().glClear(GL_COLOR_BUFFER_BIT);
        gl().glBegin(GL_QUADS);
        for (const auto& [x, y] : {std::pair{-1.0F, -1.0F}, {1.0F, -1.0F}, {1.0F, 1.0F}, {-1.0F, 1.0F}})
            gl().glVertex2f(x, y);
        gl().glEnd();
        return readPixel(1, 1);
    }

    void expectColor(double r, double g, double b, double a, const std::string& what = "") {
        const Pixel pixel = drawn();
        const double wanted[] = {r, g, b, a};
        for (size_t i = 0; i < 4; ++i)
            EXPECT_NEAR(pixel[i], 255 * wanted[i], 2) << what << " channel " << i;
    }

    void expectError(CGerror error, const char* what) { EXPECT_EQ(cgGetError(), error) << what; }

    std::unique_ptr<DrawTarget> fTarget;
    CGcontext fContext = nullptr;
};

TEST_F(DriverCgGL, exportsItsInterface) {
    static_assert(std::size(kBindingNames) == 72);
    void* library = dlopen("libCgGL.so", RTLD_LAZY | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr) << dlerror();
    for (const char* name : kBindingNames)
        EXPECT_NE(dlsym(library, name), nullptr) << name;
    EXPECT_EQ(dlsym(library, "_ZN6orlocg6openGLEv"), nullptr);
    dlclose(library);
}

TEST_F(DriverCgGL, bindsAndEnablesEachSideByItself) {
    for (const char* name : {"arbvp1", "arbfp1", "vp40", "fp40", "glslv", "glslf"})
        EXPECT_TRUE(cgGLIsProfileSupported(cgGetProfile(name))) << name;
    EXPECT_FALSE(cgGLIsProfileSupported(CG_PROFILE_UNKNOWN));
    EXPECT_EQ(cgGLGetLatestProfile(CG_GL_VERTEX), CG_PROFILE_GLSLV);
    EXPECT_EQ(cgGLGetLatestProfile(CG_GL_FRAGMENT), CG_PROFILE_GLSLF);
    gl().glColor4f(0.25F, 0.5F, 0.75F, 1);
    expectColor(0.25, 0.5, 0.75, 1, "neither");
    use("float4 main(float4 c : COLOR) : COLOR { return c.bgra * 0.5; }");
    expectColor(0.375, 0.25, 0.125, 0.5, "the fragments'");
    use("void main(float4 p : POSITION, out float4 o : POSITION, out float4 c : COLOR) { o = p; c = "
        "float4(1, 0.5, 0, 1); }",
        CG_PROFILE_ARBVP1);
    expectColor(0, 0.25, 0.5, 0.5, "both");
    cgGLDisableProfile(CG_PROFILE_ARBFP1);
    expectColor(1, 0.5, 0, 1, "the vertices'");
    cgGLDisableProfile(CG_PROFILE_ARBVP1);
    expectColor(0.25, 0.5, 0.75, 1, "neither again");
    const CGprogram red = load("float4 main() : COLOR { return float4(1, 0, 0, 1); }");
    cgGLEnableProfile(CG_PROFILE_ARBFP1);
    cgGLBindProgram(red);
    expectColor(1, 0, 0, 1, "another in its place");
    cgDestroyProgram(red);
    cgGLEnableProfile(CG_PROFILE_ARBFP1);
    expectColor(0.25, 0.5, 0.75, 1, "which is gone");
    for (const CGGLenum other : {CG_GL_GEOMETRY, CG_GL_TESSELLATION_CONTROL, CG_GL_TESSELLATION_EVALUATION})
        EXPECT_EQ(cgGLGetLatestProfile(other), CG_PROFILE_UNKNOWN) << other;
    EXPECT_FALSE(cgGLIsProfileSupported(CG_PROFILE_GP4GP));
    cgGLSetOptimalOptions(CG_PROFILE_ARBFP1);
    cgGLSetContextOptimalOptions(fContext, CG_PROFILE_ARBFP1);
    EXPECT_EQ(cgGLGetOptimalOptions(CG_PROFILE_ARBFP1)[0], nullptr);
    EXPECT_EQ(cgGLGetContextOptimalOptions(fContext, CG_PROFILE_ARBFP1)[0], nullptr);
}

TEST_F(DriverCgGL, drawsInEachContextWhatIsBoundThere) {
    use("float4 main() : COLOR { return float4(1, 0, 0, 1); }");
    const CGprogram green = load("float4 main() : COLOR { return float4(0, 1, 0, 1); }");
    auto* other = new GLStartupContext(WindowWrapper(nullptr, 0, display()), startup().context);
    other->ref();
    ASSERT_TRUE(other->makeCurrent());
    {
        const DrawTarget target(gl(), 4, 4);
        cgGLBindProgram(green);
        expectColor(0, 1, 0, 1, "the other");
    }
    other->unref();
    GLStartupContext::fpGlobalGLStartupContext = &startup();
    ASSERT_TRUE(startup().makeCurrent());
    expectColor(1, 0, 0, 1, "the first still");
    cgGLBindProgram(green);
    expectColor(0, 1, 0, 1, "the first now");
}

TEST_F(DriverCgGL, unbindsAndUnloads) {
    gl().glColor4f(0, 0, 1, 1);
    const CGprogram program = use("uniform float4 k = {1, 0, 0, 1}; float4 main() : COLOR { return k; }");
    const CGparameter k = cgGetNamedParameter(program, "k");
    expectColor(1, 0, 0, 1);
    EXPECT_TRUE(cgGLIsProgramLoaded(program));
    EXPECT_NE(cgGLGetProgramID(program), 0U);
    cgGLUnbindProgram(CG_PROFILE_ARBFP1);
    expectColor(0, 0, 1, 1, "unbound, though enabled");
    cgGLBindProgram(program);
    expectColor(1, 0, 0, 1, "bound again");
    cgGLUnloadProgram(program);
    EXPECT_FALSE(cgGLIsProgramLoaded(program));
    expectColor(0, 0, 1, 1, "not there any more");
    EXPECT_EQ(cgGLGetProgramID(program), 0U);
    expectError(CG_PROGRAM_NOT_LOADED_ERROR, "no name");
    cgSetParameter4f(k, 0, 1, 0, 1); // meanwhile
    cgGLLoadProgram(program);
    cgGLBindProgram(program);
    expectColor(0, 1, 0, 1);

    // What is set waits, the last of it counts.
    cgSetParameterSettingMode(fContext, CG_DEFERRED_PARAMETER_SETTING);
    cgSetParameter4f(k, 1, 1, 1, 1);
    cgGLSetParameter4f(k, 1, 1, 0, 1);
    expectColor(0, 1, 0, 1, "deferred");
    cgUpdateProgramParameters(program);
    expectColor(1, 1, 0, 1, "updated");
    cgSetParameter1f(k, 0.5F);
    cgGLBindProgram(program);
    expectColor(0.5, 0.5, 0.5, 0.5, "bound");
    cgSetParameter1f(k, 1);
    cgSetParameterSettingMode(fContext, CG_IMMEDIATE_PARAMETER_SETTING);
    expectColor(1, 1, 1, 1, "not deferred any more");

    // Compiled once more it stays loaded, bound and set.
    cgCompileProgram(program);
    expectColor(1, 1, 1, 1, "compiled once more");
    cgSetParameterVariability(k, CG_LITERAL);
    cgSetParameter4f(k, 0, 0.5F, 0, 1);
    expectColor(0, 0.5, 0, 1, "a constant");

    const CGprogram reading =
        load("uniform float2 a : BUFFER[1]; uniform float b[2] : BUFFER[1]; uniform int n : "
             "BUFFER[1][48]; float4 main() : COLOR { return float4(a.y, b[1], n * 0.25, 1); }");
    struct {
        float a[4] = {0, 0.5F};
        float b[8] = {0, 0, 0, 0, 0.25F};
        int n = 3;
    } block;
    const CGbuffer buffer = cgCreateBuffer(fContext, sizeof block, &block, CG_BUFFER_USAGE_DYNAMIC_DRAW);
    cgSetProgramBuffer(reading, 1, buffer);
    EXPECT_EQ(cgGetProgramBuffer(reading, 1), buffer);
    EXPECT_EQ(cgGetParameterBufferIndex(cgGetNamedParameter(reading, "n")), 1);
    EXPECT_EQ(cgGetParameterBufferOffset(cgGetNamedParameter(reading, "b[1]")), 32);
    cgGLBindProgram(reading);
    expectColor(0.5, 0.25, 0.75, 1, "from a buffer");
    cgSetBufferSubData(buffer, 4, 4, &block.b[4]);
    cgUpdateProgramParameters(reading);
    expectColor(0.25, 0.25, 0.75, 1, "from another");
    cgDestroyBuffer(buffer);
    EXPECT_EQ(cgGetProgramBuffer(reading, 1), nullptr);
    cgGLBindProgram(reading);
    expectColor(0.25, 0.25, 0.75, 1, "from none any more");
    EXPECT_EQ(cgGetProgramBufferMaxIndex(CG_PROFILE_GLSLV), 11);
    EXPECT_EQ(cgGetProgramBufferMaxSize(CG_PROFILE_GLSLV), 65536);
    cgSetProgramBuffer(reading, 12, nullptr);
    expectError(CG_BUFFER_INDEX_OUT_OF_RANGE_ERROR, "no such place");

    cgGLSetDebugMode(CG_TRUE);
    gl().glEnable(GL_TEXTURE_BINDING_2D);
    cgGLBindProgram(program);
    expectError(CG_PROGRAM_BIND_ERROR, "an error of OpenGL's");
    cgGLSetDebugMode(CG_FALSE);
    cgGLUnbindProgram(CG_PROFILE_UNKNOWN);
    expectError(CG_INVALID_PROFILE_ERROR, "unbind");
}

TEST_F(DriverCgGL, drawsWithCombinedStagesAndCompiledTexts) {
    const char* vertices =
        "void main(float4 p : POSITION, uniform float4 tone, out float4 o : POSITION, out float4 c : "
        "COLOR) { o = p; c = tone; }";
    const char* fragments = "uniform float4 k[2]; uniform float2x2 m = float2x2(1, 0.5, 0.25, 1); "
                            "float4 main(float4 c : COLOR) : COLOR { return c * k[1] * float4(m[0], m[1]); }";
    CGprogram stages[] = {load(vertices, CG_PROFILE_GLSLV), load(fragments, CG_PROFILE_GLSLF)};
    for (CGprogram& stage : stages) { // by way of their texts
        const CGprofile profile = cgGetProgramProfile(stage);
        const std::string text = cgGetProgramString(stage, CG_COMPILED_PROGRAM);
        cgDestroyProgram(stage);
        stage = cgCreateProgram(fContext, CG_OBJECT, text.c_str(), profile, "main", nullptr);
        ASSERT_NE(stage, nullptr) << cgGetLastListing(fContext);
    }
    const CGprogram both = cgCombinePrograms(2, stages);
    cgGLLoadProgram(both);
    EXPECT_TRUE(cgGLIsProgramLoaded(both));
    cgGLBindProgram(both);
    cgGLEnableProgramProfiles(both);
    const float all[] = {0, 0, 0, 0, 0.5F, 1, 1, 1};
    cgSetParameterValuefr(cgGetNamedParameter(both, "k"), 8, all);
    cgSetParameter4f(cgGetNamedParameter(both, "tone"), 1, 1, 1, 0.5F);
    expectColor(0.5, 0.5, 0.25, 0.5);
    // One parameter for many programs.
    const CGparameter shared = cgCreateParameterArray(fContext, CG_FLOAT4, 2);
    cgConnectParameter(shared, cgGetNamedParameter(both, "k"));
    cgGLSetParameterArray4f(shared, 1, 1, std::array{1.0F, 1.0F, 0.0F, 1.0F}.data());
    expectColor(1, 0.5, 0, 0.5, "by what it is connected to");
    cgGLDisableProgramProfiles(both);
    gl().glColor4f(0, 0, 1, 1);
    expectColor(0, 0, 1, 1, "neither");
    for (const CGprogram handle : {CGprogram{}, reinterpret_cast<CGprogram>(shared)}) {
        cgGLIsProgramLoaded(handle);
        expectError(CG_INVALID_PROGRAM_HANDLE_ERROR, "loaded");
        for (const auto function : {cgGLEnableProgramProfiles, cgGLDisableProgramProfiles, cgGLUnloadProgram,
                                    cgGLLoadProgram, cgGLBindProgram}) {
            function(handle);
            expectError(CG_INVALID_PROGRAM_HANDLE_ERROR, "none");
        }
    }
}

TEST_F(DriverCgGL, setsNumbersOfEveryKind) {
    const CGprogram program = use("uniform float a; uniform float2 b; uniform float3 c; uniform float4 d = "
                                  "{1, 2, 3, 4}; uniform int n; uniform bool on;\n"
                                  "float4 main(uniform float which) : COLOR {\n"
                                  "if (which == 0) return float4(a, b, 1); if (which == 1) return float4(c, "
                                  "1); if (which == 2) return d; return float4(n / 4.0, on, 0, 1); }");
    const auto parameter = [&](const char* name) { return cgGetNamedParameter(program, name); };
    const auto show = [&](float which) { cgGLSetParameter1f(parameter("which"), which); };
    show(2);
    expectColor(1, 1, 1, 1, "its own numbers");
    const float f[] = {0.1F, 0.2F, 0.3F, 0.4F};
    const double d[] = {0.5, 0.6, 0.7, 0.8};
    struct Setter {
        std::function<void(CGparameter)> set;
        std::array<double, 4> expected; ///< of a float4: the last stands for those that are missing
    };
    const Setter setters[] = {
        {[](CGparameter p) { cgGLSetParameter1f(p, 0.5F); }, {0.5, 0.5, 0.5, 0.5}},
        {[](CGparameter p) { cgGLSetParameter2f(p, 0.25F, 0.5F); }, {0.25, 0.5, 0.5, 0.5}},
        {[](CGparameter p) { cgGLSetParameter3f(p, 0.25F, 0.5F, 0.75F); }, {0.25, 0.5, 0.75, 0.75}},
        {[](CGparameter p) { cgGLSetParameter4f(p, 0.25F, 0.5F, 0.75F, 1); }, {0.25, 0.5, 0.75, 1}},
        {[](CGparameter p) { cgGLSetParameter1d(p, 0.75); }, {0.75, 0.75, 0.75, 0.75}},
        {[](CGparameter p) { cgGLSetParameter2d(p, 0.5, 0.25); }, {0.5, 0.25, 0.25, 0.25}},
        {[](CGparameter p) { cgGLSetParameter3d(p, 0.75, 0.5, 0.25); }, {0.75, 0.5, 0.25, 0.25}},
        {[](CGparameter p) { cgGLSetParameter4d(p, 1, 0.75, 0.5, 0.25); }, {1, 0.75, 0.5, 0.25}},
        {[&](CGparameter p) { cgGLSetParameter1fv(p, f); }, {0.1, 0.1, 0.1, 0.1}},
        {[&](CGparameter p) { cgGLSetParameter2fv(p, f); }, {0.1, 0.2, 0.2, 0.2}},
        {[&](CGparameter p) { cgGLSetParameter3fv(p, f); }, {0.1, 0.2, 0.3, 0.3}},
        {[&](CGparameter p) { cgGLSetParameter4fv(p, f); }, {0.1, 0.2, 0.3, 0.4}},
        {[&](CGparameter p) { cgGLSetParameter1dv(p, d); }, {0.5, 0.5, 0.5, 0.5}},
        {[&](CGparameter p) { cgGLSetParameter2dv(p, d); }, {0.5, 0.6, 0.6, 0.6}},
        {[&](CGparameter p) { cgGLSetParameter3dv(p, d); }, {0.5, 0.6, 0.7, 0.7}},
        {[&](CGparameter p) { cgGLSetParameter4dv(p, d); }, {0.5, 0.6, 0.7, 0.8}},
    };
    for (size_t i = 0; i < std::size(setters); ++i) {
        const auto& e = setters[i].expected;
        setters[i].set(parameter("d"));
        expectColor(e[0], e[1], e[2], e[3], "setter " + std::to_string(i));
        float got[4] = {9, 9, 9, 9};
        double gotDouble[4] = {9, 9, 9, 9};
        cgGLGetParameter4f(parameter("d"), got);
        cgGLGetParameter4d(parameter("d"), gotDouble);
        for (size_t k = 0; k < 4; ++k) {
            EXPECT_NEAR(got[k], e[k], 1e-6);
            EXPECT_NEAR(gotDouble[k], e[k], 1e-6);
        }
    }
    // Shorter ones are cut.
    cgGLSetParameter4f(parameter("a"), 0.5F, 9, 9, 9);
    cgGLSetParameter4f(parameter("b"), 0.25F, 0.75F, 9, 9);
    cgGLSetParameter4d(parameter("c"), 0.75, 0.5, 0.25, 9);
    show(0);
    expectColor(0.5, 0.25, 0.75, 1);
    show(1);
    expectColor(0.75, 0.5, 0.25, 1);
    float one[4] = {9, 9, 9, 9};
    double two[4] = {9, 9, 9, 9};
    cgGLGetParameter1f(parameter("c"), one);
    cgGLGetParameter2d(parameter("c"), two);
    EXPECT_EQ(one[0], 0.75F);
    EXPECT_EQ(one[1], 9);
    EXPECT_EQ(two[1], 0.5);
    EXPECT_EQ(two[2], 9);
    cgGLGetParameter2f(parameter("c"), one);
    cgGLGetParameter3d(parameter("c"), two);
    EXPECT_EQ(one[1], 0.5F);
    EXPECT_EQ(two[2], 0.25);
    cgGLGetParameter3f(parameter("c"), one);
    cgGLGetParameter1d(parameter("b"), two);
    EXPECT_EQ(one[2], 0.25F);
    EXPECT_EQ(two[0], 0.25);
    cgGLSetParameter1f(parameter("n"), 3);
    cgGLSetParameter1f(parameter("on"), 1);
    show(3);
    expectColor(0.75, 1, 0, 1);

    cgGLSetParameter1f(nullptr, 1);
    expectError(CG_INVALID_PARAM_HANDLE_ERROR, "no parameter");
}

TEST_F(DriverCgGL, keepsWhatIsSetBeforeLoadingAndBinding) {
    const char* source = "struct L { float gain; float w[2]; }; uniform float3 tint; float4 main(uniform L "
                         "l[2]) : COLOR { return float4(tint * l[1].gain, l[1].w[1]); }";
    const CGprogram program =
        cgCreateProgram(fContext, CG_SOURCE, source, CG_PROFILE_ARBFP1, "main", nullptr);
    cgGLSetParameter3f(cgGetNamedParameter(program, "tint"), 1, 0.5F, 0.25F);
    cgGLSetParameter1f(cgGetNamedParameter(program, "l[1].w[1]"), 0.75F);
    cgGLBindProgram(program);
    expectError(CG_PROGRAM_NOT_LOADED_ERROR, "not loaded yet");
    cgGLLoadProgram(program);
    cgGLSetParameter1f(cgGetNamedParameter(program, "l[1].gain"), 0.5F);
    cgGLEnableProfile(CG_PROFILE_ARBFP1);
    cgGLBindProgram(program);
    expectColor(0.5, 0.25, 0.125, 0.75);
    const CGprogram other = use("float4 main() : COLOR { return 1; }");
    cgGLSetParameter1f(cgGetNamedParameter(program, "l[1].gain"), 1); // while another is bound
    cgGLBindProgram(program);
    expectColor(1, 0.5, 0.25, 0.75);
    EXPECT_TRUE(cgIsProgram(other));
}

TEST_F(DriverCgGL, setsArrays) {
    const CGprogram program = use("uniform float a[3]; uniform float2 b[3]; uniform float3 c[3]; uniform "
                                  "float4 d[3]; uniform float g[2][2];\n"
                                  "float4 main(uniform float which) : COLOR { if (which == 1) return "
                                  "float4(a[0], a[1], a[2], 1); if (which == 2) return float4(b[1], b[2]);\n"
                                  "if (which == 3) return float4(c[2], 1); if (which == 4) return d[2]; "
                                  "return float4(g[0][0], g[0][1], g[1][0], g[1][1]); }");
    float f[12];
    double d[12];
    for (int i = 0; i < 12; ++i) {
        f[i] = static_cast<float>(i) / 16;
        d[i] = 1 - i / 16.0;
    }
    using SetF = void (*)(CGparameter, long, long, const float*);
    using SetD = void (*)(CGparameter, long, long, const double*);
    using GetF = void (*)(CGparameter, long, long, float*);
    using GetD = void (*)(CGparameter, long, long, double*);
    const SetF setF[] = {cgGLSetParameterArray1f, cgGLSetParameterArray2f, cgGLSetParameterArray3f,
                         cgGLSetParameterArray4f};
    const SetD setD[] = {cgGLSetParameterArray1d, cgGLSetParameterArray2d, cgGLSetParameterArray3d,
                         cgGLSetParameterArray4d};
    const GetF getF[] = {cgGLGetParameterArray1f, cgGLGetParameterArray2f, cgGLGetParameterArray3f,
                         cgGLGetParameterArray4f};
    const GetD getD[] = {cgGLGetParameterArray1d, cgGLGetParameterArray2d, cgGLGetParameterArray3d,
                         cgGLGetParameterArray4d};
    const double floats[][4] = {{0, 1, 2, 16}, {2, 3, 4, 5}, {6, 7, 8, 16}, {8, 9, 10, 11}};
    const double doubles[][4] = {{16, 15, 14, 16}, {14, 13, 12, 11}, {10, 9, 8, 16}, {8, 7, 6, 5}};
    for (size_t n = 0; n < 4; ++n) {
        const CGparameter p =
            cgGetNamedParameter(program, std::string(1, static_cast<char>('a' + n)).c_str());
        cgGLSetParameter1f(cgGetNamedParameter(program, "which"), static_cast<float>(n + 1));
        setF[n](p, 0, 0, f);
        expectColor(floats[n][0] / 16, floats[n][1] / 16, floats[n][2] / 16, floats[n][3] / 16,
                    "floats " + std::to_string(n + 1));
        float got[12] = {};
        getF[n](p, 0, 3, got);
        EXPECT_TRUE(std::equal(got, got + 3 * (n + 1), f)) << n;
        setD[n](p, 0, 3, d);
        expectColor(doubles[n][0] / 16, doubles[n][1] / 16, doubles[n][2] / 16, doubles[n][3] / 16,
                    "doubles " + std::to_string(n + 1));
        double gotDouble[12] = {};
        getD[n](p, 1, 1, gotDouble);
        EXPECT_EQ(gotDouble[0], d[n + 1]) << n;
        EXPECT_EQ(gotDouble[n + 1], 0) << "of one element only";
    }
    for (int i = 0; i < 4; ++i)
        cgGLSetParameter1f(
            cgGetNamedParameter(program,
                                ("g[" + std::to_string(i / 2) + "][" + std::to_string(i % 2) + "]").c_str()),
            static_cast<float>(i + 1) / 4);
    cgGLSetParameter1f(cgGetNamedParameter(program, "which"), 0);
    expectColor(0.25, 0.5, 0.75, 1, "arrays of arrays");

    const CGparameter a = cgGetNamedParameter(program, "a");
    cgGLSetParameterArray1f(a, 2, 2, f);
    expectError(CG_OUT_OF_ARRAY_BOUNDS_ERROR, "beyond the end");
    cgGLSetParameterArray1f(cgGetNamedParameter(program, "which"), 0, 1, f);
    expectError(CG_ARRAY_PARAM_ERROR, "no array");
    cgGLSetParameter1f(a, 1);
    expectError(CG_INVALID_VALUE_TYPE_ERROR, "an array as a number");
}

TEST_F(DriverCgGL, setsMatricesInBothOrders) {
    const CGprogram program =
        use("uniform float4x4 m; uniform float2x3 r; uniform float2x2 a[2];\n"
            "float4 main(uniform float which) : COLOR { if (which == 0) return m[1]; if (which == 1) return "
            "float4(r[1], 1); return float4(a[1][0], a[1][1]); }");
    const auto parameter = [&](const char* name) { return cgGetNamedParameter(program, name); };
    float f[16];
    double d[16];
    for (int i = 0; i < 16; ++i) {
        f[i] = static_cast<float>(i) / 16;
        d[i] = i / 16.0;
    }
    const auto expect = [&](std::array<int, 4> sixteenths, const char* what) {
        expectColor(sixteenths[0] / 16.0, sixteenths[1] / 16.0, sixteenths[2] / 16.0, sixteenths[3] / 16.0,
                    what);
    };
    cgGLSetMatrixParameterfr(parameter("m"), f);
    expect({4, 5, 6, 7}, "fr");
    cgGLSetMatrixParameterfc(parameter("m"), f);
    expect({1, 5, 9, 13}, "fc");
    cgGLSetMatrixParameterdr(parameter("m"), d);
    expect({4, 5, 6, 7}, "dr");
    cgGLSetMatrixParameterdc(parameter("m"), d);
    expect({1, 5, 9, 13}, "dc");
    float got[16] = {};
    double gotDouble[16] = {};
    cgGLGetMatrixParameterfr(parameter("m"), got);
    EXPECT_EQ(got[1], 4 / 16.0F);
    cgGLGetMatrixParameterfc(parameter("m"), got);
    EXPECT_EQ(got[1], 1 / 16.0F);
    cgGLGetMatrixParameterdr(parameter("m"), gotDouble);
    EXPECT_EQ(gotDouble[1], 4 / 16.0);
    cgGLGetMatrixParameterdc(parameter("m"), gotDouble);
    EXPECT_EQ(gotDouble[1], 1 / 16.0);

    cgGLSetParameter1f(parameter("which"), 1);
    cgGLSetMatrixParameterfr(parameter("r"), f);
    expect({3, 4, 5, 16}, "2x3 by rows");
    cgGLSetMatrixParameterfc(parameter("r"), f);
    expect({1, 3, 5, 16}, "2x3 by columns");
    cgGLSetParameter1f(parameter("which"), 2);
    cgGLSetMatrixParameterArrayfr(parameter("a"), 0, 0, f);
    expect({4, 5, 6, 7}, "array fr");
    cgGLSetMatrixParameterArrayfc(parameter("a"), 0, 2, f);
    expect({4, 6, 5, 7}, "array fc");
    cgGLSetMatrixParameterArraydr(parameter("a"), 1, 1, d);
    expect({0, 1, 2, 3}, "array dr");
    cgGLSetMatrixParameterArraydc(parameter("a"), 1, 1, d);
    expect({0, 2, 1, 3}, "array dc");
    cgGLGetMatrixParameterArrayfr(parameter("a"), 1, 1, got);
    EXPECT_EQ(got[1], 2 / 16.0F);
    cgGLGetMatrixParameterArrayfc(parameter("a"), 1, 1, got);
    EXPECT_EQ(got[1], 1 / 16.0F);
    cgGLGetMatrixParameterArraydr(parameter("a"), 1, 1, gotDouble);
    EXPECT_EQ(gotDouble[1], 2 / 16.0);
    cgGLGetMatrixParameterArraydc(parameter("a"), 1, 1, gotDouble);
    EXPECT_EQ(gotDouble[1], 1 / 16.0);
    cgGLSetMatrixParameterfr(parameter("which"), f);
    expectError(CG_NOT_MATRIX_PARAM_ERROR, "no matrix");
}

TEST_F(DriverCgGL, takesMatricesOfGL) {
    const CGprogram program = use("float4 main(uniform float4x4 m, uniform float2x2 small) : COLOR { return "
                                  "mul(m, float4(0.5, 0.25, 0, 1)) + small[0].xyxy * 0; }");
    const CGparameter m = cgGetNamedParameter(program, "m");
    gl().glMatrixMode(GL_PROJECTION);
    gl().glScalef(0.5F, 1, 1);
    gl().glMatrixMode(GL_TEXTURE);
    gl().glTranslatef(0.125F, 0, 0);
    gl().glMatrixMode(GL_MODELVIEW);
    gl().glTranslatef(0.25F, 0.5F, 0);
    const auto restore = [&] {
        for (const GLenum mode : {GL_PROJECTION, GL_TEXTURE, GL_MODELVIEW}) {
            gl().glMatrixMode(mode);
            gl().glLoadIdentity();
        }
    };
    const auto values = [&](CGGLenum matrix, CGGLenum transform) {
        cgGLSetStateMatrixParameter(m, matrix, transform);
        float rows[16] = {};
        cgGLGetMatrixParameterfr(m, rows);
        return std::vector<float>(rows, rows + 16);
    };
    using testing::ElementsAre;
    EXPECT_THAT(values(CG_GL_MODELVIEW_MATRIX, CG_GL_MATRIX_IDENTITY),
                ElementsAre(1, 0, 0, 0.25F, 0, 1, 0, 0.5F, 0, 0, 1, 0, 0, 0, 0, 1));
    EXPECT_THAT(values(CG_GL_MODELVIEW_MATRIX, CG_GL_MATRIX_TRANSPOSE),
                ElementsAre(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0.25F, 0.5F, 0, 1));
    EXPECT_THAT(values(CG_GL_PROJECTION_MATRIX, CG_GL_MATRIX_INVERSE)[0], 2);
    EXPECT_THAT(values(CG_GL_TEXTURE_MATRIX, CG_GL_MATRIX_IDENTITY)[3], 0.125F);
    EXPECT_THAT(values(CG_GL_MODELVIEW_PROJECTION_MATRIX, CG_GL_MATRIX_IDENTITY),
                ElementsAre(0.5F, 0, 0, 0.125F, 0, 1, 0, 0.5F, 0, 0, 1, 0, 0, 0, 0, 1));
    EXPECT_THAT(values(CG_GL_MODELVIEW_PROJECTION_MATRIX, CG_GL_MATRIX_INVERSE_TRANSPOSE),
                ElementsAre(2, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -0.25F, -0.5F, 0, 1));
    cgGLSetStateMatrixParameter(m, CG_GL_MODELVIEW_MATRIX, CG_GL_MATRIX_IDENTITY);
    restore();
    expectColor(0.75, 0.75, 0, 1);
    cgGLSetStateMatrixParameter(cgGetNamedParameter(program, "small"), CG_GL_MODELVIEW_MATRIX,
                                CG_GL_MATRIX_IDENTITY);
    expectError(CG_NOT_4x4_MATRIX_ERROR, "too small");
    cgGLSetStateMatrixParameter(m, CG_GL_VERTEX, CG_GL_MATRIX_IDENTITY);
    expectError(CG_INVALID_ENUMERANT_ERROR, "no matrix of GL's");
}

TEST_F(DriverCgGL, bindsTexturesToTheUnitsOfTheirSamplers) {
    GLuint names[2];
    gl().glGenTextures(2, names);
    const GLubyte texels[2][4] = {{255, 0, 0, 255}, {0, 255, 0, 255}};
    for (int i = 0; i < 2; ++i) {
        gl().glBindTexture(GL_TEXTURE_2D, names[i]);
        gl().glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        gl().glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels[i]);
    }
    gl().glBindTexture(GL_TEXTURE_2D, 0);
    const CGprogram program =
        use("float4 main(uniform sampler2D a, uniform sampler2D b : TEXUNIT3, uniform sampler2D idle) : "
            "COLOR { return tex2D(a, float2(0, 0)) * 0.5 + tex2D(b, float2(0, 0)) * 0.25; }");
    const CGparameter a = cgGetNamedParameter(program, "a");
    const CGparameter b = cgGetNamedParameter(program, "b");
    EXPECT_EQ(cgGLGetTextureEnum(a), GLenum{GL_TEXTURE0});
    EXPECT_EQ(cgGLGetTextureEnum(b), GLenum{GL_TEXTURE3});
    EXPECT_EQ(cgGLGetTextureEnum(cgGetNamedParameter(program, "idle")), 0U) << "nothing reads it";
    cgGLSetTextureParameter(a, names[0]);
    cgGLSetTextureParameter(b, names[1]);
    EXPECT_EQ(cgGLGetTextureParameter(b), names[1]);
    cgGLEnableTextureParameter(a);
    cgGLEnableTextureParameter(b);
    expectColor(0.5, 0.25, 0, 0.75);
    cgGLDisableTextureParameter(b);
    expectColor(0.5, 0, 0, 0.75);
    EXPECT_FALSE(cgGLGetManageTextureParameters(fContext));
    cgGLSetManageTextureParameters(fContext, CG_TRUE);
    EXPECT_TRUE(cgGLGetManageTextureParameters(fContext));
    cgGLDisableTextureParameter(a);
    cgGLBindProgram(program);
    expectColor(0.5, 0.25, 0, 0.75, "with the program");
    const CGparameter own = cgCreateParameter(fContext, CG_SAMPLER2D);
    cgConnectParameter(own, a);
    cgGLSetTextureParameter(own, names[1]);
    cgGLEnableTextureParameter(a);
    expectColor(0, 0.75, 0, 0.75, "a shared sampler");
    cgGLDisableTextureParameter(a);
    cgGLDisableTextureParameter(b);
    gl().glDeleteTextures(2, names);
    cgGLSetTextureParameter(cgGetNamedParameter(program, "nothing"), 1);
    expectError(CG_INVALID_PARAM_HANDLE_ERROR, "no such sampler");
}

TEST_F(DriverCgGL, readsBuffersThatOpenGLHasToo) {
    const CGprogram program = use("float4 tint : BUFFER[0]; float4 main() : COLOR { return tint; }");
    const float tint[] = {1, 0.5F, 0, 1};
    const CGbuffer buffer = cgGLCreateBuffer(fContext, sizeof tint, tint, GL_STATIC_DRAW);
    const GLuint name = cgGLGetBufferObject(buffer);
    ASSERT_NE(name, 0U);
    EXPECT_EQ(cgGLGetBufferObject(buffer), name);
    cgSetProgramBuffer(program, 0, buffer);
    const auto read = [&](float* v) {
        gl().glBindBufferARB(GL_ARRAY_BUFFER, name);
        gl().glGetBufferSubDataARB(GL_ARRAY_BUFFER, 0, sizeof tint, v);
        gl().glBindBufferARB(GL_ARRAY_BUFFER, 0);
    };
    cgGLBindProgram(program);
    expectColor(1, 0.5, 0, 1, "as made");
    const float other[] = {0, 0.25F, 1, 1};
    gl().glBindBufferARB(GL_ARRAY_BUFFER, name);
    gl().glBufferSubDataARB(GL_ARRAY_BUFFER, 0, sizeof other, other);
    gl().glBindBufferARB(GL_ARRAY_BUFFER, 0);
    cgUpdateProgramParameters(program);
    expectColor(0, 0.25, 1, 1, "written to OpenGL's");
    const float half = 0.5F;
    cgSetBufferSubData(buffer, 4, sizeof half, &half);
    static_cast<float*>(cgMapBuffer(buffer, CG_MAP_READ_WRITE))[2] = 0;
    cgUnmapBuffer(buffer);
    float got[4] = {};
    read(got);
    EXPECT_THAT(got, testing::ElementsAre(0, 0.5F, 0, 1)) << "taken to OpenGL's";
    EXPECT_EQ(cgGLCreateBuffer(fContext, 4, nullptr, GL_NONE), nullptr);
    expectError(CG_INVALID_ENUMERANT_ERROR, "no usage");
    EXPECT_EQ(cgGLGetBufferObject(nullptr), 0U);
    expectError(CG_INVALID_BUFFER_HANDLE_ERROR, "no buffer");
    cgDestroyBuffer(buffer);
    EXPECT_FALSE(gl().glIsBufferARB(name));
}

TEST_F(DriverCgGL, drawsFromClientArrays) {
    const CGprogram program = use("void main(float4 p : POSITION, float3 n : NORMAL, float4 c : COLOR, "
                                  "float2 t : TEXCOORD1, float4 g : ATTR6, float x : TEXCOORD2,\n"
                                  "out float4 o : POSITION, out float4 color : COLOR) { o = p; color = "
                                  "float4(n.x, c.y, t.x, g.w) + x; }",
                                  CG_PROFILE_ARBVP1);
    const float corners[] = {-1, -1, 1, -1, 1, 1, -1, 1};
    const float normals[] = {0.25F, 0, 0, 0.25F, 0, 0, 0.25F, 0, 0, 0.25F, 0, 0};
    const float colors[] = {0, 0.5F, 0, 0, 0, 0.5F, 0, 0, 0, 0.5F, 0, 0, 0, 0.5F, 0, 0};
    const float coordinates[] = {0.75F, 0, 0.75F, 0, 0.75F, 0, 0.75F, 0};
    const float generic[] = {0, 0, 0, 0.5F, 0, 0, 0, 0.5F, 0, 0, 0, 0.5F, 0, 0, 0, 0.5F};
    struct Array {
        const char* name;
        int size;
        const float* values;
    };
    const Array arrays[] = {
        {"p", 2, corners}, {"n", 3, normals}, {"c", 4, colors}, {"t", 2, coordinates}, {"g", 4, generic}};
    for (const Array& array : arrays) {
        cgGLSetParameterPointer(cgGetNamedParameter(program, array.name), array.size, GL_FLOAT, 0,
                                array.values);
        cgGLEnableClientState(cgGetNamedParameter(program, array.name));
    }
    cgGLSetParameter1f(cgGetNamedParameter(program, "x"), 0); // a current attribute
    const auto expectShown = [&](const Pixel& wanted) {
        gl().glClear(GL_COLOR_BUFFER_BIT);
        gl().glDrawArrays(GL_QUADS, 0, 4);
        const Pixel pixel = readPixel(1, 1);
        for (size_t i = 0; i < 4; ++i)
            EXPECT_NEAR(pixel[i], wanted[i], 2) << "channel " << i;
    };
    expectShown({64, 128, 191, 128});
    gl().glClientActiveTexture(GL_TEXTURE0);
    for (const Array& array : arrays)
        if (array.name[0] != 'p')
            cgGLDisableClientState(cgGetNamedParameter(program, array.name));
    cgGLSetParameter3f(cgGetNamedParameter(program, "n"), 0, 0, 1);
    cgGLSetParameter4f(cgGetNamedParameter(program, "c"), 0, 1, 0, 0);
    cgGLSetParameter2f(cgGetNamedParameter(program, "t"), 0, 0);
    cgGLSetParameter4f(cgGetNamedParameter(program, "g"), 0, 0, 0, 0);
    cgGLSetParameter1f(cgGetNamedParameter(program, "x"), 0.25F);
    expectShown({64, 255, 64, 64});
    cgGLDisableClientState(cgGetNamedParameter(program, "p"));
    cgGLSetParameterPointer(cgGetNamedParameter(program, "color"), 4, GL_FLOAT, 0, colors);
    expectError(CG_INVALID_PARAMETER_ERROR, "an output");
}

TEST_F(DriverCgGL, drawsFromArraysOfInputsWithoutAPlaceOfTheirOwn) {
    // The position is found by what is made of it, behind a copy, a function and a struct.
    const CGprogram program = use(
        "struct I { float4 idle; float4 place; uniform float4x4 m; }; struct O { float4 p : POSITION; float4 "
        "c "
        ": COLOR; }; void put(float4x4 m, float4 p, out float4 q) { q = mul(m, p); }\n"
        "O main(float4 t : TANGENT, float4 b : BINORMAL, float4 w : BLENDWEIGHT, float4 i : BLENDINDICES, "
        "float4 s : PSIZE, float4 a : ATTR3, float4 free, I in1) { O o; I in2 = in1; float4 q; put(in2.m, "
        "in2.place, q); o.p = q; o.c = float4(t.x + b.y, w.x + i.y, s.x + a.y, free.w); return o; }",
        CG_PROFILE_ARBVP1);
    const float one[] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    cgGLSetMatrixParameterfr(cgGetNamedParameter(program, "in1.m"), one);
    const float corners[] = {-1, -1, 1, -1, 1, 1, -1, 1};
    const float values[] = {0.25F, 0.5F, 0, 1, 0.25F, 0.5F, 0, 1, 0.25F, 0.5F, 0, 1, 0.25F, 0.5F, 0, 1};
    std::vector<CGparameter> arrays;
    for (const char* name : {"t", "b", "w", "i", "s", "a", "free", "in1.place"}) {
        arrays.push_back(cgGetNamedParameter(program, name));
        const bool isPlace = arrays.size() == 8;
        cgGLSetParameterPointer(arrays.back(), isPlace ? 2 : 4, GL_FLOAT, 0, isPlace ? corners : values);
        cgGLEnableClientState(arrays.back());
    }
    gl().glClear(GL_COLOR_BUFFER_BIT);
    gl().glDrawArrays(GL_QUADS, 0, 4);
    for (const CGparameter array : arrays)
        cgGLDisableClientState(array);
    gl().glClientActiveTexture(GL_TEXTURE0);
    const Pixel pixel = readPixel(1, 1);
    for (size_t i = 0; i < 4; ++i)
        EXPECT_NEAR(pixel[i], i < 3 ? 191 : 255, 2) << "channel " << i;
}

TEST_F(DriverCgGL, takesEachMemberOfAStructForWhatItIs) {
    const char* source =
        "struct input { float2 tex_coord; float4 color; float4 vertex_coord; uniform float4x4 mvp_matrix; "
        "uniform sampler2D texture; };\n"
        "struct data { float2 tex; float4 color; };\n"
        "void main_vertex(out float4 p : POSITION, input IN, out data d) { p = mul(IN.mvp_matrix, "
        "IN.vertex_coord); d = data(IN.tex_coord, IN.color); }\n"
        "float4 main_fragment(input IN, data d, uniform sampler2D s : TEXUNIT0) : COLOR { return d.color * "
        "tex2D(s, d.tex); }\n"
        // A semantic holds, and a sampler makes nothing else uniform.
        "struct lit { float2 t : TEXCOORD1; float gain[2] : TEXCOORD2; sampler2D map; };\n"
        "void lit_vertex(float4 v : POSITION, float2 t : TEXCOORD0, out float4 p : POSITION, out float2 u : "
        "TEXCOORD1, out float2 g[2] : TEXCOORD2) { p = v; u = t; g[0] = g[1] = 0.5; }\n"
        "float4 lit_fragment(lit IN) : COLOR { return tex2D(IN.map, IN.t) * IN.gain[1]; }";
    const auto bind = [&](const char* entry, CGprofile profile) {
        const CGprogram program = cgCreateProgram(fContext, CG_SOURCE, source, profile, entry, nullptr);
        EXPECT_NE(program, nullptr) << cgGetLastListing(fContext);
        cgGLLoadProgram(program);
        cgGLBindProgram(program);
        cgGLEnableProfile(profile);
        return program;
    };
    const float corners[] = {-1, -1, 0, 1, 1, -1, 0, 1, 1, 1, 0, 1, -1, 1, 0, 1};
    const float coordinates[] = {0, 0, 1, 0, 1, 1, 0, 1};
    const float colors[] = {1, 0.5F, 1, 1, 1, 0.5F, 1, 1, 1, 0.5F, 1, 1, 1, 0.5F, 1, 1};
    const float one[] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    GLuint texture = 0;
    gl().glGenTextures(1, &texture);
    gl().glBindTexture(GL_TEXTURE_2D, texture);
    gl().glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    gl().glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    const GLubyte texels[] = {255, 255, 0, 255, 0, 255, 255, 255}; // yellow, cyan
    gl().glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels);
    const auto draw = [&](CGprogram vertex,
                          std::initializer_list<std::pair<const char*, const float*>> arrays,
                          const std::array<Pixel, 2>& expected) {
        for (const auto& [name, values] : arrays) {
            const CGparameter p = cgGetNamedParameter(vertex, name);
            cgGLSetParameterPointer(p, values == coordinates ? 2 : 4, GL_FLOAT, 0, values);
            cgGLEnableClientState(p);
        }
        gl().glClear(GL_COLOR_BUFFER_BIT);
        gl().glDrawArrays(GL_QUADS, 0, 4);
        for (const auto& [name, values] : arrays)
            cgGLDisableClientState(cgGetNamedParameter(vertex, name));
        gl().glClientActiveTexture(GL_TEXTURE0);
        for (size_t i = 0; i < 8; ++i)
            EXPECT_NEAR(readPixel(i < 4 ? 0 : 3, 1)[i % 4], expected[i / 4][i % 4], 2) << "number " << i;
    };
    const CGprogram vertex = bind("main_vertex", CG_PROFILE_ARBVP1);
    bind("main_fragment", CG_PROFILE_ARBFP1);
    EXPECT_EQ(cgGetParameterVariability(cgGetNamedParameter(vertex, "IN.color")), CG_VARYING);
    EXPECT_EQ(cgGetParameterVariability(cgGetNamedParameter(vertex, "IN.mvp_matrix")), CG_UNIFORM);
    cgGLSetMatrixParameterfr(cgGetNamedParameter(vertex, "IN.mvp_matrix"), one);
    draw(vertex, {{"IN.vertex_coord", corners}, {"IN.tex_coord", coordinates}, {"IN.color", colors}},
         {Pixel{255, 128, 0, 255}, Pixel{0, 128, 255, 255}});

    const CGprogram second = bind("lit_vertex", CG_PROFILE_ARBVP1);
    const CGparameter map = cgGetNamedParameter(bind("lit_fragment", CG_PROFILE_ARBFP1), "IN.map");
    cgGLSetTextureParameter(map, texture);
    cgGLEnableTextureParameter(map);
    draw(second, {{"v", corners}, {"t", coordinates}}, {Pixel{128, 128, 0, 128}, Pixel{0, 128, 128, 128}});
    cgGLDisableTextureParameter(map);
    gl().glDeleteTextures(1, &texture);
}

TEST_F(DriverCgGL, saysWhyItCantBeLoaded) {
    const CGprogram program = cgCreateProgram(fContext, CG_SOURCE,
                                              "float4 main(uniform float4 big[60000]) : COLOR { float4 s = "
                                              "0; for (int i = 0; i < 60000; i++) s += big[i]; return s; }",
                                              CG_PROFILE_ARBFP1, "main", nullptr);
    ASSERT_NE(program, nullptr) << cgGetLastListing(fContext);
    cgGLLoadProgram(program);
    expectError(CG_PROGRAM_LOAD_ERROR, "too many uniforms");
    EXPECT_THAT(cgGetLastListing(fContext), testing::HasSubstr("OpenGL refuses"));
    cgGLEnableProfile(CG_PROFILE_UNKNOWN);
    expectError(CG_INVALID_PROFILE_ERROR, "enable");
    cgGLDisableProfile(CG_PROFILE_UNKNOWN);
    expectError(CG_INVALID_PROFILE_ERROR, "disable");
    cgGLSetOptimalOptions(CG_PROFILE_UNKNOWN);
    expectError(CG_INVALID_PROFILE_ERROR, "options");
    cgGLGetLatestProfile(CG_GL_MATRIX_IDENTITY);
    expectError(CG_INVALID_ENUMERANT_ERROR, "no stage");
}

} // namespace
