#include "import/GltfReader.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <optional>
#include <span>
#include <string>
#include <tuple>
#include <utility>

#include "base/ImportError.h"
#include "import/GltfAnimation.h"
#include "import/GltfContainer.h"
#include "import/GltfData.h"
#include "import/GltfExtensions.h"
#include "import/GltfJson.h"
#include "import/GltfMaterials.h"
#include "import/GltfMorph.h"
#include "import/GltfSkin.h"
#include "import/GltfTransforms.h"
#include "import/MeshCheck.h"
#include "import/Warnings.h"
#include "scene/Bending.h"
#include "scene/Normals.h"
#include "scene/Triangulate.h"
#include "scene/Vectors.h"

namespace orloview {

namespace {

using koLinear::AffineMatrix;

constexpr const char* kLights = "KHR_lights_punctual";
constexpr const char* kVisibility = "KHR_node_visibility";
constexpr const char* kVariants = "KHR_materials_variants";

enum PrimitiveMode : size_t { kPoints, kLines, kLineLoop, kLineStrip, kTriangles, kStrip, kFan };

std::vector<std::uint32_t> pairsOf(const std::vector<std::uint32_t>& strip, bool closed) {
    std::vector<std::uint32_t> pairs;
    for (size_t i = 0; i + 1 < strip.size(); ++i)
        pairs.insert(pairs.end(), {strip[i], strip[i + 1]});
    if (closed && strip.size() > 2)
        pairs.insert(pairs.end(), {strip.back(), strip.front()});
    return pairs;
}

/// Sets the mesh's topology and indices from a primitive's, spelling out what is chained.
void spellOut(size_t mode, std::vector<std::uint32_t> indices, Mesh& mesh) {
    switch (mode) {
    case kPoints:
        mesh.topology = Topology::Points;
        mesh.indices = std::move(indices);
        return;
    case kLines:
        mesh.topology = Topology::Lines;
        mesh.indices = std::move(indices);
        return;
    case kLineLoop:
    case kLineStrip:
        mesh.topology = Topology::Lines;
        mesh.indices = pairsOf(indices, mode == kLineLoop);
        return;
    case kTriangles:
        mesh.indices = std::move(indices);
        return;
    case kStrip:
        appendStrip(indices, mesh.indices);
        return;
    case kFan:
        appendFan(indices, mesh.indices);
        return;
    default:
        throw ImportError("left out: the primitive mode " + std::to_string(mode) + " doesn't exist");
    }
}

std::string named(const GltfObject& object) {
    const std::string name = object.text("name");
    return name.empty() ? object.place() : "'" + name + "'";
}

bool isHidden(const GltfObject& node) {
    if (!node.hasExtension(kVisibility))
        return false;
    const GltfObject visibility = node.extension(kVisibility);
    return visibility.has("visible") && !visibility.flag("visible");
}

class GltfParser {
public:
    GltfParser(const GltfContainer& container, const ModelFolder& folder, const ProgressReport& report)
        : fReport(report), fRoot(container.json, ""), fData(container, folder),
          fNodes(fRoot.objects("nodes")), fMeshes(fRoot.objects("meshes")), fSkins(fRoot.objects("skins")),
          fCameras(fRoot.objects("cameras")), fLights(fRoot.extension(kLights).objects("lights")),
          fParents(fNodes.size(), kUnvisited), fWorlds(fNodes.size()), fTreeNodes(fNodes.size(), -1),
          fMotionNodes(fNodes.size(), -1), fHasMovingWeights(fNodes.size()) {
        fScene.format = container.isBinary ? "glTF 2.0 binary" : "glTF 2.0 text";
        warnOfExtensions(container.json, fWarnings);
        fScene.animations = readGltfAnimations(fRoot, fData, fWarnings);
        for (const Animation& animation : fScene.animations)
            for (const Track& track : animation.tracks) {
                fMoves = true;
                if (track.path == Track::Path::Weights)
                    fHasMovingWeights[static_cast<size_t>(track.node)] = true;
            }
        for (const GltfObject& variant : fRoot.extension(kVariants).objects("variants"))
            fScene.variants.push_back({variant.text("name"), {}});
        readGltfMaterials(fRoot, fData, folder, fScene, fWarnings);
    }

