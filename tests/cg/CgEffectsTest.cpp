#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <Cg/cg.h>

#include <ctime>
#include <fstream>
#include <string>
#include <vector>

// Effects as programs walk through them.

namespace {

constexpr const char* kEffect = R"(
struct Light { float3 at; };
static const int kLights = 2;
Light sun;
Light lamps[kLights] = {{1, 2, 3}, {4, 5, 6}};
float4 tint : DIFFUSE < string UIName = "Tint"; float UIMax = 1.5; int steps = 3; bool on = true; > = {1, 0.5, 0.25, 1};
float weights[2] = {4, 5};
texture2D map < string File = "a.dds"; >;
sampler2D s = sampler_state { Texture = <map>; };
string title = "first";
string names[2] = {"a", "b"};
int which = 1;
float4 shade(uniform float gain, uniform float4 more) : COLOR { return tint * weights[1] * gain + more + tex2D(s, float2(0, 0)) + lamps[1].at.z; }
technique One < float version = 2; > {
    pass p0 < string note = "n"; > {
        FragmentProgram = compile glslf "-DX=1" shade(0.5, tint);
        BlendFunc = int2(SrcAlpha, One);
        AlphaRef = tint * 2;
        StencilRef = which + kLights * 4;
        Fog = lamps[which].at.zy;
        DepthFunc = LEqual;
        LightEnable[2] = true;
        PointSize = 1.5 * 2 + 1;
        ClearColor = {0, 0.5, -1, 1};
    }
    pass p1 { DepthFunc = Always; }
}
technique Two { }
)";

class CgEffects : public testing::Test {
protected:
    ~CgEffects() override {
        cgDestroyContext(fContext);
        EXPECT_FALSE(cgIsEffect(fEffect));
        EXPECT_EQ(cgGetError(), CG_NO_ERROR);
    }

    CGparameter parameter(const char* name) const { return cgGetNamedEffectParameter(fEffect, name); }
    static void expectError(CGerror error, const char* what = "") { EXPECT_EQ(cgGetError(), error) << what; }

    template <typename Number, typename Handle>
    static std::vector<Number> numbers(const Number* (*get)(Handle, int*), Handle handle) {
        int count = -1;
        const Number* found = get(handle, &count);
        return found ? std::vector<Number>(found, found + count) : std::vector<Number>();
    }

    CGcontext fContext = cgCreateContext();
    CGeffect fEffect = cgCreateEffect(fContext, kEffect, nullptr);
};

