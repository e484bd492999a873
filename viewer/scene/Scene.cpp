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

void Bounds::extend(const Bounds& box, const koLinear::AffineMatrix& map) {
    for (unsigned corner = 0; corner < 8 && !box.empty(); ++corner) {
        const auto side = [&](int axis) {
            return (corner >> axis & 1U) != 0 ? box.max[axis] : box.min[axis];
        };
        extend(map.transform(koLinear::Point(side(0), side(1), side(2))));
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

void Scene::measure() {
    fBounds.reset();
    bounds();
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
    for (TreeNode& node : other.tree)
        renumber(node.parent, tree.size());
    renumberMotion(other);
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
    moveBehind(tree, other.tree);
    moveBehind(materials, other.materials);
    moveBehind(variants, other.variants);
    moveBehind(images, other.images);
    moveBehind(textures, other.textures);
    moveBehind(animations, other.animations);
    moveBehind(cameras, other.cameras);
    moveBehind(lights, other.lights);
    moveBehind(motion.nodes, other.motion.nodes);
    moveBehind(motion.followers, other.motion.followers);
    moveBehind(motion.skins, other.motion.skins);
    moveBehind(motion.bends, other.motion.bends);
    moveBehind(files, other.files);
    moveBehind(warnings, other.warnings);
    fBounds.reset();
}

void Scene::renumberMotion(Scene& other) const {
    for (Node& node : other.motion.nodes)
        renumber(node.parent, motion.nodes.size());
    for (Follower& follower : other.motion.followers) {
        const std::array lengths{instances.size(), cameras.size(), lights.size()};
        renumber(follower.index, lengths[static_cast<size_t>(follower.kind)]);
        renumber(follower.node, motion.nodes.size());
    }
    for (Skin& skin : other.motion.skins)
        for (int& joint : skin.joints)
            renumber(joint, motion.nodes.size());
    for (Bend& bend : other.motion.bends) {
        renumber(bend.mesh, meshes.size());
        renumber(bend.node, motion.nodes.size());
        renumber(bend.skin, motion.skins.size());
    }
    for (Animation& animation : other.animations)
        for (Track& track : animation.tracks)
            renumber(track.node, motion.nodes.size());
}

DrawnVertices::DrawnVertices(const Scene& scene) : fScene(scene) {
    for (const Mesh& mesh : scene.meshes) {
        std::vector<char>& drawn = fDrawn.emplace_back(mesh.vertexCount());
        for (const std::uint32_t index : mesh.indices)
            drawn[index] = 1;
    }
}

} // namespace orloview
