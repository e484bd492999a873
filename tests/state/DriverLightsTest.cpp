#include "DriverTest.h"

#include "state/GLCamera.h"
#include "state/GLLight.h"
#include "state/GLLighting.h"

#include <cmath>

namespace {

using Vector = std::array<double, 3>;

class DriverLights : public DriverTest {};

TEST_F(DriverLights, shineFromTheirPlaceInTheWorld) {
    const DrawTarget target(gl(), 1, 1);
    GLCamera camera; // turned a quarter about z and moved; wherever a point is, it shows in the middle
    camera.fViewTransform = koLinear::AffineMatrix(0, 1, 0, -1, 0, 0, 0, 0, 1, 0.125, 0, -4);
    camera.fProjection[0][0] = camera.fProjection[1][1] = 0;
    camera.fProjection[2][2] = 0.1;
    camera.bind();
    const GLfloat black[] = {0, 0, 0, 1};
    const GLfloat white[] = {1, 1, 1, 1};
    gl().glLightModelfv(GL_LIGHT_MODEL_AMBIENT, black);
    gl().glMaterialfv(GL_FRONT, GL_DIFFUSE, white);
    gl().glEnable(GL_LIGHTING);
    GLLighting lighting;
    for (const auto type : {IHWLight::kLightSpot, IHWLight::kLightDirectional, IHWLight::kLightPoint}) {
        GLLight light;
        light.setLightType(type);
        light.fAmbientColor = light.fSpecularColor = {0.0F, 0.0F, 0.0F};
        light.fDiffuseColor = {1.0F, 0.7F, 0.45F};
        light.fConstantAttenuation = 0.5F;
        light.fLinearAttenuation = 0.125F;
        light.fFurtherAttenuationTerms[0] = 0.0625F;
        light.fFurtherAttenuationTerms[1] = 0.03125F;
        light.fSpotCutoffAngle = 40; // of cosine 0.766
        light.fSpotExponent = 3;
        // A quarter turn about x (y to z), then a move: what was along -z looks along y, from (0.5, -2, 1).
        light.fLightTransform = koLinear::ProjMatrix(1, 0, 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, 0.5, -2, 1, 1);
        lighting.bind(3, &light);
        for (const Vector& p : {Vector{0.5, 0, 1}, {1.25, -0.5, 0.75}, {3.5, 0, 1}}) {
            const Vector normal = {-0.36, -0.8, 0.48};
            gl().glBegin(GL_POINTS);
            gl().glNormal3dv(normal.data());
            gl().glVertex3dv(p.data());
            gl().glEnd();
            Vector toLight = {0.5 - p[0], -2 - p[1], 1 - p[2]};
            const double d = std::hypot(toLight[0], toLight[1], toLight[2]);
            double strength = 255 / (0.5 + 0.125 * d + 0.09375 * d * d);
            if (type == IHWLight::kLightSpot)
                strength *= -toLight[1] / d < 0.766 ? 0 : std::pow(-toLight[1] / d, 3);
            if (type == IHWLight::kLightDirectional) {
                toLight = {0, -d, 0};
                strength = 255;
            }
            const double facing =
                (normal[0] * toLight[0] + normal[1] * toLight[1] + normal[2] * toLight[2]) / d;
            const Pixel pixel = readPixel(0, 0);
            for (size_t i = 0; i < 3; ++i)
                EXPECT_NEAR(pixel[i], std::min(255.0, strength * facing * light.fDiffuseColor[i]), 2)
                    << type << ", " << p[0];
        }
        lighting.unbindAll();
    }
    EXPECT_FALSE(gl().glIsEnabled(GL_LIGHT3));
}

} // namespace
