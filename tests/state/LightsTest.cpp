#include "DoubleTest.h"

#include "state/GLCamera.h"
#include "state/GLLight.h"
#include "state/GLLighting.h"
#include "texture/GLTexture2D.h"

#include <numeric>

namespace {

using testing::ElementsAreArray;

class Lights : public DoubleTest {};

TEST_F(Lights, bindInOrderOnTheUnitThat16BitsTell) {
    script().values[GL_MAX_LIGHTS] = {70000};
    GLLighting lighting;
    GLLight light;
    light.fAmbientColor = {1, 2, 3, 4};
    light.fDiffuseColor = {5, 6, 7, 8};
    light.fSpecularColor = {9, 10, 11, 12};
    light.fConstantAttenuation = 0.5F;
    light.fLinearAttenuation = 2;
    light.fFurtherAttenuationTerms[0] = 0.25F;
    light.fFurtherAttenuationTerms[1] = 0.5F;
    light.fSpotCutoffAngle = 30;
    light.fSpotExponent = 7;
    light.fLightTransform[3][1] = 9;
    for (const uint32_t type : {0, 1, 4}) {
        light.setLightType(static_cast<IHWLight::LightType>(type));
        std::iota(light.fPosition, light.fPosition + 4, 13.0F);
        std::iota(light.fSpotDirection, light.fSpotDirection + 4, 17.0F);
        made();
        lighting.bind(65536 + type, &light);
        light.unbind(65535);
        const GLenum unit = GL_LIGHT0 + type;
        const auto set = [unit](GLenum name, double value) { return call("glLightf", unit, name, value); };
        const auto setAll = [unit](GLenum name, const Values& values) {
            return call("glLightfv", unit, name, values);
        };
        const Calls spot = type == 0 ? Calls{set(GL_SPOT_CUTOFF, 30), set(GL_SPOT_EXPONENT, 7),
                                             setAll(GL_SPOT_DIRECTION, {17, 18, 19})}
                                     : Calls{set(GL_SPOT_CUTOFF, 180), set(GL_SPOT_EXPONENT, 0)};
        EXPECT_EQ(made(),
                  (Calls{call("glEnable", unit + 65536), setAll(GL_AMBIENT, {1, 2, 3, 4}),
                         setAll(GL_DIFFUSE, {5, 6, 7, 8}), setAll(GL_SPECULAR, {9, 10, 11, 12}),
                         set(GL_CONSTANT_ATTENUATION, 0.5), set(GL_LINEAR_ATTENUATION, 2),
                         set(GL_QUADRATIC_ATTENUATION, 0.75), call("glPushMatrix"),
                         call("glMultMatrixd", Values{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 9, 0, 1}),
                         setAll(GL_POSITION, {13, 14, 15, 16})} +
                   spot +
                   Calls{call("glEnable", unit), call("glPopMatrix"), call("glDisable", GL_LIGHT0 + 65535)}))
            << type;
    }
}

TEST_F(Lights, standWhereTheirTypeSays) {
    const struct {
        uint32_t type;
        float position[4], direction[4];
    } kTypes[] = {
        {1, {0, 0, 1, 0}, {}},         {2, {0, 0, 0, 1}, {}},
        {0, {0, 0, 0, 1}, {0, 0, -1}}, {3, {0, 0, 0, 1}, {}},
        {0, {0, 0, 0, 1}, {0, 0, -1}}, {4, {0, 0, 0, 1}, {0, 0, -1}}}; // an unknown type moves nothing
    GLLight light;
    for (const auto& [type, position, direction] : kTypes) {
        light.setLightType(static_cast<IHWLight::LightType>(type));
        EXPECT_EQ(light.fLightType, type);
        EXPECT_THAT(light.fPosition, ElementsAreArray(position));
        EXPECT_THAT(light.fSpotDirection, ElementsAreArray(direction));
    }
}

TEST_F(Lights, letGoOfWhatTheyHold) {
    struct NotedCamera : IHWCamera {
        ~NotedCamera() override { GLFunctionTable::fpGlobalFunctionTable->glFinish(); }
        void bind() override {}
    };
    const auto newTexture = [](int references) {
        auto* texture = new GLTexture2D(kRasterRGBA8, false);
        for (int i = 0; i < references; ++i)
            texture->ref();
        return texture;
    };
    const auto gone = [](int n) {
        return Calls{call("glBindTexture", GL_TEXTURE_2D, 0), call("glDeleteTextures", 1, Values{1.0 + n})};
    };
    auto light = std::make_unique<GLLight>();
    light->allocateShadowMap(kRasterDepth24);
    light->fShadowMaps.push_back(nullptr);
    light->addProjector(3);
    light->addProjector(2);
    EXPECT_TRUE(light->fProjectors.at(1)->fIsProjector);
    made();
    light->releaseLightResources();
    EXPECT_EQ(made(), gone(0));
    EXPECT_EQ(GLCamera::fsNumInstances_GLCamera, 2);
    EXPECT_TRUE(light->fShadowMaps.empty());
    light->addProjector(0);
    EXPECT_EQ(GLCamera::fsNumInstances_GLCamera, 0);

    light->fFirstTexture = light->fSecondTexture = newTexture(2);
    made();
    light->removeTextures();
    EXPECT_EQ(made(), gone(1));
    EXPECT_EQ(light->fFirstTexture, nullptr);
    light->fSecondTexture = newTexture(1);
    light->allocateShadowMap(kRasterDepth16);
    EXPECT_EQ(light->fShadowMaps.at(0)->fRasterFormat, kRasterDepth16);
    EXPECT_EQ(light->fShadowMaps[0]->refCount(), 1);
    light->fProjectors = {nullptr, new NotedCamera};
    made();
    light.reset();
    EXPECT_EQ(made(), gone(3) + gone(2) + Calls{call("glFinish")});
    EXPECT_EQ(GLLight::fsNumInstances_GLLight, 0);
}

TEST_F(Lights, canBeMadeWithoutGL) {
    GLFunctionTable::fpGlobalFunctionTable = nullptr;
    const GLLight light;
    const GLCamera camera;
    EXPECT_EQ(GLLight::fsNumInstances_GLLight + GLCamera::fsNumInstances_GLCamera, 2);
    EXPECT_TRUE(light.fShadowPass == 0 && light.fCastsShadows && !light.fShadowsStale);
    EXPECT_EQ(light.fTextureIntensity, 1);
}

TEST_F(Lights, areBoundWithinTheUnitsThatGLHas) {
    struct NotedLight : GLLight {
        void bind(unsigned short unit) override { fTable.glPushName(unit); }
        void unbind(unsigned short unit) override { fTable.glLoadName(unit); }
        GLFunctionTable& fTable = *GLFunctionTable::fpGlobalFunctionTable;
    };
    const std::string query = call("glGetIntegerv", GL_MAX_LIGHTS, kOut);
    for (const auto& [answer, slots] : {std::pair(std::vector<double>{}, 8U), {{0}, 0}, {{-1}, 0}}) {
        gl().fExtEnabled[kCapSeparateSpecularColor] = slots > 0;
        script().values[GL_MAX_LIGHTS] = answer;
        const GLLighting lighting;
        EXPECT_EQ(lighting.fLightSlots, std::vector<GLLight*>(slots));
        EXPECT_EQ(made(), slots > 0 ? (Calls{call("glLightModeli", 0x81F8, 0x81FA), query}) : Calls{query});
    }
    EXPECT_EQ(GLLighting::fsNumInstances_GLLighting, 0);

    script().values[GL_MAX_LIGHTS] = {3};
    NotedLight light;
    GLLighting lighting;
    EXPECT_EQ(GLLighting::fsNumInstances_GLLighting, 1);
    lighting.bind(3, &light);
    lighting.bind(0xFFFFFFFF, &light);
    lighting.bind(0, nullptr);
    lighting.bind(2, &light);
    lighting.bind(1, &light);
    lighting.bind(1, nullptr);
    lighting.unbindAll();
    EXPECT_EQ(made(),
              (Calls{query, call("glDisable", GL_LIGHT0), call("glEnable", GL_LIGHT2), call("glPushName", 2),
                     call("glEnable", GL_LIGHT1), call("glPushName", 1), call("glDisable", GL_LIGHT1),
                     call("glDisable", GL_LIGHT0), call("glDisable", GL_LIGHT1), call("glLoadName", 2),
                     call("glDisable", GL_LIGHT2)}));
    EXPECT_EQ(lighting.fLightSlots, std::vector<GLLight*>(3));
}

TEST_F(Lights, camerasLoadBothMatrices) {
    GLCamera camera;
    camera.fProjection[3][1] = 5;
    for (int i = 0; i < 12; ++i)
        camera.fViewTransform[i / 3][i % 3] = 20 + i;
    camera.bind();
    EXPECT_EQ(made(), (Calls{call("glMatrixMode", 0x1701),
                             call("glLoadMatrixd", Values{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 5, 0, 1}),
                             call("glMatrixMode", 0x1700),
                             call("glLoadMatrixd",
                                  Values{20, 21, 22, 0, 23, 24, 25, 0, 26, 27, 28, 0, 29, 30, 31, 1})}));
}

} // namespace
