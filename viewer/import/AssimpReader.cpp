#include "import/AssimpReader.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <exception>
#include <map>
#include <new>
#include <string_view>
#include <utility>

#include <assimp/DefaultIOSystem.h>
#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/importerdesc.h>
#include <assimp/material.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include "base/ImportError.h"
#include "base/Text.h"
#include "import/MeshCheck.h"
#include "import/PictureSearch.h"
#include "import/Warnings.h"
#include "scene/Normals.h"
#include "scene/Vectors.h"

namespace orloview {

namespace {

using koLinear::AffineMatrix;

/// Row vectors here, column vectors there.
AffineMatrix toAffine(const aiMatrix4x4& m) {
    AffineMatrix result;
    for (unsigned row = 0; row < 4; ++row)
        for (unsigned axis = 0; axis < 3; ++axis)
            result[static_cast<int>(row)][axis] = static_cast<double>(m[axis][row]);
    return result;
}

aiMatrix4x4 toWorld(const aiNode* node) {
    aiMatrix4x4 result = node->mTransformation;
    for (node = node->mParent; node != nullptr; node = node->mParent)
        result = node->mTransformation * result;
    return result;
}

/// A frame that looks along `forward` from `place`, as cameras and lights of a scene do.
AffineMatrix lookingAlong(const aiVector3D& place, aiVector3D forward, aiVector3D up) {
    forward.NormalizeSafe();
    aiVector3D right = forward ^ up;
    if (right.SquareLength() < 1e-12F)
        right = forward ^ (std::abs(forward.y) < 0.9F ? aiVector3D(0, 1, 0) : aiVector3D(1, 0, 0));
    right.NormalizeSafe();
    up = right ^ forward;
    AffineMatrix m;
    for (unsigned axis = 0; axis < 3; ++axis) {
        m[0][axis] = static_cast<double>(right[axis]);
        m[1][axis] = static_cast<double>(up[axis]);
        m[2][axis] = static_cast<double>(-forward[axis]);
        m[3][axis] = static_cast<double>(place[axis]);
    }
    return m;
}

/// A name as the file has it: the library names what has none, and parts a node's transform over several.
std::string nameOf(const aiString& name) {
    const std::string whole = name.C_Str();
    return whole == AI_DEFAULT_MATERIAL_NAME ? "" : whole.substr(0, whole.find("_$AssimpFbx$"));
}

koColor::Color toColor(const aiColor4D& c) {
    return {c.r, c.g, c.b, c.a};
}

Wrap wrapOf(aiTextureMapMode mode) {
    switch (mode) {
    case aiTextureMapMode_Clamp:
    case aiTextureMapMode_Decal:
        return Wrap::ClampToEdge;
    case aiTextureMapMode_Mirror:
        return Wrap::MirroredRepeat;
    default:
        return Wrap::Repeat;
    }
}

/// The library turns v upside down and turns about the middle of the picture; here both begin at the top left
/// corner.
void place(TextureUse& use, const aiUVTransform& placed) {
    const float r = -placed.mRotation;
    const float c = std::cos(r);
    const float s = std::sin(r);
    const float x = placed.mScaling.x;
    const float y = placed.mScaling.y;
    use.rotation = r;
    use.scale = {x, y};
    use.offset = {placed.mTranslation.x - x / 2.0F * (1.0F - c + s),
                  y / 2.0F * (s + c - 1.0F) + 1.0F - y - placed.mTranslation.y};
}

/// Whether the alpha of the colour picture is meant to be seen.
bool blendsByPicture(const aiMaterial& source) {
    int flags = 0;
    if (source.Get(AI_MATKEY_TEXFLAGS(aiTextureType_DIFFUSE, 0), flags) == aiReturn_SUCCESS &&
        (flags & aiTextureFlags_UseAlpha) != 0)
        return true;
    aiString color;
    aiString opacity;
    return source.GetTexture(aiTextureType_OPACITY, 0, &opacity) == aiReturn_SUCCESS &&
           source.GetTexture(aiTextureType_DIFFUSE, 0, &color) == aiReturn_SUCCESS && color == opacity;
}

/// The classic gloss, where the file tells of it.
void readPhong(const aiMaterial& source, Material& result) {
    aiColor4D specular;
    float exponent = 0.0F;
    if (source.Get(AI_MATKEY_COLOR_SPECULAR, specular) != aiReturn_SUCCESS)
        return;
    float strength = 1.0F;
    source.Get(AI_MATKEY_SHININESS_STRENGTH, strength);
    result.reflection = Reflection::Phong;
    result.specular = {specular.r * strength, specular.g * strength, specular.b * strength};
    if (source.Get(AI_MATKEY_SHININESS, exponent) == aiReturn_SUCCESS)
        result.phongExponent = std::max(exponent, 1.0F);
}

/// The file of an embedded picture: as it is, or bare pixels with a TGA header before them.
std::vector<std::uint8_t> fileOf(const aiTexture& embedded) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(embedded.pcData);
    if (embedded.mHeight == 0) // mWidth is its length
        return {bytes, bytes + embedded.mWidth};
    const auto low = [](unsigned value) { return static_cast<std::uint8_t>(value & 255U); };
    std::vector<std::uint8_t> file{0,
                                   0,
                                   2,
                                   0,
                                   0,
                                   0,
                                   0,
                                   0,
                                   0,
                                   0,
                                   0,
                                   0, // true colour, not packed
                                   low(embedded.mWidth),
                                   low(embedded.mWidth >> 8),
                                   low(embedded.mHeight),
                                   low(embedded.mHeight >> 8),
                                   32,
                                   0x28}; // from the top left, 8 bits of alpha
    const size_t pixels = size_t{embedded.mWidth} * embedded.mHeight;
    file.insert(file.end(), bytes, bytes + pixels * 4); // blue, green, red, alpha in both
    return file;
}

class Converter {
public:
    Converter(const aiScene& source, const ModelFolder& folder) : fSource(source), fPictures(folder) {}

