#include "scene/Scene.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace orloview {

namespace {

template <typename T>
void moveBehind(std::vector<T>& to, std::vector<T>& from) {
    to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
}

void renumber(int& index, size_t by) {
    if (index >= 0)
        index += static_cast<int>(by);
}

} // namespace

size_t Mesh::elementCount() const {
    switch (topology) {
    case Topology::Points:
        return indices.size();
    case Topology::Lines:
        return indices.size() / 2;
    case Topology::Triangles:
        return indices.size() / 3;
    }
    return 0;
}

void Bounds::extend(const koLinear::Point& p) {
    if (!std::isfinite(p[0]) || !std::isfinite(p[1]) || !std::isfinite(p[2]))
        return;
    for (int axis = 0; axis < 3; ++axis) {
        min[axis] = std::min(min[axis], p[axis]);
        max[axis] = std::max(max[axis], p[axis]);
    }
}

const Material& Scene::materialOf(const Mesh& mesh) const {
    static const Material kWhite;
    static const Material kGrey = [] {
        Material material;
        material.baseColor = kPlainColor;
        return material;
    }();
    if (mesh.material >= 0)
        return materials[static_cast<size_t>(mesh.material)];
    return mesh.colors.empty() && !mesh.normals.empty() ? kGrey : kWhite;
}

const Bounds& Scene::bounds() const {
    if (!fBounds) {
        fBounds.emplace();
        DrawnVertices(*this).visit([this](const koLinear::Point& p) { fBounds->extend(p); });
    }
    return *fBounds;
}

size_t Scene::count(Topology topology) const {
    size_t sum = 0;
    for (const Instance& instance : instances) {
        const Mesh& mesh = meshes[static_cast<size_t>(instance.mesh)];
        if (mesh.topology == topology)
            sum += mesh.elementCount();
    }
    return sum;
}

bool Scene::show(const std::string& variant) {
    bool known = false;
    for (const Variant& each : variants) {
        if (each.name != variant)
            continue;
        known = true;
        for (const Variant::Paint& paint : each.paints)
            meshes[static_cast<size_t>(paint.mesh)].material = paint.material;
    }
    return known;
}

void Scene::append(Scene other) {
    for (Mesh& mesh : other.meshes)
        renumber(mesh.material, materials.size());
    for (Instance& instance : other.instances)
        renumber(instance.mesh, meshes.size());
    for (Variant& variant : other.variants)
        for (Variant::Paint& paint : variant.paints) {
            renumber(paint.mesh, meshes.size());
            renumber(paint.material, materials.size());
        }
    for (Texture& texture : other.textures)
        renumber(texture.image, images.size());
    for (Material& material : other.materials)
        for (const auto use : kTextureUses)
            renumber((material.*use).texture, textures.size());

    if (format.empty())
        format = std::move(other.format);
    else if (format.find(other.format) == std::string::npos)
        format += ", " + other.format;
    moveBehind(meshes, other.meshes);
    moveBehind(instances, other.instances);
    moveBehind(materials, other.materials);
    moveBehind(variants, other.variants);
    moveBehind(images, other.images);
    moveBehind(textures, other.textures);
    moveBehind(animations, other.animations);
    moveBehind(cameras, other.cameras);
    moveBehind(lights, other.lights);
    moveBehind(files, other.files);
    moveBehind(warnings, other.warnings);
    fBounds.reset();
}

DrawnVertices::DrawnVertices(const Scene& scene) : fScene(scene) {
    for (const Mesh& mesh : scene.meshes) {
        std::vector<char>& drawn = fDrawn.emplace_back(mesh.vertexCount());
        for (const std::uint32_t index : mesh.indices)
            drawn[index] = 1;
    }
}

} // namespace orloview
