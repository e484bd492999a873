#include "import/ObjMaterials.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <utility>
#include <vector>

#define TINYOBJLOADER_IMPLEMENTATION
#include <tiny_obj_loader.h>

#include "base/FileBytes.h"
#include "base/ImportError.h"
#include "base/Text.h"

namespace orloview {

namespace {

/// A Phong exponent as the roughness that gives a highlight of the same width.
float roughnessOf(const tinyobj::material_t& source) {
    if (source.roughness > 0.0F)
        return source.roughness;
    return source.shininess > 0.0F ? std::sqrt(2.0F / (source.shininess + 2.0F)) : 1.0F;
}

/// The classic materials of the format, unless it has the fields of the physical extension.
void readGloss(const tinyobj::material_t& source, Material& material) {
    material.metallic = source.metallic;
    material.roughness = roughnessOf(source);
    material.clearcoat = source.clearcoat_thickness;
    material.clearcoatRoughness = source.clearcoat_roughness;
    if (source.roughness > 0.0F || source.metallic > 0.0F || source.clearcoat_thickness > 0.0F)
        return;
    material.reflection = Reflection::Phong;
    material.specular = koColor::Color(source.specular[0], source.specular[1], source.specular[2]);
    material.phongExponent = std::max(source.shininess, 1.0F);
}

/// Exporters disagree on which end of "d" and "Tr" is opaque. A material that can't be seen at all is one of
/// the other kind, so it is taken as opaque.
float opacityOf(const tinyobj::material_t& source) {
    return source.dissolve > 0.0F ? source.dissolve : 1.0F;
}

/// Scale and offset of a file's coordinates, whose v runs upward: v' = 1 - ((1 - v) scale + offset).
TextureUse usePlaced(int texture, const tinyobj::texture_option_t& options) {
    TextureUse use;
    use.texture = texture;
    use.scale = {options.scale[0], options.scale[1]};
    use.offset = {options.origin_offset[0], 1.0F - options.scale[1] - options.origin_offset[1]};
    return use;
}

/// Exporters leave the colour of what has a picture black, which would hide it.
void whitenIfBlack(koColor::Color& color) {
    if (color[0] == 0.0F && color[1] == 0.0F && color[2] == 0.0F)
        color = koColor::Color(1.0F, 1.0F, 1.0F, color[3]);
}

} // namespace

ObjMaterials::ObjMaterials(const ModelFolder& folder, Scene& scene, Warnings& warnings)
    : fFolder(folder), fPictures(folder), fScene(scene), fWarnings(warnings) {}

void ObjMaterials::readLibraries(std::string_view names) {
    const std::string whole = withSlashes(trimmed(names));
    if (isFile(fFolder.path() / whole))
        return readLibrary(whole);
    while (!trimmed(names).empty())
        readLibrary(withSlashes(takeWord(names)));
}

void ObjMaterials::readLibrary(const std::string& name) {
    std::vector<std::uint8_t> bytes;
    try {
        const std::filesystem::path file = fFolder.path() / name;
        fFolder.check(file);
        bytes = readFile(file);
        fScene.files.push_back(file.string());
    } catch (const ImportError& error) {
        fLibraryMissing = true;
        return fWarnings.add("the material library '" + name + "'", std::string("left out: ") + error.what());
    }
    std::istringstream text(std::string(bytes.begin(), bytes.end()));
    std::map<std::string, int> places;
    std::vector<tinyobj::material_t> materials;
    std::string ignored;
    tinyobj::LoadMtl(&places, &materials, &text, &ignored, &ignored);
    for (const tinyobj::material_t& source : materials) {
        if (source.name.empty())
            continue;
        Material material;
        material.name = source.name;
        material.baseColor =
            koColor::Color(source.diffuse[0], source.diffuse[1], source.diffuse[2], opacityOf(source));
        material.emissive = koColor::Color(source.emission[0], source.emission[1], source.emission[2]);
        readGloss(source, material);
        if (opacityOf(source) < 1.0F)
            material.alphaMode = AlphaMode::Blend;
        const auto use = [this](const std::string& picture, const tinyobj::texture_option_t& options) {
            return picture.empty() ? TextureUse{} : usePlaced(texture(picture, options.clamp), options);
        };
        material.baseColorTexture = use(source.diffuse_texname, source.diffuse_texopt);
        material.normalTexture = use(source.normal_texname, source.normal_texopt);
        material.specularTexture = use(source.specular_texname, source.specular_texopt);
        material.emissiveTexture = use(source.emissive_texname, source.emissive_texopt);
        if (material.baseColorTexture.texture >= 0)
            whitenIfBlack(material.baseColor);
        if (material.emissiveTexture.texture >= 0)
            whitenIfBlack(material.emissive);
        if (material.specularTexture.texture >= 0)
            whitenIfBlack(material.specular);
        readAlpha(source.alpha_texname, source.diffuse_texname, material);
        fByName[source.name] = static_cast<int>(fScene.materials.size());
        fScene.materials.push_back(std::move(material));
    }
}

int ObjMaterials::texture(const std::string& picture, bool clamp) {
    const std::string name = withSlashes(picture);
    const auto [known, isNew] =
        fTextures.emplace(std::pair(name, clamp), static_cast<int>(fScene.textures.size()));
    if (!isNew)
        return known->second;
    Texture texture;
    texture.name = name;
    texture.image = static_cast<int>(fScene.images.size());
    if (clamp)
        texture.wrapU = texture.wrapV = Wrap::ClampToEdge;
    Image image{name, "", {}};
    try {
        image.path = fPictures.find(name);
    } catch (const ImportError& error) {
        fWarnings.add("the picture '" + name + "'", std::string("left out: ") + error.what());
    }
    fScene.images.push_back(std::move(image));
    fScene.textures.push_back(std::move(texture));
    return known->second;
}

/// A picture of opacity in the colour picture's alpha blends; one by itself has no place in a scene.
void ObjMaterials::readAlpha(const std::string& alphaPicture, const std::string& colorPicture,
                             Material& material) {
    if (alphaPicture.empty())
        return;
    if (alphaPicture == colorPicture)
        material.alphaMode = AlphaMode::Blend;
    else
        fWarnings.add("the picture '" + withSlashes(alphaPicture) + "'",
                      "left out: opacity is read from the alpha of the colour picture only");
}

int ObjMaterials::find(const std::string& name) {
    const auto found = fByName.find(name);
    if (found != fByName.end())
        return found->second;
    if (!fLibraryMissing) // the missing library has been told already
        fWarnings.add("the material '" + name + "'", "left out: no material library has it");
    return -1;
}

} // namespace orloview
