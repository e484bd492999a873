#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "EntryPointNames.h"

#include <Cg/cg.h>

#include <cstdio>
#include <dlfcn.h>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr const char* kProgram = R"(
struct Light { float3 color; sampler2D map; float weights[2]; };
uniform float4 tint = {1, 0.5, 0.25, 1};
uniform float unused;
uniform float2x2 turn = float2x2(1, 2, 3, 4);
void main(float2 uv : TEXCOORD2, float4 c[2] : TEXCOORD4, uniform Light lights[3], uniform sampler2D base : TEXUNIT5,
          uniform float idle, uniform half3 gain = {1, 2, 3}, out float4 color : COLOR, out float depth : DEPTH)
{
    color = tex2D(lights[1].map, uv) * tint * gain.xyzz + tex2D(base, turn[0]) * lights[0].weights[1] + c[1];
    depth = 0.5;
}
)";

int calls = 0;

/// A context with the program above in it.
class CgRuntime : public testing::Test {
protected:
    CgRuntime() : fContext(cgCreateContext()), fProgram(compiled(kProgram)) {}
    ~CgRuntime() override {
        cgSetErrorCallback(nullptr);
        if (cgIsContext(fContext))
            cgDestroyContext(fContext);
        cgGetError();
    }

    CGprogram compiled(const char* source, CGprofile profile = CG_PROFILE_ARBFP1, const char* entry = "main",
                       const char** args = nullptr) const {
        return cgCreateProgram(fContext, CG_SOURCE, source, profile, entry, args);
    }
    CGparameter parameter(const char* name) const { return cgGetNamedParameter(fProgram, name); }

    CGcontext fContext;
    CGprogram fProgram;
};

TEST_F(CgRuntime, exportsItsInterfaceAndNothingElse) {
    static_assert(std::size(kCoreNames) == 48);
    Dl_info place = {};
    ASSERT_NE(dladdr(dlsym(RTLD_DEFAULT, kCoreNames[0]), &place), 0);
    void* library = dlopen(place.dli_fname, RTLD_LAZY | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr) << dlerror();
    for (const char* name : kCoreNames)
        EXPECT_NE(dlsym(library, name), nullptr) << name;
    EXPECT_EQ(dlsym(library, "_ZN6orlocg5raiseE7CGerror"), nullptr);
    dlclose(library);
}

TEST_F(CgRuntime, ownsProgramsByContext) {
    ASSERT_TRUE(cgIsContext(fContext));
    ASSERT_TRUE(cgIsProgram(fProgram)) << cgGetLastListing(fContext);
    EXPECT_EQ(cgGetProgramContext(fProgram), fContext);
    const CGprogram second =
        compiled("void main(float4 p : POSITION, out float4 o : POSITION) { o = p; }", CG_PROFILE_ARBVP1);
    const CGprogram copy = cgCopyProgram(fProgram);
    EXPECT_EQ(cgGetFirstProgram(fContext), fProgram);
    EXPECT_EQ(cgGetNextProgram(fProgram), second);
    EXPECT_EQ(cgGetNextProgram(second), copy);
    EXPECT_EQ(cgGetNextProgram(copy), nullptr);
    EXPECT_NE(cgGetNamedParameter(copy, "tint"), parameter("tint"));
    EXPECT_EQ(cgGetProgramProfile(second), CG_PROFILE_ARBVP1);

    const CGparameter tint = parameter("tint");
    cgDestroyProgram(fProgram);
    EXPECT_FALSE(cgIsProgram(fProgram) || cgIsParameter(tint));
    EXPECT_EQ(cgGetFirstProgram(fContext), second);
    const CGcontext other = cgCreateContext();
    EXPECT_NE(other, fContext);
    cgDestroyContext(fContext);
    EXPECT_FALSE(cgIsContext(fContext) || cgIsProgram(second) || cgIsProgram(copy));
    EXPECT_EQ(cgGetFirstProgram(other), nullptr);
    EXPECT_EQ(cgGetError(), CG_NO_ERROR);
    cgDestroyContext(other);
}

