#include "draw/StudioLights.h"

#include <cmath>

namespace orloview {

namespace {

struct Setting {
    koLinear::Vector toLight; ///< in the eye's space
    float intensity;          ///< linear, of white
};

constexpr std::array<Setting, 3> kSettings = {{
    {{-0.45, 0.65, 0.62}, 0.78F},
    {{0.75, 0.10, 0.55}, 0.22F},
    {{0.25, 0.60, -0.75}, 0.25F},
}};

/// A space whose z axis points along `z`.
koLinear::AffineMatrix frameAlong(const koLinear::Vector& z) {
    const double length = std::hypot(z[0], z[1], z[2]);
    koLinear::AffineMatrix frame;
    for (int i = 0; i < 3; ++i)
        frame[2][i] = z[i] / length;
    const double side = std::hypot(frame[2][0], frame[2][2]);
    frame[0][0] = frame[2][2] / side;
    frame[0][1] = 0.0;
    frame[0][2] = -frame[2][0] / side;
    for (int i = 0; i < 3; ++i) {
        const int j = (i + 1) % 3;
        const int k = (i + 2) % 3;
        frame[1][i] = frame[2][j] * frame[0][k] - frame[2][k] * frame[0][j];
    }
    return frame;
}

} // namespace

StudioLights::StudioLights() {
    for (size_t i = 0; i < fLights.size(); ++i) {
        const float intensity = kSettings[i].intensity;
        fLights[i].setLightType(IHWLight::kLightDirectional);
        fLights[i].fDiffuseColor = {intensity, intensity, intensity};
        fLights[i].fSpecularColor = fLights[i].fDiffuseColor;
    }
}

void StudioLights::bind(const koLinear::AffineMatrix& worldToEye) {
    const koLinear::AffineMatrix eyeToWorld = fKeptTo.value_or(worldToEye).inverse();
    for (size_t i = 0; i < fLights.size(); ++i) {
        fLights[i].fLightTransform = frameAlong(kSettings[i].toLight).then(eyeToWorld);
        fLighting.bind(static_cast<unsigned>(i), &fLights[i]);
    }
}

} // namespace orloview
