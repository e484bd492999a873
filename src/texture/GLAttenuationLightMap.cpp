#include "texture/GLAttenuationLightMap.h"

#include "texture/TexelBuffer.h"

#include <algorithm>
#include <cmath>

namespace {

GLTexture2D* makeReferenced() {
    auto* texture = new (std::nothrow) GLTexture2D(kRasterRGBA8, false);
    if (texture)
        texture->ref();
    return texture;
}

uint8_t distanceByte(float x, float y) {
    const float d = x * x + y * y;
    return d > 1.0F ? 255 : static_cast<uint8_t>(d * 255.0F);
}

float bell(float x) {
    const double steep = 4.0 * x;
    return static_cast<float>(std::exp(-(steep * steep)));
}

uint8_t exponentByte(float x, float y) {
    return static_cast<uint8_t>(255.0F * (1.0F - bell(x) * bell(y)));
}

void load(GLTexture2D* texture, int size, uint8_t (*value)(float, float)) {
    const std::unique_ptr<uint8_t[]> texels = makeTexelBuffer(size, size, 4);
    if (!texture || !texels)
        return;
    const auto place = [size](int texel) {
        return (2.0F * static_cast<float>(texel) + 1.0F) / static_cast<float>(size) - 1.0F;
    };
    uint8_t* out = texels.get();
    for (int j = 0; j < size; ++j) {
        for (int i = 0; i < size; ++i)
            out = std::fill_n(out, 4, value(place(i), place(j)));
    }
    texture->GLloadImage(texels.get(), static_cast<unsigned>(size), static_cast<unsigned>(size));
}

} // namespace

int32_t GLAttenuationLightMap::fsNumInstances_GLAttenuationLightMap = 0;

GLAttenuationLightMap::GLAttenuationLightMap(int size)
    : fDistanceTexture(makeReferenced()), fExponentTexture(makeReferenced()) {
    load(fDistanceTexture, size, distanceByte);
    load(fExponentTexture, size, exponentByte);
    ++fsNumInstances_GLAttenuationLightMap;
}

GLAttenuationLightMap::~GLAttenuationLightMap() {
    for (GLTexture2D* texture : {fDistanceTexture, fExponentTexture}) {
        if (texture)
            texture->unref();
    }
    --fsNumInstances_GLAttenuationLightMap;
}
