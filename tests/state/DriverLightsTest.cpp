#include "DriverTest.h"

#include "state/GLCamera.h"
#include "state/GLLight.h"
#include "state/GLLighting.h"

#include <cmath>
#include <numbers>

namespace {

using Vec = std::array<double, 4>;

double dot(const Vec& a, const Vec& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Vec scaled(const Vec& v, double s) {
    return {v[0] * s, v[1] * s, v[2] * s, 0};
}

Vec normalized(const Vec& v) {
    const double length = std::sqrt(dot(v, v));
    return length > 0 ? scaled(v, 1 / length) : v;
}

constexpr Vec kMaterialAmbient = {0.5, 0.3, 0.7, 1};
constexpr Vec kMaterialDiffuse = {0.8, 0.6, 0.4, 1};
constexpr Vec kMaterialSpecular = {0.2, 0.5, 0.3, 1};
constexpr double kShininess = 8;
constexpr Vec kScene = {0.1, 0.2, 0.05, 1};

/// The light as the fixed-function equations see it: place and axis in eye coordinates.
struct EyeLight {
    Vec position, axis;
};

/// One channel at a point of the unit sphere, 0 to 255. The eye is infinitely far along +z.
double lit(const GLLight& light, const EyeLight& eye, const Vec& point, const Vec& normal, int channel) {
    Vec toLight = eye.position;
    double attenuation = 1;
    if (eye.position[3] != 0) {
        for (size_t i = 0; i < 3; ++i)
            toLight[i] -= point[i];
        const double d = std::sqrt(dot(toLight, toLight));
        attenuation = 1 / (light.fConstantAttenuation + light.fLinearAttenuation * d +
                           (light.fFurtherAttenuationTerms[0] + light.fFurtherAttenuationTerms[1]) * d * d);
    }
    toLight = normalized(toLight);
    double spot = 1;
    if (light.fLightType == IHWLight::kLightSpot) {
        const double cosine = -dot(toLight, normalized(eye.axis));
        const double limit = std::cos(light.fSpotCutoffAngle * std::numbers::pi / 180);
        spot = cosine < limit ? 0 : std::pow(cosine, light.fSpotExponent);
    }
    const double facing = std::max(dot(normal, toLight), 0.0);
    const Vec half = normalized({toLight[0], toLight[1], toLight[2] + 1, 0});
    const double shine = facing > 0 ? std::pow(std::max(dot(normal, half), 0.0), kShininess) : 0;
    const auto i = static_cast<size_t>(channel);
    const double sum =
        kScene[i] * kMaterialAmbient[i] + attenuation * spot *
                                              (light.fAmbientColor[channel] * kMaterialAmbient[i] +
                                               facing * light.fDiffuseColor[channel] * kMaterialDiffuse[i] +
                                               shine * light.fSpecularColor[channel] * kMaterialSpecular[i]);
    return 255 * std::min(sum, 1.0);
}

class DriverLights : public DriverTest {
protected:
    static constexpr int kSide = 200;
    /// Half the width of what the camera sees.
    static constexpr double kReach = 1.25;

    /// World to eye: a quarter turn about z (x to y), then into the view volume, off its axis.
    static void placeCamera(GLCamera& camera) {
        koLinear::AffineMatrix& view = camera.fViewTransform;
        view[0][0] = view[1][1] = 0;
        view[0][1] = 1;
        view[1][0] = -1;
        view[3][0] = 0.125;
        view[3][1] = -0.0625;
        view[3][2] = -4;
        camera.fProjection[0][0] = camera.fProjection[1][1] = 1 / kReach;
        camera.fProjection[2][2] = -0.25; // near 1, far 9
        camera.fProjection[3][2] = -1.25;
    }

    void drawSphere() {
        constexpr int kParts = 180;
        const auto vertex = [this](int slice, int stack) {
            const double around = 2 * std::numbers::pi * slice / kParts;
            const double down = std::numbers::pi * stack / kParts;
            const double v[] = {std::sin(down) * std::cos(around), std::sin(down) * std::sin(around),
                                std::cos(down)};
            gl().glNormal3dv(v);
            gl().glVertex3dv(v);
        };
        for (int stack = 0; stack < kParts; ++stack) {
            gl().glBegin(GL_TRIANGLE_STRIP);
            for (int slice = 0; slice <= kParts; ++slice) {
                vertex(slice, stack);
                vertex(slice, stack + 1);
            }
            gl().glEnd();
        }
    }

    void setMaterial() {
        const auto set = [this](GLenum parameter, const Vec& color) {
            const GLfloat values[] = {static_cast<float>(color[0]), static_cast<float>(color[1]),
                                      static_cast<float>(color[2]), 1};
            if (parameter == GL_LIGHT_MODEL_AMBIENT)
                gl().glLightModelfv(parameter, values);
            else
                gl().glMaterialfv(GL_FRONT_AND_BACK, parameter, values);
        };
        set(GL_AMBIENT, kMaterialAmbient);
        set(GL_DIFFUSE, kMaterialDiffuse);
        set(GL_SPECULAR, kMaterialSpecular);
        set(GL_LIGHT_MODEL_AMBIENT, kScene);
        gl().glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, kShininess);
    }
};

// The light's frame: a quarter turn about x (y to z), then 0.5, -2, 1; the camera above turns and moves what
// comes of it. Point (x, y, z) goes to world (x + 0.5, -z - 2, y + 1) and to eye (z + 2.125, x + 0.4375, y -
// 3).
TEST_F(DriverLights, lightASphereAsTheEquationsSay) {
    const DrawTarget target(gl(), kSide, kSide);
    gl().glEnable(GL_LIGHTING);
    gl().glEnable(GL_DEPTH_TEST);
    setMaterial();
    GLCamera camera;
    placeCamera(camera);
    camera.bind();
    GLLighting lighting;

    struct Case {
        IHWLight::LightType type;
        float constant, linear, further[2], cutoff, exponent;
        std::array<float, 4> position; // in the light's own frame; all 0: as its type says
        std::array<float, 3> direction;
    };
    const Case kCases[] = {
        {IHWLight::kLightSpot, 1, 0, {0, 0}, 10, 0, {0.5F, 1.5F, 0.25F, 1}, {-1, -2.5F, -2.25F}},
        {IHWLight::kLightSpot,
         0.5F,
         0.1F,
         {0.02F, 0.01F},
         60,
         9,
         {0.5F, 1.5F, 0.25F, 1},
         {-0.75F, -2.5F, -2}},
        {IHWLight::kLightSpot, 1, 0, {0, 0}, 90, 0, {}, {}},
        {IHWLight::kLightDirectional, 3, 1, {1, 1}, 10, 5, {}, {}},
        {IHWLight::kLightDirectional, 1, 0, {0, 0}, 10, 5, {0.5F, 1, -0.25F, 0}, {}},
        {IHWLight::kLightPoint, 1, 0, {0, 0}, 10, 5, {}, {}},
        {IHWLight::kLightPoint, 1.5F, 0, {0, 0}, 10, 5, {0, 1, 0.5F, 1}, {}},
        {IHWLight::kLightPoint, 0.5F, 0.25F, {0, 0}, 10, 5, {0, 1, 0.5F, 1}, {}},
        {IHWLight::kLightPoint, 0.25F, 0, {0.125F, 0.0625F}, 10, 5, {0, 1, 0.5F, 1}, {}},
        {IHWLight::kLightAmbient, 0.5F, 0.125F, {0.03F, 0.02F}, 10, 5, {}, {}},
    };
    for (const Case& c : kCases) {
        GLLight light;
        light.setLightType(c.type);
        light.fAmbientColor = {0.1F, 0.25F, 0.4F};
        light.fDiffuseColor = {1.0F, 0.7F, 0.45F};
        light.fSpecularColor = {0.3F, 0.9F, 0.6F};
        light.fConstantAttenuation = c.constant;
        light.fLinearAttenuation = c.linear;
        std::copy_n(c.further, 2, light.fFurtherAttenuationTerms);
        light.fSpotCutoffAngle = c.cutoff;
        light.fSpotExponent = c.exponent;
        if (c.position != std::array<float, 4>{})
            std::copy_n(c.position.begin(), 4, light.fPosition);
        if (c.direction != std::array<float, 3>{})
            std::copy_n(c.direction.begin(), 3, light.fSpotDirection);
        koLinear::ProjMatrix& transform = light.fLightTransform;
        transform[1][1] = transform[2][2] = 0;
        transform[1][2] = 1;
        transform[2][1] = -1;
        transform[3][0] = 0.5;
        transform[3][1] = -2;
        transform[3][2] = 1;
        const float* p = light.fPosition;
        const float* s = light.fSpotDirection;
        const double w = p[3];
        const EyeLight eye = {{p[2] + w * 2.125, p[0] + w * 0.4375, p[1] - w * 3, w}, {s[2], s[0], s[1], 0}};

        lighting.bind(3, &light);
        gl().glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        drawSphere();
        double brightest = 0;
        double darkest = 255;
        for (const auto& [x, y] : {std::pair{125, 95}, {60, 100}, {150, 130}, {105, 150}, {90, 50}}) {
            Vec point = {((x + 0.5) / kSide * 2 - 1) * kReach, ((y + 0.5) / kSide * 2 - 1) * kReach, 0, 1};
            Vec normal = {point[0] - 0.125, point[1] + 0.0625, 0, 0};
            normal[2] = std::sqrt(1 - dot(normal, normal));
            point[2] = normal[2] - 4;
            const Pixel pixel = readPixel(x, y);
            for (int channel = 0; channel < 3; ++channel) {
                const double expected = lit(light, eye, point, normal, channel);
                EXPECT_NEAR(pixel[static_cast<size_t>(channel)], expected, 2)
                    << "case " << &c - kCases << " at " << x << ", " << y << ", channel " << channel;
            }
            brightest = std::max(brightest, lit(light, eye, point, normal, 1));
            darkest = std::min(darkest, lit(light, eye, point, normal, 1));
        }
        EXPECT_GT(brightest - darkest, 20) << "case " << &c - kCases << " would not tell lights apart";
        EXPECT_LT(darkest, 200);
        lighting.unbindAll();
        expectNoErrors();
    }
    EXPECT_FALSE(gl().glIsEnabled(GL_LIGHT3));
    GLint specular = 0;
    gl().glGetIntegerv(GL_LIGHT_MODEL_COLOR_CONTROL, &specular);
    EXPECT_EQ(specular, GL_SEPARATE_SPECULAR_COLOR);
}

} // namespace
