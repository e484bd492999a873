#pragma once

#include "texture/TextureStore.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <orlohost/koLinear.h>

namespace orloview {

/// A texture as a material lays it on.
struct TextureLayer {
    GLTexture2D* texture = nullptr;                ///< null: not uploaded yet, or its picture can't be read
    std::optional<int> uvSet;                      ///< none: it is of one colour and needs no coordinates
    std::optional<koLinear::ProjMatrix> transform; ///< of texture coordinates
};

/// What a material lays over the lit colour of a surface, in this order.
struct MaterialLayers {
    TextureLayer base;     ///< multiplies it
    TextureLayer emission; ///< is added
    TextureLayer normal;   ///< for shaders of the user's
};

/// The textures that GL's own functions draw a scene's materials with: base colour, and what a surface sends
/// out by itself.
///
/// Emission is a texture wherever there is a base colour texture, if only of one texel: as GL's material
/// emission it would be multiplied by the base colour.
///
/// Needs a current context to be made, to upload and to end. The scene has to stay as it is until then.
class SceneTextures {
public:
    explicit SceneTextures(const Scene& scene, bool withNormalMaps = false);

    /// Calls `uploaded` after each texture.
    void upload(const std::function<void()>& uploaded) { fStore.upload(uploaded); }

    /// How many textures `upload` makes.
    size_t count() const { return fStore.count(); }

    /// By the number of the material; -1 is a plain one.
    const MaterialLayers& layersOf(int material) const {
        return material < 0 ? fNoLayers : fLayers[static_cast<size_t>(material)];
    }

    const std::vector<std::string>& warnings() const { return fStore.warnings(); }

private:
    void planLayers(const Material& material, MaterialLayers& layers);
    void planNormal(const Material& material, MaterialLayers& layers);
    void planLayer(TextureLayer& layer, const TextureUse& use, Encoding encoding, AlphaUse alpha,
                   const std::array<float, 3>& factor);

    TextureStore fStore;
    MaterialLayers fNoLayers;
    std::vector<MaterialLayers> fLayers; ///< as Scene::materials
};

} // namespace orloview
