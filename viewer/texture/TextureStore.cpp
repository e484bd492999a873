#include "texture/TextureStore.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include <gl/GLDebugOutput.h>
#include <gl/GLFunctionTable.h>
#include <texture/GLTexUsage.h>

namespace orloview {

namespace {

bool hasMipmaps(Filter filter) {
    return filter != Filter::Nearest && filter != Filter::Linear;
}

int largestTextureSide() {
    GLint side = 0;
    GLFunctionTable::fpGlobalFunctionTable->glGetIntegerv(GL_MAX_TEXTURE_SIZE, &side);
    return std::max(side, 1);
}

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

} // namespace

TextureStore::~TextureStore() {
    for (GLTexture2D* texture : fTextures)
        texture->unref();
}

int TextureStore::imageOf(const TextureUse& use) const {
    const int image = use.texture < 0 ? -1 : fScene.textures[static_cast<size_t>(use.texture)].image;
    if (image < 0)
        return -1;
    const Image& found = fScene.images[static_cast<size_t>(image)];
    return found.path.empty() && found.bytes.empty() ? -1 : image;
}

int TextureStore::firstAlike(int image) {
    const Image& one = fScene.images[static_cast<size_t>(image)];
    const std::string_view bytes(reinterpret_cast<const char*>(one.bytes.data()), one.bytes.size());
    std::error_code none; // then it is told when the picture is opened
    const std::string path = std::filesystem::canonical(one.path, none).string();
    return fFirstAlike.try_emplace({none ? one.path : path, bytes}, image).first->second;
}

bool TextureStore::hasPicture(const TextureUse& use) const {
    return imageOf(use) >= 0;
}

void TextureStore::ask(const TextureUse& use, Encoding encoding, AlphaUse alpha,
                       const std::array<float, 3>& factor, Taker taker) {
    const Texture& texture = fScene.textures[static_cast<size_t>(use.texture)];
    fTakers[{firstAlike(imageOf(use)), encoding, alpha, factor, texture.wrapU, texture.wrapV,
             texture.minFilter, texture.magFilter}]
        .push_back(std::move(taker));
}

void TextureStore::ask(const std::array<float, 3>& linearColor, Taker taker) {
    const Texture plain;
    fTakers[{-1, Encoding::Srgb, AlphaUse::Ignored, linearColor, plain.wrapU, plain.wrapV, plain.minFilter,
             plain.magFilter}]
        .push_back(std::move(taker));
}

void TextureStore::begin() {
    if (fTakers.empty())
        return;
    fLargestSide = largestTextureSide();
    std::vector<TextureJob> jobs;
    for (const auto& [key, takers] : fTakers)
        jobs.push_back({key.image < 0 ? nullptr : &fScene.images[static_cast<size_t>(key.image)],
                        {key.encoding, key.alpha, key.factor},
                        hasMipmaps(key.minFilter)});
    fLoader = std::make_unique<TextureLoader>(std::move(jobs), fLargestSide);
}

void TextureStore::upload(const std::function<void()>& uploaded) {
    for (auto& [key, takers] : fTakers) {
        LoadedTexture loaded = fLoader->take();
        GLTexture2D* texture = makeTexture(key, loaded);
        for (const Taker& taker : takers)
            taker(texture);
        uploaded();
    }
    fTakers.clear();
    fLoader.reset();
}

GLTexture2D* TextureStore::makeTexture(const Key& key, LoadedTexture& loaded) {
    if (!loaded) {
        warn(key, "left out: " + loaded.fault);
        return nullptr;
    }
    auto* texture = new GLTexture2D(kRasterRGBA16F, false);
    texture->ref();
    fTextures.push_back(texture);
    const auto width = static_cast<unsigned>(loaded.texels.width);
    const auto height = static_cast<unsigned>(loaded.texels.height);
    texture->GLloadImage(loaded.texels.halves.data(), width, height);
    for (size_t i = 0; i < loaded.levels.size(); ++i) {
        Texels& level = loaded.levels[i];
        texture->GLloadImageLevel(level.halves.data(), static_cast<unsigned>(i + 1),
                                  static_cast<unsigned>(level.width), static_cast<unsigned>(level.height));
    }
    GLTexUsage::setWrapMode(GL_TEXTURE_2D, wrapModeOf(key.wrapU), wrapModeOf(key.wrapV));
    GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, filterOf(key.minFilter), filterOf(key.magFilter));
    if (hasMipmaps(key.minFilter))
        GLTexUsage::setFilterAnisotropic(GL_TEXTURE_2D, true);
    if (loaded.texels.width < loaded.pictureWidth || loaded.texels.height < loaded.pictureHeight)
        warn(key, "drawn with " + std::to_string(width) + "x" + std::to_string(height) + " pixels of its " +
                      std::to_string(loaded.pictureWidth) + "x" + std::to_string(loaded.pictureHeight) +
                      ": this OpenGL takes " + std::to_string(fLargestSide) + " each way");
    if (key.image >= 0)
        GLDebugOutput::label(GL_TEXTURE, texture->textureName(),
                             fScene.images[static_cast<size_t>(key.image)].name.c_str());
    return texture;
}

void TextureStore::warn(const Key& key, const std::string& what) {
    if (key.image < 0)
        return;
    const Image& image = fScene.images[static_cast<size_t>(key.image)];
    const std::string line = image.model + ": warning: the picture '" + image.name + "': " + what;
    if (std::find(fWarnings.begin(), fWarnings.end(), line) == fWarnings.end())
        fWarnings.push_back(line);
}

} // namespace orloview
