#include "texture/GLSpotLightMap.h"

int32_t GLSpotLightMap::fsNumInstances_GLSpotLightMap = 0;

GLSpotLightMap::GLSpotLightMap() : GLTexture2D(kRasterAlpha8, false) {
    ++fsNumInstances_GLSpotLightMap;
}

GLSpotLightMap::~GLSpotLightMap() {
    --fsNumInstances_GLSpotLightMap;
}
