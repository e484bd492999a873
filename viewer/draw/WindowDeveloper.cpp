#include "draw/WindowDeveloper.h"

#include "draw/GL.h"

namespace orloview {

namespace {

// Cuts each sample to 0..1 or maps its tones (output/ToneMap.h), lays the background under it, averages,
// divides by alpha, encodes as sRGB (IEC 61966-2-1).
constexpr const char* kFragmentSource = R"(
uniform sampler2D frame;
uniform float factor;
uniform vec2 texel;
uniform bool soft;
uniform float gain;
uniform vec4 background;

vec3 toneMapped(vec3 color) {
    color = max(color, 0.0);
    float peak = max(color.r, max(color.g, color.b));
    if (peak <= 0.8)
        return color;
    float mapped = 1.0 - 0.04 / (peak - 0.6);
    return mix(color * (mapped / peak), vec3(mapped), 1.0 - 1.0 / (1.0 + 0.15 * (peak - mapped)));
}

vec4 cut(vec4 light) {
    float plain = clamp(light.a - 1.0, 0.0, 1.0);
    light.rgb *= mix(gain, 1.0, plain);
    light.a = clamp(light.a, 0.0, 1.0);
    vec4 shown = clamp(light, 0.0, 1.0);
    if (soft && light.a > 0.0)
        shown.rgb = mix(toneMapped(light.rgb / light.a) * light.a, shown.rgb, plain);
    return shown + (1.0 - light.a) * background;
}

void main() {
    vec4 sum = vec4(0.0);
    vec2 corner = floor(gl_FragCoord.xy) * factor + 0.5;
    for (float y = 0.0; y < factor; y += 1.0) {
        for (float x = 0.0; x < factor; x += 1.0)
            sum += cut(texture2D(frame, (corner + vec2(x, y)) * texel));
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

} // namespace

WindowDeveloper::WindowDeveloper() : fPass(kFragmentSource) {
    if (!usable())
        return;
    fFactorPlace = fPass.place("factor");
    fGainPlace = fPass.place("gain");
    fSoftPlace = fPass.place("soft");
    fBackgroundPlace = fPass.place("background");
    fTexelPlace = fPass.place("texel");
}

void WindowDeveloper::develop(IGLTexture& frame, int factor, const Development& development) {
    frame.bind();
    fPass.begin();
    gl().glUniform1fARB(fFactorPlace, static_cast<float>(factor));
    gl().glUniform1fARB(fGainPlace, development.gain);
    gl().glUniform1iARB(fSoftPlace, development.toneMap == ToneMap::Soft ? 1 : 0);
    gl().glUniform4fvARB(fBackgroundPlace, 1, development.background.data());
    gl().glUniform2fARB(fTexelPlace, 1.0F / static_cast<float>(frame.width()),
                        1.0F / static_cast<float>(frame.height()));
    fPass.run();
}

} // namespace orloview