    Scene convert(const std::string& format) {
        fScene.format = format;
        for (unsigned i = 0; i < fSource.mNumMaterials; ++i)
            addMaterial(*fSource.mMaterials[i]);
        for (unsigned i = 0; i < fSource.mNumMeshes; ++i)
            addMesh(i);
        addAnimations();
        placeNodes();
        addCameras();
        addLights();
        fScene.warnings = fWarnings.lines();
        return std::move(fScene);
    }

private:
    void addMaterial(const aiMaterial& source);
    Material material(const aiMaterial& source);
    TextureUse use(const aiMaterial& source, std::initializer_list<aiTextureType> types);
    int texture(const std::string& name, const aiTextureMapMode* modes);
    Image image(const std::string& name);
    void addMesh(unsigned index);
    void addElements(unsigned index, unsigned width, Topology topology);
    void addAnimations();
    void addTracks(const aiNodeAnim& channel, double ticks, Animation& animation) const;
    int motionNodeOf(const aiString& name) const;
    void addMotionNodes();
    void placeNodes();
    void placeMesh(const aiNode& node, unsigned index, const AffineMatrix& world);
    bool addBends(unsigned index);
    void addFollower(Follower::Kind kind, size_t index, const aiString& node, const AffineMatrix& toNode);
    void addCameras();
    void addLights();

