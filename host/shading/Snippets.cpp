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
    {"turnedNormal", "",
     R"(// The same in a frame that the vertices bring along.
vec3 turnedNormal(vec3 normal, vec3 tangent, vec3 bitangent, vec3 color, float strength, float outward) {
    if (dot(tangent, tangent) * dot(bitangent, bitangent) == 0.0)
        return normal;
    vec3 map = 2.0 * color - 1.0;
    vec3 along = normalize(tangent) * map.x + normalize(bitangent) * map.y;
    return normalize(outward * strength * along + normal * map.z);
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
    {"skyPlace", "",
     R"(// Where a direction lies in a picture of a whole sky: from left to right all round, and down.
vec2 skyPlace(vec3 direction) {
    vec3 d = vec3(dot(direction, skyRight), dot(direction, skyUp), dot(direction, skyBack));
    float ahead = abs(d.z) < 1e-6 ? 1e-6 : -d.z; // straight up there is no way round
    return vec2(0.5 + 0.15915494 * atan(d.x, ahead), 0.31830989 * atan(length(d.xz), d.y));
}

// A level of such a picture; its texture has a texel more on all sides.
vec2 skyLevelPlace(vec2 place, vec2 corner, vec2 size, vec2 all) {
    return (corner + 1.0 + place * (size - 2.0)) / all;
}
)"},
    {"skyMapDiffuseLight", "skyPlace",
     R"(// What a white surface sends out under the sky.
vec3 skyDiffuseLight(vec3 normal) {
    vec2 size = vec2(64.0, 32.0);
    return texture2D(skyDiffuse, skyLevelPlace(skyPlace(normal), vec2(0.0), size, size)).rgb;
}
)"},
    {"skyMapReflectedLight", "skyPlace",
     R"(// Each level is half as large as the one before and lies above it; from the fourth on all are as large.
vec3 skyReflectedLevel(vec2 place, float level) {
    float scale = exp2(-min(level, 4.0));
    vec2 corner = vec2(0.0, 1024.0 * (1.0 - scale) + 32.0 * max(level - 4.0, 0.0));
    vec2 size = scale * vec2(1024.0, 512.0);
    return texture2D(skyReflection, skyLevelPlace(place, corner, size, vec2(1024.0, 1088.0))).rgb;
}

// The mean of the sky that a rough mirror shows, and a smooth one over a pixel, less than which it would
// sparkle by: the lobe of the first level is 1 / 32 radian wide.
vec3 skyReflectedLight(vec3 normal, vec3 view, float roughness) {
    vec3 mirrored = reflect(-view, normal);
    vec2 place = skyPlace(mirrored);
    float spread = max(length(dFdx(mirrored)), length(dFdy(mirrored)));
    float level = max(7.0 + 2.0 * log2(max(roughness, 1e-3)), log2(max(32.0 * spread, 1.0)));
    level = clamp(level, 0.0, 7.0);
    float finer = floor(level);
    return mix(skyReflectedLevel(place, finer), skyReflectedLevel(place, min(finer + 1.0, 7.0)),
               level - finer);
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
    {"fifthPower", "",
     R"(float fifthPower(float x) {
    float square = x * x;
    return square * square * x;
}
)"},
    {"coatLight", "microfacetLobe",
     R"(float coatLight(vec3 normal, vec3 view, vec3 toLight, float roughness) {
    return microfacetLobe(normal, view, toLight, normalize(view + toLight), roughness);
}
)"},
    {"coatFresnel", "fifthPower",
     R"(float coatFresnel(vec3 normal, vec3 view) {
    return 0.04 + 0.96 * fifthPower(1.0 - clamp(abs(dot(normal, view)), 0.0, 1.0));
}
)"},
    {"coatSkyLight", "skyReflectedLight skyResponseTo",
     R"(vec3 coatSkyLight(vec3 normal, vec3 view, float roughness) {
    vec2 response = skyResponseTo(normal, view, roughness);
    return (response.x + response.y) * skyReflectedLight(normal, view, roughness);
}
)"},
    {"microfacetLight", "microfacetLobe fifthPower",
     R"(// What a surface of microfacets over a diffuse body sends to the eye of a light of color 1.
vec3 microfacetLight(vec3 normal, vec3 view, vec3 toLight, vec3 diffuse, vec3 f0, float roughness) {
    vec3 halfway = normalize(view + toLight);
    vec3 fresnel = f0 + (1.0 - f0) * fifthPower(1.0 - clamp(dot(view, halfway), 0.0, 1.0));
    float lobe = microfacetLobe(normal, view, toLight, halfway, roughness);
    return mix(diffuse * max(dot(normal, toLight), 0.0), vec3(lobe), fresnel);
}
)"},

    // ---- surfaces of more layers

    {"largest", "",
     R"(float largest(vec3 color) {
    return max(color.r, max(color.g, color.b));
}
)"},
    {"f0OfIor", "",
     R"(// What a surface of that refractive index reflects, looked at along its normal.
float f0OfIor(float ior) {
    float ratio = (ior - 1.0) / (ior + 1.0);
    return ratio * ratio;
}
)"},
    {"layeredLight", "largest fifthPower",
     R"(// What microfacets over a body that scatters light back and on send to the eye of a light of color 1.
vec3 layeredLight(vec3 normal, vec3 view, vec3 toLight, vec3 diffuse, vec3 through, vec3 f0, vec3 f90,
                  float lobe) {
    float nl = dot(normal, toLight);
    float facing = nl > 0.0 ? dot(view, normalize(view + toLight)) : abs(dot(normal, view));
    vec3 fresnel = f0 + (f90 - f0) * fifthPower(1.0 - clamp(facing, 0.0, 1.0));
    vec3 body = diffuse * max(nl, 0.0) + through * max(-nl, 0.0);
    return (1.0 - largest(fresnel)) * body + fresnel * lobe;
}
)"},
    {"entering", "largest fifthPower",
     R"(// The share of light that isn't reflected towards the eye.
float entering(vec3 normal, vec3 view, vec3 f0, vec3 f90) {
    float facing = clamp(abs(dot(normal, view)), 0.0, 1.0);
    return 1.0 - largest(f0 + (f90 - f0) * fifthPower(1.0 - facing));
}
)"},
    {"enteringFromSky", "skyResponseTo largest",
     R"(// The share of a uniform sky that isn't reflected towards the eye.
float enteringFromSky(vec3 normal, vec3 view, vec3 f0, vec3 f90, float roughness) {
    vec2 response = skyResponseTo(normal, view, roughness);
    return 1.0 - largest(max(f0, f0 * response.x + f90 * response.y));
}
)"},
    {"layeredSkyLight", "skyDiffuseLight skyReflectedLight skyResponseTo",
     R"(// The sky on all of that.
vec3 layeredSkyLight(vec3 normal, vec3 mirror, vec3 view, vec3 diffuse, vec3 through, vec3 f0, vec3 f90,
                     float roughness, float entering) {
    vec2 response = skyResponseTo(normal, view, roughness);
    vec3 body = diffuse * skyDiffuseLight(normal) + through * skyDiffuseLight(-normal);
    return entering * body +
           (f0 * response.x + f90 * response.y) * skyReflectedLight(mirror, view, roughness);
}
)"},
    {"surfaceTangent", "",
     R"(// A direction laid down on the surface and turned round its normal; any where it stands upright.
vec3 surfaceTangent(vec3 normal, vec3 direction, float rotation) {
    vec3 along = direction - normal * dot(normal, direction);
    if (dot(along, along) < 1e-8)
        along = cross(normal, abs(normal.x) < 0.7 ? vec3(1.0, 0.0, 0.0) : vec3(0.0, 1.0, 0.0));
    along = normalize(along);
    return cos(rotation) * along + sin(rotation) * cross(normal, along);
}
)"},
    {"anisotropicLobe", "",
     R"(// As microfacetLobe, of a surface that is rougher along a direction than across.
float anisotropicLobe(vec3 normal, vec3 view, vec3 toLight, vec3 along, float roughness, float anisotropy) {
    vec3 across = cross(normal, along);
    vec3 halfway = normalize(view + toLight);
    float alphaAcross = max(roughness * roughness, 0.002);
    float alphaAlong = mix(alphaAcross, 1.0, anisotropy * anisotropy);
    float area = alphaAlong * alphaAcross;
    vec3 facet = vec3(alphaAcross * dot(along, halfway), alphaAlong * dot(across, halfway),
                      area * dot(normal, halfway));
    float spread = area / dot(facet, facet);
    float nl = max(dot(normal, toLight), 0.0);
    float nv = abs(dot(normal, view));
    float masking =
        nl * length(vec3(alphaAlong * dot(along, view), alphaAcross * dot(across, view), nv)) +
        nv * length(vec3(alphaAlong * dot(along, toLight), alphaAcross * dot(across, toLight), nl));
    return nl > 0.0 ? 0.5 * nl * area * spread * spread / masking : 0.0;
}
)"},
    {"bentNormal", "",
     R"(// The normal that the sky is mirrored by where facets stretch the mirror image across a direction.
vec3 bentNormal(vec3 normal, vec3 view, vec3 along, float roughness, float anisotropy) {
    vec3 across = cross(normal, along);
    vec3 leaning = cross(cross(across, view), across);
    float upright = 1.0 - anisotropy * (1.0 - roughness);
    upright *= upright;
    return normalize(mix(leaning, normal, upright * upright));
}
)"},
    {"thinFilm", "f0OfIor fifthPower",
     R"(// How the eye's three kinds of cones see waves that are late by a path (nm) and a phase, as linear RGB:
// Gaussian fits of the observer of 1931, in the domain of frequencies.
vec3 filmColor(float path, vec3 late) {
    float phase = 6.2831853 * path * 1e-9;
    vec3 width = vec3(4.3278e9, 9.3046e9, 6.6121e9);
    vec3 strength = vec3(5.4856e-13, 4.4201e-13, 5.2481e-13) * sqrt(6.2831853 * width);
    vec3 xyz = strength * cos(vec3(1.6810e6, 1.7953e6, 2.2084e6) * phase + late) *
               exp(-phase * phase * width);
    xyz.x += 9.7470e-14 * sqrt(6.2831853 * 4.5282e9) * cos(2.2399e6 * phase + late.x) *
             exp(-4.5282e9 * phase * phase);
    xyz /= 1.0685e-7;
    return vec3(dot(xyz, vec3(3.2404542, -1.5371385, -0.4985314)),
                dot(xyz, vec3(-0.9692660, 1.8760108, 0.0415560)),
                dot(xyz, vec3(0.0556434, -0.2040259, 1.0572252)));
}

// What a film (its thickness in nm) over a surface of that f0 reflects: Airy's sum of what goes to and fro
// in it, of which two terms change the color (Belcour and Barla, 2017).
vec3 thinFilm(float cosine, float filmIor, float thickness, vec3 f0) {
    float ior = mix(1.0, filmIor, smoothstep(0.0, 0.03, thickness));
    float square = 1.0 - (1.0 - cosine * cosine) / (ior * ior);
    if (square < 0.0)
        return vec3(1.0);
    float inside = sqrt(square);
    float outer = f0OfIor(ior);
    float r12 = outer + (1.0 - outer) * fifthPower(1.0 - cosine);
    float t121 = 1.0 - r12;
    vec3 root = sqrt(clamp(f0, 0.0, 0.9999));
    vec3 below = (1.0 + root) / (1.0 - root); // the index of what is below
    vec3 ratio = (below - ior) / (below + ior);
    vec3 r23 = ratio * ratio + (1.0 - ratio * ratio) * fifthPower(1.0 - inside);
    vec3 late = vec3(ior < 1.0 ? 0.0 : 3.1415927) + 3.1415927 * (1.0 - step(vec3(ior), below));
    vec3 both = clamp(r12 * r23, 1e-5, 0.9999);
    vec3 once = t121 * t121 * r23 / (1.0 - both);
    float path = 2.0 * ior * thickness * inside;
    vec3 sum = r12 + once + 2.0 * (once - t121) * sqrt(both) * filmColor(path, late);
    sum += 2.0 * (once - t121) * both * filmColor(2.0 * path, 2.0 * late);
    return max(sum, vec3(0.0));
}
)"},
    {"sheenLight", "",
     R"(// How far fibres of the distribution below stand in each other's light (Estevez and Kulla, 2017).
float fibreCurve(float cosine, float weight) {
    return mix(21.5473, 25.3245, weight) /
               (1.0 + mix(3.82987, 3.32435, weight) * pow(cosine, mix(0.19823, 0.16801, weight))) +
           mix(-1.97760, -1.27393, weight) * cosine + mix(-4.32054, -4.85967, weight);
}

float fibreMasking(float cosine, float alpha) {
    float weight = (1.0 - alpha) * (1.0 - alpha);
    if (cosine < 0.5)
        return exp(fibreCurve(cosine, weight));
    return exp(2.0 * fibreCurve(0.5, weight) - fibreCurve(1.0 - cosine, weight));
}

// What fibres that stand upright send to the eye: the distribution called Charlie, times pi and the cosine.
float sheenLight(vec3 normal, vec3 view, vec3 toLight, float roughness) {
    float alpha = max(roughness * roughness, 0.005);
    float nl = dot(normal, toLight);
    float nv = clamp(abs(dot(normal, view)), 1e-3, 1.0);
    if (nl <= 0.0)
        return 0.0;
    vec3 across = cross(normal, normalize(view + toLight)); // as long as the sine
    float spread = (2.0 + 1.0 / alpha) * pow(dot(across, across), 0.5 / alpha) * 0.5;
    return spread / ((1.0 + fibreMasking(nv, alpha) + fibreMasking(min(nl, 1.0), alpha)) * 4.0 * nv);
}
)"},
    {"sheenResponse", "",
     R"(// The share of a uniform sky that white fibres send to the eye.
float sheenResponse(vec3 normal, vec3 view, float roughness) {
    return texture2D(skyResponse, vec2(clamp(abs(dot(normal, view)), 0.0, 1.0), roughness)).b;
}
)"},
    {"spreadIor", "",
     R"(// The refractive indices of red, green and blue. The dispersion is 20 by Abbe's number.
vec3 spreadIor(float ior, float dispersion) {
    float side = (ior - 1.0) * 0.025 * dispersion;
    return vec3(ior - side, ior, ior + side);
}
)"},
    {"behindLight", "",
     R"(// A level of what stands behind: each is half as large as the one before and to the right of the first.
// Four samples make it smooth where it is coarse.
vec4 behindLevel(vec2 uv, float level) {
    float size = exp2(-level);
    float texel = (1.0 / 1024.0) / size;
    vec2 first = clamp(uv, texel, 1.0 - texel);
    vec2 origin = vec2(level < 0.5 ? 0.0 : 0.5, max(1.0 - 2.0 * size, 0.0));
    vec2 extent = vec2(0.5 * size, size);
    float near = -0.5 * texel;
    float far = 0.5 * texel;
    return 0.25 * (texture2D(behind, origin + extent * (first + vec2(near, near))) +
                   texture2D(behind, origin + extent * (first + vec2(far, near))) +
                   texture2D(behind, origin + extent * (first + vec2(near, far))) +
                   texture2D(behind, origin + extent * (first + vec2(far, far))));
}

// What stands behind at a place of its map, as blurred as the surface is rough.
vec4 behindLight(vec4 place, float roughness, float ior) {
    vec2 uv = place.xy / place.w;
    float level = min(10.0 * roughness * clamp(2.0 * ior - 2.0, 0.0, 1.0), 6.0);
    float finer = floor(level);
    return mix(behindLevel(uv, finer), behindLevel(uv, min(finer + 1.0, 6.0)), level - finer);
}
)"},
};

} // namespace

const Snippet& snippet(std::string_view name) {
    return *std::find_if(std::begin(kSnippets), std::end(kSnippets),
                         [name](const Snippet& candidate) { return candidate.name == name; });
}

} // namespace koShadingDag
