#include "scene/Poser.h"

#include "scene/Bending.h"
#include "scene/Normals.h"
#include "scene/Vectors.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace orloview {

namespace {

using koLinear::AffineMatrix;
using Quaternion = std::array<double, 4>;

/// The shorter way from one turn to another, at an even speed.
Quaternion turnBetween(const Quaternion& from, Quaternion to, double share) {
    double cosine = 0.0;
    for (size_t i = 0; i < 4; ++i)
        cosine += from[i] * to[i];
    if (cosine < 0.0) { // the same turn, written the other way
        cosine = -cosine;
        for (double& part : to)
            part = -part;
    }
    const double angle = std::acos(std::min(cosine, 1.0));
    const bool isSmall = angle < 1e-4;
    const double a = isSmall ? 1.0 - share : std::sin((1.0 - share) * angle) / std::sin(angle);
    const double b = isSmall ? share : std::sin(share * angle) / std::sin(angle);
    Quaternion result;
    for (size_t i = 0; i < 4; ++i)
        result[i] = a * from[i] + b * to[i];
    return result;
}

/// A curve through both ends with the slopes there.
double curveBetween(double from, double leaving, double arriving, double to, double share) {
    const double square = share * share;
    const double cube = square * share;
    return (2.0 * cube - 3.0 * square + 1.0) * from + (cube - 2.0 * square + share) * leaving +
           (3.0 * square - 2.0 * cube) * to + (cube - square) * arriving;
}

/// The numbers of a track at a time, as many as there are in `result`, and as the track has.
void sample(const Track& track, double time, std::span<double> result) {
    const bool isCubic = track.interpolation == Track::Interpolation::Cubic;
    const size_t width = track.valuesPerKey() / (isCubic ? 3 : 1);
    const size_t count = std::min(result.size(), width);
    const auto keyAt = [&](size_t key) { return &track.values[key * track.valuesPerKey()]; };
    const auto next = static_cast<size_t>(std::upper_bound(track.times.begin(), track.times.end(), time) -
                                          track.times.begin());
    const size_t last = next == 0 ? 0 : next - 1;
    const float* from = keyAt(last);
    if (next == 0 || next == track.times.size() || track.interpolation == Track::Interpolation::Step) {
        std::copy_n(from + (isCubic ? width : 0), count, result.begin());
        return;
    }
    const float* to = keyAt(next);
    const double span = double{track.times[next]} - double{track.times[last]};
    const double share = (time - double{track.times[last]}) / span;
    if (isCubic) {
        for (size_t i = 0; i < count; ++i)
            result[i] =
                curveBetween(from[width + i], span * from[2 * width + i], span * to[i], to[width + i], share);
    } else if (track.path == Track::Path::Rotation) {
        const Quaternion turn =
            turnBetween({from[0], from[1], from[2], from[3]}, {to[0], to[1], to[2], to[3]}, share);
        std::copy(turn.begin(), turn.end(), result.begin());
    } else {
        for (size_t i = 0; i < count; ++i)
            result[i] = from[i] + share * (double{to[i]} - double{from[i]});
    }
}

void sample(const Track& track, double time, Transform& transform) {
    switch (track.path) {
    case Track::Path::Translation:
        return sample(track, time, transform.translation);
    case Track::Path::Rotation:
        return sample(track, time, transform.rotation);
    case Track::Path::Scale:
        return sample(track, time, transform.scale);
    case Track::Path::Weights:
        return;
    }
}

void extendBy(Bounds& bounds, const float* position, const AffineMatrix& toWorld) {
    bounds.extend(toWorld.transform(koLinear::Point(position[0], position[1], position[2])));
}

/// Adds what isn't there yet, and the mesh has.
void add(std::vector<size_t>& attributes, size_t attribute, const Mesh& mesh) {
    if (!attributeOf(mesh, attribute).empty() &&
        std::find(attributes.begin(), attributes.end(), attribute) == attributes.end())
        attributes.push_back(attribute);
}

std::vector<size_t> bentBy(const Bend& bend, const Mesh& mesh) {
    std::vector<size_t> attributes;
    for (const MorphTarget& target : bend.targets)
        for (const MorphDelta& delta : target)
            add(attributes, delta.attribute, mesh);
    if (bend.skin >= 0)
        for (const size_t attribute : {kPositions, kNormals, kTangents})
            add(attributes, attribute, mesh);
    if (bend.isFlat)
        add(attributes, kNormals, mesh);
    return attributes;
}

} // namespace