    const aiScene& fSource;
    PictureSearch fPictures;
    Scene fScene;
    Warnings fWarnings;
    std::vector<int> fMaterials; ///< the library's to those of the scene
    std::map<std::string, int> fTextures;
    std::map<unsigned, std::vector<int>> fMeshes; ///< the library's mesh to those of the scene
    std::map<std::string, int> fMotionNodes;      ///< by name; empty where nothing moves
    std::map<unsigned, bool> fIsBent;             ///< the library's mesh, once it is placed
};

/// What the library makes up where a file has none is no material.
void Converter::addMaterial(const aiMaterial& source) {
    aiString name;
    const bool isMadeUp = source.Get(AI_MATKEY_NAME, name) == aiReturn_SUCCESS &&
                          name == aiString(AI_DEFAULT_MATERIAL_NAME) &&
                          source.GetTextureCount(aiTextureType_DIFFUSE) == 0;
    fMaterials.push_back(isMadeUp ? -1 : static_cast<int>(fScene.materials.size()));
    if (!isMadeUp)
        fScene.materials.push_back(material(source));
}

Material Converter::material(const aiMaterial& source) {
    Material result;
    aiString name;
    if (source.Get(AI_MATKEY_NAME, name) == aiReturn_SUCCESS)
        result.name = nameOf(name);
    aiColor4D color;
    if (source.Get(AI_MATKEY_BASE_COLOR, color) == aiReturn_SUCCESS ||
        source.Get(AI_MATKEY_COLOR_DIFFUSE, color) == aiReturn_SUCCESS)
        result.baseColor = toColor(color);
    if (source.Get(AI_MATKEY_COLOR_EMISSIVE, color) == aiReturn_SUCCESS)
        result.emissive = toColor(color);
    float value = 1.0F;
    if (source.Get(AI_MATKEY_OPACITY, value) == aiReturn_SUCCESS && value > 0.0F)
        result.baseColor[3] = value;
    if (result.baseColor[3] < 1.0F)
        result.alphaMode = AlphaMode::Blend;
    if (source.Get(AI_MATKEY_METALLIC_FACTOR, value) == aiReturn_SUCCESS)
        result.metallic = value;
    if (source.Get(AI_MATKEY_ROUGHNESS_FACTOR, value) == aiReturn_SUCCESS)
        result.roughness = value;
    else if (source.Get(AI_MATKEY_SHININESS, value) == aiReturn_SUCCESS && value > 0.0F)
        result.roughness = std::sqrt(2.0F / (value + 2.0F));
    if (source.Get(AI_MATKEY_ROUGHNESS_FACTOR, value) != aiReturn_SUCCESS)
        readPhong(source, result);
    int twoSided = 0;
    result.doubleSided = source.Get(AI_MATKEY_TWOSIDED, twoSided) == aiReturn_SUCCESS && twoSided != 0;
    result.baseColorTexture = use(source, {aiTextureType_BASE_COLOR, aiTextureType_DIFFUSE});
    result.normalTexture = use(source, {aiTextureType_NORMALS});
    result.specularTexture = use(source, {aiTextureType_SPECULAR});
    result.emissiveTexture = use(source, {aiTextureType_EMISSION_COLOR, aiTextureType_EMISSIVE});
    if (blendsByPicture(source))
        result.alphaMode = AlphaMode::Blend;
    return result;
}

TextureUse Converter::use(const aiMaterial& source, std::initializer_list<aiTextureType> types) {
    TextureUse result;
    for (const aiTextureType type : types) {
        aiString path;
        unsigned uvSet = 0;
        aiTextureMapMode modes[3] = {aiTextureMapMode_Wrap, aiTextureMapMode_Wrap, aiTextureMapMode_Wrap};
        if (result.texture >= 0 ||
            source.GetTexture(type, 0, &path, nullptr, &uvSet, nullptr, nullptr, modes) != aiReturn_SUCCESS ||
            path.length == 0)
            continue;
        result.texture = texture(withSlashes(path.C_Str()), modes);
        result.uvSet = static_cast<int>(std::min(uvSet, 7U));
        aiUVTransform placed;
        if (source.Get(AI_MATKEY_UVTRANSFORM(type, 0), placed) == aiReturn_SUCCESS)
            place(result, placed);
    }
    return result;
}

int Converter::texture(const std::string& name, const aiTextureMapMode* modes) {
    const auto [known, isNew] = fTextures.emplace(name, static_cast<int>(fScene.textures.size()));
    if (!isNew)
        return known->second;
    Texture texture;
    texture.name = name;
    texture.image = static_cast<int>(fScene.images.size());
    texture.wrapU = wrapOf(modes[0]);
    texture.wrapV = wrapOf(modes[1]);
    fScene.textures.push_back(std::move(texture));
    fScene.images.push_back(image(name));
    return known->second;
}

Image Converter::image(const std::string& name) {
    Image result;
    result.name = name;
    if (const aiTexture* embedded = fSource.GetEmbeddedTexture(name.c_str())) {
        result.bytes = fileOf(*embedded);
        return result;
    }
    try {
        result.path = fPictures.find(name);
    } catch (const ImportError& error) {
        fWarnings.add("the picture '" + name + "'", std::string("left out: ") + error.what());
    }
    return result;
}

void Converter::addMesh(unsigned index) {
    addElements(index, 1, Topology::Points);
    addElements(index, 2, Topology::Lines);
    addElements(index, 3, Topology::Triangles);
}

/// Faces of this many corners; the library doesn't always part points, lines and triangles.
void Converter::addElements(unsigned index, unsigned width, Topology topology) {
    const aiMesh& source = *fSource.mMeshes[index];
    Mesh mesh;
    mesh.name = nameOf(source.mName);
    mesh.topology = topology;
    mesh.bothSides = true;
    for (unsigned i = 0; i < source.mNumFaces; ++i)
        if (const aiFace& face = source.mFaces[i]; face.mNumIndices == width)
            mesh.indices.insert(mesh.indices.end(), face.mIndices, face.mIndices + width);
    if (mesh.indices.empty() || source.mVertices == nullptr)
        return;
    if (source.mMaterialIndex < fMaterials.size())
        mesh.material = fMaterials[source.mMaterialIndex];
    for (unsigned i = 0; i < source.mNumVertices; ++i) {
        const aiVector3D& p = source.mVertices[i];
        mesh.positions.insert(mesh.positions.end(), {p.x, p.y, p.z});
        if (source.mNormals != nullptr) {
            const aiVector3D& n = source.mNormals[i];
            mesh.normals.insert(mesh.normals.end(), {n.x, n.y, n.z});
        }
        if (const aiColor4D* colors = source.mColors[0]; colors != nullptr)
            mesh.colors.insert(mesh.colors.end(), {colors[i].r, colors[i].g, colors[i].b, colors[i].a});
    }
    for (unsigned set = 0; set < AI_MAX_NUMBER_OF_TEXTURECOORDS && source.HasTextureCoords(set); ++set) {
        std::vector<float>& uvs = mesh.uvSets.emplace_back();
        for (unsigned i = 0; i < source.mNumVertices; ++i) // v runs up in the library
            uvs.insert(uvs.end(), {source.mTextureCoords[set][i].x, 1.0F - source.mTextureCoords[set][i].y});
    }
    const std::string name = mesh.name.empty() ? "the mesh" : "'" + mesh.name + "'";
    if (!makeDrawable(mesh, name, fWarnings))
        return;
    if (topology == Topology::Triangles && mesh.normals.empty())
        addSmoothNormals(mesh);
    fMeshes[index].push_back(static_cast<int>(fScene.meshes.size()));
    fScene.meshes.push_back(std::move(mesh));
}

void Converter::addAnimations() {
    constexpr double kUsualTicks = 25.0; // a second, where the file doesn't say
    if (std::any_of(fSource.mAnimations, fSource.mAnimations + fSource.mNumAnimations,
                    [](const aiAnimation* animation) { return animation->mNumChannels > 0; }))
        addMotionNodes();
    for (unsigned i = 0; i < fSource.mNumAnimations; ++i) {
        const aiAnimation& source = *fSource.mAnimations[i];
        const double ticks = source.mTicksPerSecond > 0.0 ? source.mTicksPerSecond : kUsualTicks;
        Animation& animation = fScene.animations.emplace_back();
        animation.name = nameOf(source.mName);
        animation.seconds = std::isfinite(source.mDuration) ? std::max(source.mDuration / ticks, 0.0) : 0.0;
        for (unsigned k = 0; k < source.mNumChannels; ++k)
            addTracks(*source.mChannels[k], ticks, animation);
        if (source.mNumMorphMeshChannels + source.mNumMeshChannels > 0)
            fWarnings.add("morph targets of the animation '" + animation.name + "'",
                          "not played; their meshes keep their shape");
    }
}

/// Those of a channel that hold together; the library says where others don't.
void Converter::addTracks(const aiNodeAnim& channel, double ticks, Animation& animation) const {
    const int node = motionNodeOf(channel.mNodeName);
    const auto add = [&](Track::Path path, unsigned count, const auto* keys, const auto& numbersOf) {
        Track track;
        track.node = node;
        track.path = path;
        for (unsigned i = 0; i < count; ++i) {
            track.times.push_back(static_cast<float>(keys[i].mTime / ticks));
            const auto numbers = numbersOf(keys[i].mValue);
            track.values.insert(track.values.end(), numbers.begin(), numbers.end());
        }
        if (node >= 0 && isPlayable(track))
            animation.tracks.push_back(std::move(track));
    };
    const auto vector = [](const aiVector3D& v) { return std::array{v.x, v.y, v.z}; };
    add(Track::Path::Translation, channel.mNumPositionKeys, channel.mPositionKeys, vector);
    add(Track::Path::Rotation, channel.mNumRotationKeys, channel.mRotationKeys, [](const aiQuaternion& q) {
        return std::array{q.x, q.y, q.z, q.w};
    });
    add(Track::Path::Scale, channel.mNumScalingKeys, channel.mScalingKeys, vector);
}

/// -1 where there is none, or nothing moves. Of nodes with the same name the library means the first.
int Converter::motionNodeOf(const aiString& name) const {
    const auto known = fMotionNodes.find(name.C_Str());
    return known == fMotionNodes.end() ? -1 : known->second;
}

void Converter::addMotionNodes() {
    std::vector<std::pair<const aiNode*, int>> open{{fSource.mRootNode, -1}};
    while (!open.empty()) {
        const auto [node, parent] = open.back();
        open.pop_back();
        const auto number = static_cast<int>(fScene.motion.nodes.size());
        fMotionNodes.emplace(node->mName.C_Str(), number);
        aiVector3D scale;
        aiVector3D place;
        aiQuaternion turn;
        node->mTransformation.Decompose(scale, turn, place);
        fScene.motion.nodes.push_back(
            {parent,
             {{place.x, place.y, place.z}, {turn.x, turn.y, turn.z, turn.w}, {scale.x, scale.y, scale.z}},
             toAffine(node->mTransformation)});
        for (unsigned i = node->mNumChildren; i-- > 0;)
            open.emplace_back(node->mChildren[i], number);
    }
}

void Converter::addFollower(Follower::Kind kind, size_t index, const aiString& node,
                            const AffineMatrix& toNode) {
    if (const int number = motionNodeOf(node); number >= 0)
        fScene.motion.followers.push_back({kind, static_cast<int>(index), number, toNode});
}

void Converter::placeNodes() {
    struct Open {
        const aiNode* node;
        aiMatrix4x4 parent;
        int treeParent;
    };
    std::vector<Open> open{{fSource.mRootNode, aiMatrix4x4(), -1}};
    while (!open.empty()) {
        const auto [node, parent, treeParent] = open.back();
        open.pop_back();
        const auto treeNode = static_cast<int>(fScene.tree.size());
        fScene.tree.push_back({nameOf(node->mName), treeParent});
        const aiMatrix4x4 transform = parent * node->mTransformation;
        const AffineMatrix world = toAffine(transform);
        const bool finite = isFinite(world);
        if (!finite)
            fWarnings.add("the node '" + nameOf(node->mName) + "'", "left out: its transform is not finite");
        for (unsigned i = 0; finite && i < node->mNumMeshes; ++i)
            placeMesh(*node, node->mMeshes[i], world);
        for (unsigned i = node->mNumChildren; i-- > 0;)
            open.push_back({node->mChildren[i], transform, treeNode});
    }
}

/// Where nothing moves, a mesh with bones stands as it was tied to them.
void Converter::placeMesh(const aiNode& node, unsigned index, const AffineMatrix& world) {
    const auto [known, isNew] = fIsBent.try_emplace(index, false);
    if (isNew && !fMotionNodes.empty() && fSource.mMeshes[index]->mNumBones > 0)
        known->second = addBends(index);
    for (const int mesh : fMeshes[index]) {
        if (!known->second)
            addFollower(Follower::Kind::Instance, fScene.instances.size(), node.mName, {});
        fScene.instances.push_back({nameOf(node.mName), mesh, known->second ? AffineMatrix() : world});
    }
}

/// Lets the meshes of one of the library's follow its bones. False where they are not all in the scene.
bool Converter::addBends(unsigned index) {
    const aiMesh& source = *fSource.mMeshes[index];
    Skin skin;
    std::vector<std::vector<Influences::One>> byVertex(source.mNumVertices);
    for (unsigned i = 0; i < source.mNumBones; ++i) {
        const aiBone& bone = *source.mBones[i];
        skin.joints.push_back(motionNodeOf(bone.mName));
        skin.fromMesh.push_back(toAffine(bone.mOffsetMatrix));
        if (skin.joints.back() < 0 || !isFinite(skin.fromMesh.back())) {
            fWarnings.add("the bones of '" + nameOf(source.mName) + "'", "left out: one is not in the scene");
            return false;
        }
        for (unsigned k = 0; k < bone.mNumWeights; ++k)
            if (const aiVertexWeight& weight = bone.mWeights[k];
                weight.mVertexId < source.mNumVertices && weight.mWeight > 0.0F && weight.mWeight <= 1e6F)
                byVertex[weight.mVertexId].push_back({i, weight.mWeight});
    }
    Influences influences;
    influences.begin.push_back(0);
    for (const std::vector<Influences::One>& vertex : byVertex) {
        float total = 0.0F;
        for (const Influences::One& one : vertex)
            total += one.share;
        for (const Influences::One& one : vertex)
            influences.all.push_back({one.joint, one.share / total});
        influences.begin.push_back(static_cast<std::uint32_t>(influences.all.size()));
    }
    for (const int mesh : fMeshes[index]) {
        Bend& bend = fScene.motion.bends.emplace_back();
        bend.mesh = mesh;
        bend.node = 0;
        bend.skin = static_cast<int>(fScene.motion.skins.size());
        bend.influences = influences;
    }
    fScene.motion.skins.push_back(std::move(skin));
    return true;
}

void Converter::addCameras() {
    for (unsigned i = 0; i < fSource.mNumCameras; ++i) {
        const aiCamera& source = *fSource.mCameras[i];
        Camera camera;
        camera.name = nameOf(source.mName);
        camera.aspect = static_cast<double>(source.mAspect);
        camera.zNear = static_cast<double>(source.mClipPlaneNear);
        camera.zFar = static_cast<double>(source.mClipPlaneFar);
        if (source.mOrthographicWidth > 0.0F) {
            camera.kind = Camera::Kind::Orthographic;
            camera.xmag = static_cast<double>(source.mOrthographicWidth);
            camera.ymag = camera.aspect > 0.0 ? camera.xmag / camera.aspect : camera.xmag;
        } else {
            const double across = std::tan(static_cast<double>(source.mHorizontalFOV) / 2.0);
            camera.yfov = 2.0 * std::atan(camera.aspect > 0.0 ? across / camera.aspect : across);
        }
        const AffineMatrix own = lookingAlong(source.mPosition, source.mLookAt, source.mUp);
        const aiNode* node = fSource.mRootNode->FindNode(source.mName);
        camera.toWorld = node != nullptr ? own.then(toAffine(toWorld(node))) : own;
        addFollower(Follower::Kind::Camera, fScene.cameras.size(), source.mName, own);
        fScene.cameras.push_back(std::move(camera));
    }
}

void Converter::addLights() {
    for (unsigned i = 0; i < fSource.mNumLights; ++i) {
        const aiLight& source = *fSource.mLights[i];
        Light light;
        light.name = nameOf(source.mName);
        if (source.mType == aiLightSource_DIRECTIONAL)
            light.kind = Light::Kind::Directional;
        else if (source.mType == aiLightSource_SPOT)
            light.kind = Light::Kind::Spot;
        else if (source.mType == aiLightSource_AMBIENT)
            light.kind = Light::Kind::Ambient;
        else if (source.mType != aiLightSource_POINT) {
            fWarnings.add("the light '" + light.name + "'",
                          "left out: only directional, point, spot and ambient lights are drawn");
            continue;
        }
        const bool isAmbient = light.kind == Light::Kind::Ambient;
        const aiColor3D& c = isAmbient ? source.mColorAmbient : source.mColorDiffuse;
        light.color = koColor::Color(c.r, c.g, c.b);
        light.innerConeAngle = static_cast<double>(source.mAngleInnerCone) / 2.0;
        light.outerConeAngle = static_cast<double>(source.mAngleOuterCone) / 2.0;
        const AffineMatrix own = lookingAlong(source.mPosition, source.mDirection, source.mUp);
        const aiNode* node = fSource.mRootNode->FindNode(source.mName);
        light.toWorld = node != nullptr ? own.then(toAffine(toWorld(node))) : own;
        addFollower(Follower::Kind::Light, fScene.lights.size(), source.mName, own);
        fScene.lights.push_back(std::move(light));
    }
}

/// Opens what the model may name, for the library.
class LibraryFiles : public Assimp::DefaultIOSystem {
public:
    LibraryFiles(std::filesystem::path model, const ModelFolder& folder)
        : fModel(std::move(model)), fFolder(folder) {}

