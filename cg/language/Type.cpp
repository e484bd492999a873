#include "language/Type.h"

#include <algorithm>
#include <array>

namespace orlocg {

namespace {

struct ScalarName {
    std::string_view name;
    Scalar scalar;
};
constexpr std::array<ScalarName, 6> kScalars = {{{"bool", Scalar::Bool},
                                                 {"int", Scalar::Int},
                                                 {"fixed", Scalar::Fixed},
                                                 {"half", Scalar::Half},
                                                 {"float", Scalar::Float},
                                                 {"double", Scalar::Double}}};

/// Spellings that stand for one of the others.
constexpr std::array<ScalarName, 9> kOtherScalars = {{{"unsigned", Scalar::Int},
                                                      {"uint", Scalar::Int},
                                                      {"short", Scalar::Int},
                                                      {"long", Scalar::Int},
                                                      {"char", Scalar::Int},
                                                      {"cfloat", Scalar::Float},
                                                      {"cint", Scalar::Int},
                                                      {"vec", Scalar::Float},
                                                      {"mat", Scalar::Float}}};

struct SamplerName {
    std::string_view name;
    SamplerKind kind;
};
constexpr std::array<SamplerName, 9> kSamplers = {{{"sampler", SamplerKind::Any},
                                                   {"sampler1D", SamplerKind::Dim1},
                                                   {"sampler2D", SamplerKind::Dim2},
                                                   {"sampler3D", SamplerKind::Dim3},
                                                   {"samplerRECT", SamplerKind::Rect},
                                                   {"samplerCUBE", SamplerKind::Cube},
                                                   {"sampler1DARRAY", SamplerKind::Dim1Array},
                                                   {"sampler2DARRAY", SamplerKind::Dim2Array},
                                                   {"sampler2DRect", SamplerKind::Rect}}};

} // namespace

const Member* StructType::find(std::string_view member) const {
    const auto found =
        std::find_if(members.begin(), members.end(), [&](const Member& each) { return each.name == member; });
    return found == members.end() ? nullptr : &*found;
}

bool StructType::implements(const StructType* interface) const {
    return std::find(interfaces.begin(), interfaces.end(), interface) != interfaces.end();
}

bool isOpen(const Type* type) {
    if (type->isArray())
        return type->length == 0 || isOpen(type->element);
    return type->isStruct() && type->structure->isInterface;
}

const Type* Types::intern(const Type& type) {
    for (const Type& known : fTypes)
        if (known.kind == type.kind && known.scalar == type.scalar && known.rows == type.rows &&
            known.columns == type.columns && known.sampler == type.sampler &&
            known.isShadow == type.isShadow && known.structure == type.structure &&
            known.element == type.element && known.length == type.length)
            return &known;
    fTypes.push_back(type);
    return &fTypes.back();
}

const Type* Types::numeric(Scalar scalar, unsigned rows, unsigned columns) {
    Type type;
    type.kind = Type::Kind::Numeric;
    type.scalar = scalar;
    type.rows = static_cast<uint8_t>(rows);
    type.columns = static_cast<uint8_t>(columns);
    return intern(type);
}

const Type* Types::sampler(SamplerKind kind, bool isShadow) {
    Type type;
    type.kind = Type::Kind::Sampler;
    type.sampler = kind;
    type.isShadow = isShadow;
    return intern(type);
}

const Type* Types::array(const Type* element, uint32_t length) {
    Type type;
    type.kind = Type::Kind::Array;
    type.element = element;
    type.length = length;
    return intern(type);
}

const Type* Types::structure(StructType* structure) {
    Type type;
    type.kind = Type::Kind::Struct;
    type.structure = structure;
    return intern(type);
}

StructType* Types::makeStruct(std::string name) {
    fStructs.push_back(std::make_unique<StructType>());
    fStructs.back()->name = std::move(name);
    return fStructs.back().get();
}

const Type* Types::named(std::string_view name) {
    if (name == "void")
        return voidType();
    if (name == "string")
        return stringType();
    constexpr std::string_view kShadow = "SHADOW";
    const bool isShadow = name.size() > 9 && name.ends_with(kShadow);
    const std::string_view plain = name.substr(0, name.size() - (isShadow ? kShadow.size() : 0));
    for (const SamplerName& candidate : kSamplers)
        if (plain == candidate.name &&
            !(isShadow && (candidate.kind == SamplerKind::Any || candidate.kind == SamplerKind::Dim3)))
            return sampler(candidate.kind, isShadow);
    const auto digit = [](char c) { return c >= '1' && c <= '4' ? static_cast<unsigned>(c - '0') : 0U; };
    const auto shaped = [&](const ScalarName& scalar) -> const Type* {
        if (!name.starts_with(scalar.name))
            return nullptr;
        const std::string_view shape = name.substr(scalar.name.size());
        const bool isShort =
            scalar.name == "vec" || scalar.name == "mat"; // GLSL's, which programs use as well
        if (shape.empty() && !isShort)
            return this->scalar(scalar.scalar);
        if (shape.size() == 1 && digit(shape[0]) && scalar.name == "mat")
            return numeric(Scalar::Float, digit(shape[0]), digit(shape[0]));
        if (shape.size() == 1 && digit(shape[0]))
            return vector(scalar.scalar, digit(shape[0]));
        if (shape.size() == 3 && digit(shape[0]) && shape[1] == 'x' && digit(shape[2]) &&
            scalar.name != "vec")
            return numeric(std::max(scalar.scalar, Scalar::Fixed), digit(shape[0]),
                           digit(shape[2])); // GLSL's matrices hold floats
        return nullptr;
    };
    for (const ScalarName& scalar : kScalars)
        if (const Type* type = shaped(scalar))
            return type;
    for (const ScalarName& scalar : kOtherScalars)
        if (const Type* type = shaped(scalar))
            return type;
    return nullptr;
}

std::string nameOf(const Type* type) {
    switch (type->kind) {
    case Type::Kind::Void:
        return "void";
    case Type::Kind::String:
        return "string";
    case Type::Kind::Struct:
        return type->structure->name;
    case Type::Kind::Array:
        return nameOf(type->element) + "[" + (type->length ? std::to_string(type->length) : "") + "]";
    case Type::Kind::Sampler:
        return std::string(kSamplers[static_cast<size_t>(type->sampler)].name) +
               (type->isShadow ? "SHADOW" : "");
    case Type::Kind::Numeric:
        break;
    }
    std::string name(kScalars[static_cast<size_t>(type->scalar)].name);
    if (type->rows)
        name += std::to_string(type->rows) + "x";
    return type->columns ? name + std::to_string(type->columns) : name;
}

bool holdsSampler(const Type* type) {
    if (type->isArray())
        return holdsSampler(type->element);
    if (type->isStruct())
        return std::any_of(type->structure->members.begin(), type->structure->members.end(),
                           [](const Member& member) { return holdsSampler(member.type); });
    return type->isSampler();
}

bool isAllUniform(const Type* type) {
    if (type->isArray())
        return isAllUniform(type->element);
    if (type->isStruct())
        return std::all_of(
            type->structure->members.begin(), type->structure->members.end(),
            [](const Member& member) { return member.isUniform || isAllUniform(member.type); });
    return type->isSampler();
}

uint64_t leavesOf(const Type* type) {
    if (type->isArray())
        return leavesOf(type->element) * type->length;
    if (!type->isStruct())
        return type->isNumeric() ? type->size() : 1;
    uint64_t sum = 0;
    for (const Member& member : type->structure->members)
        sum += leavesOf(member.type);
    return sum;
}

} // namespace orlocg
