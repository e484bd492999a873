#include "shading/MaterialNetwork.h"

#include "draw/DrawableScene.h"
#include "texture/TextureStore.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <stdexcept>
#include <tuple>

namespace orloview {

namespace {

using namespace koShadingDag;
using Node = std::shared_ptr<ShadingNodeSpec>;

/// What feeds an input; of no node: nothing.
struct Source {
    Node node;
    const char* output = "color";

    explicit operator bool() const { return node != nullptr; }
};

bool isWhite(const koColor::Color& color) {
    return color[0] == 1.0F && color[1] == 1.0F && color[2] == 1.0F;
}

bool isBlack(const koColor::Color& color) {
    return color[0] == 0.0F && color[1] == 0.0F && color[2] == 0.0F;
}

class Builder {
public:
    Builder(const Material& material, const MaterialTextures& textures, const MeshTraits& traits)
        : fMaterial(material), fTextures(textures), fTraits(traits) {}

    Node build() {
        if (fMaterial.unlit || !fTraits.isLit)
            return surface(kUnlit, "color");
        switch (fMaterial.reflection) {
        case Reflection::SpecularGlossiness:
            return specularGlossiness();
        case Reflection::Phong:
            return phong();
        case Reflection::MetallicRoughness:
            break;
        }
        return metallicRoughness();
    }

private:
    static void connect(ShadingNodeSpec& node, const char* input, const Source& source) {
        const koString::CString fault = node.connect(input, source.node, source.output);
        if (!fault.empty())
            throw std::logic_error(fault.asChar());
    }

    /// Two sources multiplied; a missing one is 1.
    static Source times(const Source& a, const Source& b) {
        if (!a || !b)
            return a ? a : b;
        Node node = std::make_shared<ShadingNodeSpec>(kMultiply);
        connect(*node, "a", a);
        connect(*node, "b", b);
        const bool isFloat = std::string_view(a.output) != "color";
        return {node, isFloat ? "red" : "color"};
    }

    /// A source times a factor.
    static Source times(const Source& a, const koColor::Color& factor, bool isFloat) {
        if (isWhite(factor))
            return a;
        Node node = std::make_shared<ShadingNodeSpec>(kMultiply);
        connect(*node, "a", a);
        node->setValue("b", factor);
        return {node, isFloat ? "red" : "color"};
    }

    /// Feeds an input with a texture's output times a factor, or with the factor.
    void feed(ShadingNodeSpec& node, const char* input, TextureUse Material::*use, const char* output,
              float factor) {
        if (const Source sampled = texture(use, output))
            connect(node, input, times(sampled, koColor::Color(factor, factor, factor), true));
        else
            node.setValue(input, factor);
    }

    void feed(ShadingNodeSpec& node, const char* input, TextureUse Material::*use,
              const koColor::Color& factor) {
        if (const Source sampled = texture(use, "color"))
            connect(node, input, times(sampled, factor, false));
        else
            node.setValue(input, factor);
    }

    bool isUsed(TextureUse Material::*which) { return texture(which, "color").node != nullptr; }

    /// Null where the material doesn't use it, the picture can't be read, or the mesh lacks coordinates.
    Source texture(TextureUse Material::*which, const char* output) {
        const auto place = std::find(kTextureUses.begin(), kTextureUses.end(), which) - kTextureUses.begin();
        GLTexture2D* texture = fTextures[static_cast<size_t>(place)];
        const TextureUse& use = fMaterial.*which;
        if (!texture || (fTraits.uvSets >> use.uvSet & 1U) == 0)
            return {};
        Node& node = fSampled[{texture, use.uvSet, use.rotation, use.offset, use.scale}];
        if (!node) {
            node = std::make_shared<ShadingNodeSpec>(kFileTexture);
            node->setTexture(texture, {}); // its TextureStore has told GL how it repeats and is filtered
            if (const Source uv = coordinates(use))
                connect(*node, "uv", uv);
        }
        return {node, output};
    }

    /// Null: set 0 as it is.
    Source coordinates(const TextureUse& use) {
        const bool moves = use.offset != std::array{0.0F, 0.0F};
        const bool scales = use.scale != std::array{1.0F, 1.0F};
        if (!moves && !scales && use.rotation == 0.0F && use.uvSet == 0)
            return {};
        Node& node = fPlaced[{use.uvSet, use.rotation, use.offset, use.scale}];
        if (!node) {
            node = std::make_shared<ShadingNodeSpec>(kTexCoord);
            node->setSetting("set", use.uvSet);
            if (moves)
                node->setValue("offset", use.offset[0], use.offset[1]);
            if (scales)
                node->setValue("scale", use.scale[0], use.scale[1]);
            if (use.rotation != 0.0F)
                node->setValue("rotation", use.rotation);
        }
        return {node, "uv"};
    }

