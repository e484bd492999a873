#pragma once

#include "language/Type.h"

#include <optional>
#include <string_view>

namespace orlocg {

/// How a function of the standard library treats its arguments, and what it gives back.
enum class LibraryRule : uint8_t {
    Map1, ///< (T) to T, numbers made floats; scalars beside vectors are smeared
    Map2,
    Map3,
    Keep1, ///< as Map, whole numbers stay
    Keep2,
    Keep3,
    Test1,   ///< (T) to bools of that shape
    Reduce1, ///< (T) to a scalar
    Reduce2, ///< (T, T) to a scalar
    Truth,   ///< (bools) to a bool
    Cross,   ///< (float3, float3) to float3
    Refract, ///< (T, T, scalar) to T
    Lit,     ///< (scalar, scalar, scalar) to float4
    Transpose,
    Determinant,
    Inverse,
    Multiply, ///< mul
    SinCos,   ///< (T, out T, out T)
    Pack2,    ///< (float2) to a float of its bits
    Pack4,
    Unpack2, ///< and back
    Unpack4,
    Bytes, ///< (float4) to int4
    Clip,  ///< (T), and gives nothing back
    Split  ///< (T, out T) to T
};

struct LibraryFunction {
    std::string_view name;
    LibraryRule rule;
    std::string_view glsl; ///< what does the same in GLSL; a name with "cg_" is a helper of ours
};

/// The function of that name; null: there is none. Those of textures are not among them.
const LibraryFunction* findLibrary(std::string_view name);

/// What the name of a texture function asks for.
struct TextureCall {
    enum class Form : uint8_t { Plain, Projective, Biased, Level, Fetch, Size };

    SamplerKind sampler;
    Form form;

    unsigned dimensions() const;
    bool isOfLayers() const { return sampler == SamplerKind::Dim1Array || sampler == SamplerKind::Dim2Array; }
    /// Numbers in a plain coordinate: the last may be the layer's.
    unsigned coordinates() const { return dimensions() + (isOfLayers() ? 1 : 0); }
};

std::optional<TextureCall> parseTextureCall(std::string_view name);

} // namespace orlocg
