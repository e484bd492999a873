#include "import/ModelReader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "base/FileBytes.h"
#include "base/ImportError.h"
#include "base/MappedFile.h"
#include "import/AssimpReader.h"
#include "import/Format.h"
#include "import/GltfReader.h"
#include "import/ObjReader.h"
#include "import/PlyReader.h"
#include "import/TableReader.h"

namespace orloview {

namespace {

/// `byLibrary` reads what no reader of ours does.
template <typename ByLibrary>
Scene readAs(Format format, std::span<const std::uint8_t> bytes, const ModelFolder& folder,
             const ProgressReport& report, const ByLibrary& byLibrary) {
    switch (format) {
    case Format::Gltf:
        return readGltf(bytes, folder, report);
    case Format::Obj:
        return readObj(bytes, folder, report);
    case Format::Ply:
        return readPly(bytes, report);
    case Format::Stl:
        return readStl(bytes);
    case Format::Table:
        return readTable(bytes, report);
    case Format::ByLibrary:
        return byLibrary();
    }
    return {};
}

/// A small file can place one mesh in thousands of places and keep every later step busy for hours.
void checkSize(const Scene& scene) {
    constexpr size_t kMostElements = size_t{1} << 28;
    for (const Topology topology : {Topology::Points, Topology::Lines, Topology::Triangles})
        if (scene.count(topology) > kMostElements)
            throw ImportError("it places meshes so often that " + std::to_string(scene.count(topology)) +
                              " triangles, lines or points would be drawn; export it with fewer copies");
}

bool refers(int index, size_t length) {
    return index >= 0 && static_cast<size_t>(index) < length;
}

bool refersOrNone(int index, size_t length) {
    return index == -1 || refers(index, length);
}

bool fits(const std::vector<float>& values, size_t count) {
    return values.empty() || values.size() == count;
}

bool isConsistent(const Mesh& mesh, size_t materialCount) {
    const size_t vertices = mesh.vertexCount();
    return mesh.topology <= Topology::Triangles && mesh.positions.size() == vertices * 3 &&
           fits(mesh.normals, vertices * 3) && fits(mesh.tangents, vertices * 4) &&
           fits(mesh.colors, vertices * 4) && !mesh.indices.empty() &&
           fits(mesh.particles.velocities, vertices * 3) &&
           std::all_of(mesh.particles.values.begin(), mesh.particles.values.end(),
                       [&](const std::vector<float>& values) { return fits(values, vertices); }) &&
           refersOrNone(mesh.material, materialCount) &&
           std::all_of(mesh.uvSets.begin(), mesh.uvSets.end(),
                       [&](const std::vector<float>& uvs) { return fits(uvs, vertices * 2); }) &&
           std::all_of(mesh.indices.begin(), mesh.indices.end(),
                       [&](std::uint32_t index) { return index < vertices; });
}

bool isConsistent(const Material& material, size_t textureCount) {
    return material.alphaMode <= AlphaMode::Blend && material.reflection <= Reflection::Phong &&
           std::all_of(kTextureUses.begin(), kTextureUses.end(), [&](TextureUse Material::*use) {
               return refersOrNone((material.*use).texture, textureCount) && (material.*use).uvSet >= 0;
           });
}

bool isTree(const std::vector<TreeNode>& tree) {
    int known = 0;
    return std::all_of(tree.begin(), tree.end(),
                       [&known](const TreeNode& node) { return node.parent >= -1 && node.parent < known++; });
}

bool isConsistent(const Variant& variant, const Scene& scene) {
    return std::all_of(variant.paints.begin(), variant.paints.end(), [&](const Variant::Paint& paint) {
        return refers(paint.mesh, scene.meshes.size()) && refers(paint.material, scene.materials.size());
    });
}

Scene checked(Scene scene) {
    if (scene.instances.empty() && scene.cameras.empty() && scene.lights.empty()) {
        if (scene.warnings.empty())
            throw ImportError("there is nothing in it to draw");
        throw ImportError("nothing in it can be drawn: " + scene.warnings.front());
    }
    checkSize(scene);
    return scene;
}

} // namespace

Scene readModel(const std::filesystem::path& path, const ModelFolder& folder, const ProgressReport& report) {
    const Descriptor file = openFile(path);
    const MappedFile mapped(file.number());
    const std::vector<std::uint8_t> copy =
        mapped.bytes().empty() ? readFile(path) : std::vector<std::uint8_t>();
    const std::span<const std::uint8_t> bytes = copy.empty() ? mapped.bytes() : copy;
    return checked(readAs(detectFormat(bytes, path), bytes, folder, report,
                          [&] { return readByLibrary(path, folder); }));
}

Scene readModel(std::span<const std::uint8_t> bytes, const std::filesystem::path& name,
                const ModelFolder& folder, const ProgressReport& report) {
    return checked(readAs(detectFormat(bytes, name), bytes, folder, report,
                          [&] { return readByLibrary(bytes, name, folder); }));
}

bool isConsistent(const Scene& scene) {
    return std::all_of(scene.meshes.begin(), scene.meshes.end(),
                       [&](const Mesh& mesh) { return isConsistent(mesh, scene.materials.size()); }) &&
           std::all_of(scene.instances.begin(), scene.instances.end(),
                       [&](const Instance& each) { return refers(each.mesh, scene.meshes.size()); }) &&
           std::all_of(
               scene.materials.begin(), scene.materials.end(),
               [&](const Material& material) { return isConsistent(material, scene.textures.size()); }) &&
           std::all_of(scene.variants.begin(), scene.variants.end(),
                       [&](const Variant& variant) { return isConsistent(variant, scene); }) &&
           std::all_of(
               scene.textures.begin(), scene.textures.end(),
               [&](const Texture& texture) { return refersOrNone(texture.image, scene.images.size()); }) &&
           isTree(scene.tree) && isMotionConsistent(scene);
}

} // namespace orloview
