#pragma once

#include "shading/Sky.h"

#include <vector>

#include <texture/GLTexture2D.h>

namespace orloview {

/// A sky as shaders read it (docs/shading-networks.md): integrals of the microfacet model over it, exact
/// where a surface faces the eye; without a sky, what surfaces make of any. Needs a current context.
class SkyMaps {
public:
    /// `withSheen`: some surface has fibres.
    SkyMaps(const Sky* sky, bool withSheen);
    ~SkyMaps();

    SkyMaps(const SkyMaps&) = delete;
    SkyMaps& operator=(const SkyMaps&) = delete;

    struct Map {
        const char* name; ///< of the sampler
        GLTexture2D* texture;
    };
    const std::vector<Map>& maps() const { return fMaps; }

private:
    void addSky(const Sky& sky);
    void addResponse(bool withSheen);
    void add(const char* name, int width, int height, const std::vector<Sky::Color>& texels);

    std::vector<Map> fMaps;
};

} // namespace orloview
