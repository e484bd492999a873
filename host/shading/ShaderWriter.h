#pragma once

#include "Network.h"
#include "NodeCatalogue.h"
#include "ShaderParts.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace koShadingDag {

/// Writes the parts of a fragment shader that are used, each once, and notes what its vertex shader has to
/// pass on.
class ShaderWriter {
public:
    /// The language matters where one has an operator and the other a function.
    ShaderWriter(const Network& network, const std::vector<LightSpec>& lights, ShadingLanguage language);

    /// All that the material's own node needs, then its color. Once.
    ShaderParts writeMaterial();

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
    std::string tangents(int set);
    std::string normal();
    std::string outward();
    std::string view();
    std::string position();
    std::string transformed(const std::string& matrix, const std::string& vector) const;
    std::string declare(std::string_view type, const std::string& name, const std::string& value);
    void statement(const std::string& text);

    // Lights.
    void useLights();
    void writeLight(const LightSpec& spec, const std::string& light, const std::string& gl);
    void writePlacedLight(const LightSpec& spec, const std::string& light, const std::string& gl);

    /// The color of each light that comes from somewhere, times what it does; # stands for its direction.
    std::vector<std::string> overLights(std::string_view lobe) const;
    void addAmbientLights(std::vector<std::string>& terms, std::string_view response) const;
    bool hasLight(LightSpec::Type type) const;
    bool hasSky() const { return hasLight(LightSpec::kSky) || hasLight(LightSpec::kSkyMap); }

    // Nodes: what they come to, as an expression.
    std::string writeNode();
    void writeColor(const std::string& result);
    std::string texCoord();
    std::string fileTexture();
    std::string normalMap();
    std::string ramp();
    std::string surfaceAlpha();
    std::string lambert();
    std::string blinnPhong();
    std::string metallicRoughness();
    std::string specularGlossiness();
    std::string microfacets(const std::string& diffuse, const std::string& f0, const std::string& roughness);
    std::string nearOcclusion();
    std::string occludedSum(const std::vector<std::string>& around, std::string& occlusion);
    std::string withCoat(const std::string& color, const std::string& occlusion);
    std::string emission();

    // Metallic-roughness with what few materials have.
    struct Layers;
    bool isLayered() const;
    std::string layered(const std::string& base, const std::string& metallic);
    void addReflection(Layers& layers, const std::string& base, const std::string& metallic);
    void addFilm(Layers& layers);
    void addLobe(Layers& layers);
    void addThickness(Layers& layers);
    void addBody(Layers& layers, const std::string& base, const std::string& metallic);
    std::string entering(const Layers& layers);
    std::string layeredLight(const Layers& layers, std::string& occlusion);
    std::string withBehind(const Layers& layers, const std::string& color, const std::string& base);
    std::string behindThrough(const Layers& layers, const std::string& ior);
    std::string withSheen(const Layers& layers, const std::string& color, const std::string& occlusion);

    const Network& fNetwork;
    const std::vector<LightSpec>& fLights;
    ShadingLanguage fLanguage;
    const ShadingNodeSpec* fRoot;
    std::set<std::pair<const ShadingNodeSpec*, uint32_t>> fUsedOutputs;
    std::map<const ShadingNodeSpec*, std::string> fResults;
    Current fNow{};

    ShaderParts fParts;
    std::set<std::string> fDeclared;
    std::string fGeometry; ///< the surface's own normal and the way to the eye
    std::string fLightCode;
    std::string fBody;
    std::string fAlpha = "1.0"; ///< of a material that hides what is behind it
    bool fHasLights = false;
};

} // namespace koShadingDag