Poser::Poser(Scene& scene, size_t animation) : fScene(scene) {
    if (!moves())
        return;
    const Motion& motion = scene.motion;
    fWorlds.resize(motion.nodes.size());
    fBendOf.assign(scene.meshes.size(), -1);
    for (size_t i = 0; i < motion.bends.size(); ++i)
        fBendOf[static_cast<size_t>(motion.bends[i].mesh)] = static_cast<int>(i);
    fMeshBounds.resize(scene.meshes.size());
    keepRests();
    fAll = everything();
    choose(animation);
    pose(0.0);
    scene.measure();
}

void Poser::keepRests() {
    for (const Bend& bend : fScene.motion.bends) {
        const Mesh& mesh = fScene.meshes[static_cast<size_t>(bend.mesh)];
        Rest& rest = fRests.emplace_back();
        rest.attributes = bentBy(bend, mesh);
        for (const size_t attribute : rest.attributes)
            rest.values.push_back(attributeOf(mesh, attribute));
        rest.isDrawn.resize(mesh.vertexCount());
        for (const std::uint32_t index : mesh.indices)
            rest.isDrawn[index] = 1;
    }
}

Poser::Part Poser::everything() const {
    const Motion& motion = fScene.motion;
    Part part;
    for (size_t i = 0; i < motion.nodes.size(); ++i)
        part.nodes.push_back(i);
    for (size_t i = 0; i < motion.followers.size(); ++i)
        part.followers.push_back(i);
    for (size_t i = 0; i < motion.bends.size(); ++i)
        part.bends.push_back(i);
    listMoved(part);
    return part;
}

Poser::Part Poser::movedBy(const Animation& animation) const {
    const Motion& motion = fScene.motion;
    std::vector<bool> moves(motion.nodes.size());
    std::vector<bool> changesWeights(motion.nodes.size());
    for (const Track& track : animation.tracks)
        (track.path == Track::Path::Weights ? changesWeights : moves)[static_cast<size_t>(track.node)] = true;
    Part part;
    for (size_t i = 0; i < motion.nodes.size(); ++i) {
        const int parent = motion.nodes[i].parent;
        if (parent >= 0 && moves[static_cast<size_t>(parent)])
            moves[i] = true;
        if (moves[i])
            part.nodes.push_back(i);
    }
    for (size_t i = 0; i < motion.followers.size(); ++i)
        if (moves[static_cast<size_t>(motion.followers[i].node)])
            part.followers.push_back(i);
    for (size_t i = 0; i < motion.bends.size(); ++i) {
        const Bend& bend = motion.bends[i];
        const auto isBentBy = [&](int joint) { return moves[static_cast<size_t>(joint)]; };
        const bool hasMovingSkin =
            bend.skin >= 0 &&
            std::ranges::any_of(motion.skins[static_cast<size_t>(bend.skin)].joints, isBentBy);
        if (hasMovingSkin || changesWeights[static_cast<size_t>(bend.node)])
            part.bends.push_back(i);
    }
    listMoved(part);
    return part;
}

void Poser::listMoved(Part& part) const {
    std::vector<bool> moves(fScene.instances.size());
    for (const size_t i : part.followers) {
        const Follower& follower = fScene.motion.followers[i];
        if (follower.kind == Follower::Kind::Instance)
            moves[static_cast<size_t>(follower.index)] = true;
    }
    std::vector<bool> isBent(fScene.meshes.size());
    for (const size_t i : part.bends) {
        const auto mesh = static_cast<size_t>(fScene.motion.bends[i].mesh);
        isBent[mesh] = true;
        part.moved.meshes.push_back({mesh, fRests[i].attributes});
    }
    for (size_t i = 0; i < moves.size(); ++i)
        if (moves[i] || isBent[static_cast<size_t>(fScene.instances[i].mesh)])
            part.moved.instances.push_back(i);
}

void Poser::choose(size_t animation) {
    const Motion& motion = fScene.motion;
    fAnimation = animation;
    fMoving = movedBy(fScene.animations[animation]);
    fIsChosen = true;
    fTransforms.clear();
    for (const Node& node : motion.nodes)
        fTransforms.push_back(node.transform);
    fWeights.clear();
    for (const Bend& bend : motion.bends)
        fWeights.push_back(bend.weights);
    fIsTransformed.assign(motion.nodes.size(), false);
    fWeightTracks.clear();
    for (const Track& track : fScene.animations[animation].tracks) {
        if (track.path != Track::Path::Weights)
            fIsTransformed[static_cast<size_t>(track.node)] = true;
        for (const size_t bend : fMoving.bends)
            if (track.path == Track::Path::Weights && motion.bends[bend].node == track.node)
                fWeightTracks.emplace_back(&track, bend);
    }
}

