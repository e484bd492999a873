#include "DoubleTest.h"

#include "state/GLCamera.h"
#include "state/GLLight.h"
#include "state/GLLighting.h"
#include "texture/GLTexture2D.h"

namespace {

class Lights : public DoubleTest {
protected:
    /// What binding a light that differs in every value calls.
    static Calls bound(GLenum light, const Calls& spot) {
        Calls calls = {call("glLightfv", light, GL_AMBIENT, Values{1, 2, 3, 4}),
                       call("glLightfv", light, GL_DIFFUSE, Values{5, 6, 7, 8}),
                       call("glLightfv", light, GL_SPECULAR, Values{9, 10, 11, 12}),
                       call("glLightf", light, GL_CONSTANT_ATTENUATION, 0.5),
                       call("glLightf", light, GL_LINEAR_ATTENUATION, 2),
                       call("glLightf", light, GL_QUADRATIC_ATTENUATION, 0.75),
                       call("glPushMatrix"),
                       call("glMultMatrixd", Values{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}),
                       call("glLightfv", light, GL_POSITION, Values{13, 14, 15, 16})};
        calls.insert(calls.end(), spot.begin(), spot.end());
        calls.push_back(call("glEnable", light));
        calls.push_back(call("glPopMatrix"));
        return calls;
    }

    static void fill(GLLight& light, IHWLight::LightType type) {
        light.setLightType(type);
        light.fAmbientColor = {1, 2, 3, 4};
        light.fDiffuseColor = {5, 6, 7, 8};
        light.fSpecularColor = {9, 10, 11, 12};
        light.fConstantAttenuation = 0.5F;
        light.fLinearAttenuation = 2;
        light.fFurtherAttenuationTerms[0] = 0.25F;
        light.fFurtherAttenuationTerms[1] = 0.5F;
        light.fSpotCutoffAngle = 30;
        light.fSpotExponent = 7;
        for (int i = 0; i < 16; ++i)
            light.fLightTransform[i / 4][i % 4] = i;
        for (int i = 0; i < 4; ++i) {
            light.fPosition[i] = static_cast<float>(13 + i);
            light.fSpotDirection[i] = static_cast<float>(17 + i);
        }
    }

