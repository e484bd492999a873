#pragma once

#include <array>
#include <optional>

#include <orlohost/koLinear.h>
#include <state/GLLight.h>
#include <state/GLLighting.h>

namespace orloview {

/// The three lights of a scene that brings none: key from the upper left, fill from the right, rim from
/// behind. They keep their place beside the eye. Needs a current context to be made.
class StudioLights {
public:
    StudioLights();

    /// From here on they keep their place beside this eye, wherever the frame's own is.
    void keepTo(const koLinear::AffineMatrix& worldToEye) { fKeptTo = worldToEye; }

    /// Puts them on GL lights 0 to 2. Needs the camera bound.
    void bind(const koLinear::AffineMatrix& worldToEye);

private:
    GLLighting fLighting;
    std::array<GLLight, 3> fLights;
    std::optional<koLinear::AffineMatrix> fKeptTo;
};

} // namespace orloview
