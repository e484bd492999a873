#pragma once

#include "texture/SceneTextures.h"

#include <array>

namespace orloview {

/// Lays a material's textures over what is drawn: base colour on texture unit 0, emission on unit 1; a normal
/// map on unit 2, for shaders alone. Keeps in mind what a unit has, so that groups of one material cost
/// nothing more.
///
/// Of one frame: whatever else draws may use the units before and after. Needs a current context.
class TextureUnits {
public:
    TextureUnits();

    /// Leaves the units off, with the identity as their matrix, and unit 0 active.
    ~TextureUnits();

    TextureUnits(const TextureUnits&) = delete;
    TextureUnits& operator=(const TextureUnits&) = delete;

    /// Null: nothing.
    void set(const TextureLayer* base, const TextureLayer* emission, const TextureLayer* normal = nullptr) {
        if (base != fLayers[0])
            setUnit(0, base);
        if (emission != fLayers[1] && fHasMoreUnits)
            setUnit(1, emission);
        if (normal != fLayers[2] && fHasMoreUnits)
            setUnit(2, normal);
    }

private:
    void setUnit(size_t unit, const TextureLayer* layer);

    std::array<const TextureLayer*, 3> fLayers{};
    bool fHasMoreUnits;
};

} // namespace orloview
