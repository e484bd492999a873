#pragma once

#include "output/Picture.h"
#include "output/ToneMap.h"

#include <orlohost/koColor.h>

namespace orloview {

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
    float pointSize = 3.0F; ///< pixels
    float lineWidth = 1.0F;
};

/// How a frame of that look becomes a picture.
inline Development developmentOf(const FrameLook& look) {
    return {look.background[3] == 1.0F, look.lights ? look.toneMap : ToneMap::Cut};
}

} // namespace orloview
