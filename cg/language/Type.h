#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orlocg {

enum class Scalar : uint8_t { Bool, Int, Fixed, Half, Float, Double };

enum class SamplerKind : uint8_t { Any, Dim1, Dim2, Dim3, Rect, Cube, Dim1Array, Dim2Array };

struct StructType;

/// A type. The same type is the same object: compare pointers.
struct Type {
    enum class Kind : uint8_t { Void, Numeric, Sampler, Struct, Array, String };

    Kind kind = Kind::Void;

    /// Numeric. A scalar has neither rows nor columns, a vector has columns, a matrix both, each 1 to 4.
    Scalar scalar = Scalar::Float;
    uint8_t rows = 0;
    uint8_t columns = 0;

    SamplerKind sampler = SamplerKind::Any;
    bool isShadow = false; ///< of a sampler: it compares depths
    StructType* structure = nullptr;

    /// Arrays. No length yet: 0.
    const Type* element = nullptr;
    uint32_t length = 0;

    bool isNumeric() const { return kind == Kind::Numeric; }
    bool isScalar() const { return isNumeric() && columns == 0; }
    bool isVector() const { return isNumeric() && columns > 0 && rows == 0; }
    bool isMatrix() const { return rows > 0; }
    bool isSampler() const { return kind == Kind::Sampler; }
    bool isStruct() const { return kind == Kind::Struct; }
    bool isArray() const { return kind == Kind::Array; }
    bool isBool() const { return isNumeric() && scalar == Scalar::Bool; }
    bool isInt() const { return isNumeric() && scalar == Scalar::Int; }

    /// Numbers in a numeric type.
    uint32_t size() const { return (rows ? rows : 1U) * (columns ? columns : 1U); }
};

struct Member {
    std::string name;
    const Type* type;
    std::string semantic;
    bool isUniform = false; ///< said so itself
};

struct StructType {
    std::string name;
    std::vector<Member> members;
    std::vector<struct Function*> methods;
    bool isInterface = false;                  ///< has methods without bodies, and no members
    std::vector<const StructType*> interfaces; ///< that it has the methods of

    const Member* find(std::string_view member) const;
    bool implements(const StructType* interface) const;
};

/// All types of a program.
class Types {
public:
    const Type* voidType() const { return &fVoid; }
    const Type* stringType() const { return &fString; }
    const Type* numeric(Scalar scalar, unsigned rows, unsigned columns);
    const Type* scalar(Scalar scalar) { return numeric(scalar, 0, 0); }
    const Type* vector(Scalar scalar, unsigned columns) { return numeric(scalar, 0, columns); }
    const Type* sampler(SamplerKind kind, bool isShadow = false);
    const Type* array(const Type* element, uint32_t length);
    const Type* structure(StructType* type);
    StructType* makeStruct(std::string name);

    /// A type of that name that every program has: "float3x4", "sampler2D". Null: there is none.
    const Type* named(std::string_view name);

    /// The same shape of other numbers.
    const Type* withScalar(const Type* type, Scalar scalar) {
        return numeric(scalar, type->rows, type->columns);
    }

private:
    const Type* intern(const Type& type);

    Type fVoid;
    Type fString;
    std::deque<Type> fTypes;
    std::vector<std::unique_ptr<StructType>> fStructs;

public:
    Types() { fString.kind = Type::Kind::String; }
};

/// Whether it is one only when a function is called: an array without a length, an interface.
bool isOpen(const Type* type);

/// As a program spells it.
std::string nameOf(const Type* type);

/// Whether a sampler is in it somewhere.
bool holdsSampler(const Type* type);

/// Whether nothing in it varies, wherever it stands: samplers, and members that say so.
bool isAllUniform(const Type* type);

/// Numbers and samplers in it, as long as they are counted with 64 bits.
uint64_t leavesOf(const Type* type);

} // namespace orlocg
