#include "objects/Names.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace orlocg {

namespace {

/// A kind of numbers: its types in a row. The three oldest have their vectors of one elsewhere.
struct Kind {
    const char* name;
    int first;
    int vectorOfOne;

    bool isOld() const { return vectorOfOne < first || vectorOfOne > first + 1; }
    int length() const { return isOld() ? 20 : 21; }
};
constexpr std::array<Kind, 13> kKinds = {{{"half", CG_HALF, CG_HALF1},
                                          {"float", CG_FLOAT, CG_FLOAT1},
                                          {"fixed", CG_FIXED, CG_FIXED1},
                                          {"int", CG_INT, CG_INT1},
                                          {"bool", CG_BOOL, CG_BOOL1},
                                          {"double", CG_DOUBLE, CG_DOUBLE1},
                                          {"char", CG_CHAR, CG_CHAR1},
                                          {"uchar", CG_UCHAR, CG_UCHAR1},
                                          {"short", CG_SHORT, CG_SHORT1},
                                          {"ushort", CG_USHORT, CG_USHORT1},
                                          {"uint", CG_UINT, CG_UINT1},
                                          {"long", CG_LONG, CG_LONG1},
                                          {"ulong", CG_ULONG, CG_ULONG1}}};

struct Named {
    int value;
    const char* name;
};
constexpr std::array<Named, 27> kOtherTypes = {{{CG_STRUCT, "struct"},
                                                {CG_ARRAY, "array"},
                                                {CG_TYPELESS_STRUCT, "typelessstruct"},
                                                {CG_STRING, "string"},
                                                {CG_PROGRAM_TYPE, "program"},
                                                {CG_VERTEXSHADER_TYPE, "vertexshader"},
                                                {CG_PIXELSHADER_TYPE, "pixelshader"},
                                                {CG_TEXTURE, "texture"},
                                                {CG_BUFFER, "buffer"},
                                                {CG_UNIFORMBUFFER, "uniformbuffer"},
                                                {CG_ADDRESS, "address"},
                                                {CG_SAMPLER, "sampler"},
                                                {CG_SAMPLER1D, "sampler1D"},
                                                {CG_SAMPLER2D, "sampler2D"},
                                                {CG_SAMPLER3D, "sampler3D"},
                                                {CG_SAMPLERRECT, "samplerRECT"},
                                                {CG_SAMPLERCUBE, "samplerCUBE"},
                                                {CG_SAMPLER1DARRAY, "sampler1DARRAY"},
                                                {CG_SAMPLER2DARRAY, "sampler2DARRAY"},
                                                {CG_SAMPLERCUBEARRAY, "samplerCUBEARRAY"},
                                                {CG_SAMPLERBUF, "samplerBUF"},
                                                {CG_SAMPLERRBUF, "samplerRBUF"},
                                                {CG_SAMPLER1DSHADOW, "sampler1DSHADOW"},
                                                {CG_SAMPLER2DSHADOW, "sampler2DSHADOW"},
                                                {CG_SAMPLERRECTSHADOW, "samplerRECTSHADOW"},
                                                {CG_SAMPLER2DMS, "sampler2DMS"},
                                                {CG_SAMPLER2DMSARRAY, "sampler2DMSARRAY"}}};

/// What the text of a program compiled for a profile would be. Those of None and of Direct3D have but a name.
enum class ProfileText : uint8_t { Assembly, Glsl, None, Direct3D };

struct Profile {
    CGprofile value;
    const char* name;
    CGdomain domain;
    ProfileText text;
};
// clang-format off
constexpr std::array<Profile, 43> kProfiles = {{
    {CG_PROFILE_VP20, "vp20", CG_VERTEX_DOMAIN, ProfileText::Assembly},
    {CG_PROFILE_FP20, "fp20", CG_FRAGMENT_DOMAIN, ProfileText::Assembly},
    {CG_PROFILE_VP30, "vp30", CG_VERTEX_DOMAIN, ProfileText::Assembly},
    {CG_PROFILE_FP30, "fp30", CG_FRAGMENT_DOMAIN, ProfileText::Assembly},
    {CG_PROFILE_ARBVP1, "arbvp1", CG_VERTEX_DOMAIN, ProfileText::Assembly},
    {CG_PROFILE_ARBFP1, "arbfp1", CG_FRAGMENT_DOMAIN, ProfileText::Assembly},
    {CG_PROFILE_VP40, "vp40", CG_VERTEX_DOMAIN, ProfileText::Assembly},
    {CG_PROFILE_FP40, "fp40", CG_FRAGMENT_DOMAIN, ProfileText::Assembly},
    {CG_PROFILE_GLSLV, "glslv", CG_VERTEX_DOMAIN, ProfileText::Glsl},
    {CG_PROFILE_GLSLF, "glslf", CG_FRAGMENT_DOMAIN, ProfileText::Glsl},
    {CG_PROFILE_GP4VP, "gp4vp", CG_VERTEX_DOMAIN, ProfileText::Assembly},
    {CG_PROFILE_GP4FP, "gp4fp", CG_FRAGMENT_DOMAIN, ProfileText::Assembly},
    {CG_PROFILE_GP5VP, "gp5vp", CG_VERTEX_DOMAIN, ProfileText::Assembly},
    {CG_PROFILE_GP5FP, "gp5fp", CG_FRAGMENT_DOMAIN, ProfileText::Assembly},
    {CG_PROFILE_GLSLG, "glslg", CG_GEOMETRY_DOMAIN, ProfileText::None},
    {CG_PROFILE_GP4GP, "gp4gp", CG_GEOMETRY_DOMAIN, ProfileText::None},
    {CG_PROFILE_GP5GP, "gp5gp", CG_GEOMETRY_DOMAIN, ProfileText::None},
    {CG_PROFILE_GP5TCP, "gp5tcp", CG_TESSELLATION_CONTROL_DOMAIN, ProfileText::None},
    {CG_PROFILE_GP5TEP, "gp5tep", CG_TESSELLATION_EVALUATION_DOMAIN, ProfileText::None},
    {CG_PROFILE_GLSLC, "glslc", CG_UNKNOWN_DOMAIN, ProfileText::None},
    {CG_PROFILE_GENERIC, "generic", CG_UNKNOWN_DOMAIN, ProfileText::None},
    {CG_PROFILE_HLSLV, "hlslv", CG_VERTEX_DOMAIN, ProfileText::Direct3D},
    {CG_PROFILE_HLSLF, "hlslf", CG_FRAGMENT_DOMAIN, ProfileText::Direct3D},
    {CG_PROFILE_VS_1_1, "vs_1_1", CG_VERTEX_DOMAIN, ProfileText::Direct3D},
    {CG_PROFILE_VS_2_0, "vs_2_0", CG_VERTEX_DOMAIN, ProfileText::Direct3D},
    {CG_PROFILE_VS_2_X, "vs_2_x", CG_VERTEX_DOMAIN, ProfileText::Direct3D},
    {CG_PROFILE_VS_2_SW, "vs_2_sw", CG_VERTEX_DOMAIN, ProfileText::Direct3D},
    {CG_PROFILE_VS_3_0, "vs_3_0", CG_VERTEX_DOMAIN, ProfileText::Direct3D},
    {CG_PROFILE_VS_4_0, "vs_4_0", CG_VERTEX_DOMAIN, ProfileText::Direct3D},
    {CG_PROFILE_VS_5_0, "vs_5_0", CG_VERTEX_DOMAIN, ProfileText::Direct3D},
    {CG_PROFILE_PS_1_1, "ps_1_1", CG_FRAGMENT_DOMAIN, ProfileText::Direct3D},
    {CG_PROFILE_PS_1_2, "ps_1_2", CG_FRAGMENT_DOMAIN, ProfileText::Direct3D},
    {CG_PROFILE_PS_1_3, "ps_1_3", CG_FRAGMENT_DOMAIN, ProfileText::Direct3D},
    {CG_PROFILE_PS_2_0, "ps_2_0", CG_FRAGMENT_DOMAIN, ProfileText::Direct3D},
    {CG_PROFILE_PS_2_X, "ps_2_x", CG_FRAGMENT_DOMAIN, ProfileText::Direct3D},
    {CG_PROFILE_PS_2_SW, "ps_2_sw", CG_FRAGMENT_DOMAIN, ProfileText::Direct3D},
    {CG_PROFILE_PS_3_0, "ps_3_0", CG_FRAGMENT_DOMAIN, ProfileText::Direct3D},
    {CG_PROFILE_PS_4_0, "ps_4_0", CG_FRAGMENT_DOMAIN, ProfileText::Direct3D},
    {CG_PROFILE_PS_5_0, "ps_5_0", CG_FRAGMENT_DOMAIN, ProfileText::Direct3D},
    {CG_PROFILE_GS_4_0, "gs_4_0", CG_GEOMETRY_DOMAIN, ProfileText::Direct3D},
    {CG_PROFILE_GS_5_0, "gs_5_0", CG_GEOMETRY_DOMAIN, ProfileText::Direct3D},
    {CG_PROFILE_HS_5_0, "hs_5_0", CG_TESSELLATION_CONTROL_DOMAIN, ProfileText::Direct3D},
    {CG_PROFILE_DS_5_0, "ds_5_0", CG_TESSELLATION_EVALUATION_DOMAIN, ProfileText::Direct3D},
}};
// clang-format on

/// A row of resources: "TEXUNIT0" to "TEXUNIT15"; or more of one, from the number `start` on.
struct Row {
    const char* name;
    int first;
    int length;
    bool isNumbered = true;
    int start = 0;
};
constexpr std::array<Row, 27> kRows = {{{"TEXUNIT", CG_TEXUNIT0, 16},
                                        {"TEXUNIT", CG_TEXUNIT16, 16, true, 16},
                                        {"BUFFER", CG_BUFFER0, 12},
                                        {"ATTR", CG_ATTR0, 16},
                                        {"C", CG_C, 1, false},
                                        {"TEX", CG_TEX0, 8},
                                        {"HPOS", CG_HPOS, 1, false},
                                        {"COL", CG_COL0, 4},
                                        {"PSIZ", CG_PSIZ, 1, false},
                                        {"CLP", CG_CLP0, 6},
                                        {"WPOS", CG_WPOS, 1, false},
                                        {"POINTCOORD", CG_POINTCOORD, 1, false},
                                        {"POSITION", CG_POSITION0, 16},
                                        {"DIFFUSE", CG_DIFFUSE0, 1},
                                        {"TANGENT", CG_TANGENT0, 16},
                                        {"COLOR", CG_COLOR0, 16},
                                        {"PSIZE", CG_PSIZE0, 16},
                                        {"BINORMAL", CG_BINORMAL0, 16},
                                        {"FOG", CG_FOG0, 16},
                                        {"DEPTH", CG_DEPTH0, 16},
                                        {"BLENDWEIGHT", CG_BLENDWEIGHT0, 16},
                                        {"NORMAL", CG_NORMAL0, 16},
                                        {"FOGCOORD", CG_FOGCOORD, 1, false},
                                        {"TEXCOORD", CG_TEXCOORD0, 16},
                                        {"COMBINER_CONST", CG_COMBINER_CONST0, 2},
                                        {"COMBINER_STAGE_CONST", CG_COMBINER_STAGE_CONST0, 2},
                                        {"UNDEFINED", CG_UNDEFINED, 1, false}}};

const Row* rowOf(CGresource resource) {
    for (const Row& row : kRows)
        if (resource >= row.first && resource < row.first + row.length)
            return &row;
    return nullptr;
}

CGresource resourceIn(const std::string& row, int number) {
    for (const Row& each : kRows)
        if (row == each.name && number >= each.start && number < each.start + each.length)
            return static_cast<CGresource>(each.first + number - each.start);
    return CG_UNDEFINED;
}

const Profile* profileOf(CGprofile profile) {
    const auto* found = std::find_if(kProfiles.begin(), kProfiles.end(),
                                     [&](const Profile& each) { return each.value == profile; });
    return found == kProfiles.end() ? nullptr : found;
}

#define CG_NAMED(value)                                                                                      \
    { value, #value }
// clang-format off
constexpr std::array<Named, 53> kEnumerants = {{
    CG_NAMED(CG_UNKNOWN),
    CG_NAMED(CG_IN),
    CG_NAMED(CG_OUT),
    CG_NAMED(CG_INOUT),
    CG_NAMED(CG_MIXED),
    CG_NAMED(CG_VARYING),
    CG_NAMED(CG_UNIFORM),
    CG_NAMED(CG_CONSTANT),
    CG_NAMED(CG_PROGRAM_SOURCE),
    CG_NAMED(CG_PROGRAM_ENTRY),
    CG_NAMED(CG_COMPILED_PROGRAM),
    CG_NAMED(CG_PROGRAM_PROFILE),
    CG_NAMED(CG_GLOBAL),
    CG_NAMED(CG_PROGRAM),
    CG_NAMED(CG_DEFAULT),
    CG_NAMED(CG_ERROR),
    CG_NAMED(CG_SOURCE),
    CG_NAMED(CG_OBJECT),
    CG_NAMED(CG_COMPILE_MANUAL),
    CG_NAMED(CG_COMPILE_IMMEDIATE),
    CG_NAMED(CG_COMPILE_LAZY),
    CG_NAMED(CG_CURRENT),
    CG_NAMED(CG_LITERAL),
    CG_NAMED(CG_VERSION),
    CG_NAMED(CG_ROW_MAJOR),
    CG_NAMED(CG_COLUMN_MAJOR),
    CG_NAMED(CG_FRAGMENT),
    CG_NAMED(CG_VERTEX),
    CG_NAMED(CG_POINT),
    CG_NAMED(CG_LINE),
    CG_NAMED(CG_LINE_ADJ),
    CG_NAMED(CG_TRIANGLE),
    CG_NAMED(CG_TRIANGLE_ADJ),
    CG_NAMED(CG_POINT_OUT),
    CG_NAMED(CG_LINE_OUT),
    CG_NAMED(CG_TRIANGLE_OUT),
    CG_NAMED(CG_IMMEDIATE_PARAMETER_SETTING),
    CG_NAMED(CG_DEFERRED_PARAMETER_SETTING),
    CG_NAMED(CG_NO_LOCKS_POLICY),
    CG_NAMED(CG_THREAD_SAFE_POLICY),
    CG_NAMED(CG_FORCE_UPPER_CASE_POLICY),
    CG_NAMED(CG_UNCHANGED_CASE_POLICY),
    CG_NAMED(CG_IS_OPENGL_PROFILE),
    CG_NAMED(CG_IS_DIRECT3D_PROFILE),
    CG_NAMED(CG_IS_DIRECT3D_8_PROFILE),
    CG_NAMED(CG_IS_DIRECT3D_9_PROFILE),
    CG_NAMED(CG_IS_DIRECT3D_10_PROFILE),
    CG_NAMED(CG_IS_VERTEX_PROFILE),
    CG_NAMED(CG_IS_FRAGMENT_PROFILE),
    CG_NAMED(CG_IS_GEOMETRY_PROFILE),
    CG_NAMED(CG_IS_TRANSLATION_PROFILE),
    CG_NAMED(CG_IS_HLSL_PROFILE),
    CG_NAMED(CG_IS_GLSL_PROFILE),
}};
// clang-format on
#undef CG_NAMED

constexpr std::array<Named, 9> kClasses = {{{CG_PARAMETERCLASS_UNKNOWN, "unknown"},
                                            {CG_PARAMETERCLASS_SCALAR, "scalar"},
                                            {CG_PARAMETERCLASS_VECTOR, "vector"},
                                            {CG_PARAMETERCLASS_MATRIX, "matrix"},
                                            {CG_PARAMETERCLASS_STRUCT, "struct"},
                                            {CG_PARAMETERCLASS_ARRAY, "array"},
                                            {CG_PARAMETERCLASS_SAMPLER, "sampler"},
                                            {CG_PARAMETERCLASS_OBJECT, "object"},
                                            {CG_PARAMETERCLASS_BUFFER, "buffer"}}};

constexpr std::array<Named, 6> kDomains = {{{CG_UNKNOWN_DOMAIN, "unknown"},
                                            {CG_VERTEX_DOMAIN, "vertex"},
                                            {CG_FRAGMENT_DOMAIN, "fragment"},
                                            {CG_GEOMETRY_DOMAIN, "geometry"},
                                            {CG_TESSELLATION_CONTROL_DOMAIN, "tessellation control"},
                                            {CG_TESSELLATION_EVALUATION_DOMAIN, "tessellation evaluation"}}};

constexpr std::array<Named, 61> kErrors = {{
    {CG_NO_ERROR, "no error"},
    {CG_COMPILER_ERROR, "the program doesn't compile; its context's listing says why"},
    {CG_INVALID_PARAMETER_ERROR, "the parameter doesn't fit what is asked of it"},
    {CG_INVALID_PROFILE_ERROR, "the profile is not supported"},
    {CG_PROGRAM_LOAD_ERROR, "the program could not be loaded"},
    {CG_PROGRAM_BIND_ERROR, "the program could not be bound"},
    {CG_PROGRAM_NOT_LOADED_ERROR, "the program has to be loaded first"},
    {CG_UNSUPPORTED_GL_EXTENSION_ERROR, "this OpenGL lacks what is needed for it"},
    {CG_INVALID_VALUE_TYPE_ERROR, "values of this type can't be given to the parameter"},
    {CG_NOT_MATRIX_PARAM_ERROR, "the parameter is no matrix"},
    {CG_INVALID_ENUMERANT_ERROR, "the constant is not one of those that are taken here"},
    {CG_NOT_4x4_MATRIX_ERROR, "the parameter is no matrix of 4 rows and 4 columns"},
    {CG_FILE_READ_ERROR, "the file can't be read"},
    {CG_FILE_WRITE_ERROR, "the file can't be written"},
    {CG_NVPARSE_ERROR, "a program for register combiners can't be read"},
    {CG_MEMORY_ALLOC_ERROR, "there is not enough memory"},
    {CG_INVALID_CONTEXT_HANDLE_ERROR, "there is no such context"},
    {CG_INVALID_PROGRAM_HANDLE_ERROR, "there is no such program"},
    {CG_INVALID_PARAM_HANDLE_ERROR, "there is no such parameter"},
    {CG_UNKNOWN_PROFILE_ERROR, "there is no such profile, or programs can't be compiled for it"},
    {CG_VAR_ARG_ERROR, "the arguments don't fit their number"},
    {CG_INVALID_DIMENSION_ERROR, "the array has no such dimension"},
    {CG_ARRAY_PARAM_ERROR, "the parameter is no array"},
    {CG_OUT_OF_ARRAY_BOUNDS_ERROR, "the array has no such element"},
    {CG_CONFLICTING_TYPES_ERROR, "a type of this name is another one elsewhere"},
    {CG_CONFLICTING_PARAMETER_TYPES_ERROR, "the parameter is of another type elsewhere"},
    {CG_PARAMETER_IS_NOT_SHARED_ERROR, "the parameter is not one that the context owns"},
    {CG_INVALID_PARAMETER_VARIABILITY_ERROR, "the parameter can't be made that"},
    {CG_CANNOT_DESTROY_PARAMETER_ERROR, "a program's parameter goes with the program"},
    {CG_NOT_ROOT_PARAMETER_ERROR, "the parameter is part of another"},
    {CG_PARAMETERS_DO_NOT_MATCH_ERROR, "the parameters are of different types"},
    {CG_IS_NOT_PROGRAM_PARAMETER_ERROR, "the parameter is not one of a program"},
    {CG_INVALID_PARAMETER_TYPE_ERROR, "there is no such type of parameters"},
    {CG_PARAMETER_IS_NOT_RESIZABLE_ARRAY_ERROR, "the parameter is no array whose length can change"},
    {CG_INVALID_SIZE_ERROR, "the size is not one that can be"},
    {CG_BIND_CREATES_CYCLE_ERROR, "the parameter would be its own source"},
    {CG_ARRAY_TYPES_DO_NOT_MATCH_ERROR, "the arrays hold different types"},
    {CG_ARRAY_DIMENSIONS_DO_NOT_MATCH_ERROR, "the arrays have different dimensions"},
    {CG_ARRAY_HAS_WRONG_DIMENSION_ERROR, "the array has another dimension"},
    {CG_TYPE_IS_NOT_DEFINED_IN_PROGRAM_ERROR, "the program has no such type"},
    {CG_INVALID_EFFECT_HANDLE_ERROR, "there is no such effect"},
    {CG_INVALID_STATE_HANDLE_ERROR, "there is no such state"},
    {CG_INVALID_STATE_ASSIGNMENT_HANDLE_ERROR, "there is no such assignment of a state"},
    {CG_INVALID_PASS_HANDLE_ERROR, "there is no such pass"},
    {CG_INVALID_ANNOTATION_HANDLE_ERROR, "there is no such annotation"},
    {CG_INVALID_TECHNIQUE_HANDLE_ERROR, "there is no such technique"},
    {CG_STATE_ASSIGNMENT_TYPE_MISMATCH_ERROR, "the assignment of a state is of another type"},
    {CG_INVALID_FUNCTION_HANDLE_ERROR, "there is no such function"},
    {CG_INVALID_TECHNIQUE_ERROR, "the technique can't be used"},
    {CG_INVALID_POINTER_ERROR, "a pointer is null"},
    {CG_NOT_ENOUGH_DATA_ERROR, "there are fewer numbers than the parameter has"},
    {CG_NON_NUMERIC_PARAMETER_ERROR, "the parameter has no numbers"},
    {CG_ARRAY_SIZE_MISMATCH_ERROR, "the arrays have different lengths"},
    {CG_CANNOT_SET_NON_UNIFORM_PARAMETER_ERROR, "the parameter is not uniform"},
    {CG_DUPLICATE_NAME_ERROR, "the name is taken"},
    {CG_INVALID_OBJ_HANDLE_ERROR, "there is no such object"},
    {CG_INVALID_BUFFER_HANDLE_ERROR, "there is no such buffer"},
    {CG_BUFFER_INDEX_OUT_OF_RANGE_ERROR, "there is no such place for a buffer"},
    {CG_BUFFER_ALREADY_MAPPED_ERROR, "the buffer is mapped"},
    {CG_BUFFER_UPDATE_NOT_ALLOWED_ERROR, "the buffer can't be changed"},
    {CG_GLSLG_UNCOMBINED_LOAD_ERROR, "the program has to be combined with others first"},
}};

template <typename Table>
const char* nameIn(const Table& table, int value) {
    const auto found =
        std::find_if(table.begin(), table.end(), [&](const Named& each) { return each.value == value; });
    return found == table.end() ? nullptr : found->name;
}

template <typename Result, typename Table>
Result valueIn(const Table& table, const std::string& name, Result otherwise) {
    const auto found =
        std::find_if(table.begin(), table.end(), [&](const Named& each) { return name == each.name; });
    return found == table.end() ? otherwise : static_cast<Result>(found->value);
}

/// The type of a kind with those rows and columns; 0: none.
CGtype typeIn(const Kind& kind, int rows, int columns) {
    const int vectors = kind.isOld() ? 3 : 4;
    if (rows > 0)
        return static_cast<CGtype>(kind.first + 1 + vectors + (rows - 1) * 4 + columns - 1);
    if (columns == 1)
        return static_cast<CGtype>(kind.vectorOfOne);
    return static_cast<CGtype>(kind.first + (columns ? columns - (kind.isOld() ? 1 : 0) : 0));
}

} // namespace

CGtype typeOf(const Type* type) {
    switch (type->kind) {
    case Type::Kind::Struct:
        return CG_STRUCT;
    case Type::Kind::Array:
        return CG_ARRAY;
    case Type::Kind::Sampler: {
        constexpr std::array<CGtype, 8> kSamplers = {CG_SAMPLER2D,      CG_SAMPLER1D,     CG_SAMPLER2D,
                                                     CG_SAMPLER3D,      CG_SAMPLERRECT,   CG_SAMPLERCUBE,
                                                     CG_SAMPLER1DARRAY, CG_SAMPLER2DARRAY};
        const CGtype plain = kSamplers[static_cast<size_t>(type->sampler)];
        if (!type->isShadow)
            return plain;
        return plain == CG_SAMPLER1D ? CG_SAMPLER1DSHADOW
                                     : (plain == CG_SAMPLERRECT ? CG_SAMPLERRECTSHADOW : CG_SAMPLER2DSHADOW);
    }
    case Type::Kind::Numeric: {
        constexpr std::array<CGtype, 6> kScalars = {CG_BOOL, CG_INT, CG_FIXED, CG_HALF, CG_FLOAT, CG_FLOAT};
        const CGtype scalar = kScalars[static_cast<size_t>(type->scalar)];
        const auto* kind = std::find_if(kKinds.begin(), kKinds.end(),
                                        [&](const Kind& each) { return each.first == scalar; });
        return typeIn(*kind, type->rows, type->columns);
    }
    default:
        return CG_UNKNOWN_TYPE;
    }
}

TypeShape shapeOf(CGtype type) {
    for (const Kind& kind : kKinds)
        for (int rows = 0; rows <= 4; ++rows)
            for (int columns = rows ? 1 : 0; columns <= 4; ++columns)
                if (typeIn(kind, rows, columns) == type)
                    return {kind.name, static_cast<CGtype>(kind.first), rows, columns};
    return {};
}

std::string nameOf(CGtype type) {
    if (const char* name = nameIn(kOtherTypes, type))
        return name;
    const TypeShape shape = shapeOf(type);
    if (!shape.scalarName)
        return {};
    std::string name = shape.scalarName;
    if (shape.rows)
        name += std::to_string(shape.rows) + "x";
    return shape.columns ? name + std::to_string(shape.columns) : name;
}

CGtype typeNamed(const std::string& name) {
    for (const Kind& kind : kKinds) {
        if (!name.starts_with(kind.name))
            continue;
        for (int rows = 0; rows <= 4; ++rows)
            for (int columns = rows ? 1 : 0; columns <= 4; ++columns)
                if (const CGtype type = typeIn(kind, rows, columns); name == nameOf(type))
                    return type;
    }
    return valueIn(kOtherTypes, name, CG_UNKNOWN_TYPE);
}

CGparameterclass classOf(CGtype type) {
    if (const TypeShape shape = shapeOf(type); shape.scalarName)
        return shape.rows ? CG_PARAMETERCLASS_MATRIX
                          : (shape.columns ? CG_PARAMETERCLASS_VECTOR : CG_PARAMETERCLASS_SCALAR);
    switch (type) {
    case CG_STRUCT:
    case CG_TYPELESS_STRUCT:
        return CG_PARAMETERCLASS_STRUCT;
    case CG_ARRAY:
        return CG_PARAMETERCLASS_ARRAY;
    case CG_BUFFER:
    case CG_UNIFORMBUFFER:
        return CG_PARAMETERCLASS_BUFFER;
    case CG_STRING:
    case CG_TEXTURE:
    case CG_PROGRAM_TYPE:
    case CG_VERTEXSHADER_TYPE:
    case CG_PIXELSHADER_TYPE:
        return CG_PARAMETERCLASS_OBJECT;
    default:
        return nameOf(type).starts_with("sampler") ? CG_PARAMETERCLASS_SAMPLER : CG_PARAMETERCLASS_UNKNOWN;
    }
}

std::string nameOf(CGresource resource) {
    const Row* row = rowOf(resource);
    if (!row)
        return {};
    return row->isNumbered ? row->name + std::to_string(numberOf(resource)) : row->name;
}

CGresource resourceNamed(const std::string& name) {
    const Semantic semantic(name);
    for (const Row& row : kRows)
        if (semantic.name == row.name && row.isNumbered == (semantic.index >= 0))
            return resourceIn(semantic.name, semantic.number());
    return CG_UNDEFINED;
}

CGresource baseOf(CGresource resource) {
    const Row* row = rowOf(resource);
    return row ? resourceIn(row->name, 0) : resource;
}

int numberOf(CGresource resource) {
    const Row* row = rowOf(resource);
    return row ? row->start + resource - row->first : 0;
}

const char* nameOf(CGprofile profile) {
    const Profile* found = profileOf(profile);
    return found ? found->name : nullptr;
}

CGprofile profileNamed(const std::string& name) {
    const auto* found = std::find_if(kProfiles.begin(), kProfiles.end(),
                                     [&](const Profile& each) { return name == each.name; });
    return found == kProfiles.end() ? CG_PROFILE_UNKNOWN : found->value;
}

CGdomain domainOf(CGprofile profile) {
    const Profile* found = profileOf(profile);
    return found ? found->domain : CG_UNKNOWN_DOMAIN;
}

bool isVertexProfile(CGprofile profile) {
    return domainOf(profile) == CG_VERTEX_DOMAIN;
}

bool isCompiledFor(CGprofile profile) {
    const Profile* found = profileOf(profile);
    return found && (found->text == ProfileText::Assembly || found->text == ProfileText::Glsl);
}

bool hasGlslText(CGprofile profile) {
    const Profile* found = profileOf(profile);
    return found && found->text == ProfileText::Glsl;
}

CGprofile compiledProfile(int index) {
    for (const Profile& each : kProfiles)
        if (isCompiledFor(each.value) && index-- == 0)
            return each.value;
    return CG_PROFILE_UNKNOWN;
}

bool hasProperty(CGprofile profile, CGenum query) {
    const Profile* found = profileOf(profile);
    if (!found)
        return false;
    const bool isDirect3D = found->text == ProfileText::Direct3D;
    const std::string name = found->name;
    const auto isVersion = [&](std::initializer_list<char> digits) {
        return isDirect3D && name.size() > 4 &&
               std::find(digits.begin(), digits.end(), name[3]) != digits.end();
    };
    switch (query) {
    case CG_IS_OPENGL_PROFILE:
        return !isDirect3D && found->domain != CG_UNKNOWN_DOMAIN;
    case CG_IS_DIRECT3D_PROFILE:
        return isDirect3D;
    case CG_IS_DIRECT3D_8_PROFILE:
        return isVersion({'1'});
    case CG_IS_DIRECT3D_9_PROFILE:
        return isVersion({'1', '2', '3'}) || name.starts_with("hlsl");
    case CG_IS_DIRECT3D_10_PROFILE:
        return isVersion({'4'});
    case CG_IS_VERTEX_PROFILE:
        return found->domain == CG_VERTEX_DOMAIN;
    case CG_IS_FRAGMENT_PROFILE:
        return found->domain == CG_FRAGMENT_DOMAIN;
    case CG_IS_GEOMETRY_PROFILE:
        return found->domain == CG_GEOMETRY_DOMAIN;
    case CG_IS_TRANSLATION_PROFILE:
        return name.starts_with("glsl") || name.starts_with("hlsl");
    case CG_IS_HLSL_PROFILE:
        return name.starts_with("hlsl");
    default:
        return name.starts_with("glsl");
    }
}

const char* textOf(CGerror error) {
    return nameIn(kErrors, error);
}

const char* nameOf(CGparameterclass parameterClass) {
    return nameIn(kClasses, parameterClass);
}

CGparameterclass classNamed(const std::string& name) {
    return valueIn(kClasses, name, CG_PARAMETERCLASS_UNKNOWN);
}

const char* nameOf(CGdomain domain) {
    return nameIn(kDomains, domain);
}

CGdomain domainNamed(const std::string& name) {
    return valueIn(kDomains, name, CG_UNKNOWN_DOMAIN);
}

const char* nameOf(CGenum value) {
    return nameIn(kEnumerants, value);
}

CGenum enumNamed(const std::string& name) {
    return valueIn(kEnumerants, name, CG_UNKNOWN);
}

} // namespace orlocg
