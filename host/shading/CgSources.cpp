#include "ShaderParts.h"
#include "Snippets.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace koShadingDag {

namespace {

struct Word {
    std::string_view glsl;
    std::string_view cg;
};

/// What is called something else in Cg. Whatever else parts and snippets say means the same in both.
constexpr std::array<Word, 24> kWords = {{{"vec2", "float2"},
                                          {"vec3", "float3"},
                                          {"vec4", "float4"},
                                          {"mat4", "float4x4"},
                                          {"mix", "lerp"},
                                          {"fract", "frac"},
                                          {"atan", "atan2"},
                                          {"dFdx", "ddx"},
                                          {"dFdy", "ddy"},
                                          {"texture2D", "tex2D"},
                                          {"sampler2DShadow", "sampler2D"},
                                          {"shadow2D", "tex2D"},
                                          {"gl_Color", "vertexColor"},
                                          {"gl_FragColor", "fragmentColor"},
                                          {"gl_FrontFacing", "side > 0.0"},
                                          {"gl_LightSource", "glstate.light"},
                                          {"constantAttenuation", "attenuation.x"},
                                          {"linearAttenuation", "attenuation.y"},
                                          {"quadraticAttenuation", "attenuation.z"},
                                          {"spotExponent", "attenuation.w"},
                                          {"spotDirection", "spot.direction.xyz"},
                                          {"spotCosCutoff", "spot.direction.w"},
                                          {"gl_ProjectionMatrix", "glstate.matrix.transpose.projection"},
                                          {"gl_ModelViewMatrix", "glstate.matrix.modelview[0]"}}};

bool isOfWord(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

std::string inCg(std::string_view glsl) {
    std::string text;
    while (!glsl.empty()) {
        const auto start = std::find_if(glsl.begin(), glsl.end(), isOfWord);
        text.append(glsl.begin(), start);
        const auto end = std::find_if_not(start, glsl.end(), isOfWord);
        const std::string_view word(start, end);
        const auto known = std::find_if(kWords.begin(), kWords.end(),
                                        [word](const Word& candidate) { return candidate.glsl == word; });
        text += known == kWords.end() ? word : known->cg;
        glsl.remove_prefix(static_cast<size_t>(end - glsl.begin()));
    }
    return text;
}

/// The parameters of an entry function, a line each.
class Parameters {
public:
    void add(std::string_view declaration) { (fText += fText.empty() ? "" : ",\n          ") += declaration; }

    /// What goes from one stage to the other: each takes the next texture coordinates.
    void addVarying(std::string_view qualifier, const ShaderParts& parts) {
        int next = 0;
        const auto add = [&](std::string_view type, const std::string& name) {
            this->add(filled("$$ $ : TEXCOORD$", qualifier, type, name, std::to_string(next++)));
        };
        for (const int set : parts.uvSets)
            add("float2", "uv" + std::to_string(set));
        if (parts.takesPosition)
            add("float3", "eyePosition");
        if (parts.takesNormal)
            add("float3", "eyeNormal");
        for (const int set : parts.tangentSets) {
            add("float3", "eyeTangent" + std::to_string(set));
            add("float3", "eyeBitangent" + std::to_string(set));
        }
    }

    const std::string& text() const { return fText; }

private:
    std::string fText;
};

std::string vertexSource(const ShaderParts& parts) {
    Parameters parameters;
    std::string body;
    parameters.add("float4 position : POSITION");
    if (parts.takesPosition)
        body += "    eyePosition = mul(glstate.matrix.modelview[0], position).xyz;\n";
    if (parts.takesNormal) {
        parameters.add("float3 normal : NORMAL");
        body += "    eyeNormal = mul((float3x3)glstate.matrix.invtrans.modelview[0], normal);\n";
    }
    std::set<int> sets = parts.uvSets;
    sets.insert(parts.tangentSets.begin(), parts.tangentSets.end());
    for (const int set : sets) {
        const std::string number = std::to_string(set);
        parameters.add(filled("float4 texCoord$ : TEXCOORD$", number, number));
    }
    for (const int set : parts.uvSets)
        body += filled("    uv$ = texCoord$.xy;\n", std::to_string(set), std::to_string(set));
    for (const int set : parts.tangentSets) {
        const std::string number = std::to_string(set);
        body += filled("    eyeTangent$ = mul((float3x3)glstate.matrix.modelview[0], texCoord$.xyz);\n"
                       "    eyeBitangent$ = mul((float3x3)glstate.matrix.modelview[0], texCoord$.w *\n"
                       "        cross(normal, texCoord$.xyz));\n",
                       number, number, number, number, number);
    }
    if (parts.takesColor) {
        parameters.add("float4 color : COLOR");
        parameters.add("out float4 frontColor : COLOR");
        parameters.add("out float4 backColor : BCOL");
        body += "    frontColor = color;\n    backColor = color;\n";
    }
    parameters.addVarying("out ", parts);
    return filled("void main($) {\n$}\n", parameters.text(), body);
}

std::string fragmentSource(const ShaderParts& parts) {
    Parameters parameters;
    parameters.addVarying("", parts);
    if (parts.takesColor)
        parameters.add("float4 vertexColor : COLOR");
    if (parts.takesSide)
        parameters.add("float side : FACE");
    parameters.add("out float4 fragmentColor : COLOR");
    std::string source;
    for (const std::string& uniform : parts.uniforms)
        source += inCg(uniform);
    for (const std::string_view name : parts.snippets)
        (source += source.empty() ? "" : "\n") += inCg(snippet(name).text);
    return source + filled("\nvoid main($) {\n$}\n", parameters.text(), inCg(parts.body));
}

} // namespace

ShaderSources cgSources(const ShaderParts& parts) {
    if (!parts.fault.empty()) {
        const std::string refusal = "#error " + parts.fault + "\n";
        return {refusal, refusal};
    }
    return {vertexSource(parts), fragmentSource(parts)};
}

} // namespace koShadingDag
