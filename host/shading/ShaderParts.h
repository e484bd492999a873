#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace koShadingDag {

enum class ShadingLanguage { Glsl, Cg };

/// What a material's shader is made of, in the words of GLSL, whatever it becomes. Functions are snippets, by
/// their names.
struct ShaderParts {
    // What the fragment shader takes from the vertex shader.
    bool takesPosition = false; ///< vec3 eyePosition
    bool takesNormal = false;   ///< vec3 eyeNormal
    bool takesColor = false;    ///< gl_Color
    std::set<int> uvSets;       ///< vec2 uv0 and so on
    std::set<int> tangentSets;  ///< vec3 eyeTangent0, eyeBitangent0 and so on

    bool takesSide = false; ///< gl_FrontFacing

    std::vector<std::string> uniforms;
    std::vector<std::string_view> snippets;
    std::string body; ///< statements, which set gl_FragColor

    /// In its place what doesn't compile and says so; empty: nothing is wrong.
    std::string fault;
};

struct ShaderSources {
    std::string vertex;
    std::string fragment;
};

ShaderSources glslSources(const ShaderParts& parts);

/// The vertex program leaves the position to the compiler's -posinv.
ShaderSources cgSources(const ShaderParts& parts);

/// The pattern with the parts in the place of its $ signs, in their order.
template <typename... Parts>
std::string filled(std::string_view pattern, const Parts&... parts) {
    std::string text;
    const auto add = [&](std::string_view part) {
        const size_t place = pattern.find('$');
        (text += pattern.substr(0, place)) += part;
        pattern.remove_prefix(place + 1);
    };
    (add(parts), ...);
    return text += pattern;
}

/// The sum, a line each; black where there is none.
inline std::string joined(const std::vector<std::string>& terms) {
    std::string sum;
    for (const std::string& term : terms)
        sum += (sum.empty() ? "" : " +\n        ") + term;
    return sum.empty() ? "vec3(0.0)" : sum;
}

} // namespace koShadingDag