    Scene read() {
        for (const int root : roots())
            walk(root);
        for (const size_t node : fSkinned)
            placeSkinned(node);
        renumberTracks();
        fScene.files = fData.files();
        fScene.warnings = fWarnings.lines();
        return std::move(fScene);
    }

private:
    static constexpr int kUnvisited = -2;
    static constexpr int kRoot = -1;

    /// How a mesh is bent where a node shows it.
    struct Pose {
        size_t node;
        std::vector<double> weights;            ///< of its morph targets
        const Skin* skin = nullptr;             ///< of the file's nodes
        std::span<const AffineMatrix> joints{}; ///< of the skin at rest, from the mesh's space into the world
    };
    struct ReadMesh {
        Mesh mesh;
        Bend bend; ///< what of the pose is left to be done for each picture
    };
    struct Visit {
        int node;
        AffineMatrix parentToWorld;
        bool hidden = false; ///< with all below it
    };

    void renumberTracks();
    std::vector<int> roots() const;
    void walk(int root);
    void enter(int child, int parent);
    void place(size_t index, const AffineMatrix& toWorld);
    int motionNodeOf(size_t node);
    void addFollower(Follower::Kind kind, size_t index, size_t node, const AffineMatrix& toNode = {});
    void placeMesh(size_t index, size_t mesh, const AffineMatrix& toWorld);
    std::vector<AffineMatrix> copiesOf(const GltfObject& node, const AffineMatrix& toWorld);
    void placeSkinned(size_t index);
    int motionSkinOf(const GltfObject& node, const Skin& skin);
    void placeCamera(const GltfObject& node, const GltfObject& camera, const AffineMatrix& toWorld);
    void placeLight(const GltfObject& node, const GltfObject& light, const AffineMatrix& toWorld);
    const std::vector<int>& meshesOf(size_t node, size_t mesh);
    std::vector<int> readMesh(size_t mesh, const Pose& pose);
    void addBend(Bend bend, const Pose& pose);
    std::optional<ReadMesh> readPrimitive(const GltfObject& primitive, const std::string& name,
                                          const Pose& pose);
    std::vector<MorphTarget> readTargets(const Mesh& mesh, const GltfObject& primitive,
                                         const std::string& name, const Pose& pose);
    void bendOnce(ReadMesh& read, const Pose& pose) const;
    void noteVariants(const GltfObject& primitive, const std::string& name);
    void readAttributes(const GltfObject& primitive, const std::string& name, Mesh& mesh);
    std::vector<float> attribute(const GltfObject& attributes, const char* key, size_t components);
    std::vector<std::uint32_t> indices(const GltfObject& primitive, size_t vertexCount);
    std::vector<float> colors(const GltfObject& attributes);

