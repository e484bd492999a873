#pragma once

#include "shading/Sky.h"
#include "texture/SkyPicture.h"

#include <memory>
#include <optional>

#include <orlohost/koLinear.h>

namespace orloview {

/// What shines from all round: a picture, else a sky by its heights.
struct SkyLight {
    std::optional<Sky> heights;
    std::shared_ptr<const SkyPicture> picture;

    // Its axes in the world, of unit length. The middle of a picture lies against `back`.
    koLinear::Vector right{1.0, 0.0, 0.0};
    koLinear::Vector up{0.0, 1.0, 0.0};
    koLinear::Vector back{0.0, 0.0, 1.0};

    float factor = 1.0F; ///< multiplies it
};

} // namespace orloview
