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
        if (lights[i].fType != LightSpec::kSky)
            return "light " + std::to_string(i) + " has no GL light: there are " +
                   std::to_string(kMostLights);
    }
    return "";
}

} // namespace

void compileMaterialToGlsl(const ShadingNodeSpec& node, const std::vector<LightSpec>* lights,
                           koString::CString& vertexSource, koString::CString& fragmentSource) {
    static const std::vector<LightSpec> kNoLights;
    const Network network(node);
    const std::vector<LightSpec>& used = lights ? *lights : kNoLights;
    if (const std::string fault = faultOf(network, used); !fault.empty()) {
        vertexSource = fragmentSource = ("#version 120\n#error " + fault + "\n").c_str();
        return;
    }
    ShaderWriter writer(network, used);
    writer.writeMaterial();
    vertexSource = writer.vertexSource().c_str();
    fragmentSource = writer.fragmentSource().c_str();
}
