#include "texture/SceneTextures.h"

#include <cmath>

namespace orloview {

namespace {

AlphaUse alphaUseOf(AlphaMode mode) {
    if (mode == AlphaMode::Opaque)
        return AlphaUse::Ignored;
    return mode == AlphaMode::Mask ? AlphaUse::Kept : AlphaUse::Multiplied;
}

/// uv' = rotate(uv * scale, rotation) + offset, of rows u, v, 0, 1. None where it changes nothing.
std::optional<koLinear::ProjMatrix> transformOf(const TextureUse& use) {
    if (use.rotation == 0.0F && use.scale == std::array{1.0F, 1.0F} && use.offset == std::array{0.0F, 0.0F})
        return std::nullopt;
    const double c = std::cos(use.rotation);
    const double s = std::sin(use.rotation);
    koLinear::ProjMatrix matrix;
    matrix[0][0] = use.scale[0] * c;
    matrix[0][1] = use.scale[0] * -s;
    matrix[1][0] = use.scale[1] * s;
    matrix[1][1] = use.scale[1] * c;
    matrix[3][0] = use.offset[0];
    matrix[3][1] = use.offset[1];
    return matrix;
}

} // namespace

SceneTextures::SceneTextures(const Scene& scene, bool withNormalMaps)
    : fStore(scene), fLayers(scene.materials.size()) {
    for (size_t i = 0; i < fLayers.size(); ++i) {
        planLayers(scene.materials[i], fLayers[i]);
        if (withNormalMaps)
            planNormal(scene.materials[i], fLayers[i]);
    }
    fStore.begin();
}

void SceneTextures::planLayers(const Material& material, MaterialLayers& layers) {
    const bool hasBase = fStore.hasPicture(material.baseColorTexture);
    if (hasBase)
        planLayer(layers.base, material.baseColorTexture, Encoding::Srgb, alphaUseOf(material.alphaMode),
                  {1.0F, 1.0F, 1.0F});
    const std::array<float, 3> emissive{material.emissive[0], material.emissive[1], material.emissive[2]};
    if (emissive == std::array{0.0F, 0.0F, 0.0F})
        return;
    if (fStore.hasPicture(material.emissiveTexture))
        planLayer(layers.emission, material.emissiveTexture, Encoding::Srgb, AlphaUse::Ignored, emissive);
    else if (hasBase)
        fStore.ask(emissive, [&layers](GLTexture2D* texture) { layers.emission.texture = texture; });
}

void SceneTextures::planNormal(const Material& material, MaterialLayers& layers) {
    if (fStore.hasPicture(material.normalTexture))
        planLayer(layers.normal, material.normalTexture, Encoding::Linear, AlphaUse::Ignored,
                  {1.0F, 1.0F, 1.0F});
}

void SceneTextures::planLayer(TextureLayer& layer, const TextureUse& use, Encoding encoding, AlphaUse alpha,
                              const std::array<float, 3>& factor) {
    layer.uvSet = use.uvSet;
    layer.transform = transformOf(use);
    fStore.ask(use, encoding, alpha, factor, [&layer](GLTexture2D* texture) { layer.texture = texture; });
}

} // namespace orloview
