#include "draw/WindowDeveloper.h"

#include <gl/GLFunctionTable.h>

namespace orloview {

namespace {

constexpr const char* kVertexSource = R"(
void main() {
    gl_Position = gl_Vertex;
}
)";

// Cuts each sample to 0..1, averages, divides by alpha, encodes as sRGB (IEC 61966-2-1).
constexpr const char* kFragmentSource = R"(
uniform sampler2D frame;
uniform float factor;
uniform vec2 texel;

void main() {
    vec4 sum = vec4(0.0);
    vec2 corner = floor(gl_FragCoord.xy) * factor + 0.5;
    for (float y = 0.0; y < factor; y += 1.0) {
        for (float x = 0.0; x < factor; x += 1.0)
            sum += clamp(texture2D(frame, (corner + vec2(x, y)) * texel), 0.0, 1.0);
    }
    vec3 linear = sum.a > 0.0 ? sum.rgb / sum.a : vec3(0.0);
    vec3 low = 12.92 * linear;
    vec3 high = 1.055 * pow(max(linear, vec3(0.0031308)), vec3(1.0 / 2.4)) - 0.055;
    vec3 encoded = mix(high, low, vec3(lessThanEqual(linear, vec3(0.0031308))));
    vec2 square = floor(gl_FragCoord.xy / 8.0);
    float pattern = mod(square.x + square.y, 2.0) < 0.5 ? 0.35 : 0.45;
    gl_FragColor = vec4(mix(vec3(pattern), encoded, sum.a / (factor * factor)), 1.0);
}
)";

void attachShader(GLhandleARB program, GLenum kind, const char* source) {
    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    const GLhandleARB shader = gl->glCreateShaderObjectARB(kind);
    gl->glShaderSourceARB(shader, 1, &source, nullptr);
    gl->glCompileShaderARB(shader);
    gl->glAttachObjectARB(program, shader);
    gl->glDeleteObjectARB(shader); // the program keeps it
}

} // namespace

WindowDeveloper::WindowDeveloper() {
    fGroup.addStream(GeometryData::kPosition, 2, {-1, -1, 1, -1, 1, 1, -1, 1});
    fGroup.addIndexRecord(GeometryDataIndex::kQuads, {0, 1, 2, 3});
    fRouting.fSlots[GLRouting::kPosition] = {GLRouting::kFromGeometry, {}, GeometryData::kPosition, 0};

    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    if (!gl->usable(kCapShaderObjects))
        return;
    fProgram = gl->glCreateProgramObjectARB();
    attachShader(fProgram, GL_VERTEX_SHADER_ARB, kVertexSource);
    attachShader(fProgram, GL_FRAGMENT_SHADER_ARB, kFragmentSource);
    gl->glLinkProgramARB(fProgram);
    GLint linked = 0;
    gl->glGetObjectParameterivARB(fProgram, GL_OBJECT_LINK_STATUS_ARB, &linked);
    if (!linked) {
        gl->glDeleteObjectARB(fProgram);
        fProgram = 0;
        return;
    }
    // The one sampler reads unit 0, where a program's samplers point until told otherwise.
    fFactorLocation = gl->glGetUniformLocationARB(fProgram, "factor");
    fTexelLocation = gl->glGetUniformLocationARB(fProgram, "texel");
}

WindowDeveloper::~WindowDeveloper() {
    if (fProgram != 0)
        GLFunctionTable::fpGlobalFunctionTable->glDeleteObjectARB(fProgram);
}

void WindowDeveloper::develop(IGLTexture& frame, int factor) {
    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    frame.bind();
    gl->glUseProgramObjectARB(fProgram);
    gl->glUniform1fARB(fFactorLocation, static_cast<float>(factor));
    gl->glUniform2fARB(fTexelLocation, 1.0F / static_cast<float>(frame.width()),
                       1.0F / static_cast<float>(frame.height()));
    fRouting.drawGroup(&fGroup, nullptr, nullptr, nullptr, 0, false);
    gl->glUseProgramObjectARB(0);
}

} // namespace orloview
