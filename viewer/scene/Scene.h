#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <orlohost/koColor.h>
#include <orlohost/koLinear.h>

#include "scene/Motion.h"

/// What a model file holds, as plain data: no GL, no window, no import library's types.
///
/// The importers fill a Scene, a Poser moves what of it moves, the drawing half only reads it. References
/// from one vector into another and the indices of a mesh are checked before an importer hands the scene
/// over; a reader may rely on them. -1 means "none". Colours are linear.
namespace orloview {

/// Strips, fans and loops of a file are already spelled out: two indices a line, three a triangle.
enum class Topology : std::uint8_t { Points, Lines, Triangles };

/// What is known of points as particles, for each vertex; empty where the file doesn't say.
struct ParticleValues {
    std::vector<float> velocities;            ///< x, y, z, per second
    std::array<std::vector<float>, 4> values; ///< by kParticleValueNames
};

/// Degrees; the number of a picture; of sprites, in the mesh's units.
inline constexpr std::array kParticleValueNames = {"twist", "textureNumber", "scaleX", "scaleY"};

/// One primitive of the file: vertices of one kind with one material. Every attribute that is present has a
/// value for each vertex. Triangles face the side from which they turn counter-clockwise.
struct Mesh {
    std::string name;
    Topology topology = Topology::Triangles;
    std::vector<float> positions; ///< x, y, z
    std::vector<float> normals;   ///< x, y, z of unit length; empty for points, lines without them
    std::vector<float> colors;    ///< r, g, b, a; empty where the file has none

    /// x, y, z along u of the normal map, then 1 or -1, by which the normal across that is multiplied; empty
    /// where the file has none, or nothing that uses them, or so many uvSets that the last texture unit is
    /// taken.
    std::vector<float> tangents;

    /// u and v each, v running down the picture (its top row is v = 0); a set may be empty.
    std::vector<std::vector<float>> uvSets;

    ParticleValues particles;

    /// Never empty, also where the file has none.
    std::vector<std::uint32_t> indices;

    /// Into Scene::materials; -1: plain, grey without colours.
    int material = -1;

    /// The format doesn't say which side is outside: show both, whatever the material.
    bool bothSides = false;

    size_t vertexCount() const { return positions.size() / 3; }
    /// Points, lines or triangles, as the topology says.
    size_t elementCount() const;
};

/// A mesh in its place. The same mesh may stand in many places. Where toWorld.determinant() is negative the
/// map turns triangles inside out, and the drawing half swaps which side is the front.
struct Instance {
    std::string nodeName;
    int mesh = -1;
    koLinear::AffineMatrix toWorld;
};

/// For people: how the file orders its parts.
struct TreeNode {
    std::string name;
    int parent = -1; ///< stands before it in the list, and its children right behind it
};

enum class Wrap : std::uint8_t { Repeat, MirroredRepeat, ClampToEdge };
enum class Filter : std::uint8_t {
    Nearest,
    Linear,
    NearestMipmapNearest,
    LinearMipmapNearest,
    NearestMipmapLinear,
    LinearMipmapLinear
};

/// A picture of the model, recorded but not decoded. Both path and bytes are empty where it could not be
/// found.
struct Image {
    std::string name;
    std::string path;                ///< of the picture's file, where it has one of its own
    std::vector<std::uint8_t> bytes; ///< the picture's file, where it is embedded
    std::string model{};             ///< the model that names it, for messages; set by who reads several
};

/// A picture and the way to sample it.
struct Texture {
    std::string name;
    int image = -1; ///< into Scene::images
    Wrap wrapU = Wrap::Repeat;
    Wrap wrapV = Wrap::Repeat;
    Filter minFilter = Filter::LinearMipmapLinear;
    Filter magFilter = Filter::Linear;
};

/// How a material uses a texture. uv' = rotate(uv * scale, rotation) + offset, as KHR_texture_transform says.
struct TextureUse {
    int texture = -1;      ///< into Scene::textures
    int uvSet = 0;         ///< into Mesh::uvSets; a mesh need not have that many
    float strength = 1.0F; ///< normal scale or occlusion strength; 1 for the others
    float rotation = 0.0F; ///< radians
    std::array<float, 2> offset{0.0F, 0.0F};
    std::array<float, 2> scale{1.0F, 1.0F};
};

enum class AlphaMode : std::uint8_t { Opaque, Mask, Blend };

/// Of surfaces that have neither a material nor colours: white would leave no room for light and shade.
inline const koColor::Color kPlainColor{0.5F, 0.5F, 0.5F, 1.0F};

/// How a surface reflects light.
enum class Reflection : std::uint8_t {
    MetallicRoughness,
    SpecularGlossiness, ///< baseColor is the diffuse colour, glossiness is 1 - roughness
    Phong               ///< baseColor is the diffuse colour
};

struct Material {
    std::string name;
    Reflection reflection = Reflection::MetallicRoughness;
    koColor::Color baseColor{1.0F, 1.0F, 1.0F, 1.0F};
    koColor::Color emissive;
    float metallic = 0.0F;
    float roughness = 1.0F;
    koColor::Color specular{1.0F, 1.0F, 1.0F}; ///< of the other two
    float phongExponent = 1.0F;
    float clearcoat = 0.0F;
    float clearcoatRoughness = 0.0F;

