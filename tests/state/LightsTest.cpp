#include "DoubleTest.h"

#include "state/GLCamera.h"
#include "state/GLLight.h"
#include "state/GLLighting.h"
#include "texture/GLTexture2D.h"

namespace {

using testing::ElementsAreArray;

class Lights : public DoubleTest {};

TEST_F(Lights, bindInOrderOnTheUnitThat16BitsTell) {
    script().values[GL_MAX_LIGHTS] = {70000};
    GLLighting lighting;
    for (const uint32_t type : {0, 1, 4}) {
        GLLight light;
        light.setLightType(static_cast<IHWLight::LightType>(type));
        light.fAmbientColor = {1, 2, 3, 4};
        light.fDiffuseColor = {5, 6, 7, 8};
        light.fSpecularColor = {9, 10, 11, 12};
        light.fConstantAttenuation = 0.5F;
        light.fLinearAttenuation = 2;
        std::ranges::copy(std::array{0.25F, 0.5F}, light.fFurtherAttenuationTerms);
        light.fSpotCutoffAngle = 30;
        light.fSpotExponent = 7;
        for (int i = 0; i < 16; ++i)
            light.fLightTransform[i / 4][i % 4] = i;
        std::ranges::copy(std::array{13.0F, 14.0F, 15.0F, 16.0F}, light.fPosition);
        std::ranges::copy(std::array{17.0F, 18.0F, 19.0F, 20.0F}, light.fSpotDirection);
        const GLenum unit = GL_LIGHT0 + type;
        const auto set = [unit](GLenum name, double value) { return call("glLightf", unit, name, value); };
        const auto setAll = [unit](GLenum name, const Values& values) {
            return call("glLightfv", unit, name, values);
        };
        const Calls spot = type == 0 ? Calls{set(GL_SPOT_CUTOFF, 30), set(GL_SPOT_EXPONENT, 7),
                                             setAll(GL_SPOT_DIRECTION, {17, 18, 19})}
                                     : Calls{set(GL_SPOT_CUTOFF, 180), set(GL_SPOT_EXPONENT, 0)};
        clearRecorded();
        lighting.bind(65536 + type, &light);
        const Calls bound{call("glEnable", unit + 65536),
                          setAll(GL_AMBIENT, {1, 2, 3, 4}),
                          setAll(GL_DIFFUSE, {5, 6, 7, 8}),
                          setAll(GL_SPECULAR, {9, 10, 11, 12}),
                          set(GL_CONSTANT_ATTENUATION, 0.5),
                          set(GL_LINEAR_ATTENUATION, 2),
                          set(GL_QUADRATIC_ATTENUATION, 0.75),
                          call("glPushMatrix"),
                          call("glMultMatrixd", Values{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}),
                          setAll(GL_POSITION, {13, 14, 15, 16})};
        const Calls end{call("glEnable", unit), call("glPopMatrix")};
        EXPECT_EQ(made(), bound + spot + end) << type;
        light.unbind(65535);
        EXPECT_EQ(made(), Calls{call("glDisable", 0x4000 + 65535)});
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
    auto light = std::make_unique<GLLight>();
    light->allocateShadowMap(kRasterDepth24);
    light->fShadowMaps.push_back(nullptr);
    light->addProjector(2);
    light->addProjector(2);
    EXPECT_EQ(GLCamera::fsNumInstances_GLCamera, 2);
    ASSERT_EQ(light->fProjectors.size(), 2u);
    EXPECT_TRUE(light->fProjectors[1]->fIsProjector);

    light->releaseLightResources();
    EXPECT_TRUE(light->fShadowMaps.empty());
    EXPECT_EQ(light->fProjectors.size(), 2u);
    light->addProjector(0);
    EXPECT_EQ(GLCamera::fsNumInstances_GLCamera, 0);
    light->allocateShadowMap(kRasterDepth16);
    EXPECT_EQ(light->fShadowMaps.at(0)->fRasterFormat, kRasterDepth16);
    EXPECT_EQ(light->fShadowMaps[0]->refCount(), 1);
    auto* texture = new GLTexture2D(kRasterRGBA8, false);
    light->fFirstTexture = light->fSecondTexture = texture;
    texture->ref();
    texture->ref();
    light->removeTextures();
    EXPECT_EQ(light->fFirstTexture, nullptr);
    light->fSecondTexture = new GLTexture2D(kRasterRGBA8, false);
    light->fSecondTexture->ref();
    light->fProjectors = {nullptr, new NotedCamera};
    light.reset();
    const Calls made{call("glGenTextures", 1, kOut)};
    const auto gone = [](int n) {
        return Calls{call("glBindTexture", GL_TEXTURE_2D, 0), call("glDeleteTextures", 1, Values{1.0 + n})};
    };
    EXPECT_EQ(recorded(),
              made + gone(0) + made + made + gone(2) + made + gone(1) + gone(3) + Calls{call("glFinish")});
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

TEST_F(Lights, lightingAsksForTheUnits) {
    const std::string separate = call("glLightModeli", 0x81F8, 0x81FA);
    const std::string query = call("glGetIntegerv", GL_MAX_LIGHTS, kOut);
    for (const auto& [answer, slots] :
         {std::pair(std::vector<double>{}, 8U), {{3}, 3}, {{0}, 0}, {{-1}, 0}}) {
        gl().fExtEnabled[4] = slots > 0;
        script().values[GL_MAX_LIGHTS] = answer;
        const GLLighting lighting;
        EXPECT_EQ(GLLighting::fsNumInstances_GLLighting, 1);
        EXPECT_EQ(lighting.fLightSlots, std::vector<GLLight*>(slots));
        EXPECT_EQ(made(), slots > 0 ? (Calls{separate, query}) : Calls{query});
    }
    EXPECT_EQ(GLLighting::fsNumInstances_GLLighting, 0);
}

TEST_F(Lights, lightingBindsWithinItsUnits) {
    struct NotedLight : GLLight {
        void bind(unsigned short unit) override { fTable.glPushName(unit); }
        void unbind(unsigned short unit) override { fTable.glLoadName(unit); }
        GLFunctionTable& fTable = *GLFunctionTable::fpGlobalFunctionTable;
    };
    script().values[GL_MAX_LIGHTS] = {3};
    NotedLight light;
    GLLighting lighting;
    clearRecorded();
    lighting.bind(3, &light);
    lighting.bind(0xFFFFFFFF, &light);
    lighting.bind(0, nullptr);
    lighting.bind(2, &light);
    lighting.bind(1, &light);
    lighting.bind(1, nullptr);
    EXPECT_EQ(made(),
              (Calls{call("glDisable", GL_LIGHT0), call("glEnable", GL_LIGHT2), call("glPushName", 2),
                     call("glEnable", GL_LIGHT1), call("glPushName", 1), call("glDisable", GL_LIGHT1)}));
    lighting.unbindAll();
    EXPECT_EQ(made(), (Calls{call("glDisable", GL_LIGHT0), call("glDisable", GL_LIGHT1),
                             call("glLoadName", 2), call("glDisable", GL_LIGHT2)}));
    EXPECT_EQ(lighting.fLightSlots, std::vector<GLLight*>(3));
}

TEST_F(Lights, camerasLoadBothMatrices) {
    GLCamera camera;
    for (int i = 0; i < 16; ++i)
        camera.fProjection[i / 4][i % 4] = i;
    for (int i = 0; i < 12; ++i)
        camera.fViewTransform[i / 3][i % 3] = 20 + i;
    camera.bind();
    EXPECT_EQ(
        made(),
        (Calls{call("glMatrixMode", 0x1701),
               call("glLoadMatrixd", Values{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}),
               call("glMatrixMode", 0x1700),
               call("glLoadMatrixd", Values{20, 21, 22, 0, 23, 24, 25, 0, 26, 27, 28, 0, 29, 30, 31, 1})}));
}

} // namespace