    const ProgressReport& fReport;
    size_t fPlaced = 0;                    ///< nodes
    size_t fCopiesLeft = size_t{1} << 20U; ///< that a few bytes of a file may ask for
    GltfObject fRoot;
    GltfData fData;
    std::vector<GltfObject> fNodes;
    std::vector<GltfObject> fMeshes;
    std::vector<GltfObject> fSkins;
    std::vector<GltfObject> fCameras;
    std::vector<GltfObject> fLights;
    std::vector<int> fParents;           ///< by node, once it has been reached
    std::vector<AffineMatrix> fWorlds;   ///< by node, likewise
    std::vector<size_t> fSkinned;        ///< nodes whose meshes wait until every joint has its place
    bool fMoves = false;                 ///< whether anything is animated
    std::vector<int> fTreeNodes;         ///< by node, their numbers in the scene's tree
    std::vector<int> fMotionNodes;       ///< by node, their numbers in the scene's motion; -1: none yet
    std::vector<bool> fHasMovingWeights; ///< by node
    std::map<int, size_t> fMotionSkins;  ///< likewise, by skin
    /// A file's mesh, for that node alone where its weights move, morphed by these weights, to those of the
    /// scene, one a primitive.
    std::map<std::tuple<size_t, std::optional<size_t>, std::vector<double>>, std::vector<int>> fRead;
    Scene fScene;
    Warnings fWarnings;
};

/// Behind all that is placed: tracks of nodes that the scene doesn't show go.
void GltfParser::renumberTracks() {
    for (Animation& animation : fScene.animations) {
        std::erase_if(animation.tracks, [this](const Track& track) {
            return fMotionNodes[static_cast<size_t>(track.node)] < 0;
        });
        for (Track& track : animation.tracks)
            track.node = fMotionNodes[static_cast<size_t>(track.node)];
    }
}

/// Of the scene that the file names, or its first; a file without scenes shows every node that has no parent.
std::vector<int> GltfParser::roots() const {
    const std::vector<GltfObject> scenes = fRoot.objects("scenes");
    if (!scenes.empty()) {
        const int chosen = std::max(fRoot.reference("scene", scenes.size()), 0);
        return scenes[static_cast<size_t>(chosen)].references("nodes", fNodes.size());
    }
    std::vector<bool> isChild(fNodes.size());
    for (const GltfObject& node : fNodes)
        for (const int child : node.references("children", fNodes.size()))
            isChild[static_cast<size_t>(child)] = true;
    std::vector<int> result;
    for (size_t i = 0; i < fNodes.size(); ++i)
        if (!isChild[i])
            result.push_back(static_cast<int>(i));
    if (result.empty() && !fNodes.empty())
        throw ImportError("the file is damaged: " + named(fNodes[0]) +
                          " contains itself; export the model again");
    return result;
}

/// Depth first with a stack of its own: files nest nodes deeper than a function can call itself.
void GltfParser::walk(int root) {
    if (fParents[static_cast<size_t>(root)] != kUnvisited)
        return fWarnings.add(named(fNodes[static_cast<size_t>(root)]), "placed once only, not twice");
    fParents[static_cast<size_t>(root)] = kRoot;
    std::vector<Visit> open{{root, AffineMatrix()}};
    while (!open.empty()) {
        const auto [index, parentToWorld, hiddenAbove] = open.back();
        open.pop_back();
        const GltfObject& node = fNodes[static_cast<size_t>(index)];
        const AffineMatrix toWorld = readGltfNode(node).toParent.then(parentToWorld);
        fWorlds[static_cast<size_t>(index)] = toWorld;
        if (fMoves)
            motionNodeOf(static_cast<size_t>(index));
        const int parent = fParents[static_cast<size_t>(index)];
        fTreeNodes[static_cast<size_t>(index)] = static_cast<int>(fScene.tree.size());
        fScene.tree.push_back({node.text("name"), parent < 0 ? -1 : fTreeNodes[static_cast<size_t>(parent)]});
        const bool hidden = hiddenAbove || isHidden(node);
        if (!hidden)
            place(static_cast<size_t>(index), toWorld);
        tell(fReport, static_cast<double>(++fPlaced), static_cast<double>(fNodes.size()));
        const std::vector<int> children = node.references("children", fNodes.size());
        for (auto child = children.rbegin(); child != children.rend(); ++child) {
            if (fParents[static_cast<size_t>(*child)] == kUnvisited)
                open.push_back({*child, toWorld, hidden});
            enter(*child, index);
        }
    }
}

/// Notes the child's parent. A child that was met before is either one of its own ancestors or shared.
void GltfParser::enter(int child, int parent) {
    int& known = fParents[static_cast<size_t>(child)];
    if (known == kUnvisited) {
        known = parent;
        return;
    }
    for (int ancestor = parent; ancestor >= 0; ancestor = fParents[static_cast<size_t>(ancestor)])
        if (ancestor == child)
            throw ImportError("the file is damaged: the node " + named(fNodes[static_cast<size_t>(child)]) +
                              " contains itself; export the model again");
    fWarnings.add(named(fNodes[static_cast<size_t>(child)]), "placed once only, not twice");
}

void GltfParser::place(size_t index, const AffineMatrix& toWorld) {
    const GltfObject& node = fNodes[index];
    if (!isFinite(toWorld))
        return fWarnings.add("the node " + named(node), "left out: its transform is not finite");
    if (const int mesh = node.reference("mesh", fMeshes.size()); mesh >= 0 && node.has("skin"))
        fSkinned.push_back(index);
    else if (mesh >= 0)
        placeMesh(index, static_cast<size_t>(mesh), toWorld);
    const size_t cameras = fScene.cameras.size();
    if (const int camera = node.reference("camera", fCameras.size()); camera >= 0)
        placeCamera(node, fCameras[static_cast<size_t>(camera)], toWorld);
    if (fScene.cameras.size() > cameras)
        addFollower(Follower::Kind::Camera, cameras, index);
    if (!node.hasExtension(kLights))
        return;
    const size_t lights = fScene.lights.size();
    if (const int light = node.extension(kLights).reference("light", fLights.size()); light >= 0)
        placeLight(node, fLights[static_cast<size_t>(light)], toWorld);
    if (fScene.lights.size() > lights)
        addFollower(Follower::Kind::Light, lights, index);
}

/// A node of the file where something moves; one that isn't in the scene doesn't.
int GltfParser::motionNodeOf(size_t node) {
    int& number = fMotionNodes[node];
    if (number >= 0)
        return number;
    number = static_cast<int>(fScene.motion.nodes.size());
    Node added;
    if (fParents[node] != kUnvisited)
        added = readGltfNode(fNodes[node]);
    added.parent = fParents[node] >= 0 ? fMotionNodes[static_cast<size_t>(fParents[node])] : -1;
    fScene.motion.nodes.push_back(added);
    return number;
}

void GltfParser::addFollower(Follower::Kind kind, size_t index, size_t node, const AffineMatrix& toNode) {
    if (fMoves)
        fScene.motion.followers.push_back({kind, static_cast<int>(index), motionNodeOf(node), toNode});
}

void GltfParser::placeMesh(size_t index, size_t mesh, const AffineMatrix& toWorld) {
    const GltfObject& node = fNodes[index];
    const auto show = [&](int read, const AffineMatrix& toNode, const AffineMatrix& place) {
        addFollower(Follower::Kind::Instance, fScene.instances.size(), index, toNode);
        fScene.instances.push_back({node.text("name"), read, place});
    };
    const std::vector<AffineMatrix> copies = copiesOf(node, toWorld);
    for (const int read : meshesOf(index, mesh)) {
        if (copies.empty())
            show(read, {}, toWorld);
        for (const AffineMatrix& copy : copies)
            show(read, copy, copy.then(toWorld));
    }
}

/// From the space of its mesh to each place where the node shows it, in the node's; empty: at the node alone.
std::vector<AffineMatrix> GltfParser::copiesOf(const GltfObject& node, const AffineMatrix& toWorld) {
    if (!node.hasExtension(kGltfInstancing))
        return {};
    try {
        std::vector<AffineMatrix> copies =
            readGltfInstances(node.extension(kGltfInstancing), fData, fCopiesLeft);
        if (!std::ranges::all_of(copies, [&](const auto& copy) { return isFinite(copy.then(toWorld)); }))
            throw ImportError("a transform is not finite");
        return copies;
    } catch (const ImportError& error) {
        fWarnings.add("the copies at " + named(node), std::string("left out: ") + error.what());
        return {};
    }
}

/// A skinned mesh stands where its joints are, not where its node is.
void GltfParser::placeSkinned(size_t index) {
    const GltfObject& node = fNodes[index];
    const auto mesh = static_cast<size_t>(node.reference("mesh", fMeshes.size()));
    const auto skin = static_cast<size_t>(node.reference("skin", fSkins.size()));
    try {
        const Skin read = readGltfSkin(fSkins[skin], fData, fNodes.size());
        std::vector<AffineMatrix> joints = read.fromMesh;
        for (size_t i = 0; i < joints.size(); ++i)
            joints[i] = joints[i].then(fWorlds[static_cast<size_t>(read.joints[i])]);
        if (!std::ranges::all_of(joints, isFinite))
            throw ImportError("a joint's transform is not finite");
        for (const int part : readMesh(mesh, {index, morphWeights(node, fMeshes[mesh]), &read, joints}))
            fScene.instances.push_back({node.text("name"), part, {}});
        if (node.hasExtension(kGltfInstancing))
            fWarnings.add("the copies at " + named(node),
                          "left out: its mesh stands where a skin's joints are");
    } catch (const ImportError& error) {
        fWarnings.add("the skin of " + named(node), std::string("left out: ") + error.what());
        placeMesh(index, mesh, fWorlds[index]);
    }
}

void GltfParser::placeCamera(const GltfObject& node, const GltfObject& camera, const AffineMatrix& toWorld) {
    Camera result;
    result.name = camera.text("name", node.text("name"));
    result.toWorld = toWorld;
    if (camera.text("type") == "orthographic") {
        const GltfObject lens = camera.object("orthographic");
        result.kind = Camera::Kind::Orthographic;
        result.xmag = lens.number("xmag", 1.0);
        result.ymag = lens.number("ymag", 1.0);
        result.zNear = lens.number("znear", 0.0);
        result.zFar = lens.number("zfar", result.zFar);
    } else {
        const GltfObject lens = camera.object("perspective");
        result.yfov = lens.number("yfov", 0.8);
        result.aspect = lens.number("aspectRatio", 0.0);
        result.zNear = lens.number("znear", 0.01);
        result.zFar = lens.number("zfar", result.zFar);
    }
    fScene.cameras.push_back(std::move(result));
}

void GltfParser::placeLight(const GltfObject& node, const GltfObject& light, const AffineMatrix& toWorld) {
    Light result;
    const std::string type = light.text("type");
    if (type == "directional")
        result.kind = Light::Kind::Directional;
    else if (type == "spot")
        result.kind = Light::Kind::Spot;
    else if (type != "point")
        return fWarnings.add("the light " + named(light), "left out: its type '" + type + "' is unknown");
    result.name = light.text("name", node.text("name"));
    const auto color = light.numbers<3>("color", {1.0, 1.0, 1.0});
    result.color = koColor::Color(static_cast<float>(color[0]), static_cast<float>(color[1]),
                                  static_cast<float>(color[2]));
    result.intensity = light.number("intensity", result.intensity);
    result.range = light.number("range", result.range);
    const GltfObject spot = light.object("spot");
    result.innerConeAngle = spot.number("innerConeAngle", result.innerConeAngle);
    result.outerConeAngle = spot.number("outerConeAngle", result.outerConeAngle);
    result.toWorld = toWorld;
    fScene.lights.push_back(std::move(result));
}

/// The scene's meshes for a mesh of the file as the node shows it; read when the first such node asks.
const std::vector<int>& GltfParser::meshesOf(size_t node, size_t mesh) {
    std::vector<double> weights = morphWeights(fNodes[node], fMeshes[mesh]);
    const std::optional<size_t> alone = fHasMovingWeights[node] ? std::optional(node) : std::nullopt;
    const auto [known, isNew] = fRead.try_emplace({mesh, alone, weights});
    if (isNew)
        known->second = readMesh(mesh, {node, std::move(weights)});
    return known->second;
}

std::vector<int> GltfParser::readMesh(size_t mesh, const Pose& pose) {
    std::vector<int> result;
    for (const GltfObject& primitive : fMeshes[mesh].objects("primitives")) {
        const std::string name =
            "mesh " + named(fMeshes[mesh]) + primitive.place().substr(fMeshes[mesh].place().size());
        std::optional<ReadMesh> read = readPrimitive(primitive, name, pose);
        if (!read)
            continue;
        read->mesh.name = fMeshes[mesh].text("name");
        noteVariants(primitive, name);
        result.push_back(static_cast<int>(fScene.meshes.size()));
        fScene.meshes.push_back(std::move(read->mesh));
        if (!read->bend.targets.empty() || !read->bend.influences.begin.empty())
            addBend(std::move(read->bend), pose);
    }
    return result;
}

/// Of the mesh that was read last.
void GltfParser::addBend(Bend bend, const Pose& pose) {
    bend.mesh = static_cast<int>(fScene.meshes.size()) - 1;
    bend.node = motionNodeOf(pose.node);
    bend.weights = pose.weights;
    bend.weights.resize(bend.targets.size());
    if (pose.skin)
        bend.skin = motionSkinOf(fNodes[pose.node], *pose.skin);
    fScene.motion.bends.push_back(std::move(bend));
}

int GltfParser::motionSkinOf(const GltfObject& node, const Skin& skin) {
    const auto [known, isNew] =
        fMotionSkins.try_emplace(node.reference("skin", fSkins.size()), fScene.motion.skins.size());
    if (isNew) {
        Skin& moving = fScene.motion.skins.emplace_back(skin);
        for (int& joint : moving.joints)
            joint = motionNodeOf(static_cast<size_t>(joint));
    }
    return static_cast<int>(known->second);
}

/// Of the primitive that becomes the next mesh.
void GltfParser::noteVariants(const GltfObject& primitive, const std::string& name) {
    if (!primitive.hasExtension(kVariants))
        return;
    const auto mesh = static_cast<int>(fScene.meshes.size());
    try {
        for (const GltfObject& mapping : primitive.extension(kVariants).objects("mappings")) {
            const int material = mapping.reference("material", fScene.materials.size());
            if (material < 0)
                throw ImportError("one has no material");
            for (const int variant : mapping.references("variants", fScene.variants.size()))
                fScene.variants[static_cast<size_t>(variant)].paints.push_back({mesh, material});
        }
    } catch (const ImportError& error) {
        fWarnings.add("variants of " + name, std::string("left out: ") + error.what());
    }
}

std::optional<GltfParser::ReadMesh> GltfParser::readPrimitive(const GltfObject& primitive,
                                                              const std::string& name, const Pose& pose) {
    ReadMesh read;
    Mesh& mesh = read.mesh;
    try {
        mesh.material = primitive.reference("material", fScene.materials.size());
        std::optional<std::vector<std::uint32_t>> triangles = fData.openPrimitive(primitive);
        readAttributes(primitive, name, mesh);
        if (!pose.weights.empty() || fHasMovingWeights[pose.node])
            read.bend.targets = readTargets(mesh, primitive, name, pose);
        if (pose.skin)
            read.bend.influences = readGltfInfluences(primitive.object("attributes"), fData,
                                                      mesh.vertexCount(), pose.skin->joints.size());
        if (triangles)
            mesh.indices = std::move(*triangles);
        else
            spellOut(primitive.whole("mode", kTriangles), indices(primitive, mesh.vertexCount()), mesh);
    } catch (const ImportError& error) {
        fWarnings.add(name, std::string("left out: ") + error.what());
        return std::nullopt;
    }
    if (!makeDrawable(mesh, name, fWarnings))
        return std::nullopt;
    if (!pose.weights.empty() || pose.skin)
        bendOnce(read, pose);
    if (mesh.topology == Topology::Triangles && mesh.normals.empty()) {
        read.bend.isFlat = true;
        followCorners(read.bend, mesh.indices);
        addFlatNormals(mesh);
    }
    dropMissing(read.bend.targets, mesh);
    return read;
}

/// Those that move the mesh, each in its place.
std::vector<MorphTarget> GltfParser::readTargets(const Mesh& mesh, const GltfObject& primitive,
                                                 const std::string& name, const Pose& pose) {
    const auto isWanted = [&](size_t target) {
        return fHasMovingWeights[pose.node] || (target < pose.weights.size() && pose.weights[target] != 0.0);
    };
    std::vector<MorphTarget> targets = readGltfTargets(mesh, primitive, fData, isWanted, name, fWarnings);
    if (pose.weights.size() > targets.size())
        fWarnings.add(name, "has fewer morph targets than weights");
    return targets;
}

/// Does what no animation does anew.
void GltfParser::bendOnce(ReadMesh& read, const Pose& pose) const {
    Bend& left = read.bend;
    dropMissing(left.targets, read.mesh);
    if (!fHasMovingWeights[pose.node]) {
        morph(read.mesh, left.targets, pose.weights);
        left.targets.clear();
    }
    if (pose.skin && !fMoves) {
        bend(read.mesh, left.influences, pose.joints);
        left.influences = {};
    }
    normalize(read.mesh.normals);
}

/// Without positions there is nothing to draw; any other attribute may be left out.
void GltfParser::readAttributes(const GltfObject& primitive, const std::string& name, Mesh& mesh) {
    const GltfObject attributes = primitive.object("attributes");
    mesh.positions = attribute(attributes, "POSITION", 3);
    if (mesh.positions.empty())
        throw ImportError("it has no positions");
    const auto read = [&](const char* key, auto&& reader) {
        try {
            return reader();
        } catch (const ImportError& error) {
            fWarnings.add(std::string(key) + " of " + name, std::string("left out: ") + error.what());
            return std::vector<float>();
        }
    };
    mesh.normals = read("NORMAL", [&] { return attribute(attributes, "NORMAL", 3); });
    if (fScene.materialOf(mesh).usesTangents() || primitive.hasExtension(kVariants))
        mesh.tangents = read("TANGENT", [&] { return attribute(attributes, "TANGENT", 4); });
    mesh.colors = read("COLOR_0", [&] { return colors(attributes); });
    for (std::string key = "TEXCOORD_0"; attributes.has(key.c_str()) && key.back() <= '9'; ++key.back())
        mesh.uvSets.push_back(read(key.c_str(), [&] { return attribute(attributes, key.c_str(), 2); }));
    constexpr size_t kTextureUnits = 8;
    if (mesh.uvSets.size() >= kTextureUnits)
        mesh.tangents.clear();
}

std::vector<float> GltfParser::attribute(const GltfObject& attributes, const char* key, size_t components) {
    const int accessor = attributes.reference(key, fData.accessorCount());
    if (accessor < 0)
        return {};
    if (fData.components(accessor) != components)
        throw ImportError(std::string(key) + " should be VEC" + std::to_string(components));
    return fData.floats(accessor);
}

std::vector<std::uint32_t> GltfParser::indices(const GltfObject& primitive, size_t vertexCount) {
    const int accessor = primitive.reference("indices", fData.accessorCount());
    if (accessor >= 0)
        return fData.indices(accessor);
    std::vector<std::uint32_t> all(vertexCount);
    std::iota(all.begin(), all.end(), 0U);
    return all;
}

/// Always with alpha: the file may leave it out.
std::vector<float> GltfParser::colors(const GltfObject& attributes) {
    const int accessor = attributes.reference("COLOR_0", fData.accessorCount());
    if (accessor < 0 || fData.components(accessor) != 3)
        return attribute(attributes, "COLOR_0", 4);
    const std::vector<float> rgb = fData.floats(accessor);
    std::vector<float> rgba;
    rgba.reserve(rgb.size() / 3 * 4);
    for (size_t i = 0; i < rgb.size(); i += 3)
        rgba.insert(rgba.end(), {rgb[i], rgb[i + 1], rgb[i + 2], 1.0F});
    return rgba;
}

} // namespace

Scene readGltf(std::span<const std::uint8_t> bytes, const ModelFolder& folder, const ProgressReport& report) {
    const GltfContainer container = openGltf(bytes);
    return GltfParser(container, folder, report).read();
}

} // namespace orloview
