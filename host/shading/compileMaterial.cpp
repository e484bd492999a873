#include "ShaderWriter.h"

using namespace koShadingDag;

namespace {

/// More nodes than any material has; a shader of them takes a driver minutes.
constexpr size_t kMostNodes = 4096;

/// GL's own lights.
constexpr size_t kMostLights = 8;

std::string faultOf(const Network& network, const std::vector<LightSpec>& lights) {
    if (network.members().size() > kMostNodes)
        return "the network has " + std::to_string(network.members().size()) + " nodes, more than " +
               std::to_string(kMostNodes);
    for (size_t i = kMostLights; i < lights.size(); ++i) {
        if (lights[i].fType < LightSpec::kSky)
            return "light " + std::to_string(i) + " has no GL light: there are " +
                   std::to_string(kMostLights);
    }
    return "";
}

ShaderParts partsOf(const ShadingNodeSpec& node, const std::vector<LightSpec>* lights,
                    ShadingLanguage language) {
    static const std::vector<LightSpec> kNoLights;
    const Network network(node);
    const std::vector<LightSpec>& used = lights ? *lights : kNoLights;
    ShaderParts refused;
    refused.fault = faultOf(network, used);
    return refused.fault.empty() ? ShaderWriter(network, used, language).writeMaterial() : refused;
}

void hand(const ShaderSources& sources, koString::CString& vertexSource, koString::CString& fragmentSource) {
    vertexSource = sources.vertex.c_str();
    fragmentSource = sources.fragment.c_str();
}

} // namespace

void compileMaterialToGlsl(const ShadingNodeSpec& node, const std::vector<LightSpec>* lights,
                           koString::CString& vertexSource, koString::CString& fragmentSource) {
    hand(glslSources(partsOf(node, lights, ShadingLanguage::Glsl)), vertexSource, fragmentSource);
}

void compileMaterialToCg(const ShadingNodeSpec& node, const std::vector<LightSpec>* lights,
                         koString::CString& vertexSource, koString::CString& fragmentSource) {
    hand(cgSources(partsOf(node, lights, ShadingLanguage::Cg)), vertexSource, fragmentSource);
}
