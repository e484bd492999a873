#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <Cg/cg.h>

#include <array>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

// What can be asked of parameters and programs without OpenGL, and what can be made of them.

namespace {

constexpr const char* kSource = R"(
struct Light { float3 color; float weights[2]; };
uniform float4 tint = {1, 0.5, 0.25, 1};
uniform float2x3 turn = float2x3(1, 2, 3, 4, 5, 6);
uniform float4 rows[2][3];
float4 main(float2 uv : TEXCOORD2, uniform Light lights[2], uniform sampler2D base : TEXUNIT5, uniform int n = 3,
            uniform float idle) : COLOR
{
    return tex2D(base, uv) * tint * lights[1].weights[0] * turn[0][n] + rows[1][2] + lights[0].color.xyzz;
}
)";

class CgParameters : public testing::Test {
protected:
    ~CgParameters() override {
        cgDestroyContext(fContext);
        EXPECT_EQ(cgGetError(), CG_NO_ERROR);
    }

    CGprogram compiled(const char* source, CGprofile profile = CG_PROFILE_GLSLF,
                       CGenum type = CG_SOURCE) const {
        return cgCreateProgram(fContext, type, source, profile, "main", nullptr);
    }
    CGparameter parameter(const char* name) const { return cgGetNamedParameter(fProgram, name); }

    static void expectError(CGerror error, const char* what = "") { EXPECT_EQ(cgGetError(), error) << what; }

    /// All current numbers of a parameter.
    static std::vector<double> valuesOf(CGparameter p, CGenum kind = CG_CURRENT) {
        int count = 0;
        const double* found = cgGetParameterValues(p, kind, &count);
        return found ? std::vector<double>(found, found + count) : std::vector<double>();
    }

    CGcontext fContext = cgCreateContext();
    CGprogram fProgram = compiled(kSource);
};

using testing::ElementsAre;

TEST_F(CgParameters, tellWhatTheyAre) {
    struct Told {
        const char* name;
        CGtype baseType;
        CGtype namedType;
        CGparameterclass parameterClass;
        int rows;
        int columns;
        int totalSize;
        const char* resource;
        int index;
        int place;
        bool isGlobal;
        bool isUsed;
    };
    const Told all[] = {
        {"tint", CG_FLOAT, CG_FLOAT4, CG_PARAMETERCLASS_VECTOR, 1, 4, 0, "tint", -1, 0, true, true},
        {"turn", CG_FLOAT, CG_FLOAT2x3, CG_PARAMETERCLASS_MATRIX, 2, 3, 0, "turn", -1, 1, true, true},
        {"rows", CG_FLOAT, CG_ARRAY, CG_PARAMETERCLASS_ARRAY, 1, 4, 6, "", -1, 2, true, true},
        {"rows[1]", CG_FLOAT, CG_ARRAY, CG_PARAMETERCLASS_ARRAY, 1, 4, 3, "", 1, 1, true, true},
        {"rows[1][2]", CG_FLOAT, CG_FLOAT4, CG_PARAMETERCLASS_VECTOR, 1, 4, 0, "rows[5]", 2, 2, true, true},
        {"uv", CG_FLOAT, CG_FLOAT2, CG_PARAMETERCLASS_VECTOR, 1, 2, 0, "TEX2", -1, 0, false, true},
        {"lights[0]", CG_STRUCT, CG_STRUCT, CG_PARAMETERCLASS_STRUCT, 0, 0, 0, "", 0, 0, false, true},
        {"base", CG_SAMPLER2D, CG_SAMPLER2D, CG_PARAMETERCLASS_SAMPLER, 0, 0, 0, "base", -1, 2, false, true},
        {"n", CG_INT, CG_INT, CG_PARAMETERCLASS_SCALAR, 1, 1, 0, "n", -1, 3, false, true},
        {"idle", CG_FLOAT, CG_FLOAT, CG_PARAMETERCLASS_SCALAR, 1, 1, 0, "idle", -1, 4, false, false},
    };
    for (const Told& told : all) {
        const CGparameter p = parameter(told.name);
        EXPECT_EQ(cgGetParameterBaseType(p), told.baseType) << told.name;
        EXPECT_EQ(cgGetParameterNamedType(p), told.namedType) << told.name;
        EXPECT_EQ(cgGetParameterClass(p), told.parameterClass) << told.name;
        EXPECT_EQ(cgGetParameterRows(p), told.rows) << told.name;
        EXPECT_EQ(cgGetParameterColumns(p), told.columns) << told.name;
        EXPECT_EQ(cgGetArrayTotalSize(p), told.totalSize) << told.name;
        EXPECT_STREQ(cgGetParameterResourceName(p), told.resource) << told.name;
        EXPECT_EQ(cgGetParameterIndex(p), told.index) << told.name;
        EXPECT_EQ(cgGetParameterOrdinalNumber(p), told.place) << told.name;
        EXPECT_EQ(cgIsParameterGlobal(p) != 0, told.isGlobal) << told.name;
        EXPECT_EQ(cgIsParameterUsed(p, fProgram) != 0, told.isUsed) << told.name;
        EXPECT_EQ(cgGetParameterContext(p), fContext) << told.name;
    }
    EXPECT_EQ(cgGetArrayType(parameter("rows")), CG_FLOAT4);
    EXPECT_EQ(cgGetMatrixParameterOrder(parameter("turn")), CG_ROW_MAJOR);
    EXPECT_EQ(cgGetNamedProgramParameter(fProgram, CG_GLOBAL, "tint"), parameter("tint"));
    EXPECT_EQ(cgGetNamedProgramParameter(fProgram, CG_PROGRAM, "tint"), nullptr);
    EXPECT_EQ(cgGetNamedStructParameter(parameter("lights[1]"), "color"), parameter("lights[1].color"));
    EXPECT_EQ(cgGetNamedSubParameter(parameter("lights"), "[1].weights[0]"),
              parameter("lights[1].weights[0]"));
    cgGetNamedStructParameter(parameter("tint"), "x");
    expectError(CG_INVALID_PARAMETER_ERROR, "no struct");
    cgGetArrayType(parameter("tint"));
    expectError(CG_ARRAY_PARAM_ERROR, "no array");
    cgGetMatrixParameterOrder(parameter("tint"));
    expectError(CG_NOT_MATRIX_PARAM_ERROR);
    EXPECT_EQ(cgGetProgramInput(fProgram), CG_FRAGMENT);
    EXPECT_EQ(cgGetProgramOutput(compiled(
                  "void main(float4 p : POSITION, out float4 o : POSITION) { o = p; }", CG_PROFILE_GLSLV)),
              CG_VERTEX);
}

