#include "language/Library.h"

#include <algorithm>
#include <array>
#include <utility>

namespace orlocg {

namespace {

using enum LibraryRule;

constexpr std::array kFunctions = {
    LibraryFunction{"D3DCOLORtoUBYTE4", Bytes, "cg_ubyte4"},
    LibraryFunction{"abs", Keep1, "abs"},
    LibraryFunction{"acos", Map1, "acos"},
    LibraryFunction{"all", Truth, "all"},
    LibraryFunction{"any", Truth, "any"},
    LibraryFunction{"asin", Map1, "asin"},
    LibraryFunction{"atan", Map1, "atan"},
    LibraryFunction{"atan2", Map2, "atan"},
    LibraryFunction{"ceil", Map1, "ceil"},
    LibraryFunction{"clamp", Keep3, "clamp"},
    LibraryFunction{"clip", Clip, "cg_clip"},
    LibraryFunction{"cos", Map1, "cos"},
    LibraryFunction{"cosh", Map1, "cg_cosh"},
    LibraryFunction{"cross", Cross, "cross"},
    LibraryFunction{"ddx", Map1, "dFdx"},
    LibraryFunction{"ddy", Map1, "dFdy"},
    LibraryFunction{"degrees", Map1, "degrees"},
    LibraryFunction{"determinant", Determinant, "cg_determinant"},
    LibraryFunction{"distance", Reduce2, "distance"},
    LibraryFunction{"dot", Reduce2, "dot"},
    LibraryFunction{"exp", Map1, "exp"},
    LibraryFunction{"exp2", Map1, "exp2"},
    LibraryFunction{"faceforward", Map3, "faceforward"},
    LibraryFunction{"floor", Map1, "floor"},
    LibraryFunction{"fmod", Map2, "cg_fmod"},
    LibraryFunction{"frac", Map1, "fract"},
    LibraryFunction{"fract", Map1, "fract"},
    LibraryFunction{"frexp", Split, "cg_frexp"},
    LibraryFunction{"fwidth", Map1, "fwidth"},
    LibraryFunction{"inverse", Inverse, "cg_inverse"},
    LibraryFunction{"isfinite", Test1, "cg_isfinite"},
    LibraryFunction{"isinf", Test1, "cg_isinf"},
    LibraryFunction{"isnan", Test1, "cg_isnan"},
    LibraryFunction{"ldexp", Map2, "cg_ldexp"},
    LibraryFunction{"length", Reduce1, "length"},
    LibraryFunction{"lerp", Map3, "mix"},
    LibraryFunction{"lit", Lit, "cg_lit"},
    LibraryFunction{"log", Map1, "log"},
    LibraryFunction{"log10", Map1, "cg_log10"},
    LibraryFunction{"log2", Map1, "log2"},
    LibraryFunction{"mad", Map3, "cg_mad"},
    LibraryFunction{"max", Keep2, "max"},
    LibraryFunction{"min", Keep2, "min"},
    LibraryFunction{"mix", Map3, "mix"},
    LibraryFunction{"mod", Map2, "mod"},
    LibraryFunction{"modf", Split, "cg_modf"},
    LibraryFunction{"mul", Multiply, ""},
    LibraryFunction{"noise", Reduce1, "cg_noise"},
    LibraryFunction{"normalize", Map1, "normalize"},
    LibraryFunction{"pack_2half", Pack2, "cg_pack_2half"},
    LibraryFunction{"pack_2ushort", Pack2, "cg_pack_2ushort"},
    LibraryFunction{"pack_4byte", Pack4, "cg_pack_4byte"},
    LibraryFunction{"pack_4ubyte", Pack4, "cg_pack_4ubyte"},
    LibraryFunction{"pow", Map2, "pow"},
    LibraryFunction{"radians", Map1, "radians"},
    LibraryFunction{"rcp", Map1, "cg_rcp"},
    LibraryFunction{"reflect", Map2, "reflect"},
    LibraryFunction{"refract", Refract, "refract"},
    LibraryFunction{"round", Map1, "cg_round"},
    LibraryFunction{"rsqrt", Map1, "inversesqrt"},
    LibraryFunction{"saturate", Map1, "cg_saturate"},
    LibraryFunction{"sign", Keep1, "sign"},
    LibraryFunction{"sin", Map1, "sin"},
    LibraryFunction{"sincos", SinCos, "cg_sincos"},
    LibraryFunction{"sinh", Map1, "cg_sinh"},
    LibraryFunction{"smoothstep", Map3, "smoothstep"},
    LibraryFunction{"sqrt", Map1, "sqrt"},
    LibraryFunction{"step", Map2, "step"},
    LibraryFunction{"tan", Map1, "tan"},
    LibraryFunction{"tanh", Map1, "cg_tanh"},
    LibraryFunction{"transpose", Transpose, "transpose"},
    LibraryFunction{"trunc", Map1, "cg_trunc"},
    LibraryFunction{"unpack_2half", Unpack2, "cg_unpack_2half"},
    LibraryFunction{"unpack_2ushort", Unpack2, "cg_unpack_2ushort"},
    LibraryFunction{"unpack_4byte", Unpack4, "cg_unpack_4byte"},
    LibraryFunction{"unpack_4ubyte", Unpack4, "cg_unpack_4ubyte"},
};
static_assert(std::is_sorted(kFunctions.begin(), kFunctions.end(),
                             [](const LibraryFunction& a, const LibraryFunction& b) {
                                 return a.name < b.name;
                             }));

} // namespace

const LibraryFunction* findLibrary(std::string_view name) {
    const auto* found =
        std::lower_bound(kFunctions.begin(), kFunctions.end(), name,
                         [](const LibraryFunction& f, std::string_view wanted) { return f.name < wanted; });
    return found != kFunctions.end() && found->name == name ? found : nullptr;
}

unsigned TextureCall::dimensions() const {
    switch (sampler) {
    case SamplerKind::Dim1:
    case SamplerKind::Dim1Array:
        return 1;
    case SamplerKind::Dim3:
    case SamplerKind::Cube:
        return 3;
    default:
        return 2;
    }
}

std::optional<TextureCall> parseTextureCall(std::string_view name) {
    // "f4tex2D" and its like are older spellings.
    if (name.size() > 5 && std::string_view("fhx").find(name[0]) != std::string_view::npos &&
        name[1] >= '1' && name[1] <= '4' && name.substr(2).starts_with("tex"))
        name.remove_prefix(2);
    if (!name.starts_with("tex"))
        return std::nullopt;
    name.remove_prefix(3);
    constexpr std::array<std::pair<std::string_view, SamplerKind>, 7> kKinds = {
        {{"1D", SamplerKind::Dim1},
         {"2D", SamplerKind::Dim2},
         {"3D", SamplerKind::Dim3},
         {"RECT", SamplerKind::Rect},
         {"CUBE", SamplerKind::Cube},
         {"1DARRAY", SamplerKind::Dim1Array},
         {"2DARRAY", SamplerKind::Dim2Array}}};
    constexpr std::array<std::pair<std::string_view, TextureCall::Form>, 6> kForms = {
        {{"", TextureCall::Form::Plain},
         {"proj", TextureCall::Form::Projective},
         {"bias", TextureCall::Form::Biased},
         {"lod", TextureCall::Form::Level},
         {"fetch", TextureCall::Form::Fetch},
         {"size", TextureCall::Form::Size}}};
    for (const auto& [kindName, kind] : kKinds) {
        if (!name.starts_with(kindName))
            continue;
        for (const auto& [formName, form] : kForms)
            if (name.substr(kindName.size()) == formName)
                return TextureCall{kind, form};
    }
    return std::nullopt;
}

} // namespace orlocg