    // What metallic-roughness may have beside.
    float ior = 1.5F;
    float specularWeight = 1.0F;
    koColor::Color specularTint{1.0F, 1.0F, 1.0F};
    koColor::Color sheen;
    float sheenRoughness = 0.0F;
    float anisotropy = 0.0F;
    float anisotropyRotation = 0.0F; ///< radians
    float iridescence = 0.0F;
    float iridescenceIor = 1.3F;
    float thinnestFilm = 100.0F; ///< nm
    float thickestFilm = 400.0F;
    float transmission = 0.0F;
    float diffuseTransmission = 0.0F;
    koColor::Color diffuseTransmissionColor{1.0F, 1.0F, 1.0F};
    float thickness = 0.0F; ///< in the units of its mesh; 0: only a skin
    koColor::Color attenuationColor{1.0F, 1.0F, 1.0F};
    float attenuationDistance = 0.0F; ///< in the units of its mesh; 0: nothing is lost
    float dispersion = 0.0F;

    bool doubleSided = false;
    bool unlit = false;
    AlphaMode alphaMode = AlphaMode::Opaque;
    float alphaCutoff = 0.5F;
    TextureUse baseColorTexture;
    TextureUse metallicRoughnessTexture;
    TextureUse normalTexture;
    TextureUse occlusionTexture;
    TextureUse emissiveTexture;
    TextureUse specularTexture; ///< its alpha is the glossiness
    TextureUse clearcoatTexture;
    TextureUse clearcoatRoughnessTexture;
    TextureUse clearcoatNormalTexture;
    TextureUse specularWeightTexture;
    TextureUse specularTintTexture;
    TextureUse sheenTexture;
    TextureUse sheenRoughnessTexture;
    TextureUse anisotropyTexture;
    TextureUse iridescenceTexture;
    TextureUse filmTexture;
    TextureUse transmissionTexture;
    TextureUse diffuseTransmissionTexture;
    TextureUse diffuseTransmissionColorTexture;
    TextureUse thicknessTexture;

    /// Whether what stands behind is seen through it, by other means than its opacity.
    bool isClear() const {
        return transmission > 0.0F && !unlit && reflection == Reflection::MetallicRoughness;
    }

    bool usesTangents() const {
        return normalTexture.texture >= 0 || clearcoatNormalTexture.texture >= 0 || anisotropy > 0.0F;
    }
};

/// All the uses that a material makes of textures.
inline constexpr std::array kTextureUses = {&Material::baseColorTexture,
                                            &Material::metallicRoughnessTexture,
                                            &Material::normalTexture,
                                            &Material::occlusionTexture,
                                            &Material::emissiveTexture,
                                            &Material::specularTexture,
                                            &Material::clearcoatTexture,
                                            &Material::clearcoatRoughnessTexture,
                                            &Material::clearcoatNormalTexture,
                                            &Material::specularWeightTexture,
                                            &Material::specularTintTexture,
                                            &Material::sheenTexture,
                                            &Material::sheenRoughnessTexture,
                                            &Material::anisotropyTexture,
                                            &Material::iridescenceTexture,
                                            &Material::filmTexture,
                                            &Material::transmissionTexture,
                                            &Material::diffuseTransmissionTexture,
                                            &Material::diffuseTransmissionColorTexture,
                                            &Material::thicknessTexture};

/// Another set of materials for some of the meshes.
struct Variant {
    struct Paint {
        int mesh = -1;
        int material = -1;
    };

    std::string name;
    std::vector<Paint> paints;
};

/// Looks along -z of its own space, y up. toWorld carries no scale that matters to the view.
struct Camera {
    enum class Kind : std::uint8_t { Perspective, Orthographic };

