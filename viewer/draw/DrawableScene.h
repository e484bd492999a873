#pragma once

#include "ProgressReport.h"
#include "scene/Scene.h"

#include <memory>
#include <vector>

#include <geometry/GLRouting.h>
#include <orlohost/GeometryData.h>

namespace orloview {

/// A scene made ready for the library: a geometry group per mesh, uploaded by `upload`, or by the first frame
/// that draws it, and kept in buffer objects. Needs a current context of the share group to draw and to be
/// destroyed; keeps a reference to the scene, which must outlive it.
class DrawableScene {
public:
    explicit DrawableScene(const Scene& scene, const ProgressReport& report = {});
    ~DrawableScene();

    DrawableScene(const DrawableScene&) = delete;
    DrawableScene& operator=(const DrawableScene&) = delete;

    const Scene& scene() const { return fScene; }

    /// Uploads what a first frame would. Needs a current context.
    void upload(const ProgressReport& report);

    /// Instances whose material is drawn with all it covers hidden, in the order of the file, and those that
    /// let it shine through.
    const std::vector<size_t>& opaqueInstances() const { return fOpaque; }
    const std::vector<size_t>& blendedInstances() const { return fBlended; }

    const Material& materialOf(size_t instance) const;

    /// The middle of what the instance draws, in world space.
    koLinear::Point centerOf(size_t instance) const { return fCenters[instance]; }

    /// Whether lighting makes sense for it: it has normals, and its material asks for light.
    bool isLit(size_t instance) const;

    /// Whether its triangles are seen from behind too: the material or the file says so.
    bool isDoubleSided(size_t instance) const;

    /// Draws an instance's mesh in its own space, with whatever matrices and material are set.
    void drawMesh(size_t instance);

private:
    struct Drawable {
        GeometryLogicalGroup group;
        std::vector<float> colors;         ///< vertex colours times base colour, where the mesh has any
        std::unique_ptr<GLObject> indices; ///< of points and lines, made when first needed
        bool indicesTried = false;
    };

    std::unique_ptr<Drawable> makeDrawable(const Mesh& mesh) const;
    static void uploadIndices(const Mesh& mesh, Drawable& drawable);
    void drawPointsOrLines(const Mesh& mesh, Drawable& drawable);

    const Scene& fScene;
    GLRouting fRouting;
    std::vector<std::unique_ptr<Drawable>> fDrawables; ///< as Scene::meshes
    std::vector<size_t> fOpaque;
    std::vector<size_t> fBlended;
    std::vector<koLinear::Point> fCenters;
};

/// A material's colour as a frame stores it: alpha 1 unless it blends, and red, green, blue multiplied by it.
koColor::Color storedColor(const Material& material, const koColor::Color& color);

} // namespace orloview