TEST_F(CgRuntime, compilesFromTextAndFile) {
    EXPECT_TRUE(cgIsProgramCompiled(fProgram));
    EXPECT_STREQ(cgGetLastListing(fContext), "");
    EXPECT_STREQ(cgGetProgramString(fProgram, CG_PROGRAM_SOURCE), kProgram);
    EXPECT_STREQ(cgGetProgramString(fProgram, CG_PROGRAM_ENTRY), "main");
    EXPECT_STREQ(cgGetProgramString(fProgram, CG_PROGRAM_PROFILE), "arbfp1");
    EXPECT_THAT(cgGetProgramString(compiled(kProgram, CG_PROFILE_GLSLF), CG_COMPILED_PROGRAM),
                testing::HasSubstr("gl_FragDepth"));
    // Whoever has the text of an assembly profile hands it to an assembler.
    EXPECT_THAT(cgGetProgramString(fProgram, CG_COMPILED_PROGRAM),
                testing::StartsWith("# error: there is no assembly for arbfp1; "));
    EXPECT_EQ(cgGetError(), CG_INVALID_PROFILE_ERROR);
    EXPECT_THAT(cgGetLastListing(fContext), testing::HasSubstr("compile it for glslf"));

    EXPECT_EQ(compiled("float4 main() : COLOR {\n return x; }"), nullptr);
    EXPECT_EQ(cgGetError(), CG_COMPILER_ERROR);
    EXPECT_STREQ(cgGetLastListing(fContext), "program:2:9: error: there is no variable 'x'\n");

    const char* args[] = {"-DX=float4(0.5)", "-unknown", "-posinv", nullptr};
    EXPECT_NE(compiled("float4 main() : COLOR { return X; }", CG_PROFILE_FP40, nullptr, args), nullptr);
    EXPECT_THAT(cgGetProgramString(compiled("void v() {}", CG_PROFILE_GLSLV, "v", args), CG_COMPILED_PROGRAM),
                testing::HasSubstr("ftransform"));

    const std::string folder = testing::TempDir();
    std::ofstream(folder + "/inc.h") << "#define HALF 0.5\n";
    std::ofstream(folder + "/a.cg") << "#include \"inc.h\"\nfloat4 go() : COLOR { return HALF; }\n";
    const CGprogram fromFile = cgCreateProgramFromFile(fContext, CG_SOURCE, (folder + "/a.cg").c_str(),
                                                       CG_PROFILE_GLSLF, "go", nullptr);
    EXPECT_NE(fromFile, nullptr) << cgGetLastListing(fContext);
    for (const std::string& there :
         {"-I" + folder, "-I " + folder, std::string("-I")}) { // the last: in two words
        const char* search[] = {there.c_str(), folder.c_str(), nullptr};
        EXPECT_NE(compiled("#include <inc.h>\nfloat4 main() : COLOR { return HALF; }", CG_PROFILE_GLSLF,
                           "main", search),
                  nullptr)
            << there;
    }
    EXPECT_EQ(cgCreateProgramFromFile(fContext, CG_SOURCE, "/no/such.cg", CG_PROFILE_ARBFP1, "go", nullptr),
              nullptr);
    EXPECT_EQ(cgGetError(), CG_FILE_READ_ERROR);
    EXPECT_EQ(cgCreateProgram(fContext, CG_COMPILED_PROGRAM, "", CG_PROFILE_ARBFP1, "go", nullptr), nullptr);
    EXPECT_EQ(cgGetError(), CG_INVALID_ENUMERANT_ERROR);
    EXPECT_EQ(compiled("", static_cast<CGprofile>(1)), nullptr);
    EXPECT_EQ(cgGetError(), CG_UNKNOWN_PROFILE_ERROR);

    const CGparameter before = cgGetNamedParameter(fProgram, "tint");
    cgSetParameter1f(before, 0.5F);
    cgCompileProgram(fProgram); // once more
    EXPECT_TRUE(cgIsProgramCompiled(fProgram));
    EXPECT_EQ(cgGetNamedParameter(fProgram, "tint"), before);
    float kept[4] = {};
    EXPECT_EQ(cgGetParameterValuefr(before, 4, kept), 4);
    EXPECT_EQ(kept[3], 0.5F);
}

