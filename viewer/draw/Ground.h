#pragma once

#include "draw/DrawableScene.h"
#include "scene/Guides.h"

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

    /// Finds the shade out, the first time. Leaves another target current. Throws Failure as Canvas does, and
    /// (kExitNoGL) where GL gives no depth back.
    void update(DrawableScene& drawable);

    /// Draws it over what is there, where it isn't hidden. Leaves unit 0 active without a texture.
    void draw() const;

private:
    std::vector<float> heights(DrawableScene& drawable) const;

    koLinear::AffineMatrix fToWorld; ///< x and y along the square, -1 to 1, z up from it
    double fSide;                    ///< half of it
    double fHeight;                  ///< of the scene
    GLTexture2D* fShade = nullptr;   ///< made by `update`
};

} // namespace orloview
