#pragma once

#include "scene/Scene.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <orlohost/ShadingNodeSpec.h>
#include <orlohost/koLinear.h>
#include <state/GLLight.h>
#include <state/GLLighting.h>

namespace orloview {

/// The lights of a frame: those of the file, else three that keep their place beside the eye: key from the
/// upper left, fill from the right, rim from behind.
///
/// Lights of a file come in all magnitudes, so they are scaled together: the middle of the scene gets as much
/// as under the three. Of more than eight the brightest there are taken.
///
/// Needs a current context to be made.
class SceneLights {
public:
    /// `besideEye`: whether there are the three where the file has none. `factor` multiplies all.
    explicit SceneLights(const Scene& scene, bool besideEye = true, float factor = 1.0F);

    /// From here on those beside the eye keep their place beside this one, wherever the frame's own is.
    void keepTo(const koLinear::AffineMatrix& worldToEye) { fKeptTo = worldToEye; }

    /// Puts them on GL's lights from 0 on. Needs the camera bound.
    void bind(const koLinear::AffineMatrix& worldToEye);

    /// By GL light.
    const std::vector<LightSpec>& specs() const { return fSpecs; }

    /// The file's light of a GL light; null for those beside the eye.
    const Light* fileLight(size_t i) const { return fSources.empty() ? nullptr : fSources[i]; }

    /// Whether the first comes from somewhere, so that it can cast shadows.
    bool hasMainLight() const { return !fSpecs.empty() && fSpecs[0].fType != LightSpec::kAmbient; }

    GLLight& light(size_t i) { return *fLights[i]; }

    /// Space of the light to the world, for a frame of that eye.
    koLinear::AffineMatrix toWorld(size_t i, const koLinear::AffineMatrix& worldToEye) const;

    const std::vector<std::string>& warnings() const { return fWarnings; }

private:
    void addStudio();
    void addFileLights(const Scene& scene);
    GLLight& add(const LightSpec& spec, IHWLight::LightType type, const koColor::Color& color);

    float fFactor;
    GLLighting fLighting;
    std::vector<std::unique_ptr<GLLight>> fLights;
    std::vector<LightSpec> fSpecs;
    std::vector<const Light*> fSources; ///< of the file; brightest first, ambient ones behind
    std::optional<koLinear::AffineMatrix> fKeptTo;
    std::vector<std::string> fWarnings;
};

} // namespace orloview