TEST_F(CgRuntime, walksParametersInTheirOrder) {
    const auto names = [](CGparameter first, CGparameter (*next)(CGparameter)) {
        std::vector<std::string> found;
        for (CGparameter p = first; p; p = next(p))
            found.emplace_back(cgGetParameterName(p));
        return found;
    };
    using testing::ElementsAre;
    EXPECT_THAT(names(cgGetFirstParameter(fProgram, CG_PROGRAM), cgGetNextParameter),
                ElementsAre("uv", "c", "lights", "base", "idle", "gain", "color", "depth"));
    EXPECT_THAT(names(cgGetFirstParameter(fProgram, CG_GLOBAL), cgGetNextParameter),
                ElementsAre("tint", "turn"));
    EXPECT_THAT(names(cgGetFirstStructParameter(parameter("lights[1]")), cgGetNextParameter),
                ElementsAre("lights[1].color", "lights[1].map", "lights[1].weights"));
    const std::vector<std::string> leaves =
        names(cgGetFirstLeafParameter(fProgram, CG_PROGRAM), cgGetNextLeafParameter);
    EXPECT_EQ(leaves.size(), 1 + 2 + 3 * 4 + 5U);
    EXPECT_EQ(leaves[1], "c[0]");
    EXPECT_EQ(leaves[6], "lights[0].weights[1]");
    EXPECT_EQ(leaves.back(), "depth");
    EXPECT_EQ(parameter("lights[1].nothing"), nullptr);
    EXPECT_EQ(parameter("lights[3]"), nullptr);
    EXPECT_EQ(parameter("unused"), nullptr) << "no function that is reached names it";
    EXPECT_EQ(cgGetFirstDependentParameter(parameter("lights")), parameter("lights[0]"));
    EXPECT_EQ(cgGetFirstDependentParameter(parameter("uv")), nullptr);
    EXPECT_EQ(cgGetArrayParameter(parameter("lights"), 0), parameter("lights[0]"));
    EXPECT_EQ(cgGetArrayParameter(parameter("lights"), 2), parameter("lights[2]"));
    EXPECT_EQ(cgGetArrayDimension(parameter("lights")), 1);
    EXPECT_EQ(cgGetArraySize(parameter("lights"), 0), 3);
    EXPECT_EQ(cgGetParameterProgram(parameter("lights[0].map")), fProgram);
    EXPECT_TRUE(cgIsParameter(parameter("uv")));
    EXPECT_EQ(cgGetError(), CG_NO_ERROR);

    EXPECT_EQ(cgGetArrayParameter(parameter("lights"), 3), nullptr);
    EXPECT_EQ(cgGetError(), CG_OUT_OF_ARRAY_BOUNDS_ERROR);
    EXPECT_EQ(cgGetArrayParameter(parameter("uv"), 0), nullptr);
    EXPECT_EQ(cgGetError(), CG_ARRAY_PARAM_ERROR);
    EXPECT_EQ(cgGetArraySize(parameter("lights"), 1), -1);
    EXPECT_EQ(cgGetError(), CG_INVALID_DIMENSION_ERROR);
    EXPECT_EQ(cgGetFirstStructParameter(parameter("uv")), nullptr);
    EXPECT_EQ(cgGetError(), CG_INVALID_PARAMETER_ERROR);
    EXPECT_EQ(cgGetFirstParameter(fProgram, CG_IN), nullptr);
    EXPECT_EQ(cgGetError(), CG_INVALID_ENUMERANT_ERROR);
}

