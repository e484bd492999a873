#pragma once

#include "draw/Canvas.h"
#include "draw/DrawableScene.h"
#include "draw/ScreenPass.h"
#include "scene/View.h"

#include <memory>

#include <texture/GLTexture2D.h>

namespace orloview {

/// How much of what comes from all round reaches the surfaces of a frame, as their shaders read it
/// (docs/shading-networks.md): found out of the depth of the frame, for what is as near as a tenth of the
/// scene. Needs a GLSession with shader objects for everything but to be made.
class Occlusion {
public:
    explicit Occlusion(double sceneRadius) : fReach(0.2 * sceneRadius) {}
    ~Occlusion();

    Occlusion(const Occlusion&) = delete;
    Occlusion& operator=(const Occlusion&) = delete;

    /// Makes the map, without anything in it. Leaves another target current. Throws Failure (kExitNoGL).
    void prepare();

    /// Finds it out for a view. Leaves another target current. Throws Failure (kExitNoGL).
    void update(DrawableScene& drawable, const View& view);

    /// 0 before `prepare` or the first update.
    GLuint texture() const { return fParts ? fParts->map->textureName() : 0; }

    /// Eye space to the map, 0 to 1.
    const koLinear::ProjMatrix& eyeToMap() const { return fEyeToMap; }

private:
    /// Of the passes' uniforms.
    struct Places {
        explicit Places(const ScreenPass& pass);

        GLint across, up, deep, reach, lens, depth;
    };

    struct Parts {
        Parts();
        ~Parts();

        Canvas canvas;
        GLTexture2D* depth;
        GLTexture2D* map;
        ScreenPass find;
        ScreenPass smooth;
        Places findPlaces;
        Places smoothPlaces;
    };

    void drawDepth(DrawableScene& drawable, const View& view);
    void find(const View& view);
    void smooth();

    double fReach;
    std::unique_ptr<Parts> fParts;
    koLinear::ProjMatrix fEyeToMap;
};

} // namespace orloview