TEST_F(CgEffects, tellWhatTheyAreMadeOf) {
    using testing::ElementsAre;
    ASSERT_TRUE(cgIsEffect(fEffect)) << cgGetLastListing(fContext);
    const CGtechnique one = cgGetFirstTechnique(fEffect);
    EXPECT_STREQ(cgGetTechniqueName(one), "One");
    EXPECT_STREQ(cgGetTechniqueName(cgGetNextTechnique(one)), "Two");
    EXPECT_EQ(cgGetNextTechnique(cgGetNamedTechnique(fEffect, "Two")), nullptr);
    EXPECT_TRUE(cgIsTechnique(one));
    EXPECT_EQ(cgGetTechniqueEffect(one), fEffect);
    EXPECT_THAT(numbers(cgGetFloatAnnotationValues, cgGetFirstTechniqueAnnotation(one)), ElementsAre(2));
    EXPECT_NE(cgGetNamedTechniqueAnnotation(one, "version"), nullptr);

    const CGpass pass = cgGetFirstPass(one);
    EXPECT_STREQ(cgGetPassName(pass), "p0");
    EXPECT_EQ(cgGetNextPass(pass), cgGetNamedPass(one, "p1"));
    EXPECT_TRUE(cgIsPass(pass));
    EXPECT_EQ(cgGetPassTechnique(pass), one);
    EXPECT_STREQ(cgGetStringAnnotationValue(cgGetFirstPassAnnotation(pass)), "n");
    EXPECT_EQ(cgGetNamedPassAnnotation(pass, "note"), cgGetFirstPassAnnotation(pass));

    std::vector<std::string> states;
    for (CGstateassignment a = cgGetFirstStateAssignment(pass); a; a = cgGetNextStateAssignment(a))
        states.emplace_back(cgGetStateName(cgGetStateAssignmentState(a)));
    EXPECT_THAT(states, ElementsAre("FragmentProgram", "BlendFunc", "AlphaRef", "StencilRef", "Fog",
                                    "DepthFunc", "LightEnable", "PointSize", "ClearColor"));
    const auto assignment = [&](const char* name) { return cgGetNamedStateAssignment(pass, name); };
    EXPECT_TRUE(cgIsStateAssignment(assignment("DepthFunc")));
    EXPECT_EQ(cgGetStateAssignmentPass(assignment("DepthFunc")), pass);
    EXPECT_STREQ(cgGetStringStateAssignmentValue(assignment("DepthFunc")), "LEqual");
    EXPECT_EQ(cgGetStateAssignmentIndex(assignment("LightEnable")), 2);
    EXPECT_EQ(cgGetStateAssignmentIndex(assignment("PointSize")), 0);
    EXPECT_THAT(numbers(cgGetBoolStateAssignmentValues, assignment("LightEnable")), ElementsAre(1));
    EXPECT_THAT(numbers(cgGetIntStateAssignmentValues, assignment("PointSize")), ElementsAre(4));
    EXPECT_THAT(numbers(cgGetFloatStateAssignmentValues, assignment("ClearColor")),
                ElementsAre(0, 0.5F, -1, 1));
    EXPECT_THAT(numbers(cgGetFloatStateAssignmentValues, assignment("BlendFunc")), testing::IsEmpty());
    // Numbers of the effect's, as they are now.
    EXPECT_THAT(numbers(cgGetIntStateAssignmentValues, assignment("StencilRef")), ElementsAre(9));
    EXPECT_THAT(numbers(cgGetFloatStateAssignmentValues, assignment("Fog")), ElementsAre(6, 5));
    cgSetParameter1i(parameter("which"), 0);
    EXPECT_THAT(numbers(cgGetFloatStateAssignmentValues, assignment("Fog")), ElementsAre(3, 2));
    EXPECT_THAT(numbers(cgGetFloatStateAssignmentValues, assignment("AlphaRef")), testing::IsEmpty());
    // One state for all that set it.
    const CGstate depth = cgGetNamedState(fContext, "DepthFunc");
    EXPECT_TRUE(cgIsState(depth));
    EXPECT_EQ(cgGetStateContext(depth), fContext);
    EXPECT_EQ(cgGetStateAssignmentState(cgGetFirstStateAssignment(cgGetNextPass(pass))), depth);
    EXPECT_STREQ(cgGetStateName(cgGetNextState(cgGetFirstState(fContext))), "BlendFunc");

    const CGstateassignment texture = cgGetFirstSamplerStateAssignment(parameter("s"));
    EXPECT_EQ(cgGetTextureStateAssignmentValue(texture), parameter("map"));
    EXPECT_EQ(cgGetSamplerStateAssignmentParameter(texture), parameter("s"));
    EXPECT_EQ(cgGetNamedSamplerStateAssignment(parameter("s"), "Texture"), texture);
    EXPECT_STREQ(cgGetStateName(cgGetSamplerStateAssignmentState(texture)), "Texture");
    EXPECT_EQ(cgCreateSamplerState(fContext, "Texture", CG_TEXTURE),
              cgGetSamplerStateAssignmentState(texture));
    EXPECT_EQ(cgGetNamedState(fContext, "Texture"), nullptr) << "those of passes are others";
    EXPECT_EQ(cgGetFirstSamplerStateAssignment(parameter("tint")), nullptr);
    std::vector<std::string> names;
    for (CGparameter p = cgGetFirstEffectParameter(fEffect); p; p = cgGetNextParameter(p))
        names.emplace_back(cgGetParameterName(p));
    EXPECT_THAT(names, ElementsAre("sun", "lamps", "tint", "weights", "map", "s", "title", "names", "which"));
    EXPECT_EQ(cgGetParameterType(parameter("map")), CG_TEXTURE);
    EXPECT_EQ(cgGetParameterClass(parameter("title")), CG_PARAMETERCLASS_OBJECT);
    EXPECT_EQ(cgGetEffectParameterBySemantic(fEffect, "DIFFUSE"), parameter("tint"));
    EXPECT_EQ(cgGetParameterEffect(parameter("tint")), fEffect);
    EXPECT_STREQ(cgGetParameterName(cgGetArrayParameter(parameter("weights"), 1)), "weights[1]");
    EXPECT_STREQ(cgGetStringParameterValue(parameter("title")), "first");
    cgSetStringParameterValue(parameter("title"), "second");
    EXPECT_STREQ(cgGetStringParameterValue(parameter("title")), "second");
    const CGparameter name = cgGetArrayParameter(parameter("names"), 1);
    EXPECT_STREQ(cgGetStringParameterValue(name), "b");
    EXPECT_EQ(cgGetParameterType(name), CG_STRING);
    EXPECT_EQ(cgGetParameterType(parameter("names")), CG_ARRAY);
    EXPECT_EQ(cgGetParameterEffect(name), fEffect);
    EXPECT_EQ(cgGetFirstParameterAnnotation(name), nullptr);
    EXPECT_EQ(cgGetParameterClass(parameter("sun")), CG_PARAMETERCLASS_STRUCT);
    EXPECT_STREQ(cgGetParameterName(cgGetNamedSubParameter(parameter("lamps"), "[1].at")), "lamps[1].at");
    cgGetStringParameterValue(parameter("tint"));
    expectError(CG_INVALID_PARAMETER_TYPE_ERROR);
    const auto annotation = [&](const char* name) {
        return cgGetNamedParameterAnnotation(parameter("tint"), name);
    };
    EXPECT_EQ(cgGetFirstParameterAnnotation(parameter("tint")), annotation("UIName"));
    EXPECT_STREQ(cgGetAnnotationName(cgGetNextAnnotation(annotation("UIName"))), "UIMax");
    EXPECT_TRUE(cgIsAnnotation(annotation("UIMax")));
    EXPECT_EQ(cgGetAnnotationType(annotation("UIName")), CG_STRING);
    EXPECT_STREQ(cgGetStringAnnotationValue(annotation("UIName")), "Tint");
    EXPECT_THAT(numbers(cgGetIntAnnotationValues, annotation("steps")), ElementsAre(3));
    EXPECT_THAT(numbers(cgGetBoolAnnotationValues, annotation("on")), ElementsAre(1));
}