    Assimp::IOStream* Open(const char* file, const char* mode) override {
        const bool isModel = fModel == file;
        std::vector<std::string>& told = isModel || fFolder.allows(file) ? fRead : fRefused;
        told.emplace_back(file);
        return &told == &fRead ? DefaultIOSystem::Open(file, mode) : nullptr;
    }

    /// The library opens no file that it doesn't find. What is there and kept from this process it would not
    /// find.
    bool Exists(const char* file) const override {
        errno = 0;
        const bool isThere = DefaultIOSystem::Exists(file);
        if (!isThere && errno == EACCES && !fFolder.allows(file))
            fRefused.emplace_back(file);
        return isThere;
    }

    const std::vector<std::string>& read() const { return fRead; }
    const std::vector<std::string>& refused() const { return fRefused; }

private:
    std::filesystem::path fModel;
    const ModelFolder& fFolder;
    std::vector<std::string> fRead;
    mutable std::vector<std::string> fRefused;
};

constexpr unsigned kPostprocess = aiProcess_Triangulate;

/// The library's own words where they help: the first line without the tags it puts in front.
std::string reasonOf(const Assimp::Importer& importer) {
    std::string_view message = importer.GetErrorString();
    message = takeLine(message);
    constexpr std::array kInternal{"xception", ".cpp",         "std::",      "$$$",
                                   "mporter",  "StreamReader", "Compression"};
    const bool isInternal = std::any_of(kInternal.begin(), kInternal.end(), [message](const char* word) {
        return message.find(word) != message.npos;
    });
    if (message.empty() || isInternal)
        return "the file is damaged; export the model again";
    return "the import library says '" + std::string(message.substr(0, 160)) + "'; export the model again";
}

/// The library catches what ends it. Its words are no help: they may be the file's.
void throwIfOutOfMemory(const Assimp::Importer& importer) {
    try {
        if (importer.GetException())
            std::rethrow_exception(importer.GetException());
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) { // told as a damaged file
    }
}

/// The library draws the bones of a file without meshes. Where it took something else for a file of its
/// kinds, these are a root and a name.
bool isBareRoot(const aiScene& scene) {
    const aiNode& root = *scene.mRootNode;
    aiString name;
    return (root.mNumChildren == 0 || (root.mNumChildren == 1 && root.mChildren[0]->mNumChildren == 0)) &&
           scene.mNumMaterials == 1 && scene.mMaterials[0]->Get(AI_MATKEY_NAME, name) == aiReturn_SUCCESS &&
           name == aiString("SkeletonMaterial");
}

Scene convert(const Assimp::Importer& importer, const aiScene* source, const ModelFolder& folder,
              const std::string& format) {
    if (source != nullptr && source->mRootNode != nullptr)
        return isBareRoot(*source) ? Scene() : Converter(*source, folder).convert(format);
    throwIfOutOfMemory(importer);
    throw ImportError(reasonOf(importer));
}

void withoutDot(std::string& suffix) {
    suffix.erase(0, suffix.starts_with('.') ? 1 : 0);
    std::transform(suffix.begin(), suffix.end(), suffix.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
}

} // namespace

Scene readStl(std::span<const std::uint8_t> bytes) {
    Assimp::Importer importer;
    const aiScene* source = importer.ReadFileFromMemory(bytes.data(), bytes.size(), kPostprocess, "stl");
    Scene scene = convert(importer, source, ModelFolder({}), "STL");
    for (Mesh& mesh : scene.meshes)
        addFlatNormals(mesh); // those of the file are often zero or point inwards
    return scene;
}

namespace {

/// `read` has the library read the model, whose name says what and where it is.
template <typename Read>
Scene readBy(const std::filesystem::path& path, const ModelFolder& folder, const Read& read) {
    Assimp::Importer importer;
    auto* const files = new LibraryFiles(path, folder);
    importer.SetIOHandler(files); // which ends it
    const aiScene* source = read(importer);
    if ((source == nullptr || isBareRoot(*source)) && !files->refused().empty())
        throw ImportError("the file '" + files->refused().front() +
                          "', which it names: " + ModelFolder::kOutside);
    std::string format = path.extension().string();
    withoutDot(format);
    Scene scene = convert(importer, source, folder, format.empty() ? "model" : format);
    scene.files = files->read();
    for (const std::string& file : files->refused())
        scene.warnings.push_back(
            printable("the file '" + file + "': left out: " + ModelFolder::kOutside, 300));
    return scene;
}

} // namespace

Scene readByLibrary(const std::filesystem::path& path, const ModelFolder& folder) {
    return readBy(path, folder,
                  [&](Assimp::Importer& importer) { return importer.ReadFile(path.string(), kPostprocess); });
}

Scene readByLibrary(std::span<const std::uint8_t> bytes, const std::filesystem::path& name,
                    const ModelFolder& folder) {
    return readBy(name, folder, [&](Assimp::Importer& importer) {
        const std::string suffix = name.extension().string();
        return importer.ReadFileFromMemory(bytes.data(), bytes.size(), kPostprocess,
                                           suffix.empty() ? "" : suffix.c_str() + 1);
    });
}

std::vector<LibraryFormat> libraryFormats() {
    const Assimp::Importer importer;
    std::vector<LibraryFormat> formats;
    for (size_t i = 0; i < importer.GetImporterCount(); ++i) {
        const aiImporterDesc& told = *importer.GetImporterInfo(i);
        LibraryFormat& format = formats.emplace_back();
        format.name = told.mName;
        for (const std::string_view word : {" Importer", " Reader"})
            if (const size_t at = format.name.find(word); at != format.name.npos)
                format.name.erase(at, word.size());
        std::string_view suffixes = told.mFileExtensions;
        for (std::string_view suffix = takeWord(suffixes); !suffix.empty(); suffix = takeWord(suffixes))
            format.suffixes.push_back("." + std::string(suffix));
    }
    return formats;
}

bool libraryReads(const std::string& suffix) {
    return !suffix.empty() && Assimp::Importer().IsExtensionSupported(suffix);
}

} // namespace orloview