TEST_F(CgParameters, takeNumbersOfEveryKind) {
    const CGparameter tint = parameter("tint");
    const float f[] = {0.5F, 0.25F, 2, 3};
    const double d[] = {4, 5, 6, 7};
    const int i[] = {8, 9, 10, 11};
    const std::pair<std::function<void()>, std::vector<double>> setters[] = {
        {[&] { cgSetParameter1f(tint, 1); }, {1, 1, 1, 1}},
        {[&] { cgSetParameter2f(tint, 1, 2); }, {1, 2, 2, 2}},
        {[&] { cgSetParameter3f(tint, 1, 2, 3); }, {1, 2, 3, 3}},
        {[&] { cgSetParameter4f(tint, 1, 2, 3, 4); }, {1, 2, 3, 4}},
        {[&] { cgSetParameter1d(tint, 5); }, {5, 5, 5, 5}},
        {[&] { cgSetParameter2d(tint, 5, 6); }, {5, 6, 6, 6}},
        {[&] { cgSetParameter3d(tint, 5, 6, 7); }, {5, 6, 7, 7}},
        {[&] { cgSetParameter4d(tint, 5, 6, 7, 8); }, {5, 6, 7, 8}},
        {[&] { cgSetParameter1i(tint, -1); }, {-1, -1, -1, -1}},
        {[&] { cgSetParameter2i(tint, -1, 2); }, {-1, 2, 2, 2}},
        {[&] { cgSetParameter3i(tint, -1, 2, 3); }, {-1, 2, 3, 3}},
        {[&] { cgSetParameter4i(tint, -1, 2, 3, 4); }, {-1, 2, 3, 4}},
        {[&] { cgSetParameter1fv(tint, f); }, {0.5, 0.5, 0.5, 0.5}},
        {[&] { cgSetParameter2fv(tint, f); }, {0.5, 0.25, 0.25, 0.25}},
        {[&] { cgSetParameter3fv(tint, f); }, {0.5, 0.25, 2, 2}},
        {[&] { cgSetParameter4fv(tint, f); }, {0.5, 0.25, 2, 3}},
        {[&] { cgSetParameter1dv(tint, d); }, {4, 4, 4, 4}},
        {[&] { cgSetParameter2dv(tint, d); }, {4, 5, 5, 5}},
        {[&] { cgSetParameter3dv(tint, d); }, {4, 5, 6, 6}},
        {[&] { cgSetParameter4dv(tint, d); }, {4, 5, 6, 7}},
        {[&] { cgSetParameter1iv(tint, i); }, {8, 8, 8, 8}},
        {[&] { cgSetParameter2iv(tint, i); }, {8, 9, 9, 9}},
        {[&] { cgSetParameter3iv(tint, i); }, {8, 9, 10, 10}},
        {[&] { cgSetParameter4iv(tint, i); }, {8, 9, 10, 11}},
    };
    for (size_t n = 0; n < std::size(setters); ++n) {
        setters[n].first();
        EXPECT_EQ(valuesOf(tint), setters[n].second) << n;
    }
    cgSetParameter1f(parameter("turn"), 1);
    expectError(CG_INVALID_VALUE_TYPE_ERROR, "a matrix");
    cgSetParameter4fv(tint, nullptr);
    expectError(CG_INVALID_POINTER_ERROR);
}

template <typename Number>
void expectOrders(CGparameter matrix, void (*setRows)(CGparameter, const Number*),
                  void (*setColumns)(CGparameter, const Number*), void (*getRows)(CGparameter, Number*),
                  void (*getColumns)(CGparameter, Number*)) {
    const Number rows[] = {1, 2, 3, 4, 5, 6};
    const Number columns[] = {1, 4, 2, 5, 3, 6};
    Number got[6] = {};
    for (const bool byRows : {true, false}) {
        cgSetParameterValueic(matrix, 6, std::array<int, 6>{}.data());
        byRows ? setRows(matrix, rows) : setColumns(matrix, columns);
        getRows(matrix, got);
        EXPECT_THAT(got, testing::ElementsAreArray(rows)) << byRows;
        getColumns(matrix, got);
        EXPECT_THAT(got, testing::ElementsAreArray(columns)) << byRows;
    }
}