    std::string name;
    Kind kind = Kind::Perspective;
    double yfov = 0.0;   ///< perspective: the whole vertical angle, radians
    double aspect = 0.0; ///< perspective: width by height; 0: that of the picture
    double xmag = 0.0;   ///< orthographic: half the width
    double ymag = 0.0;   ///< orthographic: half the height
    double zNear = 0.0;
    double zFar = std::numeric_limits<double>::infinity(); ///< infinity: no far plane
    koLinear::AffineMatrix toWorld;
};

/// Shines along -z of its own space; an ambient light from everywhere.
struct Light {
    enum class Kind : std::uint8_t { Directional, Point, Spot, Ambient };

    std::string name;
    Kind kind = Kind::Point;
    koColor::Color color{1.0F, 1.0F, 1.0F, 1.0F};
    double intensity = 1.0; ///< candela; lux for a light without a place
    double range = std::numeric_limits<double>::infinity();
    double innerConeAngle = 0.0; ///< radians from the axis
    double outerConeAngle = 0.7853981633974483;
    koLinear::AffineMatrix toWorld;
};

/// An axis-aligned box. Empty (min above max) until something is in it.
struct Bounds {
    koLinear::Point min{std::numeric_limits<double>::max(), std::numeric_limits<double>::max(),
                        std::numeric_limits<double>::max()};
    koLinear::Point max{std::numeric_limits<double>::lowest(), std::numeric_limits<double>::lowest(),
                        std::numeric_limits<double>::lowest()};

    bool empty() const { return min[0] > max[0]; }
    /// Takes the point in; one that is not finite is passed over.
    void extend(const koLinear::Point& p);
    /// Takes in a box that is mapped so.
    void extend(const Bounds& box, const koLinear::AffineMatrix& map);
};

struct Scene {
    std::string format; ///< for people: "glTF 2.0 binary", "OBJ"
    std::vector<Mesh> meshes;
    std::vector<Instance> instances;
    std::vector<TreeNode> tree; ///< empty where the file has none
    std::vector<Material> materials;
    std::vector<Variant> variants; ///< none is shown until it is asked for
    std::vector<Image> images;
    std::vector<Texture> textures;
    std::vector<Animation> animations;
    std::vector<Camera> cameras;
    std::vector<Light> lights;
    Motion motion;                     ///< what the animations move; empty where there are none
    std::vector<std::string> files;    ///< what lies beside the model and was read too, pictures apart
    std::vector<std::string> warnings; ///< each names something of the input that was left out

    /// A plain one where the mesh has none.
    const Material& materialOf(const Mesh& mesh) const;

    /// Whether the mesh has tangents and its material asks for them.
    bool showsTangents(const Mesh& mesh) const {
        return !mesh.tangents.empty() && materialOf(mesh).usesTangents();
    }

    /// Around every vertex that an instance draws, in world space, as they were when that was first asked or
    /// last measured.
    const Bounds& bounds() const;
    void measure();
    /// Elements of this kind over all instances.
    size_t count(Topology topology) const;
    /// Gives meshes the materials of all variants of this name. False where there is none.
    bool show(const std::string& variant);
    /// Takes another scene in beside what is here, and renumbers its references.
    void append(Scene other);

private:
    void renumberMotion(Scene& other) const;

    mutable std::optional<Bounds> fBounds;
};

/// The vertices that the instances of a scene draw, for whoever walks over all of them. The scene has to
/// stay.
class DrawnVertices {
public:
    explicit DrawnVertices(const Scene& scene);

    /// Hands over each vertex of each instance once, however many elements share it, in world space.
    template <typename Visit>
    void visit(const Visit& visit) const {
        for (size_t instance = 0; instance < fScene.instances.size(); ++instance)
            this->visit(instance, visit);
    }

    /// The same of one instance.
    template <typename Visit>
    void visit(size_t instance, const Visit& visit) const {
        const koLinear::AffineMatrix m = fScene.instances[instance].toWorld;
        const auto placed = [&m](const float* p, int axis) { // what the matrix does, where it can be inlined
            return p[0] * m[0][axis] + p[1] * m[1][axis] + p[2] * m[2][axis] + m[3][axis];
        };
        const auto mesh = static_cast<size_t>(fScene.instances[instance].mesh);
        const float* p = fScene.meshes[mesh].positions.data();
        for (const char isDrawn : fDrawn[mesh]) {
            if (isDrawn)
                visit(koLinear::Point(placed(p, 0), placed(p, 1), placed(p, 2)));
            p += 3;
        }
    }

private:
    const Scene& fScene;
    std::vector<std::vector<char>> fDrawn; ///< of each mesh, whether any element uses the vertex
};

} // namespace orloview
