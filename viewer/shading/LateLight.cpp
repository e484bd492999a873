#include "shading/LateLight.h"

#include "draw/GL.h"
#include "session/SoftwareDriver.h"

#include <cctype>
#include <string_view>

#include <state/GLPassState.h>

namespace orloview {

namespace {

constexpr std::string_view kMain = "\nvoid main() {\n";
constexpr std::string_view kVersion = "#version 120\n";

constexpr std::string_view kPlaceOf = R"(
vec2 placeOf(vec3 normal) {
    normal /= abs(normal.x) + abs(normal.y) + abs(normal.z);
    vec2 folded = 1.0 - abs(normal.yx);
    vec2 outer = vec2(normal.x >= 0.0 ? folded.x : -folded.x, normal.y >= 0.0 ? folded.y : -folded.y);
    return normal.z >= 0.0 ? normal.xy : outer;
}
)";

constexpr std::string_view kNormalAt = R"(
vec3 normalAt(vec2 place) {
    vec3 normal = vec3(place, 1.0 - abs(place.x) - abs(place.y));
    float beyond = max(-normal.z, 0.0);
    normal.x += normal.x >= 0.0 ? -beyond : beyond;
    normal.y += normal.y >= 0.0 ? -beyond : beyond;
    return normal;
}
)";

/// How a record is written, from `place`, and read.
struct Record {
    std::string_view write;
    std::string_view read;
};

// Halves hold whole numbers of 12 bits: here ten of a coordinate, or what is left of it, and two of the look.
constexpr Record kNormalAndLook = {R"(    vec2 whole = floor((0.5 * place + 0.5) * 1048575.0 + 0.5);
    vec2 high = floor(whole / 1024.0);
    gl_FragColor = vec4(high, whole - 1024.0 * high) + 1024.0 * vec4(look, 0.0) - 2048.0;
)",
                                   R"(    vec4 digits = floor(record / 1024.0 + 2.0);
    vec4 parts = record + 2048.0 - 1024.0 * digits;
    eyeNormal = normalAt((1024.0 * parts.xy + parts.zw) * (2.0 / 1048575.0) - 1.0);
    int look = int(digits.x + 4.0 * digits.y + 16.0 * digits.z);
)"};

constexpr Record kNormalAndColor = {R"(    vec3 whole = floor(gl_Color.rgb * 65535.0 + 0.5);
    float high = floor(whole.g / 256.0);
    gl_FragColor = vec4(place, 256.0 * whole.r + high, 256.0 * whole.b + whole.g - 256.0 * high);
)",
                                    R"(    eyeNormal = normalAt(record.xy);
    vec2 high = floor(record.zw / 256.0);
    vec2 low = record.zw - 256.0 * high;
    vec3 recordedColor = vec3(high.x, 256.0 * low.x + low.y, high.y) / 65535.0;
)"};

constexpr std::string_view kLightVertex = R"(#version 120

varying vec3 eyePosition;

void main() {
    vec4 eye = gl_ProjectionMatrixInverse * vec4(gl_Vertex.xy, 0.0, 1.0);
    eyePosition = eye.xyz / eye.w;
    gl_Position = vec4(gl_Vertex.xy, 1.0, 1.0);
}
)";

/// False where the text isn't there.
bool replaceOnce(std::string& text, std::string_view what, std::string_view by) {
    const size_t place = text.find(what);
    if (place != std::string::npos)
        text.replace(place, what.size(), by);
    return place != std::string::npos;
}

bool isOfWord(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

/// Makes a uniform an array, and of each use one of its element `look`.
void makeArray(std::string& text, const std::string& name, size_t length) {
    std::string index = "[" + std::to_string(length) + "]"; // in its declaration, which comes first
    for (size_t at = text.find(name); at != std::string::npos; at = text.find(name, at + name.size())) {
        const size_t end = at + name.size();
        if (isOfWord(text[at - 1]) || isOfWord(text[end]))
            continue;
        text.insert(end, index);
        index = "[look]";
    }
}

std::string recordFragment(const Record& record) {
    std::string source(kVersion);
    source.append("\nvarying vec3 eyeNormal;\nuniform vec3 look;\n").append(kPlaceOf).append(kMain);
    source += "    vec2 place = placeOf(gl_FrontFacing ? eyeNormal : -eyeNormal);\n";
    return source.append(record.write).append("}\n");
}

/// Empty for a material that reads more than the record.
std::string lightFragment(std::string source, const Record& record) {
    std::string start(kNormalAt);
    start.append(kMain).append("    vec4 record = gl_LastFragData[0];\n").append(record.read);
    const bool isKnown =
        replaceOnce(source, kVersion,
                    std::string(kVersion) + "#extension GL_EXT_shader_framebuffer_fetch : require\n") &&
        replaceOnce(source, "varying vec3 eyeNormal;\n", "vec3 eyeNormal;\n") &&
        replaceOnce(source, kMain, start);
    while (&record == &kNormalAndColor && replaceOnce(source, "gl_Color.rgb", "recordedColor")) {
    }
    std::string others = source;
    replaceOnce(others, "varying vec3 eyePosition;\n", "");
    replaceOnce(others, "normalize(-eyePosition)", ""); // the way to the eye is the same all along it
    for (const char* input : {"varying", "eyePosition", "gl_Color", "discard"})
        if (!isKnown || others.find(input) != std::string::npos)
            return {};
    return source;
}

} // namespace

bool LateLight::paysFor(const Scene& scene) {
    return drawsManyInSoftware(scene.count(Topology::Triangles)) &&
           isExtensionSupported(gl().glGetString(GL_EXTENSIONS), "GL_EXT_shader_framebuffer_fetch");
}

void LateLight::light() {
    GLPassState state;
    state.setDepthMask(false);
    state.setDepthFunc(GLPassState::kTestGreater); // at the far plane, so behind all that is drawn
    state.applyGL(false);
    gl().glDisable(GL_CULL_FACE);
    gl().glFrontFace(GL_CCW);
    fQuad.draw();
}

std::optional<LateSources> lateSources(const LateRequest& material) {
    const bool isColored = material.fragment.find("gl_Color") != std::string::npos;
    if (isColored && material.looks > 1)
        return std::nullopt;
    const Record& record = isColored ? kNormalAndColor : kNormalAndLook;
    LateSources sources{.recordVertex = material.vertex,
                        .recordFragment = recordFragment(record),
                        .lightVertex = std::string(kLightVertex),
                        .lightFragment = lightFragment(material.fragment, record),
                        .needsFloats = isColored};
    if (sources.lightFragment.empty())
        return std::nullopt;
    for (const std::string& uniform : material.uniforms)
        if (material.looks > 1)
            makeArray(sources.lightFragment, uniform, material.looks);
    return sources;
}

} // namespace orloview