template <typename Number>
void expectAll(CGparameter matrix, void (*setRows)(CGparameter, int, const Number*),
               void (*setColumns)(CGparameter, int, const Number*), int (*getRows)(CGparameter, int, Number*),
               int (*getColumns)(CGparameter, int, Number*), int (*getInitialRows)(CGparameter, int, Number*),
               int (*getInitialColumns)(CGparameter, int, Number*)) {
    const Number rows[] = {6, 5, 4, 3, 2, 1};
    const Number columns[] = {6, 3, 5, 2, 4, 1};
    Number got[7] = {};
    for (const bool byRows : {true, false}) {
        cgSetParameterValueic(matrix, 6, std::array<int, 6>{}.data());
        byRows ? setRows(matrix, 6, rows) : setColumns(matrix, 6, columns);
        EXPECT_EQ(getRows(matrix, 7, got), 6);
        EXPECT_TRUE(std::equal(rows, rows + 6, got)) << byRows;
        EXPECT_EQ(getColumns(matrix, 6, got), 6);
        EXPECT_TRUE(std::equal(columns, columns + 6, got)) << byRows;
    }
    EXPECT_EQ(getInitialRows(matrix, 6, got), 6);
    EXPECT_EQ(got[1], 2);
    EXPECT_EQ(getInitialColumns(matrix, 6, got), 6);
    EXPECT_EQ(got[1], 4);
}

