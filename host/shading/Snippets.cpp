#include "Snippets.h"

#include <algorithm>
#include <iterator>

namespace koShadingDag {

namespace {

constexpr Snippet kSnippets[] = {
    // ---- textures and patterns

    {"placed", "",
     R"(// Scales texture coordinates, turns them (radians) and moves them.
vec2 placed(vec2 uv, vec2 offset, vec2 scale, float rotation) {
    vec2 scaled = uv * scale;
    float c = cos(rotation);
    float s = sin(rotation);
    return offset + vec2(c * scaled.x + s * scaled.y, c * scaled.y - s * scaled.x);
}
)"},
    {"between", "",
     R"(// How far a value is from one stop to the next, 0 to 1.
float between(float value, float first, float second) {
    return clamp((value - first) / max(second - first, 1e-6), 0.0, 1.0);
}
)"},
    {"smoothed", "",
     R"(float smoothed(float share) {
    return share * share * (3.0 - 2.0 * share);
}
)"},
    {"isFirstOfChecker", "",
     R"(bool isFirstOfChecker(vec2 place) {
    return fract(0.5 * (floor(place.x) + floor(place.y))) < 0.25;
}
)"},
    {"hash", "",
     R"(// The rest of whole numbers by 289. Half of one is no part of the result: it keeps the quotient off the
// whole numbers, where rounding would decide.
float rest(float number) {
    return number - 289.0 * floor((number + 0.5) / 289.0);
}

// Shuffles whole numbers from 0 to 288; exact in single precision.
float shuffled(float number) {
    return rest((34.0 * number + 1.0) * number);
}

// A value from 0 to 1 for each point of the lattice of whole numbers; repeats after 289.
float latticeValue(vec2 point) {
    return shuffled(rest(shuffled(rest(point.x)) + rest(point.y))) / 288.0;
}
)"},
    {"noise", "hash",
     R"(// Smooth noise from 0 to 1: the values of the lattice, faded into each other.
float latticeNoise(vec2 place) {
    vec2 corner = floor(place);
    vec2 inside = place - corner;
    vec2 fade = inside * inside * inside * (inside * (inside * 6.0 - 15.0) + 10.0);
    float below = mix(latticeValue(corner), latticeValue(corner + vec2(1.0, 0.0)), fade.x);
    float above = mix(latticeValue(corner + vec2(0.0, 1.0)), latticeValue(corner + vec2(1.0, 1.0)), fade.x);
    return mix(below, above, fade.y);
}

// Each octave is twice as fine and half as strong as the one before.
float noise(vec2 place, int octaves) {
    float sum = 0.0;
    float strength = 1.0;
    float total = 0.0;
    for (int i = 0; i < octaves; ++i) {
        sum += strength * latticeNoise(place);
        total += strength;
        place *= 2.0;
        strength *= 0.5;
    }
    return sum / total;
}
)"},

    // ---- normals

    {"bumped", "",
     R"(// The normal of a surface that a height raises, from how both change to the next pixels.
vec3 bumped(vec3 normal, vec3 position, float height, float outward) {
    vec3 alongX = dFdx(position);
    vec3 alongY = dFdy(position);
    vec3 acrossY = cross(alongY, normal);
    vec3 acrossX = cross(normal, alongX);
    float area = dot(alongX, acrossY);
    vec3 slope = sign(area) * (dFdx(height) * acrossY + dFdy(height) * acrossX);
    return area == 0.0 ? normal : normalize(abs(area) * normal - outward * slope);
}
)"},
    {"mappedNormal", "",
     R"(// The normal that a normal map's color means: red along u, green against v, blue out of the surface.
vec3 mappedNormal(vec3 normal, vec3 position, vec2 uv, vec3 color, float strength, float outward) {
    vec3 alongX = dFdx(position);
    vec3 alongY = dFdy(position);
    vec2 uvX = dFdx(uv);
    vec2 uvY = dFdy(uv);
    float turn = sign(uvX.x * uvY.y - uvX.y * uvY.x);
    vec3 alongU = turn * (alongX * uvY.y - alongY * uvX.y);
    vec3 alongV = turn * (alongY * uvX.x - alongX * uvY.x);
    vec3 tangent = alongU - normal * dot(normal, alongU);
    if (dot(tangent, tangent) == 0.0)
        return normal;
    tangent = normalize(tangent);
    vec3 bitangent = cross(normal, tangent);
    bitangent *= dot(bitangent, alongV) > 0.0 ? -1.0 : 1.0;
    vec3 map = 2.0 * color - 1.0;
    return normalize(outward * strength * (tangent * map.x + bitangent * map.y) + normal * map.z);
}
)"},

    // ---- lights