TEST_F(CgEffects, makeProgramsThatFollowTheirParameters) {
    const CGpass pass = cgGetFirstPass(cgGetFirstTechnique(fEffect));
    const CGstateassignment assignment = cgGetFirstStateAssignment(pass);
    const CGprogram program = cgGetProgramStateAssignmentValue(assignment);
    ASSERT_NE(program, nullptr) << cgGetLastListing(fContext);
    EXPECT_EQ(cgGetProgramStateAssignmentValue(assignment), program) << "made once";
    EXPECT_STREQ(cgGetProgramString(program, CG_PROGRAM_ENTRY), "shade");
    EXPECT_STREQ(cgGetProgramOptions(program)[0], "-DX=1");
    const auto value = [&](const char* name) {
        double v[4] = {};
        cgGetParameterValuedr(cgGetNamedParameter(program, name), 4, v);
        return v[1];
    };
    EXPECT_EQ(value("tint"), 0.5) << "what the effect says";
    EXPECT_EQ(value("weights"), 5);
    EXPECT_EQ(value("lamps[1].at"), 5) << "a struct's";
    cgSetParameter1f(parameter("tint"), 7);
    EXPECT_EQ(value("tint"), 7);
    EXPECT_EQ(value("more"), 7) << "an argument";
    double gain = 0;
    cgGetParameterValuedr(cgGetNamedParameter(program, "gain"), 1, &gain);
    EXPECT_EQ(gain, 0.5);
    const CGprogram other = cgCreateProgramFromEffect(fEffect, CG_PROFILE_GLSLF, "shade", nullptr);
    EXPECT_EQ(cgGetConnectedParameter(cgGetNamedParameter(other, "tint")), parameter("tint"));
    cgGetProgramStateAssignmentValue(cgGetNamedStateAssignment(pass, "DepthFunc"));
    expectError(CG_STATE_ASSIGNMENT_TYPE_MISMATCH_ERROR);
    cgDestroyParameter(parameter("tint"));
    expectError(CG_CANNOT_DESTROY_PARAMETER_ERROR);
    cgDestroyProgram(program);
    const CGprogram again = cgGetProgramStateAssignmentValue(assignment);
    EXPECT_NE(again, program) << "made once more";
    cgDestroyEffect(fEffect);
    EXPECT_FALSE(cgIsProgram(again)) << "a pass's";
    EXPECT_TRUE(cgIsProgram(other)) << "the caller's";
}

