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
    if (parts.takesColor)
        source += "    gl_FrontColor = gl_Color;\n    gl_BackColor = gl_Color;\n";
    return source + "    gl_Position = ftransform();\n}\n";
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
