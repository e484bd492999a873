#include "texture/TextureManager.h"

#include "gl/GLFunctionTable.h"
#include "gl/GLStartupContext.h"
#include "texture/TexelBuffer.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <new>

TextureManager* GLTextureManager = nullptr;

namespace {

constexpr int kMapSize = 128;

uint8_t valueToByte(float value) {
    return value < 1.0F ? static_cast<uint8_t>(value * 255.0F) : 255;
}

uint32_t generateName() {
    GLuint name = 0;
    GLFunctionTable::fpGlobalFunctionTable->glGenTextures(1, &name);
    return name;
}

void deleteName(uint32_t& name) {
    if (name != 0)
        GLFunctionTable::fpGlobalFunctionTable->glDeleteTextures(1, &name);
    name = 0;
}

void setParameters(GLenum target, std::initializer_list<GLenum> wraps) {
    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    for (const GLenum wrap : wraps)
        gl->glTexParameterf(target, wrap, static_cast<GLfloat>(GL_CLAMP_TO_EDGE));
    gl->glTexParameterf(target, GL_TEXTURE_MAG_FILTER, static_cast<GLfloat>(GL_LINEAR));
    gl->glTexParameterf(target, GL_TEXTURE_MIN_FILTER, static_cast<GLfloat>(GL_LINEAR));
}

uint32_t uploadLuminance(int width, int height, const uint8_t* texels) {
    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    const uint32_t name = generateName();
    gl->glBindTexture(GL_TEXTURE_2D, name);
    gl->glEnable(GL_TEXTURE_2D);
    setParameters(GL_TEXTURE_2D, {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T});
    gl->glTexImage2D(GL_TEXTURE_2D, 0, GL_LUMINANCE8, width, height, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE,
                     texels);
    return name;
}

uint32_t makeMask(uint8_t first, uint8_t second) {
    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    const uint8_t texels[8] = {first, second}; // and room for a row at any alignment
    const uint32_t name = generateName();
    gl->glBindTexture(GL_TEXTURE_1D, name);
    gl->glTexImage1D(GL_TEXTURE_1D, 0, GL_ALPHA, 2, 0, GL_ALPHA, GL_UNSIGNED_BYTE, texels);
    return name;
}

/// Made and referenced by the manager.
GLNormalCubeMap* makeCubeMap(bool rgb) {
    auto* map = new (std::nothrow) GLNormalCubeMap(kMapSize, rgb);
    if (map)
        map->ref();
    return map;
}

void unrefAndClear(GLNormalCubeMap*& map) {
    if (map)
        map->unref();
    map = nullptr;
}

} // namespace

TextureManager::TextureManager() {
    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    gl->glGetIntegerv(GL_MAX_TEXTURE_SIZE, &fMaxTextureSize);
    if (gl->usable(kCapTextureCubeMap))
        gl->glGetIntegerv(GL_MAX_CUBE_MAP_TEXTURE_SIZE, &fMaxCubeMapSize);
    GLTextureManager = this;
}

TextureManager::~TextureManager() {
    unrefAndClear(fNormalizationCubeMap);
    unrefAndClear(fNormalizationHILOCubeMap);
    delete fAttenuationLightMap;
    fAttenuationLightMap = nullptr;
    deleteName(fAtten1DMap);
    deleteName(fNHKMap);
    for (uint32_t& name : fNormalizeExponentiateMaps)
        deleteName(name);
    deleteName(fRampMap);
    deleteName(fSpotProjTextureMask);
    deleteName(fShadowProjTextureMask);
    delete fTextureCache;
    fTextureCache = nullptr;
    // Oddity: whatever references are left: hosts end their renderer with the manager and count on the hidden
    // window being gone then.
    delete GLStartupContext::fpGlobalGLStartupContext;
}

GLTextureCache* TextureManager::textureCache() const {
    if (!fTextureCache)
        fTextureCache = new (std::nothrow) GLTextureCache;
    return fTextureCache;
}

GLNormalCubeMap* TextureManager::normalizationCubeMap() {
    if (!fNormalizationCubeMap)
        fNormalizationCubeMap = makeCubeMap(true);
    return fNormalizationCubeMap;
}

GLNormalCubeMap* TextureManager::normalizationHILOCubeMap() {
    if (!fNormalizationHILOCubeMap)
        fNormalizationHILOCubeMap = makeCubeMap(false);
    return fNormalizationHILOCubeMap;
}

GLAttenuationLightMap* TextureManager::attenuationLightMap() {
    if (!fAttenuationLightMap)
        fAttenuationLightMap = new (std::nothrow) GLAttenuationLightMap(kMapSize);
    return fAttenuationLightMap;
}

GLTexture2D* TextureManager::attenDistanceMap() {
    const GLAttenuationLightMap* map = attenuationLightMap();
    return map ? map->fDistanceTexture : nullptr;
}

GLTexture2D* TextureManager::attenExponentMap() {
    const GLAttenuationLightMap* map = attenuationLightMap();
    return map ? map->fExponentTexture : nullptr;
}

