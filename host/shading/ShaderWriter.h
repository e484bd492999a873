#pragma once

#include "Network.h"
#include "NodeCatalogue.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace koShadingDag {

/// Writes the parts of a fragment shader that are used, each once, and remembers what its vertex shader has
/// to pass on.
class ShaderWriter {
public:
    ShaderWriter(const Network& network, const std::vector<LightSpec>& lights);

    /// Writes all that the material's own node needs, then its color.
    void writeMaterial();

    std::string vertexSource() const;
    std::string fragmentSource() const;

private:
    /// A node that is being written.
    struct Current {
        const ShadingNodeSpec* node;
        const NodeInfo* info;
        std::string name;
    };

    // Which nodes and inputs matter.
    void markUsed();
    bool needsInput(const ShadingNodeSpec& node, std::string_view input) const;
    bool needsOpacity(const ShadingNodeSpec& node) const;

    // What nodes are made of.
    const ShadingNodeSpec::Input& input(std::string_view name) const;
    bool isNeutral(std::string_view name) const; ///< neither connected nor set
    std::string in(std::string_view name);       ///< what feeds it, as an expression
    std::string inNormal(std::string_view name);
    int32_t setting(std::string_view name) const;

    // What a shader is made of.
    void use(std::string_view snippetName);
    std::string uniform(std::string_view type, const std::string& name);
    std::string uvSet(int set);
    std::string normal();
    std::string view();
    std::string position();
    std::string declare(std::string_view type, const std::string& name, const std::string& value);
    void statement(const std::string& text);
    std::string varyings() const;

    // Lights.
    void useLights();
    void writeLight(const LightSpec& spec, const std::string& light, const std::string& gl);
    void writePlacedLight(const LightSpec& spec, const std::string& light, const std::string& gl);

    /// The color of each light that comes from somewhere, times what it does; # stands for its direction.
    std::vector<std::string> overLights(std::string_view lobe) const;
    void addAmbientLights(std::vector<std::string>& terms, std::string_view response) const;
    bool hasLight(LightSpec::Type type) const;

    // Nodes: what they come to, as an expression.
    std::string writeNode();
    void writeColor(const std::string& result);
    std::string texCoord();
    std::string fileTexture();
    std::string ramp();
    std::string surfaceAlpha();
    std::string lambert();
    std::string blinnPhong();
    std::string metallicRoughness();
    std::string specularGlossiness();
    std::string microfacets(const std::string& diffuse, const std::string& f0, const std::string& roughness);
    std::string withCoat(const std::string& color, const std::string& occlusion);
    std::string emission();

    const Network& fNetwork;
    const std::vector<LightSpec>& fLights;
    const ShadingNodeSpec* fRoot;
    std::set<std::pair<const ShadingNodeSpec*, uint32_t>> fUsedOutputs;
    std::map<const ShadingNodeSpec*, std::string> fResults;
    Current fNow{};

    bool fPassesPosition = false;
    bool fPassesNormal = false;
    bool fPassesColor = false;
    std::set<int> fUvSets;
    std::vector<std::string> fUniforms;
    std::set<std::string> fDeclared;
    std::vector<std::string_view> fSnippets;
    std::string fGeometry; ///< the surface's own normal and the way to the eye
    std::string fLightCode;
    std::string fBody;
    bool fHasLights = false;
};

} // namespace koShadingDag
