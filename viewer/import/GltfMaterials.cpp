#include "import/GltfMaterials.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "base/ImportError.h"
#include "base/Text.h"
#include "import/GltfContainer.h"
#include "import/PictureSearch.h"

namespace orloview {

namespace {

Wrap wrapOf(size_t code) {
    switch (code) {
    case 33071:
        return Wrap::ClampToEdge;
    case 33648:
        return Wrap::MirroredRepeat;
    default:
        return Wrap::Repeat;
    }
}

Filter filterOf(size_t code, Filter fallback) {
    switch (code) {
    case 9728:
        return Filter::Nearest;
    case 9729:
        return Filter::Linear;
    case 9984:
        return Filter::NearestMipmapNearest;
    case 9985:
        return Filter::LinearMipmapNearest;
    case 9986:
        return Filter::NearestMipmapLinear;
    case 9987:
        return Filter::LinearMipmapLinear;
    default:
        return fallback;
    }
}

void readSampler(const GltfObject& sampler, Texture& texture) {
    texture.wrapU = wrapOf(sampler.whole("wrapS", 0));
    texture.wrapV = wrapOf(sampler.whole("wrapT", 0));
    texture.minFilter = filterOf(sampler.whole("minFilter", 0), texture.minFilter);
    texture.magFilter = filterOf(sampler.whole("magFilter", 0), texture.magFilter);
}

std::string nameOf(const GltfObject& source) {
    const std::string uri = source.text("uri");
    if (!uri.empty() && !uri.starts_with("data:"))
        return decodeUri(uri);
    return source.text("name", source.place());
}

Image readImage(const GltfObject& source, GltfData& data, PictureSearch& pictures) {
    Image image;
    image.name = nameOf(source);
    const std::string uri = source.text("uri");
    if (uri.starts_with("data:")) {
        image.bytes = decodeDataUri(uri);
    } else if (!uri.empty()) {
        image.path = pictures.find(image.name);
    } else if (const int view = source.reference("bufferView", data.viewCount()); view >= 0) {
        const auto bytes = data.view(static_cast<size_t>(view));
        image.bytes.assign(bytes.begin(), bytes.end());
    } else {
        throw ImportError("the file doesn't say where it is");
    }
    return image;
}

std::vector<Image> readImages(const GltfObject& root, GltfData& data, const ModelFolder& folder,
                              Warnings& warnings) {
    std::vector<Image> images;
    PictureSearch pictures(folder);
    for (const GltfObject& source : root.objects("images")) {
        try {
            images.push_back(readImage(source, data, pictures));
        } catch (const ImportError& error) {
            images.push_back({nameOf(source), "", {}});
            warnings.add("the picture '" + nameOf(source) + "'", std::string("left out: ") + error.what());
        }
    }
    return images;
}

/// The picture of a texture: that of an extension that is understood comes before the plain one, which is for
/// viewers that know none.
int imageOf(const GltfObject& texture, size_t imageCount) {
    const GltfObject webp = texture.object("extensions").object("EXT_texture_webp");
    const int better = webp.reference("source", imageCount);
    return better >= 0 ? better : texture.reference("source", imageCount);
}

/// Why a texture has no picture.
std::string whyWithout(const GltfObject& texture) {
    const GltfObject extensions = texture.object("extensions");
    if (extensions.has("KHR_texture_basisu"))
        return "left out: its picture is KTX2 (KHR_texture_basisu), which this program can't decode; convert "
               "the "
               "pictures to PNG (by 'gltf-transform ktxdecompress' or 'ktx extract') or export them so";
    if (extensions.has("MSFT_texture_dds"))
        return "left out: its picture is DDS (MSFT_texture_dds); export it as PNG, JPEG or WebP";
    return "left out: it has no picture of a known kind";
}

std::vector<Texture> readTextures(const GltfObject& root, const std::vector<Image>& images,
                                  Warnings& warnings) {
    const std::vector<GltfObject> samplers = root.objects("samplers");
    std::vector<Texture> textures;
    for (const GltfObject& source : root.objects("textures")) {
        Texture& texture = textures.emplace_back();
        texture.name = source.text("name");
        if (const int sampler = source.reference("sampler", samplers.size()); sampler >= 0)
            readSampler(samplers[static_cast<size_t>(sampler)], texture);
        texture.image = imageOf(source, images.size());
        if (texture.image < 0)
            warnings.add(source.place(), whyWithout(source));
        else if (texture.name.empty())
            texture.name = images[static_cast<size_t>(texture.image)].name;
    }
    return textures;
}

TextureUse readUse(const GltfObject& owner, const char* key, size_t textureCount) {
    TextureUse use;
    const GltfObject info = owner.object(key);
    use.texture = info.reference("index", textureCount);
    use.strength = toFloat(info.number("scale", info.number("strength", 1.0)));

    const GltfObject transform = info.object("extensions").object("KHR_texture_transform");
    const auto offset = transform.numbers<2>("offset", {0.0, 0.0});
    const auto scale = transform.numbers<2>("scale", {1.0, 1.0});
    use.offset = {toFloat(offset[0]), toFloat(offset[1])};
    use.scale = {toFloat(scale[0]), toFloat(scale[1])};
    use.rotation = toFloat(transform.number("rotation", 0.0));
    constexpr size_t kLastUvSet = 9; // a mesh has no more
    const size_t uvSet = transform.whole("texCoord", info.whole("texCoord", 0));
    use.uvSet = static_cast<int>(std::min(uvSet, kLastUvSet));
    return use;
}

koColor::Color color(const std::array<double, 4>& c) {
    return {toFloat(c[0]), toFloat(c[1]), toFloat(c[2]), toFloat(c[3])};
}

/// Between 0 and 1, whatever the file says.
float share(double value) {
    return static_cast<float>(std::clamp(value, 0.0, 1.0));
}

AlphaMode alphaModeOf(const std::string& word) {
    if (word == "BLEND")
        return AlphaMode::Blend;
    return word == "MASK" ? AlphaMode::Mask : AlphaMode::Opaque;
}

void readMetallicRoughness(const GltfObject& pbr, size_t textureCount, Material& material) {
    material.baseColor = color(pbr.numbers<4>("baseColorFactor", {1.0, 1.0, 1.0, 1.0}));
    material.metallic = share(pbr.number("metallicFactor", 1.0));
    material.roughness = share(pbr.number("roughnessFactor", 1.0));
    material.baseColorTexture = readUse(pbr, "baseColorTexture", textureCount);
    material.metallicRoughnessTexture = readUse(pbr, "metallicRoughnessTexture", textureCount);
}

/// The older workflow.
void readSpecularGlossiness(const GltfObject& pbr, size_t textureCount, Material& material) {
    material.baseColor = color(pbr.numbers<4>("diffuseFactor", {1.0, 1.0, 1.0, 1.0}));
    material.reflection = Reflection::SpecularGlossiness;
    material.metallic = 0.0F;
    material.roughness = 1.0F - share(pbr.number("glossinessFactor", 1.0));
    const auto specular = pbr.numbers<3>("specularFactor", {1.0, 1.0, 1.0});
    material.specular = koColor::Color(share(specular[0]), share(specular[1]), share(specular[2]));
    material.baseColorTexture = readUse(pbr, "diffuseTexture", textureCount);
    material.specularTexture = readUse(pbr, "specularGlossinessTexture", textureCount);
    material.metallicRoughnessTexture = {};
}

void readClearcoat(const GltfObject& coat, size_t textureCount, Material& material) {
    material.clearcoat = share(coat.number("clearcoatFactor", 0.0));
    material.clearcoatRoughness = share(coat.number("clearcoatRoughnessFactor", 0.0));
    material.clearcoatTexture = readUse(coat, "clearcoatTexture", textureCount);
    material.clearcoatRoughnessTexture = readUse(coat, "clearcoatRoughnessTexture", textureCount);
    material.clearcoatNormalTexture = readUse(coat, "clearcoatNormalTexture", textureCount);
}

koColor::Color color(const GltfObject& source, const char* key, double fallback) {
    const auto c = source.numbers<3>(key, {fallback, fallback, fallback});
    return color({std::max(c[0], 0.0), std::max(c[1], 0.0), std::max(c[2], 0.0), 1.0});
}

float positive(const GltfObject& source, const char* key, double fallback) {
    return toFloat(std::max(source.number(key, fallback), 0.0));
}

/// What lies on the surface or changes how it reflects.
void readReflection(const GltfObject& extensions, size_t textureCount, Material& material) {
    material.ior = positive(extensions.object("KHR_materials_ior"), "ior", 1.5);

    const GltfObject specular = extensions.object("KHR_materials_specular");
    material.specularWeight = share(specular.number("specularFactor", 1.0));
    material.specularTint = color(specular, "specularColorFactor", 1.0);
    material.specularWeightTexture = readUse(specular, "specularTexture", textureCount);
    material.specularTintTexture = readUse(specular, "specularColorTexture", textureCount);

    const GltfObject sheen = extensions.object("KHR_materials_sheen");
    material.sheen = color(sheen, "sheenColorFactor", 0.0);
    material.sheenRoughness = share(sheen.number("sheenRoughnessFactor", 0.0));
    material.sheenTexture = readUse(sheen, "sheenColorTexture", textureCount);
    material.sheenRoughnessTexture = readUse(sheen, "sheenRoughnessTexture", textureCount);

    const GltfObject anisotropy = extensions.object("KHR_materials_anisotropy");
    material.anisotropy = share(anisotropy.number("anisotropyStrength", 0.0));
    material.anisotropyRotation = toFloat(anisotropy.number("anisotropyRotation", 0.0));
    material.anisotropyTexture = readUse(anisotropy, "anisotropyTexture", textureCount);

    const GltfObject iridescence = extensions.object("KHR_materials_iridescence");
    material.iridescence = share(iridescence.number("iridescenceFactor", 0.0));
    material.iridescenceIor = std::max(positive(iridescence, "iridescenceIor", 1.3), 1.0F);
    material.thinnestFilm = positive(iridescence, "iridescenceThicknessMinimum", 100.0);
    material.thickestFilm = positive(iridescence, "iridescenceThicknessMaximum", 400.0);
    material.iridescenceTexture = readUse(iridescence, "iridescenceTexture", textureCount);
    material.filmTexture = readUse(iridescence, "iridescenceThicknessTexture", textureCount);
}

/// What lets light through.
void readTransmission(const GltfObject& extensions, size_t textureCount, Material& material) {
    const GltfObject transmission = extensions.object("KHR_materials_transmission");
    material.transmission = share(transmission.number("transmissionFactor", 0.0));
    material.transmissionTexture = readUse(transmission, "transmissionTexture", textureCount);

    const GltfObject diffuse = extensions.object("KHR_materials_diffuse_transmission");
    material.diffuseTransmission = share(diffuse.number("diffuseTransmissionFactor", 0.0));
    material.diffuseTransmissionColor = color(diffuse, "diffuseTransmissionColorFactor", 1.0);
    material.diffuseTransmissionTexture = readUse(diffuse, "diffuseTransmissionTexture", textureCount);
    material.diffuseTransmissionColorTexture =
        readUse(diffuse, "diffuseTransmissionColorTexture", textureCount);

    const GltfObject volume = extensions.object("KHR_materials_volume");
    material.thickness = positive(volume, "thicknessFactor", 0.0);
    material.attenuationColor = color(volume, "attenuationColor", 1.0);
    material.attenuationDistance = positive(volume, "attenuationDistance", 0.0);
    material.thicknessTexture = readUse(volume, "thicknessTexture", textureCount);
    material.dispersion = positive(extensions.object("KHR_materials_dispersion"), "dispersion", 0.0);
}

Material readMaterial(const GltfObject& source, size_t textureCount) {
    Material material;
    material.name = source.text("name");
    readMetallicRoughness(source.object("pbrMetallicRoughness"), textureCount, material);
    const GltfObject extensions = source.object("extensions");
    if (extensions.has("KHR_materials_pbrSpecularGlossiness"))
        readSpecularGlossiness(extensions.object("KHR_materials_pbrSpecularGlossiness"), textureCount,
                               material);
    readClearcoat(extensions.object("KHR_materials_clearcoat"), textureCount, material);
    readReflection(extensions, textureCount, material);
    readTransmission(extensions, textureCount, material);
    const auto emissive = source.numbers<3>("emissiveFactor", {0.0, 0.0, 0.0});
    const double strength =
        extensions.object("KHR_materials_emissive_strength").number("emissiveStrength", 1.0);
    material.emissive = color({emissive[0] * strength, emissive[1] * strength, emissive[2] * strength, 1.0});
    material.doubleSided = source.flag("doubleSided");
    material.unlit = extensions.has("KHR_materials_unlit");
    material.alphaMode = alphaModeOf(source.text("alphaMode"));
    material.alphaCutoff = toFloat(source.number("alphaCutoff", 0.5));
    material.normalTexture = readUse(source, "normalTexture", textureCount);
    material.occlusionTexture = readUse(source, "occlusionTexture", textureCount);
    material.emissiveTexture = readUse(source, "emissiveTexture", textureCount);
    return material;
}

} // namespace

void readGltfMaterials(const GltfObject& root, GltfData& data, const ModelFolder& folder, Scene& scene,
                       Warnings& warnings) {
    scene.images = readImages(root, data, folder, warnings);
    scene.textures = readTextures(root, scene.images, warnings);
    for (const GltfObject& source : root.objects("materials"))
        scene.materials.push_back(readMaterial(source, scene.textures.size()));
}

} // namespace orloview