    /// Beside the override's own call the host sees which unit arrived.
    struct NotedLight : GLLight {
        void bind(unsigned short unit) override { fBound.push_back(unit); }
        void unbind(unsigned short unit) override { fUnbound.push_back(unit); }
        std::vector<int> fBound, fUnbound;
    };
};

TEST_F(Lights, bindInOrder) {
    GLLight light;
    for (uint32_t type : {0, 1, 2, 3, 4}) {
        fill(light, static_cast<IHWLight::LightType>(type));
        const GLenum unit = GL_LIGHT0 + type;
        const Calls spot = type == 0 ? Calls{call("glLightf", unit, GL_SPOT_CUTOFF, 30),
                                             call("glLightf", unit, GL_SPOT_EXPONENT, 7),
                                             call("glLightfv", unit, GL_SPOT_DIRECTION, Values{17, 18, 19})}
                                     : Calls{call("glLightf", unit, GL_SPOT_CUTOFF, 180),
                                             call("glLightf", unit, GL_SPOT_EXPONENT, 0)};
        clearRecorded();
        light.bind(static_cast<unsigned short>(type));
        EXPECT_EQ(recorded(), bound(unit, spot)) << type;
    }
    clearRecorded();
    light.unbind(65535);
    EXPECT_EQ(recorded(), Calls{call("glDisable", 0x4000 + 65535)});
}

TEST_F(Lights, standWhereTheirTypeSays) {
    using testing::ElementsAre;
    GLLight light;
    const struct {
        float position[4], direction[4];
    } kTypes[] = {{{0, 0, 0, 1}, {0, 0, -1, 0}},
                  {{0, 0, 1, 0}, {0, 0, 0, 0}},
                  {{0, 0, 0, 1}, {0, 0, 0, 0}},
                  {{0, 0, 0, 1}, {0, 0, 0, 0}}};
    for (uint32_t type = 0; type < 4; ++type) {
        fill(light, IHWLight::kLightPoint);
        light.setLightType(static_cast<IHWLight::LightType>(type));
        EXPECT_EQ(light.fLightType, type);
        EXPECT_THAT(light.fPosition, testing::ElementsAreArray(kTypes[type].position));
        EXPECT_THAT(light.fSpotDirection, testing::ElementsAreArray(kTypes[type].direction));
    }
    fill(light, IHWLight::kLightSpot);
    light.setLightType(static_cast<IHWLight::LightType>(4));
    EXPECT_EQ(light.fLightType, 4u);
    EXPECT_THAT(light.fPosition, ElementsAre(13, 14, 15, 16)) << "an unknown type moves nothing";
    EXPECT_THAT(light.fSpotDirection, ElementsAre(17, 18, 19, 20));
}

TEST_F(Lights, ownTheirProjectors) {
    {
        GLLight light;
        light.addProjector(2);
        light.addProjector(2);
        ASSERT_EQ(light.fProjectors.size(), 2u);
        EXPECT_EQ(GLCamera::fsNumInstances_GLCamera, 2);
        EXPECT_TRUE(light.fProjectors[1]->fIsProjector);
        light.fProjectors.push_back(nullptr);
        light.addProjector(0);
        EXPECT_TRUE(light.fProjectors.empty());
        EXPECT_EQ(GLCamera::fsNumInstances_GLCamera, 0);
        light.addProjector(3);
        EXPECT_EQ(GLLight::fsNumInstances_GLLight, 1);
    }
    EXPECT_EQ(GLCamera::fsNumInstances_GLCamera, 0);
    EXPECT_EQ(GLLight::fsNumInstances_GLLight, 0);
}

TEST_F(Lights, shareTheirTextures) {
    auto* texture = new GLTexture2D(kRasterRGBA8, false);
    texture->ref();
    {
        GLLight light;
        light.allocateShadowMap(kRasterDepth24);
        light.allocateShadowMap(kRasterDepth16);
        ASSERT_EQ(light.fShadowMaps.size(), 2u);
        EXPECT_EQ(light.fShadowMaps[0]->refCount(), 1);
        EXPECT_EQ(light.fShadowMaps[1]->fRasterFormat, kRasterDepth16);
        EXPECT_EQ(light.fShadowMaps[1]->fTextureType, IHWTexture::kTexture2D);
        light.fShadowMaps.push_back(nullptr);
        light.fFirstTexture = light.fSecondTexture = texture;
        texture->ref();
        texture->ref();
        light.addProjector(1);

        light.releaseLightResources();
        EXPECT_TRUE(light.fShadowMaps.empty());
        EXPECT_EQ(ledger(NameKind::Texture).deleted, 2);
        EXPECT_EQ(texture->refCount(), 3) << "projectors and textures stay";
        EXPECT_EQ(light.fProjectors.size(), 1u);

        light.removeTextures();
        EXPECT_EQ(light.fFirstTexture, nullptr);
        EXPECT_EQ(light.fSecondTexture, nullptr);
        EXPECT_EQ(texture->refCount(), 1);
        light.removeTextures();

        light.fSecondTexture = texture;
        texture->ref();
        light.allocateShadowMap(kRasterDepth24);
    }
    EXPECT_EQ(texture->refCount(), 1);
    EXPECT_EQ(ledger(NameKind::Texture).live.size(), 1u);
    texture->unref();
}

TEST_F(Lights, canBeMadeWithoutGL) {
    GLFunctionTable::fpGlobalFunctionTable = nullptr;
    GLLight light;
    const GLCamera camera;
    light.addProjector(1);
    EXPECT_EQ(light.fShadowPass, 0);
    EXPECT_TRUE(light.fCastsShadows);
    EXPECT_FALSE(light.fShadowsStale);
    const float* color = light.fShadowColor.data();
    EXPECT_THAT(std::vector<float>(color, color + 4), testing::ElementsAre(0, 0, 0, 1));
    EXPECT_EQ(light.fTextureIntensity, 1);
}

TEST_F(Lights, lightingAsksForTheUnits) {
    const std::string separate = call("glLightModeli", 0x81F8, 0x81FA);
    const std::string query = call("glGetIntegerv", GL_MAX_LIGHTS, kOut);
    for (const auto& [answer, slots] : std::initializer_list<std::pair<std::vector<double>, size_t>>{
             {{}, 8}, {{3}, 3}, {{0}, 0}, {{-1}, 0}}) {
        script().values[GL_MAX_LIGHTS] = answer;
        clearRecorded();
        const GLLighting lighting;
        EXPECT_EQ(GLLighting::fsNumInstances_GLLighting, 1);
        EXPECT_EQ(lighting.fLightSlots, std::vector<GLLight*>(slots));
        EXPECT_EQ(recorded(), (Calls{separate, query}));
    }
    EXPECT_EQ(GLLighting::fsNumInstances_GLLighting, 0);
    for (bool* flag : {&gl().fExtSupported[4], &gl().fExtEnabled[4]}) {
        *flag = false;
        clearRecorded();
        const GLLighting lighting;
        EXPECT_EQ(recorded(), Calls{query});
        *flag = true;
    }
}

TEST_F(Lights, lightingBindsWithinItsUnits) {
    script().values[GL_MAX_LIGHTS] = {3};
    NotedLight light;
    GLLighting lighting;
    clearRecorded();
    lighting.bind(3, &light);
    lighting.bind(0xFFFFFFFF, &light);
    EXPECT_EQ(recorded(), Calls{});
    lighting.bind(0, nullptr);
    lighting.bind(2, &light);
    lighting.bind(1, &light);
    lighting.bind(1, nullptr);
    EXPECT_EQ(recorded(), (Calls{call("glDisable", GL_LIGHT0), call("glEnable", GL_LIGHT2),
                                 call("glEnable", GL_LIGHT1), call("glDisable", GL_LIGHT1)}));
    EXPECT_EQ(light.fBound, (std::vector<int>{2, 1}));
    EXPECT_EQ(lighting.fLightSlots, (std::vector<GLLight*>{nullptr, nullptr, &light}));

    clearRecorded();
    lighting.unbindAll();
    EXPECT_EQ(recorded(), (Calls{call("glDisable", GL_LIGHT0), call("glDisable", GL_LIGHT1),
                                 call("glDisable", GL_LIGHT2)}));
    EXPECT_EQ(light.fUnbound, std::vector<int>{2}) << "through the light itself";
    EXPECT_EQ(lighting.fLightSlots, std::vector<GLLight*>(3));
}

TEST_F(Lights, enableTheirUnitBeforeTheyBind) {
    script().values[GL_MAX_LIGHTS] = {70000};
    GLLight light;
    fill(light, IHWLight::kLightPoint);
    GLLighting lighting;
    clearRecorded();
    lighting.bind(65537, &light);
    Calls expected = bound(GL_LIGHT1, {call("glLightf", GL_LIGHT1, GL_SPOT_CUTOFF, 180),
                                       call("glLightf", GL_LIGHT1, GL_SPOT_EXPONENT, 0)});
    expected.insert(expected.begin(), call("glEnable", GL_LIGHT0 + 65537));
    EXPECT_EQ(recorded(), expected) << "the light itself knows 16 bits of the unit";
}

TEST_F(Lights, camerasLoadBothMatrices) {
    {
        GLCamera camera;
        EXPECT_EQ(GLCamera::fsNumInstances_GLCamera, 1);
        for (int i = 0; i < 16; ++i)
            camera.fProjection[i / 4][i % 4] = i;
        for (int i = 0; i < 12; ++i)
            camera.fViewTransform[i / 3][i % 3] = 20 + i;
        camera.bind();
    }
    EXPECT_EQ(GLCamera::fsNumInstances_GLCamera, 0);
    EXPECT_EQ(
        recorded(),
        (Calls{call("glMatrixMode", 0x1701),
               call("glLoadMatrixd", Values{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}),
               call("glMatrixMode", 0x1700),
               call("glLoadMatrixd", Values{20, 21, 22, 0, 23, 24, 25, 0, 26, 27, 28, 0, 29, 30, 31, 1})}));
}

} // namespace