    {"attenuated", "",
     R"(// The color of a light at a distance from it: constant, linear and quadratic losses.
vec3 attenuated(vec3 color, vec3 losses, float distance) {
    return color / (losses.x + distance * (losses.y + distance * losses.z));
}
)"},
    {"rangeWindow", "",
     R"(// Takes a light back to nothing at the end of its range, a share of 1 of which is gone.
float rangeWindow(float share) {
    float square = share * share;
    return clamp(1.0 - square * square, 0.0, 1.0);
}
)"},
    {"spotCone", "",
     R"(// What a spot sends that way: nothing beyond the cutoff, and within it the power of the cosine.
float spotCone(float cosine, float cutoffCosine, float exponent) {
    return cosine < cutoffCosine ? 0.0 : pow(max(cosine, 0.0), exponent);
}
)"},
    {"fadedCone", "",
     R"(// What a spot sends that way: all within the inner angle, nothing beyond the cutoff.
float fadedCone(float cosine, float cutoffCosine, float innerCosine) {
    float share = clamp((cosine - cutoffCosine) / max(innerCosine - cutoffCosine, 1e-4), 0.0, 1.0);
    return share * share;
}
)"},
    {"unshadowed", "",
     R"(// How much of a light reaches a place of its shadow map; beside the map all.
float unshadowed(sampler2DShadow map, vec4 place) {
    vec3 p = place.xyz / place.w;
    bool inside = place.w > 0.0 && p.x > 0.0 && p.y > 0.0 && p.x < 1.0 && p.y < 1.0 && p.z < 1.0;
    return inside ? shadow2D(map, p).r : 1.0;
}
)"},
    {"skyDiffuseLight", "",
     R"(// What a white surface sends out under the sky.
vec3 skyDiffuseLight(vec3 normal) {
    return texture2D(skyDiffuse, vec2(0.5 * dot(normal, skyUp) + 0.5, 0.5)).rgb;
}
)"},
    {"skyReflectedLight", "",
     R"(// The mean of the sky that a rough mirror shows.
vec3 skyReflectedLight(vec3 normal, vec3 view, float roughness) {
    vec3 mirrored = reflect(-view, normal);
    return texture2D(skyReflection, vec2(0.5 * dot(mirrored, skyUp) + 0.5, roughness)).rgb;
}
)"},
    {"skyResponseTo", "",
     R"(// How much of a uniform sky a rough mirror sends to the eye: its f0 times x, and y.
vec2 skyResponseTo(vec3 normal, vec3 view, float roughness) {
    return texture2D(skyResponse, vec2(clamp(dot(normal, view), 0.0, 1.0), roughness)).rg;
}
)"},
    {"skyLight", "skyDiffuseLight skyReflectedLight skyResponseTo",
     R"(// The sky on a surface of microfacets. What is reflected doesn't get in.
vec3 skyLight(vec3 normal, vec3 view, vec3 diffuse, vec3 f0, float roughness) {
    vec2 response = skyResponseTo(normal, view, roughness);
    vec3 reflected = f0 * response.x + response.y;
    vec3 entering = 1.0 - max(f0, reflected);
    return diffuse * entering * skyDiffuseLight(normal) +
           reflected * skyReflectedLight(normal, view, roughness);
}
)"},

    // ---- surfaces

    {"blinnPhongLobe", "",
     R"(float blinnPhongLobe(vec3 normal, vec3 view, vec3 toLight, float shininess) {
    float facing = max(dot(normal, normalize(view + toLight)), 0.0);
    return dot(normal, toLight) > 0.0 ? pow(facing, shininess) : 0.0;
}
)"},
    {"microfacetLobe", "",
     R"(// Distribution (GGX) and shadowing (Smith) of microfacets, times pi and the cosine to the light. Without
// the Fresnel term.
float microfacetLobe(vec3 normal, vec3 view, vec3 toLight, vec3 halfway, float roughness) {
    float alpha = max(roughness * roughness, 0.002);
    float square = alpha * alpha;
    float nl = max(dot(normal, toLight), 0.0);
    float nv = abs(dot(normal, view));
    float nh = max(dot(normal, halfway), 0.0);
    vec3 across = cross(normal, halfway); // 1 - nh * nh, without its cancellation
    float spread = dot(across, across) + square * nh * nh;
    float shadowing = (nl + sqrt(square + (1.0 - square) * nl * nl)) *
                      (nv + sqrt(square + (1.0 - square) * nv * nv));
    return nh > 0.0 ? nl * square / (spread * spread * shadowing) : 0.0;
}
)"},
    {"coatLight", "microfacetLobe",
     R"(float coatLight(vec3 normal, vec3 view, vec3 toLight, float roughness) {
    return microfacetLobe(normal, view, toLight, normalize(view + toLight), roughness);
}
)"},
    {"coatFresnel", "",
     R"(float coatFresnel(vec3 normal, vec3 view) {
    return 0.04 + 0.96 * pow(1.0 - clamp(abs(dot(normal, view)), 0.0, 1.0), 5.0);
}
)"},
    {"coatSkyLight", "skyReflectedLight skyResponseTo",
     R"(vec3 coatSkyLight(vec3 normal, vec3 view, float roughness) {
    vec2 response = skyResponseTo(normal, view, roughness);
    return (response.x + response.y) * skyReflectedLight(normal, view, roughness);
}
)"},
    {"microfacetLight", "microfacetLobe",
     R"(// What a surface of microfacets over a diffuse body sends to the eye of a light of color 1.
vec3 microfacetLight(vec3 normal, vec3 view, vec3 toLight, vec3 diffuse, vec3 f0, float roughness) {
    vec3 halfway = normalize(view + toLight);
    vec3 fresnel = f0 + (1.0 - f0) * pow(1.0 - clamp(dot(view, halfway), 0.0, 1.0), 5.0);
    float lobe = microfacetLobe(normal, view, toLight, halfway, roughness);
    return mix(diffuse * max(dot(normal, toLight), 0.0), vec3(lobe), fresnel);
}
)"},
};

} // namespace

const Snippet& snippet(std::string_view name) {
    return *std::find_if(std::begin(kSnippets), std::end(kSnippets),
                         [name](const Snippet& candidate) { return candidate.name == name; });
}

} // namespace koShadingDag
