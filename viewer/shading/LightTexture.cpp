#include "shading/LightTexture.h"

#include "texture/Texels.h"

#include <cstdint>
#include <vector>

#include <texture/GLTexUsage.h>

namespace orloview {

GLTexture2D* uploadLight(std::span<const float> rgb, int width, int height, float factor,
                         IHWTexUsage::WrapMode around) {
    std::vector<std::uint16_t> halves;
    halves.reserve(rgb.size() / 3 * 4);
    for (size_t i = 0; i < rgb.size(); ++i) {
        halves.push_back(toHalf(rgb[i] * factor));
        if (i % 3 == 2)
            halves.push_back(toHalf(1.0F));
    }
    auto* texture = new GLTexture2D(kRasterRGBA16F, false);
    texture->ref();
    texture->GLloadImage(halves.data(), static_cast<unsigned>(width), static_cast<unsigned>(height));
    GLTexUsage::setWrapMode(GL_TEXTURE_2D, around, IHWTexUsage::kClampToEdge);
    GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, IHWTexUsage::kLinear, IHWTexUsage::kLinear);
    return texture;
}

} // namespace orloview
