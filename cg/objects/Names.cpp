#include "objects/Names.h"

#include <algorithm>
#include <array>

namespace orlocg {

namespace {

/// A kind of numbers: its twenty types in a row, and its vectors of one.
struct Kind {
    Scalar scalar;
    const char* name;
    int first;
    int vectorOfOne;
};
constexpr std::array<Kind, 5> kKinds = {{{Scalar::Half, "half", CG_HALF, CG_HALF1},
                                         {Scalar::Float, "float", CG_FLOAT, CG_FLOAT1},
                                         {Scalar::Fixed, "fixed", CG_FIXED, CG_FIXED1},
                                         {Scalar::Int, "int", CG_INT, CG_INT1},
                                         {Scalar::Bool, "bool", CG_BOOL, CG_BOOL1}}};
constexpr int kTypesOfAKind = 20;

struct Named {
    int value;
    const char* name;
};
constexpr std::array<Named, 7> kOtherTypes = {{{CG_STRUCT, "struct"},
                                               {CG_ARRAY, "array"},
                                               {CG_SAMPLER1D, "sampler1D"},
                                               {CG_SAMPLER2D, "sampler2D"},
                                               {CG_SAMPLER3D, "sampler3D"},
                                               {CG_SAMPLERRECT, "samplerRECT"},
                                               {CG_SAMPLERCUBE, "samplerCUBE"}}};

constexpr std::array<Named, 8> kProfiles = {{{CG_PROFILE_VP30, "vp30"},
                                             {CG_PROFILE_FP30, "fp30"},
                                             {CG_PROFILE_ARBVP1, "arbvp1"},
                                             {CG_PROFILE_FP40, "fp40"},
                                             {CG_PROFILE_ARBFP1, "arbfp1"},
                                             {CG_PROFILE_VP40, "vp40"},
                                             {CG_PROFILE_GLSLV, "glslv"},
                                             {CG_PROFILE_GLSLF, "glslf"}}};

/// A row of resources: "TEXUNIT0" to "TEXUNIT15".
struct Row {
    const char* name;
    int first;
    int length;
    bool isNumbered;
};
constexpr std::array<Row, 14> kRows = {{{"TEXUNIT", CG_TEXUNIT0, 16, true},
                                        {"ATTR", CG_ATTR0, 16, true},
                                        {"C", CG_C, 1, false},
                                        {"TEX", CG_TEX0, 8, true},
                                        {"HPOS", CG_HPOS, 1, false},
                                        {"COL", CG_COL0, 4, true},
                                        {"PSIZ", CG_PSIZ, 1, false},
                                        {"WPOS", CG_WPOS, 1, false},
                                        {"POSITION", CG_POSITION0, 1, true},
                                        {"COLOR", CG_COLOR0, 2, true},
                                        {"NORMAL", CG_NORMAL0, 1, true},
                                        {"TEXCOORD", CG_TEXCOORD0, 8, true},
                                        {"FOGCOORD", CG_FOGCOORD, 1, false},
                                        {"DEPTH", CG_DEPTH0, 1, true}}};

struct ErrorText {
    CGerror error;
    const char* text;
};
constexpr std::array<ErrorText, 22> kErrors = {{
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
    {CG_MEMORY_ALLOC_ERROR, "there is not enough memory"},
    {CG_INVALID_CONTEXT_HANDLE_ERROR, "there is no such context"},
    {CG_INVALID_PROGRAM_HANDLE_ERROR, "there is no such program"},
    {CG_INVALID_PARAM_HANDLE_ERROR, "there is no such parameter"},
    {CG_UNKNOWN_PROFILE_ERROR, "there is no such profile"},
    {CG_INVALID_DIMENSION_ERROR, "the array has no such dimension"},
    {CG_ARRAY_PARAM_ERROR, "the parameter is no array"},
    {CG_OUT_OF_ARRAY_BOUNDS_ERROR, "the array has no such element"},
}};

const Row* rowOf(CGresource resource) {
    for (const Row& row : kRows)
        if (resource >= row.first && resource < row.first + row.length)
            return &row;
    return nullptr;
}

} // namespace

CGtype typeOf(const Type* type) {
    switch (type->kind) {
    case Type::Kind::Struct:
        return CG_STRUCT;
    case Type::Kind::Array:
        return CG_ARRAY;
    case Type::Kind::Sampler: {
        constexpr std::array<CGtype, 8> kSamplers = {CG_SAMPLER2D,    CG_SAMPLER1D,   CG_SAMPLER2D,
                                                     CG_SAMPLER3D,    CG_SAMPLERRECT, CG_SAMPLERCUBE,
                                                     CG_UNKNOWN_TYPE, CG_UNKNOWN_TYPE};
        return kSamplers[static_cast<size_t>(type->sampler)];
    }
    case Type::Kind::Numeric:
        break;
    default:
        return CG_UNKNOWN_TYPE;
    }
    for (const Kind& kind : kKinds) {
        const bool isDouble = kind.scalar == Scalar::Float && type->scalar == Scalar::Double;
        if (kind.scalar != type->scalar && !isDouble)
            continue;
        if (type->isMatrix())
            return static_cast<CGtype>(kind.first + 4 + (type->rows - 1) * 4 + type->columns - 1);
        if (type->columns == 1)
            return static_cast<CGtype>(kind.vectorOfOne);
        return static_cast<CGtype>(kind.first + (type->columns ? type->columns - 1 : 0));
    }
    return CG_UNKNOWN_TYPE;
}

std::string nameOf(CGtype type) {
    for (const Named& other : kOtherTypes)
        if (other.value == type)
            return other.name;
    for (const Kind& kind : kKinds) {
        if (type == kind.vectorOfOne)
            return std::string(kind.name) + "1";
        const int place = type - kind.first;
        if (place < 0 || place >= kTypesOfAKind)
            continue;
        if (place < 4)
            return place ? kind.name + std::to_string(place + 1) : kind.name;
        return joined(
            {kind.name, std::to_string((place - 4) / 4 + 1), "x", std::to_string((place - 4) % 4 + 1)});
    }
    return {};
}

CGtype typeNamed(const std::string& name) {
    for (const Named& other : kOtherTypes)
        if (name == other.name)
            return static_cast<CGtype>(other.value);
    for (const Kind& kind : kKinds) {
        for (int place = 0; place < kTypesOfAKind; ++place)
            if (name == nameOf(static_cast<CGtype>(kind.first + place)))
                return static_cast<CGtype>(kind.first + place);
        if (name == nameOf(static_cast<CGtype>(kind.vectorOfOne)))
            return static_cast<CGtype>(kind.vectorOfOne);
    }
    return CG_UNKNOWN_TYPE;
}

std::string nameOf(CGresource resource) {
    const Row* row = rowOf(resource);
    if (!row)
        return resource == CG_UNDEFINED ? "UNDEFINED" : "";
    return row->isNumbered ? row->name + std::to_string(resource - row->first) : row->name;
}

CGresource resourceNamed(const std::string& name) {
    for (const Row& row : kRows)
        for (int i = 0; i < row.length; ++i)
            if (name == nameOf(static_cast<CGresource>(row.first + i)))
                return static_cast<CGresource>(row.first + i);
    return CG_UNDEFINED;
}

CGresource baseOf(CGresource resource) {
    const Row* row = rowOf(resource);
    return row ? static_cast<CGresource>(row->first) : resource;
}

const char* nameOf(CGprofile profile) {
    const auto* found = std::find_if(kProfiles.begin(), kProfiles.end(),
                                     [&](const Named& each) { return each.value == profile; });
    return found == kProfiles.end() ? nullptr : found->name;
}

CGprofile profileNamed(const std::string& name) {
    const auto* found = std::find_if(kProfiles.begin(), kProfiles.end(),
                                     [&](const Named& each) { return name == each.name; });
    return found == kProfiles.end() ? CG_PROFILE_UNKNOWN : static_cast<CGprofile>(found->value);
}

bool isVertexProfile(CGprofile profile) {
    return profile == CG_PROFILE_VP30 || profile == CG_PROFILE_ARBVP1 || profile == CG_PROFILE_VP40 ||
           profile == CG_PROFILE_GLSLV;
}

bool isKnown(CGprofile profile) {
    return nameOf(profile) != nullptr;
}

const char* textOf(CGerror error) {
    const auto* found = std::find_if(kErrors.begin(), kErrors.end(),
                                     [&](const ErrorText& each) { return each.error == error; });
    return found == kErrors.end() ? nullptr : found->text;
}

} // namespace orlocg
