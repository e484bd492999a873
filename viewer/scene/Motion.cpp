#include "scene/Motion.h"

#include <algorithm>
#include <cmath>

#include "scene/Bending.h"
#include "scene/Scene.h"

namespace orloview {

namespace {

using koLinear::AffineMatrix;

AffineMatrix turning(std::array<double, 4> q) {
    const double length = std::hypot(std::hypot(q[0], q[1]), std::hypot(q[2], q[3]));
    if (!(length > 0.0))
        return {};
    for (double& part : q)
        part /= length;
    const auto [x, y, z, w] = q;
    AffineMatrix m;
    m[0][0] = 1 - 2 * (y * y + z * z);
    m[0][1] = 2 * (x * y + z * w);
    m[0][2] = 2 * (x * z - y * w);
    m[1][0] = 2 * (x * y - z * w);
    m[1][1] = 1 - 2 * (x * x + z * z);
    m[1][2] = 2 * (y * z + x * w);
    m[2][0] = 2 * (x * z + y * w);
    m[2][1] = 2 * (y * z - x * w);
    m[2][2] = 1 - 2 * (x * x + y * y);
    return m;
}

bool refersTo(int index, size_t length) {
    return index >= 0 && static_cast<size_t>(index) < length;
}

bool areFinite(const std::vector<float>& values) {
    return std::all_of(values.begin(), values.end(), [](float value) { return std::isfinite(value); });
}

bool isConsistent(const Influences& influences, size_t vertices, size_t joints) {
    const auto& begin = influences.begin;
    return begin.size() == vertices + 1 && begin.front() == 0 && begin.back() == influences.all.size() &&
           std::is_sorted(begin.begin(), begin.end()) &&
           std::all_of(influences.all.begin(), influences.all.end(), [&](const Influences::One& one) {
               return one.joint < joints && std::isfinite(one.share);
           });
}

bool isConsistent(const MorphDelta& delta, const Mesh& mesh) {
    if (delta.attribute >= attributeCount(mesh))
        return false;
    const size_t width = attributeWidth(delta.attribute);
    const size_t vertices = attributeOf(mesh, delta.attribute).size() / width;
    return delta.values.size() == delta.vertices.size() * width && areFinite(delta.values) &&
           std::all_of(delta.vertices.begin(), delta.vertices.end(),
                       [&](std::uint32_t vertex) { return vertex < vertices; });
}

bool isConsistent(const Bend& bend, const Scene& scene) {
    const Motion& motion = scene.motion;
    if (!refersTo(bend.mesh, scene.meshes.size()) || !refersTo(bend.node, motion.nodes.size()))
        return false;
    const Mesh& mesh = scene.meshes[static_cast<size_t>(bend.mesh)];
    const bool hasSkin = bend.skin >= 0;
    if (hasSkin && (!refersTo(bend.skin, motion.skins.size()) ||
                    !isConsistent(bend.influences, mesh.vertexCount(),
                                  motion.skins[static_cast<size_t>(bend.skin)].joints.size())))
        return false;
    return (!bend.isFlat || mesh.normals.size() == mesh.indices.size() * 3) &&
           std::all_of(bend.targets.begin(), bend.targets.end(), [&](const MorphTarget& target) {
               return std::all_of(target.begin(), target.end(),
                                  [&](const MorphDelta& delta) { return isConsistent(delta, mesh); });
           });
}

bool isConsistent(const Follower& follower, const Scene& scene) {
    const std::array lengths{scene.instances.size(), scene.cameras.size(), scene.lights.size()};
    return follower.kind <= Follower::Kind::Light &&
           refersTo(follower.index, lengths[static_cast<size_t>(follower.kind)]) &&
           refersTo(follower.node, scene.motion.nodes.size());
}

/// Which numbers a key of the track has, where it is a good one.
bool hasWidth(const Track& track) {
    const size_t parts = track.interpolation == Track::Interpolation::Cubic ? 3 : 1;
    const size_t width = track.valuesPerKey() / parts;
    return track.values.size() == track.times.size() * width * parts && width > 0 &&
           (track.path == Track::Path::Weights || width == (track.path == Track::Path::Rotation ? 4 : 3));
}

bool isConsistent(const Skin& skin, size_t nodes) {
    return skin.fromMesh.size() == skin.joints.size() &&
           std::all_of(skin.joints.begin(), skin.joints.end(),
                       [&](int joint) { return refersTo(joint, nodes); });
}

} // namespace

AffineMatrix Transform::matrix() const {
    return AffineMatrix::scaling(scale[0], scale[1], scale[2])
        .then(turning(rotation))
        .then(AffineMatrix::translation(translation[0], translation[1], translation[2]));
}

bool isPlayable(const Track& track) {
    return track.path <= Track::Path::Weights && track.interpolation <= Track::Interpolation::Cubic &&
           !track.times.empty() && hasWidth(track) && areFinite(track.times) && areFinite(track.values) &&
           std::is_sorted(track.times.begin(), track.times.end());
}

bool isMotionConsistent(const Scene& scene) {
    const Motion& motion = scene.motion;
    for (size_t i = 0; i < motion.nodes.size(); ++i)
        if (motion.nodes[i].parent != -1 && !refersTo(motion.nodes[i].parent, i))
            return false;
    return std::all_of(motion.skins.begin(), motion.skins.end(),
                       [&](const Skin& skin) { return isConsistent(skin, motion.nodes.size()); }) &&
           std::all_of(motion.followers.begin(), motion.followers.end(),
                       [&](const Follower& follower) { return isConsistent(follower, scene); }) &&
           std::all_of(motion.bends.begin(), motion.bends.end(),
                       [&](const Bend& bend) { return isConsistent(bend, scene); }) &&
           std::all_of(scene.animations.begin(), scene.animations.end(), [&](const Animation& animation) {
               return std::isfinite(animation.seconds) &&
                      std::all_of(animation.tracks.begin(), animation.tracks.end(), [&](const Track& track) {
                          return isPlayable(track) && refersTo(track.node, motion.nodes.size());
                      });
           });
}

} // namespace orloview
