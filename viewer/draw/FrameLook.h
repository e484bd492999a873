#pragma once

#include "output/Picture.h"
#include "output/ToneMap.h"

#include <algorithm>
#include <array>
#include <optional>

#include <orlohost/koColor.h>

namespace orloview {

/// A plane across an axis of the world, beyond which nothing is shown.
struct Clip {
    int axis = 0;
    double place = 0.0;

    /// As GL takes it.
    std::array<double, 4> plane() const {
        std::array<double, 4> plane{0.0, 0.0, 0.0, place};
        plane[static_cast<size_t>(axis)] = -1.0;
        return plane;
    }
};

/// How a frame looks, apart from what is in it.
struct FrameLook {
    int width = 0;
    int height = 0;
    int left = 0; ///< what of the frame the target holds begins here: a target may be smaller than the frame
    int bottom = 0;
    koColor::Color background;      ///< linear, multiplied by its alpha
    ToneMap toneMap = ToneMap::Cut; ///< for who shows the frame; of what is lit
    bool wireframe = false;
    bool lights = true;
    bool culling = true; ///< hides triangles that are seen from behind, where the material says so
    bool grid = false;
    bool axes = false;
    bool ground = false;
    bool ambientOcclusion = false;
    bool sky = false;         ///< shown behind everything
    bool edges = false;       ///< of triangles, over what is drawn
    std::optional<Clip> clip; ///< cuts off what lies beyond
    float gain = 1.0F;        ///< multiplies all light once it is drawn; for who shows the frame
    float exposure = 1.0F;    ///< multiplies light that is neither a light's, the sky's nor a material's
    float pointSize = 3.0F;   ///< pixels
    float lineWidth = 1.0F;
};

/// Whether a frame's tones are mapped; its background isn't in it then, but is laid under afterwards.
inline bool isToneMapped(const FrameLook& look) {
    return look.lights && look.toneMap != ToneMap::Cut;
}

inline bool isOccluded(const FrameLook& look) {
    return look.lights && look.ambientOcclusion;
}

/// How a frame of that look becomes a picture.
inline Development developmentOf(const FrameLook& look) {
    Development development{look.background[3] == 1.0F};
    if (isToneMapped(look)) {
        development.gain = look.gain;
        development.toneMap = look.toneMap;
        std::copy_n(look.background.data(), 4, development.background.begin());
    }
    return development;
}

} // namespace orloview