TEST_F(CgEffects, setStatesByCallbacks) {
    static std::vector<std::string> calls;
    static CGeffect doomed = nullptr;
    static const auto note = [](const char* what, CGstateassignment a) {
        int count = 0;
        const int* values = cgGetIntStateAssignmentValues(a, &count);
        calls.push_back(std::string(what) + (count == 1 ? std::to_string(values[0]) : "?"));
    };
    const CGeffect effect =
        cgCreateEffect(fContext, "technique T { pass p { A = Low | HIGH; B = 3; a = Unknown; } }", nullptr);
    const CGtechnique technique = cgGetFirstTechnique(effect);
    const CGpass pass = cgGetFirstPass(technique);
    const CGstate a = cgCreateState(fContext, "A", CG_INT);
    EXPECT_EQ(cgGetStateType(a), CG_INT);
    EXPECT_EQ(cgGetStateAssignmentState(cgGetFirstStateAssignment(pass)), a);
    EXPECT_EQ(cgCreateState(fContext, "A", CG_INT), a) << "engines make one more than once";
    EXPECT_EQ(cgCreateState(fContext, "A", CG_FLOAT), nullptr);
    expectError(CG_DUPLICATE_NAME_ERROR);
    cgAddStateEnumerant(a, "Low", 1);
    cgAddStateEnumerant(a, "High", 4);
    EXPECT_EQ(cgGetStateEnumerantValue(a, "high"), 4);
    EXPECT_EQ(cgGetStateEnumerantValue(a, "None"), -1);
    EXPECT_STREQ(cgGetStateEnumerantName(a, 1), "Low");
    const auto set = [](CGstateassignment s) -> CGbool { return note("set ", s), CG_TRUE; };
    const auto reset = [](CGstateassignment s) -> CGbool { return note("reset ", s), CG_TRUE; };
    const auto validate = [](CGstateassignment s) -> CGbool { return note("validate ", s), CG_TRUE; };
    cgSetStateCallbacks(a, set, reset, validate);
    EXPECT_TRUE(cgGetStateSetCallback(a) && cgGetStateResetCallback(a) && cgGetStateValidateCallback(a));
    EXPECT_FALSE(cgValidateTechnique(technique)) << "nobody knows B";
    EXPECT_FALSE(cgIsTechniqueValidated(technique));
    cgSetStateCallbacks(cgCreateState(fContext, "B", CG_INT), set, nullptr, validate);
    EXPECT_TRUE(cgValidateTechnique(technique));
    EXPECT_TRUE(cgIsTechniqueValidated(technique));
    calls.clear();
    cgSetPassState(pass);
    cgResetPassState(pass);
    EXPECT_THAT(calls, testing::ElementsAre("set 5", "set 3", "set ?", "reset 5", "reset ?"));
    const CGstateassignment second = cgGetNextStateAssignment(cgGetFirstStateAssignment(pass));
    EXPECT_TRUE(cgCallStateSetCallback(second) && cgCallStateValidateCallback(second));
    EXPECT_FALSE(cgCallStateResetCallback(second)) << "it has none";
    // One that ends the effect under way.
    doomed = effect;
    cgSetStateCallbacks(
        a, [](CGstateassignment) -> CGbool { return cgDestroyEffect(doomed), CG_TRUE; }, nullptr, nullptr);
    cgSetPassState(pass);
    EXPECT_FALSE(cgIsPass(pass));
    cgSetPassState(pass);
    expectError(CG_INVALID_PASS_HANDLE_ERROR);
}

std::string repeated(const std::string& part, size_t count, const std::string& end = "") {
    std::string all;
    for (size_t i = 0; i < count; ++i)
        all += part;
    return all + end;
}

/// "c1=c0+c0;" up to c60, by a pattern with '#' for the number before and '@' for the next.
std::string doubling(const std::string& pattern) {
    std::string all;
    for (int i = 0; i < 60; ++i)
        for (const char c : pattern)
            all += c == '#' ? std::to_string(i) : (c == '@' ? std::to_string(i + 1) : std::string(1, c));
    return all;
}

