#include "glsl/Helpers.h"

#include "preprocess/Source.h"

#include <array>
#include <string_view>

namespace orlocg {

namespace {

struct Helper {
    std::string_view name;
    std::string_view text; ///< T: the type
};

constexpr std::array<Helper, 36> kHelpers = {{
    {"cg_saturate", "T cg_saturate(T x) { return clamp(x, 0.0, 1.0); }"},
    {"cg_round", "T cg_round(T x) { return floor(x + 0.5); }"},
    {"cg_trunc", "T cg_trunc(T x) { return sign(x) * floor(abs(x)); }"},
    {"cg_fmod", "T cg_fmod(T x, T y) { T q = x / y; return x - y * (sign(q) * floor(abs(q))); }"},
    {"cg_cosh", "T cg_cosh(T x) { return 0.5 * (exp(x) + exp(-x)); }"},
    {"cg_sinh", "T cg_sinh(T x) { return 0.5 * (exp(x) - exp(-x)); }"},
    {"cg_tanh", "T cg_tanh(T x) { return sign(x) * (1.0 - 2.0 / (exp(2.0 * abs(x)) + 1.0)); }"},
    {"cg_log10", "T cg_log10(T x) { return log2(x) * 0.301029995664; }"},
    {"cg_ldexp", "T cg_ldexp(T x, T n) { return x * exp2(n); }"},
    {"cg_modf", "T cg_modf(T x, out T whole) { whole = sign(x) * floor(abs(x)); return x - whole; }"},
    {"cg_frexp",
     "T cg_frexp(T x, out T n) { n = floor(log2(max(abs(x), 1e-37))) + 1.0; n *= sign(abs(x)); return x / "
     "exp2(n); }"},
    {"cg_mad", "T cg_mad(T a, T b, T c) { return a * b + c; }"},
    {"cg_rcp", "T cg_rcp(T x) { return 1.0 / x; }"},
    {"cg_clip", "void cg_clip(T x) { if (any(lessThan(x, T(0.0)))) discard; }"},
    {"cg_sincos", "void cg_sincos(T x, out T s, out T c) { s = sin(x); c = cos(x); }"},
    {"cg_lit",
     "vec4 cg_lit(float d, float s, float m) { return vec4(1.0, max(d, 0.0), d > 0.0 ? pow(max(s, 0.0), m) : "
     "0.0, 1.0); }"},
    {"cg_determinant2", "float cg_determinant(mat2 m) { return m[0][0] * m[1][1] - m[0][1] * m[1][0]; }"},
    {"cg_determinant3", "float cg_determinant(mat3 m) { return dot(m[0], cross(m[1], m[2])); }"},
    {"cg_determinant4",
     "float cg_determinant(mat4 m) { vec4 a = m[0].xxxy * m[1].yzwz - m[1].xxxy * m[0].yzwz; vec2 b = "
     "m[0].yz * "
     "m[1].ww - m[1].yz * m[0].ww; vec4 c = m[2].xxxy * m[3].yzwz - m[3].xxxy * m[2].yzwz; vec2 d = m[2].yz "
     "* "
     "m[3].ww - m[3].yz * m[2].ww; return a.x * d.y - a.y * d.x + a.z * c.w + a.w * c.z - b.x * c.y + b.y * "
     "c.x; }"},
    // The transposed matrix of cofactors over the determinant.
    {"cg_inverse2", "mat2 cg_inverse(mat2 m) { return mat2(m[1][1], -m[0][1], -m[1][0], m[0][0]) / (m[0][0] "
                    "* m[1][1] - m[0][1] * "
                    "m[1][0]); }"},
    {"cg_inverse3", "mat3 cg_inverse(mat3 m) { mat3 c = mat3(cross(m[1], m[2]), cross(m[2], m[0]), "
                    "cross(m[0], m[1])); return "
                    "transpose(c) / dot(m[0], c[0]); }"},
    {"cg_inverse4", "mat4 cg_inverse(mat4 m) { mat4 c; for (int i = 0; i < 4; ++i) { for (int j = 0; j < 4; "
                    "++j) { int a = i == 0 ? 1 : 0, b = i < 2 ? 2 : 1, e = i < 3 ? 3 : 2; int x = j == 0 ? 1 "
                    ": 0, y = j < 2 ? 2 : 1, z = "
                    "j < 3 ? 3 : 2; vec3 p = vec3(m[a][x], m[a][y], m[a][z]), q = vec3(m[b][x], m[b][y], "
                    "m[b][z]), t = vec3(m[e][x], "
                    "m[e][y], m[e][z]); c[i][j] = ((i + j) % 2 == 0 ? 1.0 : -1.0) * dot(p, cross(q, t)); } } "
                    "return transpose(c) / "
                    "dot(m[0], c[0]); }"},
    // The first number in the lowest bits.
    {"cg_pack_2half", "float cg_pack_2half(vec2 v) { return uintBitsToFloat(packHalf2x16(v)); }"},
    {"cg_unpack_2half", "vec2 cg_unpack_2half(float x) { return unpackHalf2x16(floatBitsToUint(x)); }"},
    {"cg_pack_2ushort",
     "float cg_pack_2ushort(vec2 v) { uvec2 u = uvec2(floor(clamp(v, 0.0, 1.0) * 65535.0 + 0.5)); "
     "return uintBitsToFloat(u.x | u.y << 16); }"},
    {"cg_unpack_2ushort",
     "vec2 cg_unpack_2ushort(float x) { uint u = floatBitsToUint(x); return vec2(u & 0xFFFFu, u >> "
     "16) / 65535.0; }"},
    {"cg_pack_4byte",
     "float cg_pack_4byte(vec4 v) { uvec4 u = uvec4(floor(clamp(v * 127.0, -128.0, 127.0) + 128.5)); "
     "return uintBitsToFloat(u.x | u.y << 8 | u.z << 16 | u.w << 24); }"},
    {"cg_unpack_4byte",
     "vec4 cg_unpack_4byte(float x) { uint u = floatBitsToUint(x); return (vec4(u & 0xFFu, u >> 8 & "
     "0xFFu, u >> 16 & 0xFFu, u >> 24) - 128.0) / 127.0; }"},
    {"cg_pack_4ubyte",
     "float cg_pack_4ubyte(vec4 v) { uvec4 u = uvec4(floor(clamp(v, 0.0, 1.0) * 255.0 + 0.5)); return "
     "uintBitsToFloat(u.x | u.y << 8 | u.z << 16 | u.w << 24); }"},
    {"cg_unpack_4ubyte",
     "vec4 cg_unpack_4ubyte(float x) { uint u = floatBitsToUint(x); return vec4(u & 0xFFu, u >> 8 & "
     "0xFFu, u >> 16 & 0xFFu, u >> 24) / 255.0; }"},
    // Direct3D's colours have blue first.
    {"cg_ubyte4", "ivec4 cg_ubyte4(vec4 v) { return ivec4(v.zyxw * 255.001953); }"},
    // Of gradients at the corners of a lattice, from -1 to 1 and 0 there.
    {"cg_noise3", "float cg_noise(vec3 p) { vec3 c = floor(p), f = p - c, w = f * f * f * (f * (f * 6.0 - "
                  "15.0) + 10.0); float r "
                  "= 0.0; for (int i = 0; i < 8; ++i) { vec3 o = vec3(i & 1, i >> 1 & 1, i >> 2); uvec3 q = "
                  "uvec3(ivec3(c + o)); "
                  "uint h = q.x * 1597334677u ^ q.y * 3812015801u ^ q.z * 2798796415u; h = (h ^ h >> 15) * "
                  "2246822519u; h ^= h >> "
                  "13; vec3 g = vec3(h & 1023u, h >> 10 & 1023u, h >> 20 & 1023u) / 511.5 - 1.0, k = mix(1.0 "
                  "- w, w, o); r += k.x "
                  "* k.y * k.z * dot(g, f - o); } return r; }"},
    {"cg_noiset", "float cg_noise(float x) { return cg_noise(vec3(x, 0.0, 0.0)); }"},
    {"cg_noise2", "float cg_noise(vec2 p) { return cg_noise(vec3(p, 0.0)); }"},
    {"cg_noise4", "float cg_noise(vec4 p) { return cg_noise(p.xyz + p.w * vec3(0.71, 0.53, 0.61)); }"},
    {"cg_flat", "vec4 cg_flat(mat2 m) { return vec4(m[0], m[1]); }"},
}};

/// A function of one test for each component.
std::string perComponent(const std::string& name, const std::string& type, const std::string& test) {
    const auto of = [&](const char* component) {
        std::string text = test;
        for (size_t at = 0; (at = text.find('#', at)) != std::string::npos;)
            text.replace(at, 1, std::string("x") + component);
        return text;
    };
    if (type == "float")
        return "bool " + name + "(float x) { return " + of("") + "; }";
    const int size = type.back() - '0';
    std::string result = "bvec" + std::to_string(size) + " " + name + "(" + type + " x) { return bvec" +
                         std::to_string(size) + "(" + of(".x");
    for (const char* component : {".y", ".z", ".w"})
        if (component[1] == 'y' || (component[1] == 'z' && size > 2) || size > 3)
            result += ", " + of(component);
    return result + "); }";
}

/// A function of two vectors (and of bools that choose between them), component by component. # stands for a
/// component.
std::string ofVectors(const std::string& name, const std::string& type, const std::string& choosing,
                      std::string_view each) {
    const int size = type.back() - '0';
    std::string result =
        joined({type, " ", name, "(", choosing, type, " a, ", type, " b) { return ", type, "("});
    for (int i = 0; i < size; ++i) {
        result += i ? ", " : "";
        for (const char c : each)
            result += c == '#' ? std::string{'.', "xyzw"[i]} : std::string(1, c);
    }
    return result + "); }";
}

/// A matrix of one number everywhere; GLSL's own constructor makes a diagonal.
std::string fill(const std::string& type) {
    const bool isSquare = type.size() == 4;
    const int columns = type[3] - '0';
    const std::string vector = "vec" + std::string(1, isSquare ? type[3] : type[5]) + "(x)";
    std::string result = type + " cg_fill_" + type + "(float x) { return " + type + "(";
    for (int i = 0; i < columns; ++i)
        result += (i ? ", " : "") + vector;
    return result + "); }";
}

} // namespace

std::string helperText(const std::string& name, const std::string& type) {
    if (name == "cg_clip" && type == "float")
        return "void cg_clip(float x) { if (x < 0.0) discard; }";
    if (name == "cg_isfinite")
        return perComponent(name, type, "!(# != #) && abs(#) <= 3.4e38");
    if (name == "cg_isinf")
        return perComponent(name, type, "!(# != #) && abs(#) > 3.4e38");
    if (name == "cg_isnan")
        return perComponent(name, type, "# != #");
    if (name == "cg_select")
        return ofVectors(name, type, joined({"bvec", type.substr(type.size() - 1), " c, "}), "c# ? a# : b#");
    if (name == "cg_and")
        return ofVectors(name, type, "", "a# && b#");
    if (name == "cg_or")
        return ofVectors(name, type, "", "a# || b#");
    if (name.starts_with("cg_fill_"))
        return fill(type);
    const std::string wanted =
        name == "cg_determinant" || name == "cg_inverse" || name == "cg_noise" ? name + type.back() : name;
    for (const Helper& helper : kHelpers) {
        if (helper.name != wanted)
            continue;
        // T stands for the type where it is a word of its own.
        std::string text(helper.text);
        const auto isWord = [](char c) {
            return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || (c >= '0' && c <= '9');
        };
        for (size_t at = 0; (at = text.find('T', at)) != std::string::npos; ++at)
            if ((at == 0 || !isWord(text[at - 1])) && (at + 1 == text.size() || !isWord(text[at + 1])))
                text.replace(at, 1, type);
        return text;
    }
    return {};
}

} // namespace orlocg
