#pragma once

#include "texture/TextureLoader.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <orlohost/koLinear.h>
#include <texture/GLTexture2D.h>

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
};

/// The textures of a scene's materials: base colour, and what a surface sends out by itself. Pictures are
/// read on threads from the constructor on; `upload` waits for them. Pictures that several materials use in
/// one way are one texture.
///
/// Emission is a texture wherever there is a base colour texture, if only of one texel: as GL's material
/// emission it would be multiplied by the base colour.
///
/// Needs a current context to be made, to upload and to end. The scene has to stay as it is until then.
class SceneTextures {
public:
    explicit SceneTextures(const Scene& scene);
    ~SceneTextures();

    SceneTextures(const SceneTextures&) = delete;
    SceneTextures& operator=(const SceneTextures&) = delete;

    /// Calls `uploaded` after each texture.
    void upload(const std::function<void()>& uploaded);

    /// How many textures `upload` makes.
    size_t count() const { return fUsers.size(); }

    /// By the number of the material; -1 is a plain one.
    const MaterialLayers& layersOf(int material) const {
        return material < 0 ? fNoLayers : fLayers[static_cast<size_t>(material)];
    }

    /// "PICTURE: what happened", with the model's name before it, for each picture that is left out or drawn
    /// smaller than it is. Filled by `upload`.
    const std::vector<std::string>& warnings() const { return fWarnings; }

private:
    /// All that makes a texture what it is.
    struct Key {
        int image; ///< -1: a single texel of the factor
        AlphaUse alpha;
        std::array<float, 3> factor;
        Wrap wrapU;
        Wrap wrapV;
        Filter minFilter;
        Filter magFilter;

        auto operator<=>(const Key&) const = default; // NOLINT(modernize-use-nullptr): a false alarm
    };

    void planLayers(const Material& material, MaterialLayers& layers);
    void planLayer(TextureLayer& layer, const Key& key);
    Key keyOf(const TextureUse& use, AlphaUse alpha, const std::array<float, 3>& factor) const;
    GLTexture2D* makeTexture(const Key& key, LoadedTexture& loaded);
    void warn(const Key& key, const std::string& what);

    const Scene& fScene;
    int fLargestSide = 0;
    MaterialLayers fNoLayers;
    std::vector<MaterialLayers> fLayers;              ///< as Scene::materials
    std::map<Key, std::vector<TextureLayer*>> fUsers; ///< who waits for which texture
    std::unique_ptr<TextureLoader> fLoader;           ///< of the keys in their order
    std::vector<GLTexture2D*> fTextures;              ///< a reference each
    std::vector<std::string> fWarnings;
};

} // namespace orloview