    Source normalMap(TextureUse Material::*which) {
        const Source color = texture(which, "color");
        if (!color)
            return {};
        const TextureUse& use = fMaterial.*which;
        Node node = std::make_shared<ShadingNodeSpec>(kNormalMap);
        connect(*node, "color", color);
        if (fTraits.hasTangents)
            node->setSetting("tangentSet", DrawableScene::kTangentUnit);
        else if (const Source uv = coordinates(use))
            connect(*node, "uv", uv);
        if (use.strength != 1.0F)
            node->setValue("strength", use.strength);
        return {node, "normal"};
    }

    Source vertexColor(const char* output) {
        if (!fTraits.hasColors)
            return {};
        if (!fVertexColor)
            fVertexColor = std::make_shared<ShadingNodeSpec>(kVertexColor);
        return {fVertexColor, output};
    }

    /// A node with what all surfaces have.
    Node surface(NodeKind kind, const char* colorInput) {
        Node node = std::make_shared<ShadingNodeSpec>(kind);
        const Source color = times(texture(&Material::baseColorTexture, "color"), vertexColor("color"));
        if (color)
            connect(*node, colorInput, times(color, fMaterial.baseColor, false));
        else
            node->setValue(colorInput, fMaterial.baseColor);
        if (fMaterial.alphaMode != AlphaMode::Opaque)
            addOpacity(*node);
        if (kind == kUnlit)
            return node;
        if (!isBlack(fMaterial.emissive))
            feed(*node, "emission", &Material::emissiveTexture, fMaterial.emissive);
        if (const Source normal = normalMap(&Material::normalTexture))
            connect(*node, "normal", normal);
        return node;
    }

    void addOpacity(ShadingNodeSpec& node) {
        const float alpha = fMaterial.baseColor[3];
        const Source opacity = times(texture(&Material::baseColorTexture, "alpha"), vertexColor("alpha"));
        if (opacity)
            connect(node, "opacity", times(opacity, koColor::Color(alpha, alpha, alpha), true));
        else
            node.setValue("opacity", alpha);
        const bool isMask = fMaterial.alphaMode == AlphaMode::Mask;
        node.setSetting("alphaMode", isMask ? kMask : kBlend);
        if (isMask)
            node.setValue("alphaCutoff", fMaterial.alphaCutoff);
    }

    Node metallicRoughness() {
        Node node = surface(kMetallicRoughness, "baseColor");
        feed(*node, "metallic", &Material::metallicRoughnessTexture, "blue", fMaterial.metallic);
        feed(*node, "roughness", &Material::metallicRoughnessTexture, "green", fMaterial.roughness);
        addOcclusion(*node);
        if (fMaterial.clearcoat > 0.0F) {
            feed(*node, "clearcoat", &Material::clearcoatTexture, "red", fMaterial.clearcoat);
            feed(*node, "clearcoatRoughness", &Material::clearcoatRoughnessTexture, "green",
                 fMaterial.clearcoatRoughness);
            if (const Source normal = normalMap(&Material::clearcoatNormalTexture))
                connect(*node, "clearcoatNormal", normal);
        }
        addReflection(*node);
        addTransmission(*node);
        return node;
    }

    /// What changes how it reflects, or lies on it.
    void addReflection(ShadingNodeSpec& node) {
        if (fMaterial.ior != 1.5F)
            node.setValue("ior", fMaterial.ior);
        if (fMaterial.specularWeight != 1.0F || isUsed(&Material::specularWeightTexture))
            feed(node, "specular", &Material::specularWeightTexture, "alpha", fMaterial.specularWeight);
        if (!isWhite(fMaterial.specularTint) || isUsed(&Material::specularTintTexture))
            feed(node, "specularColor", &Material::specularTintTexture, fMaterial.specularTint);
        if (!isBlack(fMaterial.sheen)) {
            feed(node, "sheenColor", &Material::sheenTexture, fMaterial.sheen);
            feed(node, "sheenRoughness", &Material::sheenRoughnessTexture, "alpha", fMaterial.sheenRoughness);
        }
        if (fMaterial.anisotropy > 0.0F)
            addAnisotropy(node);
        if (fMaterial.iridescence > 0.0F) {
            feed(node, "iridescence", &Material::iridescenceTexture, "red", fMaterial.iridescence);
            node.setValue("iridescenceIor", fMaterial.iridescenceIor);
            addFilm(node);
        }
    }