TEST_F(CgParameters, takeMatricesAndAllNumbersInBothOrders) {
    const CGparameter turn = parameter("turn");
    expectOrders<float>(turn, cgSetMatrixParameterfr, cgSetMatrixParameterfc, cgGetMatrixParameterfr,
                        cgGetMatrixParameterfc);
    expectOrders<double>(turn, cgSetMatrixParameterdr, cgSetMatrixParameterdc, cgGetMatrixParameterdr,
                         cgGetMatrixParameterdc);
    expectOrders<int>(turn, cgSetMatrixParameterir, cgSetMatrixParameteric, cgGetMatrixParameterir,
                      cgGetMatrixParameteric);
    expectAll<float>(turn, cgSetParameterValuefr, cgSetParameterValuefc, cgGetParameterValuefr,
                     cgGetParameterValuefc, cgGetParameterDefaultValuefr, cgGetParameterDefaultValuefc);
    expectAll<double>(turn, cgSetParameterValuedr, cgSetParameterValuedc, cgGetParameterValuedr,
                      cgGetParameterValuedc, cgGetParameterDefaultValuedr, cgGetParameterDefaultValuedc);
    expectAll<int>(turn, cgSetParameterValueir, cgSetParameterValueic, cgGetParameterValueir,
                   cgGetParameterValueic, cgGetParameterDefaultValueir, cgGetParameterDefaultValueic);

    // Arrays and structs: their parts one behind the other.
    float many[24];
    for (int i = 0; i < 24; ++i)
        many[i] = static_cast<float>(i);
    cgSetParameterValuefr(parameter("rows"), 24, many);
    EXPECT_THAT(valuesOf(parameter("rows[1][2]")), ElementsAre(20, 21, 22, 23));
    cgSetParameterValuefr(parameter("lights[1]"), 5, many);
    EXPECT_THAT(valuesOf(parameter("lights[1].weights")), ElementsAre(3, 4));
    EXPECT_THAT(valuesOf(parameter("lights")), ElementsAre(0, 0, 0, 0, 0, 0, 1, 2, 3, 4));
    cgSetParameter1d(parameter("n"), 1e30);
    int whole = 0;
    EXPECT_EQ(cgGetParameterValueir(parameter("n"), 1, &whole), 1);
    EXPECT_EQ(whole, 2147483647);
    EXPECT_EQ(cgGetParameterDefaultValuefr(parameter("idle"), 1, many), 0) << "it has none";

    cgSetParameterValuefr(parameter("rows"), 23, many);
    expectError(CG_NOT_ENOUGH_DATA_ERROR);
    EXPECT_EQ(cgGetParameterValuefr(parameter("base"), 9, many), 0);
    expectError(CG_NON_NUMERIC_PARAMETER_ERROR);
    cgGetMatrixParameterfr(parameter("n"), many);
    expectError(CG_NOT_MATRIX_PARAM_ERROR);
    EXPECT_THAT(valuesOf(turn, CG_CONSTANT), testing::IsEmpty());
    EXPECT_THAT(valuesOf(turn, CG_DEFAULT), ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST_F(CgParameters, ofAContextFeedThoseOfPrograms) {
    const CGparameter own = cgCreateParameter(fContext, CG_FLOAT4);
    const CGparameter far = cgCreateParameter(fContext, CG_FLOAT4);
    EXPECT_EQ(cgGetParameterType(own), CG_FLOAT4);
    EXPECT_EQ(cgGetParameterProgram(own), nullptr);
    EXPECT_EQ(cgGetNextParameter(own), nullptr);
    EXPECT_FALSE(cgIsParameterUsed(own, fProgram));
    cgSetParameterSemantic(own, "DIFFUSE");
    EXPECT_STREQ(cgGetParameterSemantic(own), "DIFFUSE");
    cgSetParameter4f(far, 4, 3, 2, 1);
    cgConnectParameter(far, own);
    cgConnectParameter(own, parameter("tint"));
    EXPECT_THAT(valuesOf(parameter("tint")), ElementsAre(4, 3, 2, 1)) << "at once";
    EXPECT_TRUE(cgIsParameterUsed(far, fProgram));
    cgSetParameter1f(far, 7);
    EXPECT_THAT(valuesOf(parameter("tint")), ElementsAre(7, 7, 7, 7));
    EXPECT_EQ(cgGetConnectedParameter(parameter("tint")), own);
    EXPECT_EQ(cgGetNumConnectedToParameters(own), 1);
    EXPECT_EQ(cgGetConnectedToParameter(own, 0), parameter("tint"));
    cgGetConnectedToParameter(own, 1);
    expectError(CG_OUT_OF_ARRAY_BOUNDS_ERROR);
    cgConnectParameter(parameter("tint"), far);
    expectError(CG_BIND_CREATES_CYCLE_ERROR);
    cgConnectParameter(own, own);
    expectError(CG_BIND_CREATES_CYCLE_ERROR);

    cgCompileProgram(fProgram);
    cgSetParameter1f(own, 8);
    EXPECT_THAT(valuesOf(parameter("tint")), ElementsAre(8, 8, 8, 8)) << "connections outlast compiling";
    cgDisconnectParameter(parameter("tint"));
    cgSetParameter1f(own, 9);
    EXPECT_THAT(valuesOf(parameter("tint")), ElementsAre(8, 8, 8, 8));

    // Arrays as a whole and by their parts.
    const CGparameter weights = cgCreateParameterArray(fContext, CG_FLOAT, 2);
    const int lengths[] = {2, 3};
    const CGparameter rows = cgCreateParameterMultiDimArray(fContext, CG_FLOAT4, 2, lengths);
    cgConnectParameter(weights, parameter("lights[1].weights"));
    cgConnectParameter(rows, parameter("rows"));
    cgSetParameter1f(cgGetArrayParameter(weights, 1), 5);
    cgSetParameter1f(cgGetNamedSubParameter(rows, "[1][2]"), 6);
    EXPECT_THAT(valuesOf(parameter("lights[1].weights")), ElementsAre(0, 5));
    EXPECT_THAT(valuesOf(parameter("rows[1][2]")), ElementsAre(6, 6, 6, 6));
    cgDestroyParameter(weights);
    EXPECT_FALSE(cgIsParameter(weights));
    EXPECT_EQ(cgGetConnectedParameter(parameter("lights[1].weights")), nullptr);

    cgConnectParameter(own, parameter("turn"));
    expectError(CG_PARAMETERS_DO_NOT_MATCH_ERROR);
    cgConnectParameter(cgCreateParameter(fContext, CG_FLOAT2), parameter("uv"));
    expectError(CG_CANNOT_SET_NON_UNIFORM_PARAMETER_ERROR);
    cgDestroyParameter(parameter("tint"));
    expectError(CG_CANNOT_DESTROY_PARAMETER_ERROR);
    cgDestroyParameter(cgGetArrayParameter(rows, 0));
    expectError(CG_NOT_ROOT_PARAMETER_ERROR);
    cgSetParameterSemantic(parameter("tint"), "X");
    expectError(CG_PARAMETER_IS_NOT_SHARED_ERROR);
    EXPECT_EQ(cgCreateParameter(fContext, CG_STRUCT), nullptr);
    expectError(CG_INVALID_PARAMETER_TYPE_ERROR);
    EXPECT_EQ(cgCreateParameterArray(fContext, CG_FLOAT4, 1 << 30), nullptr);
    expectError(CG_INVALID_SIZE_ERROR);
    EXPECT_EQ(cgCreateParameterMultiDimArray(fContext, CG_FLOAT4, 0, lengths), nullptr);
    expectError(CG_INVALID_DIMENSION_ERROR);
}

TEST_F(CgParameters, becomeConstantsOfTheProgram) {
    const auto text = [&] { return std::string(cgGetProgramString(fProgram, CG_COMPILED_PROGRAM)); };
    cgSetParameterVariability(parameter("tint"), CG_LITERAL);
    EXPECT_EQ(cgGetParameterVariability(parameter("tint")), CG_LITERAL);
    EXPECT_THAT(text(), testing::HasSubstr("const vec4 tint = vec4(1,0.5,0.25,1);"));
    EXPECT_THAT(valuesOf(parameter("tint"), CG_CONSTANT), ElementsAre(1, 0.5, 0.25, 1));
    cgSetParameter1f(parameter("tint"), 2);
    EXPECT_TRUE(cgIsProgramCompiled(fProgram)) << "at once";
    EXPECT_THAT(text(), testing::HasSubstr("vec4(2,2,2,2);"));

    EXPECT_EQ(cgGetAutoCompile(fContext), CG_COMPILE_IMMEDIATE);
    cgSetAutoCompile(fContext, CG_COMPILE_MANUAL);
    cgSetParameterVariability(parameter("rows"), CG_LITERAL);
    EXPECT_FALSE(cgIsProgramCompiled(fProgram));
    EXPECT_STREQ(cgGetProgramString(fProgram, CG_COMPILED_PROGRAM), "");
    expectError(CG_COMPILER_ERROR, "it waits for being compiled");
    cgCompileProgram(fProgram);
    EXPECT_THAT(text(), testing::HasSubstr("const vec4 rows[6] = vec4[6](vec4(0,0,0,0), vec4"));
    cgSetAutoCompile(fContext, CG_COMPILE_LAZY);
    cgSetParameterVariability(parameter("tint"), CG_UNIFORM);
    EXPECT_FALSE(cgIsProgramCompiled(fProgram));
    EXPECT_THAT(text(), testing::HasSubstr("uniform vec4 tint;"));
    EXPECT_TRUE(cgIsProgramCompiled(fProgram)) << "by being needed";

    for (const char* name : {"uv", "lights", "base"}) {
        cgSetParameterVariability(parameter(name), CG_LITERAL);
        expectError(CG_INVALID_PARAMETER_VARIABILITY_ERROR, name);
    }
    cgSetParameterVariability(parameter("rows[0]"), CG_LITERAL);
    expectError(CG_NOT_ROOT_PARAMETER_ERROR);
    cgSetParameterVariability(cgCreateParameter(fContext, CG_FLOAT), CG_LITERAL);
    expectError(CG_IS_NOT_PROGRAM_PARAMETER_ERROR);
    cgSetParameterVariability(parameter("tint"), CG_VARYING);
    expectError(CG_INVALID_ENUMERANT_ERROR);
    cgSetAutoCompile(fContext, CG_IN);
    expectError(CG_INVALID_ENUMERANT_ERROR);

    cgSetAutoCompile(fContext, CG_COMPILE_IMMEDIATE);
    cgSetProgramProfile(fProgram, CG_PROFILE_FP40);
    EXPECT_STREQ(cgGetProgramString(fProgram, CG_PROGRAM_PROFILE), "fp40");
    cgSetProgramProfile(fProgram, CG_PROFILE_PS_2_0);
    expectError(CG_UNKNOWN_PROFILE_ERROR);
}

TEST_F(CgParameters, comeBackFromACompiledText) {
    const std::string text = cgGetProgramString(fProgram, CG_COMPILED_PROGRAM);
    EXPECT_THAT(text,
                testing::StartsWith("//profile glslf\n//program main\n//var float2 uv : $vin.TEXCOORD2 : "));
    EXPECT_THAT(text, testing::HasSubstr(
                          "\n//default n = 3\n//default tint = 1 0.5 0.25 1\n//default turn = 1 2 3 4 5 6\n"
                          "#version 130\n"));
    const CGprogram back = compiled(text.c_str(), CG_PROFILE_GLSLF, CG_OBJECT);
    ASSERT_NE(back, nullptr) << cgGetLastListing(fContext);
    EXPECT_EQ(cgGetProgramString(back, CG_COMPILED_PROGRAM), text) << "the same once more";
    for (const char* name : {"uv", "lights[1].weights[1]", "base", "tint", "turn", "rows[1][2]"}) {
        const CGparameter p = cgGetNamedParameter(back, name);
        EXPECT_EQ(cgGetParameterType(p), cgGetParameterType(parameter(name))) << name;
        EXPECT_EQ(cgGetParameterResource(p), cgGetParameterResource(parameter(name))) << name;
        EXPECT_EQ(cgGetParameterVariability(p), cgGetParameterVariability(parameter(name))) << name;
        EXPECT_EQ(valuesOf(p), valuesOf(parameter(name))) << name;
    }
    const char* vertices =
        "void main(float4 p : ATTR6, inout float4 c : COLOR, out float4 o : POSITION) { o = p; }";
    const std::string vertexText =
        cgGetProgramString(compiled(vertices, CG_PROFILE_GLSLV), CG_COMPILED_PROGRAM);
    const CGprogram vertex = compiled(vertexText.c_str(), CG_PROFILE_GLSLV, CG_OBJECT);
    EXPECT_EQ(cgGetProgramString(vertex, CG_COMPILED_PROGRAM), vertexText);
    EXPECT_EQ(cgGetParameterDirection(cgGetNamedParameter(vertex, "c")), CG_INOUT);
    const std::string copy = testing::TempDir() + "/compiled.glsl";
    std::ofstream(copy) << text;
    EXPECT_NE(cgCreateProgramFromFile(fContext, CG_OBJECT, copy.c_str(), CG_PROFILE_GLSLF, "main", nullptr),
              nullptr);

    // Whatever else says that it is one is told from it.
    const std::string head = "//profile glslf\n";
    std::string deep = "//var float a";
    for (int i = 0; i < 100000; ++i)
        deep += ".a";
    for (const std::string& bad :
         {std::string("!!ARBfp1.0"), std::string("#version 130\n"), head, head + "//var \n#version 130\n",
          head + "//var float x :  : x : one : 1\n#version 130\n",
          head + "//var void x :  : x : 0 : 1\n#version",
          head + "//var float[99999999] x :  : x : 0 : 1\n#version",
          head + "//var float[-1] x :  : x : 0 : 1\n#version",
          head + "//var float ] :  : x : 0 : 1\n#version", head + "//var float [2] :  : x : 0 : 1\n#version",
          head + "//var float a[1].x :  : x : 0 : 1\n#version",
          head + "//var float a..x :  : x : 0 : 1\n#version",
          head + "//var float a.x :  : x : 0 : 1\n//var float a :  : x : 0 : 1\n#version",
          head + "//default x = 1\n#version",
          head + "//var float x :  : x : 0 : 1\n//default x = 1 2\n#version",
          head + deep + " :  : x : 0 : 1\n#version", text.substr(0, text.size() / 2).substr(0, 300)}) {
        EXPECT_EQ(compiled(bad.c_str(), CG_PROFILE_GLSLF, CG_OBJECT), nullptr) << bad.substr(0, 80);
        expectError(CG_COMPILER_ERROR, "no such text");
        EXPECT_THAT(cgGetLastListing(fContext), testing::HasSubstr("no text of a compiled program"));
    }
    EXPECT_EQ(compiled(text.c_str(), CG_PROFILE_GLSLV, CG_OBJECT), nullptr);
    expectError(CG_COMPILER_ERROR, "of another stage");
}

TEST_F(CgParameters, ofStagesThatAreCombined) {
    const CGprogram vertex =
        compiled("uniform float common = 2; void main(float4 p : POSITION, uniform float v, "
                 "out float4 o : POSITION) { o = p * v * common; }",
                 CG_PROFILE_GLSLV);
    const CGprogram both = cgCombinePrograms2(vertex, fProgram);
    ASSERT_NE(both, nullptr);
    EXPECT_TRUE(cgIsProgram(both) && cgIsProgramCompiled(both));
    EXPECT_EQ(cgGetNumProgramDomains(both), 2);
    EXPECT_EQ(cgGetNumProgramDomains(vertex), 1);
    EXPECT_EQ(cgGetProgramDomainProfile(both, 0), CG_PROFILE_GLSLV);
    EXPECT_EQ(cgGetProgramDomainProfile(both, 1), CG_PROFILE_GLSLF);
    const CGprogram inner = cgGetProgramDomainProgram(both, 1);
    EXPECT_NE(inner, fProgram) << "a copy";
    EXPECT_EQ(cgGetParameterProgram(cgGetNamedParameter(both, "base")), inner);
    std::vector<std::string> names;
    for (const CGenum nameSpace : {CG_PROGRAM, CG_GLOBAL})
        for (CGparameter p = cgGetFirstParameter(both, nameSpace); p; p = cgGetNextParameter(p))
            names.emplace_back(cgGetParameterName(p));
    EXPECT_THAT(names, ElementsAre("p", "v", "o", "uv", "lights", "base", "n", "idle", "common", "tint",
                                   "turn", "rows"));
    EXPECT_TRUE(cgIsParameterUsed(cgGetNamedParameter(both, "v"), both));
    EXPECT_THAT(cgGetProgramString(both, CG_COMPILED_PROGRAM),
                testing::AllOf(testing::HasSubstr("//profile glslv"), testing::HasSubstr("//profile glslf")));
    cgDestroyProgram(inner);
    expectError(CG_INVALID_PROGRAM_HANDLE_ERROR, "it goes with the whole");
    EXPECT_EQ(cgGetNextProgram(inner), nullptr);
    const CGprogram copy = cgCopyProgram(both);
    EXPECT_EQ(cgGetNumProgramDomains(copy), 2);
    cgDestroyProgram(both);
    EXPECT_FALSE(cgIsProgram(inner));

    const CGprogram again[] = {copy, vertex};
    EXPECT_EQ(cgCombinePrograms(2, again), nullptr);
    expectError(CG_INVALID_PARAMETER_ERROR, "two of one stage");
    EXPECT_EQ(cgCombinePrograms3(vertex, fProgram, fProgram), nullptr);
    expectError(CG_INVALID_PARAMETER_ERROR);
    EXPECT_EQ(cgCombinePrograms4(vertex, fProgram, nullptr, nullptr), nullptr);
    expectError(CG_INVALID_PROGRAM_HANDLE_ERROR);
    EXPECT_EQ(cgCombinePrograms5(nullptr, vertex, vertex, vertex, vertex), nullptr);
    expectError(CG_INVALID_PROGRAM_HANDLE_ERROR);
    EXPECT_EQ(cgCombinePrograms(0, nullptr), nullptr);
    expectError(CG_INVALID_PARAMETER_ERROR);
    cgGetProgramDomainProfile(vertex, 1);
    expectError(CG_INVALID_PARAMETER_ERROR);
    cgSetProgramProfile(copy, CG_PROFILE_GLSLF);
    expectError(CG_INVALID_PROGRAM_HANDLE_ERROR);
}

TEST_F(CgParameters, ofProgramsThatIncludeWhatTheContextHolds) {
    constexpr const char* kIncluding = "#include \"lib/half.h\"\nfloat4 main() : COLOR { return HALF; }";
    EXPECT_EQ(compiled(kIncluding), nullptr);
    expectError(CG_COMPILER_ERROR);
    cgSetCompilerIncludeString(fContext, "lib/half.h", "#include \"lib/deep.h\"\n#define HALF DEEP\n");
    static std::string asked;
    const auto callback = [](CGcontext context, const char* name) {
        asked += name;
        cgSetCompilerIncludeString(context, name, "#define DEEP 0.5\n");
    };
    cgSetCompilerIncludeCallback(fContext, callback);
    EXPECT_EQ(cgGetCompilerIncludeCallback(fContext), callback);
    EXPECT_NE(compiled(kIncluding), nullptr) << cgGetLastListing(fContext);
    EXPECT_EQ(asked, "lib/lib/deep.h");
    cgSetCompilerIncludeCallback(fContext, nullptr);
    cgSetCompilerIncludeString(fContext, "lib/half.h", nullptr);
    const std::string file = testing::TempDir() + "/half.h";
    std::ofstream(file) << "#define HALF 0.25\n";
    // Beside a file, and by the name that the file writes.
    const std::string program = testing::TempDir() + "/including.cg";
    std::ofstream(program) << kIncluding;
    cgSetCompilerIncludeFile(fContext, "lib/half.h", file.c_str());
    EXPECT_NE(
        cgCreateProgramFromFile(fContext, CG_SOURCE, program.c_str(), CG_PROFILE_GLSLF, "main", nullptr),
        nullptr)
        << cgGetLastListing(fContext);
    cgSetCompilerIncludeFile(fContext, "lib/half.h", "/no/such/file");
    expectError(CG_FILE_READ_ERROR);
    cgSetCompilerIncludeString(fContext, nullptr, nullptr);
    EXPECT_EQ(compiled(kIncluding), nullptr);
    expectError(CG_COMPILER_ERROR, "all are gone");

    const char* args[] = {"-DX=1", "-odd", nullptr};
    const CGprogram withOptions =
        cgCreateProgram(fContext, CG_SOURCE, kSource, CG_PROFILE_GLSLF, "main", args);
    const char* const* options = cgGetProgramOptions(withOptions);
    EXPECT_STREQ(options[1], "-odd");
    EXPECT_EQ(options[2], nullptr);
    EXPECT_EQ(cgGetProgramOptions(fProgram), nullptr);
    EXPECT_EQ(cgGetLockingPolicy(), CG_NO_LOCKS_POLICY);
    EXPECT_EQ(cgSetLockingPolicy(CG_NO_LOCKS_POLICY), CG_NO_LOCKS_POLICY);
    EXPECT_EQ(cgSetLockingPolicy(CG_THREAD_SAFE_POLICY), CG_NO_LOCKS_POLICY);
    expectError(CG_INVALID_ENUMERANT_ERROR, "there are no locks");
    EXPECT_EQ(cgGetParameterSettingMode(fContext), CG_IMMEDIATE_PARAMETER_SETTING);
    cgSetParameterSettingMode(fContext, CG_DEFERRED_PARAMETER_SETTING);
    EXPECT_EQ(cgGetParameterSettingMode(fContext), CG_DEFERRED_PARAMETER_SETTING);
}

TEST_F(CgParameters, leaveBuffersTheirBytes) {
    const CGbuffer buffer = cgCreateBuffer(fContext, 4, "abcd", CG_BUFFER_USAGE_STATIC_DRAW);
    EXPECT_TRUE(cgIsBuffer(buffer));
    EXPECT_EQ(cgGetBufferContext(buffer), fContext);
    cgSetBufferSubData(buffer, 1, 2, "xy");
    const auto bytes = [&] {
        const char* mapped = static_cast<const char*>(cgMapBuffer(buffer, CG_MAP_READ));
        std::string copy(mapped, static_cast<size_t>(cgGetBufferSize(buffer)));
        cgUnmapBuffer(buffer);
        return copy;
    };
    EXPECT_EQ(bytes(), "axyd");
    static_cast<char*>(cgMapBuffer(buffer, CG_MAP_READ_WRITE))[0] = 'z';
    EXPECT_EQ(cgMapBuffer(buffer, CG_MAP_WRITE), nullptr);
    expectError(CG_BUFFER_ALREADY_MAPPED_ERROR);
    cgSetBufferData(buffer, 1, "q");
    expectError(CG_BUFFER_UPDATE_NOT_ALLOWED_ERROR);
    cgUnmapBuffer(buffer);
    EXPECT_EQ(bytes(), "zxyd");
    cgSetBufferSubData(buffer, 3, 2, "xy");
    expectError(CG_BUFFER_INDEX_OUT_OF_RANGE_ERROR);
    cgSetBufferData(buffer, 6, "longer");
    EXPECT_EQ(bytes(), "longer");
    cgDestroyBuffer(buffer);
    EXPECT_FALSE(cgIsBuffer(buffer));
    cgUnmapBuffer(buffer);
    expectError(CG_INVALID_BUFFER_HANDLE_ERROR);
    EXPECT_EQ(cgCreateBuffer(fContext, -1, nullptr, CG_BUFFER_USAGE_STATIC_DRAW), nullptr);
    expectError(CG_INVALID_SIZE_ERROR);
}

template <typename Result, typename Handle, typename... Others>
void callWith(uintptr_t handle, CGerror expected, Result (*function)(Handle, Others...)) {
    function(reinterpret_cast<Handle>(handle), Others()...); // NOLINT(performance-no-int-to-ptr)
    const CGerror error = cgGetError();
    EXPECT_TRUE(expected == CG_NO_ERROR || error == expected) << error << " not " << expected;
}

/// Calls functions with a handle, and with nothing else; each of them has to raise an error, if one is given.
template <typename... Functions>
void callAll(uintptr_t handle, CGerror expected, Functions... functions) {
    (callWith(handle, expected, functions), ...);
}

TEST_F(CgParameters, andAllElseAreSafeFromHandlesOfOthers) {
    const auto ofContext = [](uintptr_t handle, CGerror error) {
        callAll(handle, error, cgGetLastListing, cgSetAutoCompile, cgGetAutoCompile,
                cgSetParameterSettingMode, cgGetParameterSettingMode, cgSetCompilerIncludeString,
                cgSetCompilerIncludeFile, cgSetCompilerIncludeCallback, cgGetCompilerIncludeCallback,
                cgCreateProgram, cgCreateProgramFromFile, cgGetFirstProgram, cgCreateParameter,
                cgCreateParameterArray, cgCreateParameterMultiDimArray, cgCreateBuffer);
    };
    const auto ofProgram = [](uintptr_t handle, CGerror error) {
        callAll(handle, error, cgUpdateProgramParameters, cgCopyProgram, cgGetNextProgram,
                cgGetProgramContext, cgCompileProgram, cgIsProgramCompiled, cgGetProgramString,
                cgGetProgramProfile, cgSetProgramProfile, cgGetProgramOptions, cgGetProgramInput,
                cgGetProgramOutput, cgCombinePrograms2, cgCombinePrograms3, cgCombinePrograms4,
                cgCombinePrograms5, cgGetNumProgramDomains, cgGetProgramDomainProfile,
                cgGetProgramDomainProgram, cgGetNamedParameter, cgGetNamedProgramParameter,
                cgGetFirstParameter, cgGetFirstLeafParameter, cgSetProgramBuffer, cgGetProgramBuffer);
    };
    const auto ofParameter = [](uintptr_t handle, CGerror error) {
        callAll(handle, error, cgGetNamedStructParameter, cgGetNamedSubParameter, cgGetNextParameter,
                cgGetNextLeafParameter, cgGetFirstStructParameter, cgGetFirstDependentParameter,
                cgGetArrayParameter, cgGetArrayDimension, cgGetArraySize, cgGetArrayTotalSize, cgGetArrayType,
                cgGetParameterProgram, cgGetParameterContext, cgGetParameterName, cgGetParameterType,
                cgGetParameterBaseType, cgGetParameterNamedType, cgGetParameterClass, cgGetParameterRows,
                cgGetParameterColumns, cgGetParameterSemantic, cgSetParameterSemantic, cgGetParameterResource,
                cgGetParameterBaseResource, cgGetParameterResourceIndex, cgGetParameterResourceName,
                cgGetParameterVariability, cgSetParameterVariability, cgGetParameterDirection,
                cgGetParameterIndex, cgGetParameterOrdinalNumber, cgIsParameterGlobal,
                cgIsParameterReferenced, cgIsParameterUsed, cgConnectParameter, cgDisconnectParameter,
                cgGetConnectedParameter, cgGetNumConnectedToParameters, cgGetConnectedToParameter,
                cgSetParameter4f, cgSetParameter4iv, cgSetMatrixParameterfr, cgGetMatrixParameterdc,
                cgGetMatrixParameterOrder, cgSetParameterValuefr, cgGetParameterValueic,
                cgGetParameterDefaultValuedr, cgGetParameterBufferIndex, cgGetParameterBufferOffset,
                cgGetParameterValues);
    };
    const auto ofBuffer = [](uintptr_t handle, CGerror error) {
        callAll(handle, error, cgGetBufferContext, cgGetBufferSize, cgSetBufferData, cgSetBufferSubData,
                cgMapBuffer, cgUnmapBuffer);
    };
    const CGprogram gone = cgCopyProgram(fProgram);
    const CGparameter goneWithIt = cgGetNamedParameter(gone, "tint");
    cgDestroyProgram(gone);
    const CGbuffer buffer = cgCreateBuffer(fContext, 8, nullptr, CG_BUFFER_USAGE_STREAM_COPY);
    const auto number = [](auto handle) { return reinterpret_cast<uintptr_t>(handle); };
    for (const uintptr_t handle : {uintptr_t{0}, number(gone), number(goneWithIt), number(&buffer)}) {
        ofContext(handle, CG_INVALID_CONTEXT_HANDLE_ERROR);
        ofProgram(handle, CG_INVALID_PROGRAM_HANDLE_ERROR);
        ofParameter(handle, CG_INVALID_PARAM_HANDLE_ERROR);
        ofBuffer(handle, CG_INVALID_BUFFER_HANDLE_ERROR);
    }
    // With nothing else but the right handle: whatever that is an error of.
    for (const char* name : {"tint", "turn", "rows", "rows[0]", "lights", "lights[0]", "base", "n", "uv"})
        ofParameter(number(parameter(name)), CG_NO_ERROR);
    ofParameter(number(cgCreateParameter(fContext, CG_SAMPLER2D)), CG_NO_ERROR);
    ofProgram(number(fProgram), CG_NO_ERROR);
    ofBuffer(number(buffer), CG_NO_ERROR);
    ofContext(number(fContext), CG_NO_ERROR);
    EXPECT_TRUE(cgIsProgram(fProgram));
}

} // namespace
