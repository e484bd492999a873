#include "import/ObjMaterials.h"

#include <cmath>
#include <sstream>
#include <utility>
#include <vector>

#define TINYOBJLOADER_IMPLEMENTATION
#include <tiny_obj_loader.h>

#include "import/FileBytes.h"
#include "import/ImportError.h"
#include "import/Text.h"

namespace orloview {

namespace {

bool isFile(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error);
}

/// A Phong exponent as the roughness that gives a highlight of the same width.
float roughnessOf(const tinyobj::material_t& source) {
    if (source.roughness > 0.0F)
        return source.roughness;
    return source.shininess > 0.0F ? std::sqrt(2.0F / (source.shininess + 2.0F)) : 1.0F;
}

/// Exporters disagree on which end of "d" and "Tr" is opaque. A material that can't be seen at all is one of
/// the other kind, so it is taken as opaque.
float opacityOf(const tinyobj::material_t& source) {
    return source.dissolve > 0.0F ? source.dissolve : 1.0F;
}

} // namespace

ObjMaterials::ObjMaterials(std::filesystem::path folder, Scene& scene, Warnings& warnings)
    : fFolder(std::move(folder)), fScene(scene), fWarnings(warnings) {}

void ObjMaterials::readLibraries(std::string_view names) {
    const std::string whole = withSlashes(trimmed(names));
    if (isFile(fFolder / whole))
        return readLibrary(whole);
    while (!trimmed(names).empty())
        readLibrary(withSlashes(takeWord(names)));
}

void ObjMaterials::readLibrary(const std::string& name) {
    std::vector<std::uint8_t> bytes;
    try {
        bytes = readFile(fFolder / name);
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
        material.metallic = source.metallic;
        material.roughness = roughnessOf(source);
        if (opacityOf(source) < 1.0F)
            material.alphaMode = AlphaMode::Blend;
        material.baseColorTexture = use(source.diffuse_texname, source.diffuse_texopt.clamp);
        material.normalTexture = use(source.normal_texname, source.normal_texopt.clamp);
        material.emissiveTexture = use(source.emissive_texname, source.emissive_texopt.clamp);
        fByName[source.name] = static_cast<int>(fScene.materials.size());
        fScene.materials.push_back(std::move(material));
    }
}

TextureUse ObjMaterials::use(const std::string& picture, bool clamp) {
    TextureUse result;
    if (picture.empty())
        return result;
    const std::string name = withSlashes(picture);
    const auto [known, isNew] = fTextures.emplace(name, static_cast<int>(fScene.textures.size()));
    result.texture = known->second;
    if (!isNew)
        return result;
    const std::filesystem::path path = fFolder / name;
    if (!isFile(path))
        fWarnings.add("the picture '" + name + "'", "left out: there is no such file");
    Texture texture;
    texture.name = name;
    texture.image = static_cast<int>(fScene.images.size());
    if (clamp)
        texture.wrapU = texture.wrapV = Wrap::ClampToEdge;
    fScene.images.push_back({name, isFile(path) ? path.string() : "", {}});
    fScene.textures.push_back(std::move(texture));
    return result;
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