const Moved& Poser::pose(double time) {
    static const Moved kNothing;
    if (!moves())
        return kNothing;
    if (time > seconds())
        time = seconds() > 0.0 ? std::fmod(time, seconds()) : 0.0;
    for (const Track& track : fScene.animations[fAnimation].tracks)
        sample(track, time, fTransforms[static_cast<size_t>(track.node)]);
    for (const auto& [track, bend] : fWeightTracks)
        sample(*track, time, fWeights[bend]);
    const Part& part = fIsChosen ? fAll : fMoving;
    for (const size_t node : part.nodes)
        place(node);
    for (const size_t follower : part.followers)
        follow(fScene.motion.followers[follower]);
    for (const size_t bend : part.bends)
        bendMesh(bend);
    if (fIsChosen)
        measureStill();
    fIsChosen = false;
    fBounds = fStill;
    for (const size_t instance : fMoving.moved.instances)
        extend(fBounds, instance);
    return part.moved;
}

/// A node that a track takes out of all numbers stays where it was.
void Poser::place(size_t index) {
    const Node& node = fScene.motion.nodes[index];
    AffineMatrix world = fIsTransformed[index] ? fTransforms[index].matrix() : node.toParent;
    if (node.parent >= 0)
        world = world.then(fWorlds[static_cast<size_t>(node.parent)]);
    if (isFinite(world))
        fWorlds[index] = world;
}

void Poser::follow(const Follower& follower) {
    const AffineMatrix toWorld = follower.toNode.then(fWorlds[static_cast<size_t>(follower.node)]);
    if (!isFinite(toWorld))
        return;
    const auto index = static_cast<size_t>(follower.index);
    switch (follower.kind) {
    case Follower::Kind::Instance:
        fScene.instances[index].toWorld = toWorld;
        return;
    case Follower::Kind::Camera:
        fScene.cameras[index].toWorld = toWorld;
        return;
    case Follower::Kind::Light:
        fScene.lights[index].toWorld = toWorld;
        return;
    }
}

void Poser::bendMesh(size_t index) {
    const Bend& bent = fScene.motion.bends[index];
    const Rest& rest = fRests[index];
    Mesh& mesh = fScene.meshes[static_cast<size_t>(bent.mesh)];
    for (size_t i = 0; i < rest.attributes.size(); ++i)
        std::ranges::copy(rest.values[i], attributeOf(mesh, rest.attributes[i]).begin());
    morph(mesh, bent.targets, fWeights[index]);
    if (bent.skin >= 0) {
        const Skin& skin = fScene.motion.skins[static_cast<size_t>(bent.skin)];
        std::vector<AffineMatrix> joints(skin.joints.size());
        for (size_t i = 0; i < joints.size(); ++i) {
            const AffineMatrix joint = skin.fromMesh[i].then(fWorlds[static_cast<size_t>(skin.joints[i])]);
            if (isFinite(joint))
                joints[i] = joint;
        }
        bend(mesh, bent.influences, joints);
    }
    if (bent.isFlat)
        setFlatNormals(mesh);
    else if (std::ranges::count(rest.attributes, size_t{kNormals}) > 0)
        normalize(mesh.normals);
}

void Poser::measureStill() {
    fStill = {};
    size_t next = 0; // of those that move, which are in order
    const std::vector<size_t>& moving = fMoving.moved.instances;
    const DrawnVertices vertices(fScene);
    for (size_t i = 0; i < fScene.instances.size(); ++i) {
        if (next == moving.size() || moving[next] != i) {
            vertices.visit(i, [this](const koLinear::Point& p) { fStill.extend(p); });
            continue;
        }
        ++next;
        const auto index = static_cast<size_t>(fScene.instances[i].mesh);
        Bounds& bounds = fMeshBounds[index];
        if (fBendOf[index] < 0 && bounds.empty())
            for (const std::uint32_t vertex : fScene.meshes[index].indices)
                extendBy(bounds, &fScene.meshes[index].positions[size_t{vertex} * 3], {});
    }
}

void Poser::extend(Bounds& bounds, size_t instance) const {
    const auto index = static_cast<size_t>(fScene.instances[instance].mesh);
    const AffineMatrix& toWorld = fScene.instances[instance].toWorld;
    if (fBendOf[index] < 0) {
        bounds.extend(fMeshBounds[index], toWorld);
        return;
    }
    const float* position = fScene.meshes[index].positions.data();
    for (const char isDrawn : fRests[static_cast<size_t>(fBendOf[index])].isDrawn) {
        if (isDrawn)
            extendBy(bounds, position, toWorld);
        position += 3;
    }
}

} // namespace orloview