uint32_t TextureManager::atten1DMapId() {
    constexpr int kSize = 512;
    if (fAtten1DMap != 0)
        return fAtten1DMap;
    const std::unique_ptr<uint8_t[]> texels = makeTexelBuffer(kSize, 1, 1);
    if (!texels)
        return 0;
    for (int i = 0; i < kSize; ++i) {
        const float fraction = static_cast<float>(i) / 511.0F;
        texels[i] = static_cast<uint8_t>(static_cast<int>((1.0 - fraction) * 256.0));
    }
    texels[0] = 255; // 256 doesn't fit
    texels[kSize - 1] = 0;
    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    fAtten1DMap = generateName();
    if (fAtten1DMap == 0)
        return 0;
    gl->glBindTexture(GL_TEXTURE_1D, fAtten1DMap);
    gl->glEnable(GL_TEXTURE_1D);
    setParameters(GL_TEXTURE_1D, {GL_TEXTURE_WRAP_S});
    gl->glTexImage1D(GL_TEXTURE_1D, 0, GL_LUMINANCE8, kSize, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, texels.get());
    return fAtten1DMap;
}

uint32_t TextureManager::nhkMapId(int size, int minExponent, int maxExponent) {
    if (fNHKMap == 0)
        fNHKMap = generateNHKMap(size, minExponent, maxExponent);
    return fNHKMap;
}

uint32_t TextureManager::normalizeExponentiateMapId(int width, int height, float exponent) {
    uint32_t& map = fNormalizeExponentiateMaps[static_cast<size_t>(find_closest_normexp_index(exponent))];
    if (map == 0)
        map = generateNormalizeExponentiateMap(width, height, exponent);
    return map;
}

uint32_t TextureManager::rampTextureMap() {
    if (fRampMap == 0)
        fRampMap = generateRampMap();
    return fRampMap;
}

uint32_t TextureManager::spotProjTextureMask() {
    if (fSpotProjTextureMask == 0)
        fSpotProjTextureMask = makeMask(0, 255);
    return fSpotProjTextureMask;
}

uint32_t TextureManager::shadowProjTextureMask() {
    if (fShadowProjTextureMask == 0)
        fShadowProjTextureMask = makeMask(255, 0);
    return fShadowProjTextureMask;
}

int TextureManager::round2(int n) {
    constexpr int kLargest = 1 << 30;
    int power = 1;
    while (power < n && power < kLargest)
        power *= 2;
    const int64_t above = int64_t{power} - n;
    const int64_t below = int64_t{n} - power / 2;
    return above > below ? power / 2 : power;
}

uint32_t generateNHKMap(int n, int lo, int hi) {
    const std::unique_ptr<uint8_t[]> texels = makeTexelBuffer(n, n, 1);
    if (!texels)
        return 0;
    const auto last = static_cast<float>(n - 1);
    uint8_t* out = texels.get();
    for (int j = 0; j < n; ++j) {
        const float exponent =
            static_cast<float>(j) * static_cast<float>(int64_t{hi} - lo) / last + static_cast<float>(lo);
        for (int i = 0; i < n; ++i) {
            const float base = static_cast<float>(i) / last;
            const auto value = static_cast<float>(std::pow(double{base}, double{exponent}));
            *out++ = j == 0 ? 0 : valueToByte(value);
        }
    }
    return uploadLuminance(n, n, texels.get());
}

uint32_t generateNormalizeExponentiateMap(int w, int h, float p) {
    const std::unique_ptr<uint8_t[]> texels = makeTexelBuffer(w, h, 1);
    if (!texels)
        return 0;
    uint8_t* out = texels.get();
    for (int j = 0; j < h; ++j) {
        // By the size, not the size less one: the last row and column stand short of 1.
        const float t = static_cast<float>(j) / static_cast<float>(h);
        for (int i = 0; i < w; ++i) {
            const float s = static_cast<float>(i) / static_cast<float>(w);
            const auto value = static_cast<float>(std::pow(s / std::sqrt(double{t}), double{p}));
            *out++ = value >= 0.0F ? valueToByte(value) : 0; // 0 too where it is no number
        }
    }
    return uploadLuminance(w, h, texels.get());
}

int find_closest_normexp_index(float p) {
    constexpr int kLast = 128;
    if (!(p > -1.0F && p < 4.0F * kLast))
        return kLast;
    return std::max(static_cast<int>(p) / 4, 1);
}

uint32_t generateRampMap() {
    constexpr int kSize = 256;
    const std::unique_ptr<uint8_t[]> texels = makeTexelBuffer(kSize, 1, 1);
    if (!texels)
        return 0;
    for (int k = 0; k < kSize; ++k)
        texels[k] = static_cast<uint8_t>(k);
    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    const uint32_t name = generateName();
    gl->glBindTexture(GL_TEXTURE_1D, name);
    gl->glTexImage1D(GL_TEXTURE_1D, 0, GL_INTENSITY8, kSize, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, texels.get());
    return name;
}