TEST_F(CgRuntime, tellsWhatAParameterIs) {
    struct Told {
        const char* name;
        CGtype type;
        CGenum variability;
        CGenum direction;
        const char* semantic;
        int resource;
        int base;
        unsigned long index;
        bool isReferenced;
    };
    const Told all[] = {
        {"uv", CG_FLOAT2, CG_VARYING, CG_IN, "TEXCOORD2", CG_TEX0 + 2, CG_TEX0, 2, true},
        {"c", CG_ARRAY, CG_VARYING, CG_IN, "TEXCOORD4", CG_UNDEFINED, CG_UNDEFINED, 0, true},
        {"c[1]", CG_FLOAT4, CG_VARYING, CG_IN, "TEXCOORD4", CG_TEX0 + 5, CG_TEX0, 5, true},
        {"lights[0]", CG_STRUCT, CG_UNIFORM, CG_IN, "", CG_UNDEFINED, CG_UNDEFINED, 0, true},
        {"lights[0].color", CG_FLOAT3, CG_UNIFORM, CG_IN, "", CG_C, CG_C, 0, true},
        {"lights[1].weights[1]", CG_FLOAT, CG_UNIFORM, CG_IN, "", CG_C, CG_C, 5, true},
        {"base", CG_SAMPLER2D, CG_UNIFORM, CG_IN, "TEXUNIT5", CG_TEXUNIT0 + 5, CG_TEXUNIT0, 5, true},
        {"lights[0].map", CG_SAMPLER2D, CG_UNIFORM, CG_IN, "", CG_TEXUNIT0, CG_TEXUNIT0, 0, true},
        {"lights[2].map", CG_SAMPLER2D, CG_UNIFORM, CG_IN, "", CG_TEXUNIT0 + 2, CG_TEXUNIT0, 2, true},
        {"idle", CG_FLOAT, CG_UNIFORM, CG_IN, "", CG_C, CG_C, 9, false}, // takes no register
        {"gain", CG_HALF3, CG_UNIFORM, CG_IN, "", CG_C, CG_C, 9, true},
        {"tint", CG_FLOAT4, CG_UNIFORM, CG_IN, "", CG_C, CG_C, 10, true},
        {"turn", CG_FLOAT2x2, CG_UNIFORM, CG_IN, "", CG_C, CG_C, 11, true},
        {"color", CG_FLOAT4, CG_VARYING, CG_OUT, "COLOR", CG_COL0, CG_COL0, 0, true},
        {"depth", CG_FLOAT, CG_VARYING, CG_OUT, "DEPTH", CG_DEPTH0, CG_DEPTH0, 0, true},
    };
    for (const Told& told : all) {
        const CGparameter p = parameter(told.name);
        EXPECT_EQ(cgGetParameterType(p), told.type) << told.name;
        EXPECT_EQ(cgGetParameterVariability(p), told.variability) << told.name;
        EXPECT_EQ(cgGetParameterDirection(p), told.direction) << told.name;
        EXPECT_STREQ(cgGetParameterSemantic(p), told.semantic) << told.name;
        EXPECT_EQ(static_cast<int>(cgGetParameterResource(p)), told.resource) << told.name;
        EXPECT_EQ(static_cast<int>(cgGetParameterBaseResource(p)), told.base) << told.name;
        EXPECT_EQ(cgGetParameterResourceIndex(p), told.index) << told.name;
        EXPECT_EQ(cgIsParameterReferenced(p) != 0, told.isReferenced) << told.name;
    }
    const auto values = [&](const char* name) {
        int count = -1;
        const double* found = cgGetParameterValues(parameter(name), CG_DEFAULT, &count);
        return found ? std::vector<double>(found, found + count) : std::vector<double>();
    };
    EXPECT_THAT(values("tint"), testing::ElementsAre(1, 0.5, 0.25, 1));
    EXPECT_THAT(values("turn"), testing::ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(values("gain"), testing::ElementsAre(1, 2, 3));
    EXPECT_THAT(values("idle"), testing::IsEmpty());
}

TEST_F(CgRuntime, namesThirtyTwoTextureUnits) {
    const CGprogram program = compiled("float4 main(float2 t : TEXCOORD0, uniform sampler2D s[33]) : COLOR "
                                       "{ return tex2D(s[0], t) + tex2D(s[16], t); }");
    const auto sampler = [&](const char* name) { return cgGetNamedParameter(program, name); };
    EXPECT_EQ(cgGetParameterResource(sampler("s[15]")), CG_TEXUNIT15);
    EXPECT_EQ(cgGetParameterResource(sampler("s[31]")), CG_TEXUNIT31);
    EXPECT_EQ(cgGetParameterBaseResource(sampler("s[31]")), CG_TEXUNIT0);
    EXPECT_EQ(cgGetParameterResource(sampler("s[32]")), CG_UNDEFINED);
    EXPECT_EQ(cgGetParameterResourceIndex(sampler("s[32]")), 32U);
}

TEST_F(CgRuntime, raisesErrorsForWhatIsNotThere) {
    cgSetErrorCallback([] { ++calls; });
    EXPECT_NE(cgGetErrorCallback(), nullptr);
    calls = 0;
    const auto stale = reinterpret_cast<CGparameter>(cgCreateContext()); // a handle of another kind
    EXPECT_EQ(cgGetParameterName(stale), nullptr);
    EXPECT_EQ(cgGetNextProgram(reinterpret_cast<CGprogram>(0x12345678)), nullptr);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(cgGetError(), CG_INVALID_PARAM_HANDLE_ERROR) << "the first";
    EXPECT_EQ(cgGetError(), CG_NO_ERROR);
    cgDestroyProgram(nullptr);
    EXPECT_EQ(cgGetError(), CG_INVALID_PROGRAM_HANDLE_ERROR);
    cgDestroyContext(nullptr);
    EXPECT_EQ(cgGetError(), CG_INVALID_CONTEXT_HANDLE_ERROR);

    static CGcontext told = nullptr;
    static CGerror seen = CG_NO_ERROR;
    cgSetErrorHandler(
        [](CGcontext context, CGerror error, void* data) {
            told = context;
            seen = error;
            ++*static_cast<int*>(data);
        },
        &calls);
    void* data = nullptr;
    EXPECT_NE(cgGetErrorHandler(&data), nullptr);
    EXPECT_EQ(data, &calls);
    calls = 0;
    cgGetFirstParameter(fProgram, CG_IN);
    EXPECT_EQ(calls, 2) << "the callback and the handler";
    EXPECT_EQ(told, fContext);
    EXPECT_EQ(seen, CG_INVALID_ENUMERANT_ERROR);
    cgSetErrorHandler(nullptr, nullptr);
    CGerror last = CG_NO_ERROR;
    EXPECT_STREQ(cgGetLastErrorString(&last), cgGetErrorString(CG_INVALID_ENUMERANT_ERROR));
    EXPECT_EQ(last, CG_INVALID_ENUMERANT_ERROR);
    EXPECT_EQ(cgGetLastErrorString(nullptr), nullptr);
    cgSetLastListing(fContext, "mine");
    EXPECT_STREQ(cgGetLastListing(fContext), "mine");
    cgDestroyContext(reinterpret_cast<CGcontext>(stale));
}

} // namespace
