#pragma once

#include "draw/Particles.h"
#include "scene/Poser.h"
#include "scene/Scene.h"
#include "texture/TextureStore.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <orlohost/ParticleData.h>
#include <particle/GLParticleDrawBase.h>

namespace orloview {

struct FrameLook;

/// Takes in how far particles reach beyond the points that they stand for: tails, copies, corners.
void extendByParticles(Bounds& bounds, const Scene& scene, ParticleKind kind);

/// The points of a scene, drawn as particles. Needs a current context to be made, uploaded, drawn and ended;
/// keeps a reference to the scene, which must outlive it.
class SceneParticles {
public:
    SceneParticles(const Scene& scene, const ParticleOptions& options);
    ~SceneParticles();

    SceneParticles(const SceneParticles&) = delete;
    SceneParticles& operator=(const SceneParticles&) = delete;

    /// Whether an instance's points are drawn here.
    bool draws(size_t instance) const {
        return fScene.meshes[fScene.instances[instance].mesh].topology == Topology::Points;
    }

    /// Makes the textures.
    void upload();

    /// Pictures that were left out, and what the points lack, a line each. Filled by `upload`.
    std::vector<std::string> warnings() const;

    /// Puts the vertices of `mesh` in the place of those of the first points of the scene.
    void replace(const Mesh& mesh);

    /// Follows the scene into another pose.
    void follow(const Moved& moved);

    /// Draws all, farthest first where they shine through. Needs the camera and the lights bound, and no
    /// shader. Leaves GL's own lighting off, blending on, and unit 0 without a texture.
    void draw(const koLinear::AffineMatrix& worldToEye, const FrameLook& look);

private:
    struct Unref {
        void operator()(koSharedObject::SharedObject* object) const { object->unref(); }
    };
    struct Cloud {
        size_t instance;
        koLinear::AffineMatrix toWorld;
        std::unique_ptr<ParticleData, Unref> data;
        std::unique_ptr<GLParticleDrawBase> drawer;
        std::vector<IHWTexture*> textures; ///< of the particles, where they have numbers
        float side = 1.0F;                 ///< of sprites that don't say how large they are
        bool shinesThrough = false;
        std::optional<koLinear::AffineMatrix> sortedFor; ///< the eye that the filter is in order for
    };

    void fill(Cloud& cloud, const Mesh& mesh) const;
    std::unique_ptr<GLParticleDrawBase> makeDrawer(const Cloud& cloud, const std::string& seed) const;
    void pickTextures(Cloud& cloud);
    void makeSpot();
    static void sort(Cloud& cloud, const koLinear::AffineMatrix& worldToEye);
    void turnToEye(Cloud& cloud, const koLinear::AffineMatrix& worldToEye) const;
    void drawPasses(Cloud& cloud, const FrameLook& look);
    void drawCloud(Cloud& cloud, const FrameLook& look);

    const Scene& fScene;
    ParticleOptions fOptions;
    Scene fPictures; ///< holds nothing but the images of sprites
    TextureStore fStore;
    std::vector<GLTexture2D*> fImages; ///< null: can't be read
    std::unique_ptr<GLTexture2D, Unref> fSpot;
    std::vector<Cloud> fClouds;
};

} // namespace orloview