    /// Along the directions of a picture, of the file's tangents or of set 0; without any it has none.
    void addAnisotropy(ShadingNodeSpec& node) {
        const Source mapped = normalMap(&Material::anisotropyTexture);
        if (!mapped && !fTraits.hasTangents && (fTraits.uvSets & 1U) == 0)
            return;
        feed(node, "anisotropy", &Material::anisotropyTexture, "blue", fMaterial.anisotropy);
        const float rotation = fMaterial.anisotropyRotation;
        if (!mapped && fTraits.hasTangents) { // a map of one direction: mirrored tangents turn the other way
            const Node map = std::make_shared<ShadingNodeSpec>(kNormalMap);
            map->setSetting("tangentSet", DrawableScene::kTangentUnit);
            map->setValue("color", koColor::Color(0.5F + 0.5F * std::cos(rotation),
                                                  0.5F + 0.5F * std::sin(rotation), 0.5F));
            return connect(node, "anisotropyTangent", {map, "normal"});
        }
        if (rotation != 0.0F)
            node.setValue("anisotropyRotation", rotation);
        if (mapped)
            connect(node, "anisotropyTangent", mapped);
    }

    void addFilm(ShadingNodeSpec& node) {
        const Source sampled = texture(&Material::filmTexture, "green");
        if (!sampled) {
            node.setValue("iridescenceThickness", fMaterial.thickestFilm);
            return;
        }
        const Node mix = std::make_shared<ShadingNodeSpec>(kMix);
        mix->setValue("a", fMaterial.thinnestFilm);
        mix->setValue("b", fMaterial.thickestFilm);
        connect(*mix, "weight", sampled);
        connect(node, "iridescenceThickness", {mix, "red"});
    }

    void addTransmission(ShadingNodeSpec& node) {
        if (fMaterial.transmission == 0.0F && fMaterial.diffuseTransmission == 0.0F)
            return;
        if (fMaterial.transmission > 0.0F)
            feed(node, "transmission", &Material::transmissionTexture, "red", fMaterial.transmission);
        if (fMaterial.diffuseTransmission > 0.0F) {
            feed(node, "diffuseTransmission", &Material::diffuseTransmissionTexture, "alpha",
                 fMaterial.diffuseTransmission);
            feed(node, "diffuseTransmissionColor", &Material::diffuseTransmissionColorTexture,
                 fMaterial.diffuseTransmissionColor);
        }
        if (fMaterial.thickness == 0.0F)
            return;
        feed(node, "thickness", &Material::thicknessTexture, "green", fMaterial.thickness);
        if (fMaterial.attenuationDistance > 0.0F) {
            node.setValue("attenuationColor", fMaterial.attenuationColor);
            node.setValue("attenuationDistance", fMaterial.attenuationDistance);
        }
        if (fMaterial.dispersion > 0.0F)
            node.setValue("dispersion", fMaterial.dispersion);
    }

    Node specularGlossiness() {
        Node node = surface(kSpecularGlossiness, "diffuse");
        feed(*node, "specular", &Material::specularTexture, fMaterial.specular);
        feed(*node, "glossiness", &Material::specularTexture, "alpha", 1.0F - fMaterial.roughness);
        addOcclusion(*node);
        return node;
    }

    Node phong() {
        if (isBlack(fMaterial.specular))
            return surface(kLambert, "color");
        Node node = surface(kBlinnPhong, "color");
        feed(*node, "specularColor", &Material::specularTexture, fMaterial.specular);
        node->setValue("shininess", fMaterial.phongExponent);
        return node;
    }

    void addOcclusion(ShadingNodeSpec& node) {
        const Source occlusion = texture(&Material::occlusionTexture, "red");
        if (!occlusion)
            return;
        const float strength = fMaterial.occlusionTexture.strength;
        if (strength == 1.0F)
            return connect(node, "occlusion", occlusion);
        const Node mix = std::make_shared<ShadingNodeSpec>(kMix);
        mix->setValue("a", 1.0F);
        connect(*mix, "b", occlusion);
        mix->setValue("weight", strength);
        connect(node, "occlusion", {mix, "red"});
    }

    using Place = std::tuple<int, float, std::array<float, 2>, std::array<float, 2>>;
    using SampledPlace =
        std::tuple<const GLTexture2D*, int, float, std::array<float, 2>, std::array<float, 2>>;

    const Material& fMaterial;
    const MaterialTextures& fTextures;
    const MeshTraits& fTraits;
    std::map<SampledPlace, Node> fSampled;
    std::map<Place, Node> fPlaced;
    Node fVertexColor;
};

} // namespace

std::shared_ptr<ShadingNodeSpec> makeNetwork(const Material& material, const MaterialTextures& textures,
                                             const MeshTraits& traits) {
    return Builder(material, textures, traits).build();
}

} // namespace orloview
