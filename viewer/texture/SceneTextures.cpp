#include "texture/SceneTextures.h"

#include <algorithm>
#include <cmath>

#include <gl/GLFunctionTable.h>
#include <texture/GLTexUsage.h>

namespace orloview {

namespace {

IHWTexUsage::WrapMode wrapModeOf(Wrap wrap) {
    switch (wrap) {
    case Wrap::ClampToEdge:
        return IHWTexUsage::kClampToEdge;
    case Wrap::MirroredRepeat:
        return IHWTexUsage::kMirroredRepeat;
    case Wrap::Repeat:
        break;
    }
    return IHWTexUsage::kRepeat;
}

IHWTexUsage::Filter filterOf(Filter filter) {
    switch (filter) {
    case Filter::Nearest:
        return IHWTexUsage::kNearest;
    case Filter::Linear:
        return IHWTexUsage::kLinear;
    case Filter::NearestMipmapNearest:
        return IHWTexUsage::kNearestMipmapNearest;
    case Filter::LinearMipmapNearest:
        return IHWTexUsage::kLinearMipmapNearest;
    case Filter::NearestMipmapLinear:
        return IHWTexUsage::kNearestMipmapLinear;
    case Filter::LinearMipmapLinear:
        break;
    }
    return IHWTexUsage::kLinearMipmapLinear;
}

bool hasMipmaps(Filter filter) {
    return filter != Filter::Nearest && filter != Filter::Linear;
}

AlphaUse alphaUseOf(AlphaMode mode) {
    if (mode == AlphaMode::Opaque)
        return AlphaUse::Ignored;
    return mode == AlphaMode::Mask ? AlphaUse::Kept : AlphaUse::Multiplied;
}

/// uv' = rotate(uv * scale, rotation) + offset, of rows u, v, 0, 1. None where it changes nothing.
std::optional<koLinear::ProjMatrix> transformOf(const TextureUse& use) {
    if (use.rotation == 0.0F && use.scale == std::array{1.0F, 1.0F} && use.offset == std::array{0.0F, 0.0F})
        return std::nullopt;
    const double c = std::cos(use.rotation);
    const double s = std::sin(use.rotation);
    koLinear::ProjMatrix matrix;
    matrix[0][0] = use.scale[0] * c;
    matrix[0][1] = use.scale[0] * -s;
    matrix[1][0] = use.scale[1] * s;
    matrix[1][1] = use.scale[1] * c;
    matrix[3][0] = use.offset[0];
    matrix[3][1] = use.offset[1];
    return matrix;
}

int largestTextureSide() {
    GLint side = 0;
    GLFunctionTable::fpGlobalFunctionTable->glGetIntegerv(GL_MAX_TEXTURE_SIZE, &side);
    return std::max(side, 1);
}

} // namespace

SceneTextures::SceneTextures(const Scene& scene) : fScene(scene), fLayers(scene.materials.size()) {
    for (size_t i = 0; i < fLayers.size(); ++i)
        planLayers(scene.materials[i], fLayers[i]);
    if (fUsers.empty())
        return;
    fLargestSide = largestTextureSide();
    std::vector<TextureJob> jobs;
    for (const auto& [key, users] : fUsers)
        jobs.push_back(
            {key.image < 0 ? nullptr : &scene.images[static_cast<size_t>(key.image)], key.alpha, key.factor});
    fLoader = std::make_unique<TextureLoader>(std::move(jobs), fLargestSide);
}

SceneTextures::~SceneTextures() {
    for (GLTexture2D* texture : fTextures)
        texture->unref();
}

void SceneTextures::planLayers(const Material& material, MaterialLayers& layers) {
    const AlphaUse alpha = alphaUseOf(material.alphaMode);
    const std::array<float, 3> emissive{material.emissive[0], material.emissive[1], material.emissive[2]};
    const Key base = keyOf(material.baseColorTexture, alpha, {1.0F, 1.0F, 1.0F});
    if (base.image >= 0) {
        layers.base.uvSet = material.baseColorTexture.uvSet;
        layers.base.transform = transformOf(material.baseColorTexture);
        planLayer(layers.base, base);
    }
    const Key emission = keyOf(material.emissiveTexture, AlphaUse::Ignored, emissive);
    if (emissive == std::array{0.0F, 0.0F, 0.0F})
        return;
    if (emission.image >= 0) {
        layers.emission.uvSet = material.emissiveTexture.uvSet;
        layers.emission.transform = transformOf(material.emissiveTexture);
    }
    if (emission.image >= 0 || base.image >= 0)
        planLayer(layers.emission, emission);
}

SceneTextures::Key SceneTextures::keyOf(const TextureUse& use, AlphaUse alpha,
                                        const std::array<float, 3>& factor) const {
    Texture texture; // of no image
    if (use.texture >= 0)
        texture = fScene.textures[static_cast<size_t>(use.texture)];
    if (texture.image >= 0) {
        const Image& image = fScene.images[static_cast<size_t>(texture.image)];
        if (image.path.empty() && image.bytes.empty()) // the importer has told of it
            texture.image = -1;
    }
    return {texture.image, alpha, factor, texture.wrapU, texture.wrapV, texture.minFilter, texture.magFilter};
}

void SceneTextures::planLayer(TextureLayer& layer, const Key& key) {
    fUsers[key].push_back(&layer);
}

void SceneTextures::upload(const std::function<void()>& uploaded) {
    for (auto& [key, users] : fUsers) {
        LoadedTexture loaded = fLoader->take();
        GLTexture2D* texture = makeTexture(key, loaded);
        for (TextureLayer* user : users)
            user->texture = texture;
        uploaded();
    }
    fUsers.clear();
    fLoader.reset();
}

GLTexture2D* SceneTextures::makeTexture(const Key& key, LoadedTexture& loaded) {
    if (!loaded) {
        warn(key, "left out: " + loaded.fault);
        return nullptr;
    }
    auto* texture = new GLTexture2D(kRasterRGBA16F, false);
    texture->ref();
    fTextures.push_back(texture);
    const auto width = static_cast<unsigned>(loaded.texels.width);
    const auto height = static_cast<unsigned>(loaded.texels.height);
    if (hasMipmaps(key.minFilter))
        texture->GLloadImageMipmap(loaded.texels.halves.data(), width, height);
    else
        texture->GLloadImage(loaded.texels.halves.data(), width, height);
    GLTexUsage::setWrapMode(GL_TEXTURE_2D, wrapModeOf(key.wrapU), wrapModeOf(key.wrapV));
    GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, filterOf(key.minFilter), filterOf(key.magFilter));
    if (hasMipmaps(key.minFilter))
        GLTexUsage::setFilterAnisotropic(GL_TEXTURE_2D, true);
    if (loaded.texels.width < loaded.pictureWidth || loaded.texels.height < loaded.pictureHeight)
        warn(key, "drawn with " + std::to_string(width) + "x" + std::to_string(height) + " pixels of its " +
                      std::to_string(loaded.pictureWidth) + "x" + std::to_string(loaded.pictureHeight) +
                      ": this OpenGL takes " + std::to_string(fLargestSide) + " each way");
    return texture;
}

void SceneTextures::warn(const Key& key, const std::string& what) {
    if (key.image < 0)
        return;
    const Image& image = fScene.images[static_cast<size_t>(key.image)];
    const std::string line = image.model + ": warning: the picture '" + image.name + "': " + what;
    if (std::find(fWarnings.begin(), fWarnings.end(), line) == fWarnings.end())
        fWarnings.push_back(line);
}

} // namespace orloview