TEST_F(CgEffects, ofStrangersTakeLittleTimeAndMemory) {
    struct Hostile {
        std::string source;
        const char* listing; ///< null: it can be read
    };
    const Hostile all[] = {
        {"float x[2] = {" + repeated("1,", 70000, "};"), "this list has too many parts"},
        {repeated("float a[60000];", 20), "its parameters have too many parts"},
        {"struct S0 { float a; float b; };" + doubling("struct S@ { S# a; S# b; };") + "S60 x;", nullptr},
        {"static const float c0 = 1;" + doubling("static const float c@ = c# + c#;") + "float x[c60];",
         nullptr},
        {"static const float4 c0 = 1;" + doubling("static const float4 c@ = {c#, c#};"), nullptr},
        {repeated("struct S { float a[4096]; };", 2000, "S s[4096];"), nullptr},
        {"float4x4 m; float x[3] = {" + repeated("m,", 50000, "};"), nullptr},
    };
    for (const auto& [source, listing] : all) {
        const std::clock_t start = std::clock();
        const CGeffect effect = cgCreateEffect(fContext, source.c_str(), nullptr);
        EXPECT_LT((std::clock() - start) / CLOCKS_PER_SEC, 2) << source.substr(0, 40);
        EXPECT_EQ(effect == nullptr, listing != nullptr) << source.substr(0, 40);
        EXPECT_EQ(cgGetError(), listing ? CG_COMPILER_ERROR : CG_NO_ERROR);
        if (listing)
            EXPECT_THAT(cgGetLastListing(fContext), testing::HasSubstr(listing));
        else
            cgDestroyEffect(effect);
    }
}

TEST_F(CgEffects, comeFromFilesAndGo) {
    const std::string file = testing::TempDir() + "/e.cgfx";
    std::ofstream(testing::TempDir() + "/part.cgh") << "technique FromPart { }\n";
    std::ofstream(file) << "#include \"part.cgh\"\n";
    const CGeffect second = cgCreateEffectFromFile(fContext, file.c_str(), nullptr);
    EXPECT_NE(cgGetNamedTechnique(second, "FromPart"), nullptr) << cgGetLastListing(fContext);
    EXPECT_EQ(cgGetFirstEffect(fContext), fEffect);
    EXPECT_EQ(cgGetNextEffect(fEffect), second);
    EXPECT_EQ(cgGetEffectContext(second), fContext);
    EXPECT_TRUE(cgSetEffectName(second, "two"));
    EXPECT_STREQ(cgGetEffectName(second), "two");
    const CGtechnique technique = cgGetFirstTechnique(fEffect);
    const CGparameter tint = parameter("tint");
    cgDestroyEffect(fEffect);
    EXPECT_FALSE(cgIsTechnique(technique) || cgIsParameter(tint));
    EXPECT_EQ(cgGetFirstEffect(fContext), second);
    cgGetTechniqueName(technique);
    expectError(CG_INVALID_TECHNIQUE_HANDLE_ERROR);
    cgGetFirstPass(reinterpret_cast<CGtechnique>(second));
    expectError(CG_INVALID_TECHNIQUE_HANDLE_ERROR, "an effect");
    cgGetPassName(nullptr);
    expectError(CG_INVALID_PASS_HANDLE_ERROR);
    cgGetFloatStateAssignmentValues(nullptr, nullptr);
    expectError(CG_INVALID_STATE_ASSIGNMENT_HANDLE_ERROR);
    cgGetStringAnnotationValue(reinterpret_cast<CGannotation>(technique));
    expectError(CG_INVALID_ANNOTATION_HANDLE_ERROR);
    cgGetStateName(nullptr);
    expectError(CG_INVALID_STATE_HANDLE_ERROR);
    cgDestroyEffect(fEffect);
    expectError(CG_INVALID_EFFECT_HANDLE_ERROR);
    EXPECT_EQ(cgCreateEffect(fContext, "technique T { pass { A = asm { } ; } }", nullptr), nullptr);
    expectError(CG_COMPILER_ERROR);
    EXPECT_STREQ(cgGetLastListing(fContext), "effect:1:26: error: `asm` blocks are not supported\n");
    EXPECT_EQ(cgCreateEffectFromFile(fContext, "/no/such", nullptr), nullptr);
    expectError(CG_FILE_READ_ERROR);
}

} // namespace
