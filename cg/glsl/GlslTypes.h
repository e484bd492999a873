#pragma once

#include "language/Type.h"

#include <cstdint>
#include <string>

// What Cg's types are in GLSL.

namespace orlocg {

/// Whether GLSL has a matrix of that shape; the others are vectors to it.
inline bool isGlslMatrix(const Type* type) {
    return type->rows >= 2 && type->columns >= 2;
}

/// Numbers that GLSL's vector of that type has; 1 for its scalars.
inline unsigned width(const Type* type) {
    return isGlslMatrix(type) ? 0 : type->size();
}

inline std::string vectorName(Scalar scalar, unsigned size) {
    const bool isBool = scalar == Scalar::Bool;
    const bool isInt = scalar == Scalar::Int;
    if (size == 1)
        return isBool ? "bool" : (isInt ? "int" : "float");
    return std::string(isBool ? "bvec" : (isInt ? "ivec" : "vec")) + std::to_string(size);
}

/// The innermost element of arrays of arrays, which GLSL has not: they become one array.
inline const Type* innermost(const Type* type) {
    return type->isArray() ? innermost(type->element) : type;
}

inline uint32_t flatLength(const Type* type) {
    return type->isArray() ? type->length * flatLength(type->element) : 1;
}

/// A struct that has nothing but samplers, or an array of such, is nothing to GLSL.
inline bool hasValue(const Type* type) {
    if (type->isArray())
        return hasValue(type->element);
    return !type->isSampler();
}

} // namespace orlocg
