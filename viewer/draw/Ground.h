#pragma once

#include "draw/Canvas.h"
#include "draw/DrawableScene.h"
#include "scene/Guides.h"

#include <memory>
#include <vector>

#include <texture/GLTexture2D.h>

namespace orloview {

/// The ground that a scene stands on: nothing but the shade that it gets from what stands close above, as
/// under an even sky. Needs a GLSession for everything, in its start-up context.
class Ground {
public:
    explicit Ground(const GroundSquare& square);
    ~Ground();

    Ground(const Ground&) = delete;
    Ground& operator=(const Ground&) = delete;

    /// Finds the shade out, the first time and when things have moved since. Leaves another target current.
    /// Throws Failure as Canvas does, and (kExitNoGL) where GL gives no depth back.
    void update(DrawableScene& drawable);

    /// Things have moved.
    void follow() { fIsFound = false; }

    /// Draws it over what is there, where it isn't hidden. Leaves unit 0 active without a texture.
    void draw() const;

private:
    std::vector<float> heights(DrawableScene& drawable);

    koLinear::AffineMatrix fToWorld; ///< x and y along the square, -1 to 1, z up from it
    double fSide;                    ///< half of it
    double fHeight;                  ///< of the scene
    std::unique_ptr<Canvas> fCanvas; ///< this and the next: made by `update`
    GLTexture2D* fShade = nullptr;
    bool fIsFound = false; ///< the shade is that of how things stand
};

} // namespace orloview
