#pragma once

#include "base/ProgressReport.h"
#include "draw/BlendedElements.h"
#include "draw/Shading.h"
#include "scene/Poser.h"
#include "scene/Scene.h"
#include "scene/Tangents.h"
#include "texture/SceneTextures.h"

#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <geometry/GLRouting.h>
#include <orlohost/GeometryData.h>

namespace orloview {

/// A scene made ready for the library: a geometry group per mesh, uploaded by `upload`, or by the first frame
/// that draws it, and kept in buffer objects; textures, which only `upload` makes. Needs a current context of
/// the share group to be made, to draw and to be destroyed; keeps a reference to the scene, which must
/// outlive it.
class DrawableScene {
public:
    /// What GL's own functions have no use for, and shaders of the user's among them have.
    enum class Extras : std::uint8_t { Nothing, NormalMaps, NormalMapsAndTangents };

    explicit DrawableScene(const Scene& scene, Shading shading = Shading::Fixed,
                           const ProgressReport& report = {}, Extras extras = Extras::Nothing);
    ~DrawableScene();

    DrawableScene(const DrawableScene&) = delete;
    DrawableScene& operator=(const DrawableScene&) = delete;

    const Scene& scene() const { return fScene; }

    /// Uploads what a first frame would, and the textures.
    void upload(const ProgressReport& report);

    /// Follows the scene into another pose: uploads what has changed of meshes that are uploaded.
    void follow(const Moved& moved);

    /// Pictures that were left out or reduced, a line each. Filled by `upload`.
    std::vector<std::string> warnings() const;

    /// Instances whose material is drawn with all it covers hidden, in the order of the file.
    const std::vector<size_t>& opaqueInstances() const { return fOpaque; }

    /// What shines through, in the order to draw it.
    const std::vector<BlendedElements::Run>& farthestFirst(const koLinear::AffineMatrix& worldToEye) {
        return fBlended->farthestFirst(worldToEye);
    }

    const Material& materialOf(size_t instance) const;

    /// What the material lays over it: null for no layer, and where the mesh lacks the texture coordinates.
    const TextureLayer* baseLayerOf(size_t instance) const;
    const TextureLayer* emissionLayerOf(size_t instance) const;
    const TextureLayer* normalLayerOf(size_t instance) const;

    /// Whether lighting makes sense for it: it has normals, and its material asks for light.
    bool isLit(size_t instance) const;

    /// Whether its triangles are seen from behind too: the material or the file says so.
    bool isDoubleSided(size_t instance) const;

    /// Whether any instance is drawn whose colours are meant as they are.
    bool hasUnlit() const { return fHasUnlit; }

    /// Whether any instance's material lets see what stands behind it.
    bool hasClear() const;

    /// For drivers that keep every triangle of a frame in memory until they are asked for it: lets them draw
    /// after each few thousand.
    void drawInPieces(bool inPieces) { fIndicesAtOnce = inPieces ? kPiece : kAll; }

    /// Draws an instance's mesh in its own space, with whatever matrices and material are set.
    void drawMesh(size_t instance);

    /// The same without colours and texture coordinates.
    void drawShape(size_t instance);

    /// Part of a mesh.
    void drawRun(const BlendedElements::Run& run);

    /// The texture coordinates that shaders of materials find tangents in.
    static constexpr int kTangentUnit = 7;

    /// The same of the extra ones, and of binormals.
    static constexpr int kExtraTangentUnit = 6;
    static constexpr int kExtraBinormalUnit = 7;

private:
    static constexpr size_t kMostUvSets = 8;

    struct Drawable {
        GeometryLogicalGroup group;
        std::array<int, kMostUvSets> uvStreams; ///< by texture unit; -1: none
        bool hasNormals = false;
        bool hasColors = false;
        bool hasTangents = false;
        Tangents extras;                   ///< without any: none
        std::vector<float> colors;         ///< vertex colours times base colour, for GL's own functions
        std::unique_ptr<GLObject> indices; ///< of points and lines, made when first needed
        bool indicesTried = false;
    };

    std::unique_ptr<Drawable> makeDrawable(const Mesh& mesh) const;
    void setColors(const Mesh& mesh, Drawable& drawable) const;
    void sortBlended();
    void addUvStreams(const Mesh& mesh, Drawable& drawable) const;
    const Mesh& meshOf(size_t instance) const { return fScene.meshes[fScene.instances[instance].mesh]; }
    Drawable& drawableOf(size_t instance) { return *fDrawables[fScene.instances[instance].mesh]; }
    void route(const Drawable& drawable);
    void routeTangents(int unit, int stream);
    static void uploadIndices(const Mesh& mesh, Drawable& drawable);
    void drawRouted(size_t instance);
    void drawElements(const Mesh& mesh, size_t count, const void* indices);
    void noteDrawn(size_t indices);

    static constexpr size_t kAll = std::numeric_limits<size_t>::max();
    static constexpr size_t kPiece = 9000; ///< whole triangles and whole lines
    static constexpr size_t kPiecesAtOnce = 4;

    const Scene& fScene;
    const bool fHasExtraTangents;
    std::unique_ptr<SceneTextures> fTextures; ///< for GL's own functions
    GLRouting fRouting;
    std::vector<std::unique_ptr<Drawable>> fDrawables; ///< as Scene::meshes
    std::vector<size_t> fOpaque;
    std::vector<size_t> fBlendedInstances;
    bool fHasUnlit = false;
    size_t fIndicesAtOnce = kAll;
    size_t fDrawnOfPiece = 0; ///< indices
    size_t fPieces = 0;       ///< that the driver was told to draw
    std::unique_ptr<BlendedElements> fBlended;
};

/// A material's colour as a frame stores it: alpha 1 unless it blends, and red, green, blue multiplied by it.
koColor::Color storedColor(const Material& material, const koColor::Color& color);

} // namespace orloview
