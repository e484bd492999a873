#include "ShaderParts.h"
#include "Snippets.h"

namespace koShadingDag {

namespace {

std::string varyings(const ShaderParts& parts) {
    std::string text;
    if (parts.takesPosition)
        text += "varying vec3 eyePosition;\n";
    if (parts.takesNormal)
        text += "varying vec3 eyeNormal;\n";
    for (const int set : parts.uvSets)
        text += filled("varying vec2 uv$;\n", std::to_string(set));
    for (const int set : parts.tangentSets)
        text += filled("varying vec3 eyeTangent$;\nvarying vec3 eyeBitangent$;\n", std::to_string(set),
                       std::to_string(set));
    return text;
}

std::string vertexSource(const ShaderParts& parts) {
    std::string source = "#version 120\n\n" + varyings(parts) + "\nvoid main() {\n";
    if (parts.takesPosition)
        source += "    eyePosition = vec3(gl_ModelViewMatrix * gl_Vertex);\n";
    if (parts.takesNormal)
        source += "    eyeNormal = gl_NormalMatrix * gl_Normal;\n";
    for (const int set : parts.uvSets)
        source += filled("    uv$ = gl_MultiTexCoord$.st;\n", std::to_string(set), std::to_string(set));
    // Across the normal before anything mirrors it.
    for (const int set : parts.tangentSets) {
        const std::string number = std::to_string(set);
        source += filled("    eyeTangent$ = vec3(gl_ModelViewMatrix * vec4(gl_MultiTexCoord$.xyz, 0.0));\n"
                         "    eyeBitangent$ = vec3(gl_ModelViewMatrix * vec4(gl_MultiTexCoord$.w *\n"
                         "        cross(gl_Normal, gl_MultiTexCoord$.xyz), 0.0));\n",
                         number, number, number, number, number);
    }
    if (parts.takesColor)
        source += "    gl_FrontColor = gl_Color;\n    gl_BackColor = gl_Color;\n";
    // GL's clip planes cut what a shader draws only where that is said.
    return source +
           "    gl_ClipVertex = gl_ModelViewMatrix * gl_Vertex;\n    gl_Position = ftransform();\n}\n";
}

std::string fragmentSource(const ShaderParts& parts) {
    std::string source = "#version 120\n\n" + varyings(parts);
    for (const std::string& uniform : parts.uniforms)
        source += uniform;
    for (const std::string_view name : parts.snippets)
        (source += '\n') += snippet(name).text;
    return source + "\nvoid main() {\n" + parts.body + "}\n";
}

} // namespace

ShaderSources glslSources(const ShaderParts& parts) {
    if (!parts.fault.empty()) {
        const std::string refusal = "#version 120\n#error " + parts.fault + "\n";
        return {refusal, refusal};
    }
    return {vertexSource(parts), fragmentSource(parts)};
}

} // namespace koShadingDag
