#pragma once

#include "shading/SkyLight.h"

#include <span>
#include <vector>

#include <texture/GLTexture2D.h>

namespace orloview {

/// A sky as shaders read it (docs/shading-networks.md): integrals of the microfacet model over it, exact
/// where a surface faces the eye; without a sky, what surfaces make of any. Needs a current context.
class SkyMaps {
public:
    /// `withSheen`: some surface has fibres.
    SkyMaps(const SkyLight* sky, bool withSheen);
    ~SkyMaps();

    SkyMaps(const SkyMaps&) = delete;
    SkyMaps& operator=(const SkyMaps&) = delete;

    struct Map {
        const char* name; ///< of the sampler
        GLTexture2D* texture;
    };
    const std::vector<Map>& maps() const { return fMaps; }

private:
    void addHeights(const Sky& sky, float factor);
    void addPicture(const SkyPicture& picture, float factor);
    void addResponse(bool withSheen);
    void add(const char* name, int width, int height, const std::vector<Sky::Color>& texels, float factor);
    void add(const char* name, int width, int height, std::span<const float> rgb, float factor);

    std::vector<Map> fMaps;
};

} // namespace orloview
