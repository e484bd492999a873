#include "draw/SceneLights.h"

#include "scene/Vectors.h"
#include "scene/View.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <numbers>

namespace orloview {

namespace {

struct Setting {
    koLinear::Vector toLight; ///< in the eye's space
    float intensity;          ///< linear, of white
};

constexpr std::array<Setting, 3> kStudio = {{
    {{-0.45, 0.65, 0.62}, 0.78F},
    {{0.75, 0.10, 0.55}, 0.22F},
    {{0.25, 0.60, -0.75}, 0.25F},
}};
constexpr double kStudioSum = 1.25;

constexpr size_t kGLLights = 8;

bool hasPlace(const Light& light) {
    return light.kind == Light::Kind::Point || light.kind == Light::Kind::Spot;
}

/// What a surface in the middle of the scene gets that faces the light. One among the surfaces, or without a
/// place, counts as far away as the scene is large.
double strengthAt(const Light& light, const koLinear::Point& middle, double radius) {
    const double color = std::max({light.color[0], light.color[1], light.color[2]});
    if (!hasPlace(light))
        return color * light.intensity;
    const koLinear::Point place = light.toWorld.transform(koLinear::Point());
    const double distance = std::max(length(between(place, middle)), radius);
    return color * light.intensity / (distance * distance);
}

/// By Light::Kind.
constexpr std::array kTypes = {IHWLight::kLightDirectional, IHWLight::kLightPoint, IHWLight::kLightSpot,
                               IHWLight::kLightAmbient};
constexpr std::array kSpecTypes = {LightSpec::kDirectional, LightSpec::kPoint, LightSpec::kSpot,
                                   LightSpec::kAmbient};

LightSpec specOf(const Light& light) {
    LightSpec spec;
    spec.fType = kSpecTypes[static_cast<size_t>(light.kind)];
    spec.fHasRange = hasPlace(light) && std::isfinite(light.range);
    spec.fHasInnerCone = light.kind == Light::Kind::Spot;
    return spec;
}

/// GL's fixed functions fade a spot by a power of the cosine: one that halves midway between the angles.
float exponentOf(const Light& light) {
    const double middle = 0.5 * (light.innerConeAngle + light.outerConeAngle);
    const double exponent = std::log(0.5) / std::log(std::max(std::cos(middle), 1e-3));
    return static_cast<float>(std::clamp(exponent, 0.0, 128.0));
}

} // namespace

SceneLights::SceneLights(const Scene& scene, bool besideEye, float factor) : fFactor(factor) {
    addFileLights(scene);
    if (besideEye && scene.lights.empty())
        addStudio();
}

GLLight& SceneLights::add(const LightSpec& spec, IHWLight::LightType type, const koColor::Color& color) {
    fSpecs.push_back(spec);
    GLLight& light = *fLights.emplace_back(std::make_unique<GLLight>());
    light.setLightType(type);
    light.fDiffuseColor = color;
    light.fSpecularColor = color;
    return light;
}

void SceneLights::addStudio() {
    LightSpec spec;
    spec.fType = LightSpec::kDirectional;
    for (const Setting& setting : kStudio) {
        const float intensity = setting.intensity * fFactor;
        add(spec, IHWLight::kLightDirectional, {intensity, intensity, intensity});
    }
}

void SceneLights::addFileLights(const Scene& scene) {
    const koLinear::Point middle = centerOf(scene.bounds());
    const double radius = radiusOf(scene.bounds());
    const auto strength = [&](const Light* light) { return strengthAt(*light, middle, radius); };
    std::vector<const Light*> lights;
    for (const Light& light : scene.lights) {
        if (strength(&light) > 0.0)
            lights.push_back(&light);
    }
    std::stable_sort(lights.begin(), lights.end(),
                     [&](const Light* a, const Light* b) { return strength(a) > strength(b); });
    const auto isAmbient = [](const Light* light) { return light->kind == Light::Kind::Ambient; };
    if (lights.size() > kGLLights) {
        fWarnings.push_back("warning: of its " + std::to_string(lights.size()) +
                            " lights the 8 brightest are drawn");
        lights.resize(kGLLights);
    }
    std::stable_partition(lights.begin(), lights.end(), std::not_fn(isAmbient)); // the first casts shadows
    double sum = 0.0;
    for (const Light* light : lights)
        sum += strength(light);
    for (const Light* light : lights) {
        const auto scale = static_cast<float>(light->intensity * kStudioSum / sum) * fFactor;
        const koColor::Color color(light->color[0] * scale, light->color[1] * scale, light->color[2] * scale);
        GLLight& made = add(specOf(*light), kTypes[static_cast<size_t>(light->kind)], color);
        made.fLightTransform = light->toWorld;
        if (isAmbient(light)) {
            made.fAmbientColor = color;
            made.fDiffuseColor = made.fSpecularColor = {0.0F, 0.0F, 0.0F};
        }
        if (hasPlace(*light)) {
            made.fConstantAttenuation = 0.0F;
            made.fFurtherAttenuationTerms[0] = 1.0F;
        }
        made.fSpotCutoffAngle =
            static_cast<float>(std::clamp(light->outerConeAngle * 180.0 / std::numbers::pi, 0.0, 90.0));
        made.fSpotExponent = exponentOf(*light);
        fSources.push_back(light);
    }
}

koLinear::AffineMatrix SceneLights::toWorld(size_t i, const koLinear::AffineMatrix& worldToEye) const {
    if (!fSources.empty())
        return fSources[i]->toWorld;
    return frameAlong(kStudio[i].toLight).then(fKeptTo.value_or(worldToEye).inverse());
}

void SceneLights::bind(const koLinear::AffineMatrix& worldToEye) {
    for (size_t i = 0; i < fLights.size(); ++i) {
        fLights[i]->fLightTransform = toWorld(i, worldToEye);
        fLighting.bind(static_cast<unsigned>(i), fLights[i].get());
    }
}

} // namespace orloview
