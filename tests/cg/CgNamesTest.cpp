#include <gtest/gtest.h>

#include <Cg/cgGL.h>

#include <set>
#include <string>

// The constants: programs that were built with other headers use them by number.

namespace {

/// A row of constants, by its ends.
template <typename Constant>
struct Ends {
    Constant first;
    Constant last;
    int firstNumber;
    int lastNumber;
};

template <typename Constant, size_t N>
void expectNumbers(const Ends<Constant> (&rows)[N]) {
    for (const Ends<Constant>& row : rows) {
        EXPECT_EQ(row.first, row.firstNumber);
        EXPECT_EQ(row.last, row.lastNumber);
    }
}

TEST(CgNames, haveTheNumbersOfTheInterface) {
    expectNumbers<CGenum>({{CG_UNKNOWN, CG_OBJECT, 4096, 4113},
                           {CG_COMPILE_MANUAL, CG_COMPILE_LAZY, 4114, 4116},
                           {CG_CURRENT, CG_COLUMN_MAJOR, 4117, 4121},
                           {CG_FRAGMENT, CG_TRIANGLE_OUT, 4122, 4131},
                           {CG_IMMEDIATE_PARAMETER_SETTING, CG_UNCHANGED_CASE_POLICY, 4132, 4137},
                           {CG_IS_OPENGL_PROFILE, CG_IS_GLSL_PROFILE, 4138, 4148}});
    expectNumbers<CGtype>({{CG_UNKNOWN_TYPE, CG_TYPELESS_STRUCT, 0, 3},
                           {CG_HALF, CG_HALF4x4, 1025, 1044},
                           {CG_FLOAT, CG_FLOAT4x4, 1045, 1064},
                           {CG_SAMPLER1D, CG_SAMPLERCUBE, 1065, 1069},
                           {CG_FIXED, CG_FIXED4x4, 1070, 1089},
                           {CG_HALF1, CG_FIXED1, 1090, 1092},
                           {CG_INT, CG_INT4x4, 1093, 1113},
                           {CG_INT1, CG_INT4, 1094, 1097},
                           {CG_BOOL, CG_BOOL4x4, 1114, 1134},
                           {CG_STRING, CG_SAMPLERBUF, 1135, 1144},
                           {CG_DOUBLE, CG_DOUBLE4x4, 1145, 1165},
                           {CG_CHAR, CG_ULONG4x4, 1166, 1312},
                           {CG_SAMPLER1DSHADOW, CG_ADDRESS, 1313, 1321}});
    expectNumbers<CGresource>({{CG_TEXUNIT0, CG_TEXUNIT15, 2048, 2063},
                               {CG_ATTR0, CG_ATTR15, 2113, 2128},
                               {CG_C, CG_TEX7, 2178, 2186},
                               {CG_HPOS, CG_COL3, 2243, 2248},
                               {CG_PSIZ, CG_CLP5, 2309, 2315},
                               {CG_WPOS, CG_POINTCOORD, 2373, 2374},
                               {CG_POSITION0, CG_POSITION15, 2437, 2452},
                               {CG_FOGCOORD, CG_TEXCOORD7, 3156, 3164},
                               {CG_COMBINER_CONST0, CG_COMBINER_STAGE_CONST1, 3221, 3224},
                               {CG_UNDEFINED, CG_UNDEFINED, 3256, 3256}});
    expectNumbers<CGprofile>({{CG_PROFILE_UNKNOWN, CG_PROFILE_FP40, 6145, 6151},
                              {CG_PROFILE_VS_1_1, CG_PROFILE_DS_5_0, 6153, 6174},
                              {CG_PROFILE_ARBFP1, CG_PROFILE_GENERIC, 7000, 7002},
                              {CG_PROFILE_GLSLV, CG_PROFILE_GP4GP, 7007, 7012},
                              {CG_PROFILE_GLSLG, CG_PROFILE_GP5TEP, 7016, 7021}});
    expectNumbers<CGerror>(
        {{CG_NO_ERROR, CG_OUT_OF_ARRAY_BOUNDS_ERROR, 0, 23},
         {CG_CONFLICTING_TYPES_ERROR, CG_INVALID_TECHNIQUE_HANDLE_ERROR, 24, 45},
         {CG_STATE_ASSIGNMENT_TYPE_MISMATCH_ERROR, CG_GLSLG_UNCOMBINED_LOAD_ERROR, 46, 60}});
    expectNumbers<CGparameterclass>({{CG_PARAMETERCLASS_UNKNOWN, CG_PARAMETERCLASS_BUFFER, 0, 8}});
    expectNumbers<CGdomain>({{CG_VERTEX_DOMAIN, CG_TESSELLATION_EVALUATION_DOMAIN, 1, 5}});
    expectNumbers<CGbufferusage>({{CG_BUFFER_USAGE_STREAM_DRAW, CG_BUFFER_USAGE_DYNAMIC_COPY, 0, 8}});
    expectNumbers<CGbufferaccess>({{CG_MAP_READ, CG_MAP_WRITE_NO_OVERWRITE, 0, 4}});
    expectNumbers<CGGLenum>({{CG_GL_MATRIX_IDENTITY, CG_GL_TESSELLATION_EVALUATION, 0, 12}});
}

/// How many values from `first` to `last` have a name, each its own, that leads back to it.
template <typename Value>
int countNames(int first, int last, const char* (*nameOf)(Value), Value (*valueOf)(const char*)) {
    std::set<std::string> names;
    for (int number = first; number <= last; ++number)
        if (const char* name = nameOf(static_cast<Value>(number))) {
            EXPECT_EQ(valueOf(name), number) << name;
            EXPECT_TRUE(names.insert(name).second) << name;
        }
    return static_cast<int>(names.size());
}

TEST(CgNames, leadThereAndBack) {
    EXPECT_EQ(countNames(0, 1400, cgGetTypeString, cgGetType), 3 + 3 * 20 + 3 + 10 * 21 + 5 + 10 + 9);
    EXPECT_EQ(countNames(2000, 3300, cgGetResourceString, cgGetResource), 250);
    EXPECT_EQ(countNames(6144, 7100, cgGetProfileString, cgGetProfile), 43);
    EXPECT_EQ(countNames(4096, 4200, cgGetEnumString, cgGetEnum), 53);
    EXPECT_EQ(countNames(0, 20, cgGetParameterClassString, cgGetParameterClassEnum), 9);
    EXPECT_EQ(countNames(0, 20, cgGetDomainString, cgGetDomain), 6);
    for (int error = 0; error <= CG_GLSLG_UNCOMBINED_LOAD_ERROR; ++error)
        EXPECT_NE(cgGetErrorString(static_cast<CGerror>(error)), nullptr) << error;
    // Two that were asked for one after the other: each keeps its own text.
    const char* type = cgGetTypeString(CG_FLOAT4x4);
    EXPECT_STREQ(cgGetResourceString(CG_TEXUNIT17), "TEXUNIT17");
    EXPECT_STREQ(cgGetTypeString(CG_INT2), "int2");
    EXPECT_STREQ(type, "float4x4");
    for (const char* nobody : {"nonsense", "", "float5", "TEXUNIT99"}) {
        EXPECT_EQ(cgGetType(nobody), CG_UNKNOWN_TYPE);
        EXPECT_EQ(cgGetResource(nobody), CG_UNDEFINED);
        EXPECT_EQ(cgGetProfile(nobody), CG_PROFILE_UNKNOWN);
        EXPECT_EQ(cgGetEnum(nobody), CG_UNKNOWN);
    }
    EXPECT_STREQ(cgGetString(CG_VERSION), "3.1.0000 OrloGL");
    EXPECT_EQ(cgGetString(CG_IN), nullptr);
    EXPECT_EQ(cgGetError(), CG_INVALID_ENUMERANT_ERROR);
}

TEST(CgNames, tellWhatTypesAndProfilesAre) {
    EXPECT_EQ(cgGetTypeBase(CG_HALF3x2), CG_HALF);
    EXPECT_EQ(cgGetTypeBase(CG_SAMPLER2D), CG_SAMPLER2D);
    const std::pair<CGtype, CGparameterclass> classes[] = {
        {CG_FLOAT, CG_PARAMETERCLASS_SCALAR},        {CG_FLOAT1, CG_PARAMETERCLASS_VECTOR},
        {CG_INT4, CG_PARAMETERCLASS_VECTOR},         {CG_FLOAT1x1, CG_PARAMETERCLASS_MATRIX},
        {CG_STRUCT, CG_PARAMETERCLASS_STRUCT},       {CG_ARRAY, CG_PARAMETERCLASS_ARRAY},
        {CG_SAMPLERCUBE, CG_PARAMETERCLASS_SAMPLER}, {CG_STRING, CG_PARAMETERCLASS_OBJECT},
        {CG_BUFFER, CG_PARAMETERCLASS_BUFFER},       {CG_UNKNOWN_TYPE, CG_PARAMETERCLASS_UNKNOWN}};
    for (const auto& [type, wanted] : classes)
        EXPECT_EQ(cgGetTypeClass(type), wanted) << type;
    int rows = 0;
    int columns = 0;
    EXPECT_TRUE(cgGetTypeSizes(CG_FLOAT2x3, &rows, &columns));
    EXPECT_TRUE(rows == 2 && columns == 3);
    EXPECT_FALSE(cgGetTypeSizes(CG_DOUBLE3, &rows, &columns));
    EXPECT_TRUE(rows == 1 && columns == 3);

    EXPECT_EQ(cgGetProfileDomain(CG_PROFILE_ARBVP1), CG_VERTEX_DOMAIN);
    EXPECT_EQ(cgGetProfileDomain(CG_PROFILE_PS_3_0), CG_FRAGMENT_DOMAIN);
    EXPECT_EQ(cgGetProfileDomain(CG_PROFILE_GP4GP), CG_GEOMETRY_DOMAIN);
    EXPECT_EQ(cgGetNumSupportedProfiles(), 14);
    for (int i = 0; i < 14; ++i)
        EXPECT_TRUE(cgIsProfileSupported(cgGetSupportedProfile(i))) << i;
    EXPECT_EQ(cgGetSupportedProfile(14), CG_PROFILE_UNKNOWN);
    EXPECT_EQ(cgGetError(), CG_INVALID_ENUMERANT_ERROR);
    for (const CGprofile other : {CG_PROFILE_GLSLG, CG_PROFILE_HLSLV, CG_PROFILE_PS_2_0, CG_PROFILE_UNKNOWN})
        EXPECT_FALSE(cgIsProfileSupported(other)) << other;
    const std::pair<CGenum, CGprofile> properties[] = {
        {CG_IS_OPENGL_PROFILE, CG_PROFILE_ARBFP1},      {CG_IS_DIRECT3D_PROFILE, CG_PROFILE_HLSLF},
        {CG_IS_DIRECT3D_8_PROFILE, CG_PROFILE_PS_1_3},  {CG_IS_DIRECT3D_9_PROFILE, CG_PROFILE_VS_2_X},
        {CG_IS_DIRECT3D_10_PROFILE, CG_PROFILE_GS_4_0}, {CG_IS_VERTEX_PROFILE, CG_PROFILE_VP40},
        {CG_IS_FRAGMENT_PROFILE, CG_PROFILE_GLSLF},     {CG_IS_GEOMETRY_PROFILE, CG_PROFILE_GLSLG},
        {CG_IS_TRANSLATION_PROFILE, CG_PROFILE_HLSLV},  {CG_IS_HLSL_PROFILE, CG_PROFILE_HLSLV},
        {CG_IS_GLSL_PROFILE, CG_PROFILE_GLSLV}};
    for (const auto& [query, profile] : properties) {
        EXPECT_TRUE(cgGetProfileProperty(profile, query)) << cgGetEnumString(query);
        EXPECT_FALSE(cgGetProfileProperty(CG_PROFILE_GP5TCP, query) && query != CG_IS_OPENGL_PROFILE)
            << query;
    }
    EXPECT_FALSE(cgGetProfileProperty(CG_PROFILE_ARBVP1, CG_IN));
    EXPECT_EQ(cgGetError(), CG_INVALID_ENUMERANT_ERROR);
}

} // namespace
