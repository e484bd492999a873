#pragma once

#include "texture/TextureLoader.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <orlohost/HWInterfaces.h>
#include <texture/GLTexture2D.h>

namespace orloview {

/// The textures of a scene that somebody asked for: pictures that are used in one way are one texture.
///
/// Ask, then `begin`, which reads the pictures on threads, and `upload`, which waits for them. Needs a
/// current context for all but asking. The scene has to stay as it is until it is uploaded.
class TextureStore {
public:
    explicit TextureStore(const Scene& scene) : fScene(scene) {}
    ~TextureStore();

    TextureStore(const TextureStore&) = delete;
    TextureStore& operator=(const TextureStore&) = delete;

    /// Tells who asked. Null: the picture can't be read.
    using Taker = std::function<void(GLTexture2D*)>;

    /// Whether a material's use of a texture leads to a picture. Where not, the importer has told why.
    bool hasPicture(const TextureUse& use) const;

    /// A picture's colours are multiplied by `factor`, linear.
    void ask(const TextureUse& use, Encoding encoding, AlphaUse alpha, const std::array<float, 3>& factor,
             Taker taker);

    /// A single texel of that colour.
    void ask(const std::array<float, 3>& linearColor, Taker taker);

    void begin();

    /// Calls `uploaded` after each texture.
    void upload(const std::function<void()>& uploaded);

    /// How many textures `upload` makes.
    size_t count() const { return fTakers.size(); }

    /// "PICTURE: what happened", with the model's name before it, for each picture that is left out or drawn
    /// smaller than it is. Filled by `upload`.
    const std::vector<std::string>& warnings() const { return fWarnings; }

private:
    /// All that makes a texture what it is.
    struct Key {
        int image; ///< -1: a single texel of the factor
        Encoding encoding;
        AlphaUse alpha;
        std::array<float, 3> factor;
        Wrap wrapU;
        Wrap wrapV;
        Filter minFilter;
        Filter magFilter;

        auto operator<=>(const Key&) const = default; // NOLINT(modernize-use-nullptr): a false alarm
    };

    int imageOf(const TextureUse& use) const;

    /// A picture may have many names; it is read once.
    int firstAlike(int image);

    GLTexture2D* makeTexture(const Key& key, LoadedTexture& loaded);
    void warn(const Key& key, const std::string& what);

    const Scene& fScene;
    std::map<std::pair<std::string, std::string_view>, int> fFirstAlike; ///< images by path and bytes
    int fLargestSide = 0;
    std::map<Key, std::vector<Taker>> fTakers; ///< who waits for which texture
    std::unique_ptr<TextureLoader> fLoader;    ///< of the keys in their order
    std::vector<GLTexture2D*> fTextures;       ///< a reference each
    std::vector<std::string> fWarnings;
};

} // namespace orloview
