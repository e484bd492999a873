#include "shader/GlslManager.h"

#include "shader/NodeManager.h"

#include <array>
#include <new>

namespace {

constexpr std::array<const char*, 4> kGlslLightStrings = {"point_light", "spot_light",
                                                          "directional_light"
                                                          "ambient_light",
                                                          ""};
constexpr std::array<const char*, 2> kGlslTransparencyStrings = {"OpacityInAlpha", "TransparencyInRGB"};

} // namespace

GlslManager::~GlslManager() {
    for (auto& [key, shader] : fShaders)
        shader.destroy();
}

GlslShader* GlslManager::bindKOSLShader(koShadingDag::ShadingNodeSpec& node, const koString::CString& key,
                                        const std::vector<LightSpec>* lights) const {
    auto* manager = managerOf<GlslManager>(node);
    if (!manager)
        return nullptr;
    GlslShader* shader = onlyShader(manager->fShaders, key);
    if (!shader)
        shader = manager->findOrCompile(node, key, lights);
    if (shader)
        shader->enable();
    return shader;
}

/// Null where memory is short.
GlslShader* GlslManager::findOrCompile(const koShadingDag::ShadingNodeSpec& node,
                                       const koString::CString& key, const std::vector<LightSpec>* lights) {
    auto place = fShaders.lower_bound(key);
    if (place == fShaders.end() || koString::less(key, place->first)) {
        try {
            koString::CString vertexSource;
            koString::CString fragmentSource;
            compileMaterialToGlsl(node, lights, vertexSource, fragmentSource);
            place = fShaders.emplace_hint(place, key, GlslShader());
            place->second.loadVertexProgramFromString(vertexSource);
            place->second.loadFragmentProgramFromString(fragmentSource);
        } catch (const std::bad_alloc&) {
            return nullptr;
        }
    }
    return &place->second;
}

koString::CString GlslManager::getLightStringFromType(GlslLightType type) {
    return type < kGlslLightStrings.size() ? kGlslLightStrings[type] : "";
}

koString::CString GlslManager::getTransparencyTypeStringFromType(GlslTransparencyType type) {
    return type < kGlslTransparencyStrings.size() ? kGlslTransparencyStrings[type] : "";
}
