#include "DoubleTest.h"

#include "draw/SceneLights.h"
#include "shading/GlslLanguage.h"
#include "shading/SceneShaders.h"

#include <algorithm>

namespace orloview {
namespace {

/// On a GL where everything compiles and every name is found.
class SceneShadersTest : public DoubleTest {
protected:
    SceneShadersTest() {
        script().answers["glGetObjectParameterivARB"] = [this](const std::vector<Argument>& arguments) {
            *static_cast<GLint*>(arguments[2].pointer()) = fLinks ? 1 : 0;
            return uint64_t{0};
        };
        script().answers["glGetUniformLocationARB"] = [](const std::vector<Argument>&) {
            return uint64_t{7};
        };
    }

    static size_t count(const std::string& name) {
        const Calls& calls = recorded();
        return static_cast<size_t>(std::count_if(calls.begin(), calls.end(), [&](const std::string& call) {
            return call.starts_with(name + "(");
        }));
    }

    bool fLinks = true;
};

/// Twenty materials that differ in their values, and one with a texture.
Scene twentyOneMaterials() {
    Scene scene;
    Mesh mesh;
    mesh.positions = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    mesh.normals = {0, 0, 1, 0, 0, 1, 0, 0, 1};
    mesh.uvSets = {{0, 0, 1, 0, 0, 1}};
    mesh.indices = {0, 1, 2};
    scene.images = {{"p.ppm", "", {'P', '6', ' ', '1', ' ', '1', ' ', '2', '5', '5', '\n', 9, 9, 9}}};
    scene.textures.push_back({"", 0});
    for (int i = 0; i < 21; ++i) {
        Material& material = scene.materials.emplace_back();
        material.name = "m" + std::to_string(i);
        material.roughness = static_cast<float>(i) / 21.0F;
        mesh.material = i;
        scene.meshes.push_back(mesh);
        scene.instances.push_back({"", i, {}});
    }
    scene.materials[20].baseColorTexture.texture = 0;
    return scene;
}

TEST_F(SceneShadersTest, compilesOneShaderForMaterialsOfOneStructure) {
    const Scene scene = twentyOneMaterials();
    const SceneLights lights(scene);
    const SkyLight sky{Sky::named("clear"), nullptr};
    SceneShaders shaders(scene, lights, &sky, nullptr, nullptr, std::make_unique<GlslLanguage>());
    shaders.upload([] {});
    EXPECT_EQ(count("glCompileShaderARB"), 4U) << "with and without texture, two stages each";
    EXPECT_EQ(count("glLinkProgramARB"), 2U);

    for (int frame = 0; frame < 2; ++frame) {
        clearRecorded();
        shaders.beginFrame({}, false);
        for (size_t i = 0; i < scene.instances.size(); ++i)
            EXPECT_TRUE(shaders.bind(i, true) && shaders.bind(i, true));
        shaders.endFrame();
        EXPECT_EQ(count("glUseProgramObjectARB"), 3U) << "one for each shader, and none at the end";
        EXPECT_EQ(count("glGetUniformLocationARB"), 0U) << "names are looked up once";
        EXPECT_EQ(count("glBindTexture"), 8U) << "three of the sky and a picture, and none at the end";
        EXPECT_EQ(count("glCompileShaderARB"), 0U);
    }
    shaders.beginFrame({}, false);
    clearRecorded();
    EXPECT_TRUE(shaders.bind(3, false));
    EXPECT_EQ(count("glCompileShaderARB"), 2U) << "unlit ones when they are wanted";
}

TEST_F(SceneShadersTest, tellsOfWhatDoesNotLinkAndLeavesItToGL) {
    fLinks = false;
    Scene scene = twentyOneMaterials();
    scene.instances.resize(1);
    const SceneLights lights(scene);
    SceneShaders shaders(scene, lights, nullptr, nullptr, nullptr, std::make_unique<GlslLanguage>());
    testing::internal::CaptureStdout();
    shaders.upload([] {});
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(shaders.warnings(),
              (std::vector<std::string>{"warning: the material 'm0': OpenGL refuses its shader; "
                                        "drawn by its own functions"}));
    clearRecorded();
    EXPECT_FALSE(shaders.bind(0, true));
    EXPECT_EQ(recorded(), Calls{call("glUseProgramObjectARB", 0)});
}

TEST_F(SceneShadersTest, leavesNoNameBehind) {
    const Scene scene = twentyOneMaterials();
    {
        const SceneLights lights(scene);
        const SkyLight sky{Sky::named("studio"), nullptr};
        SceneShaders shaders(scene, lights, &sky, nullptr, nullptr, std::make_unique<GlslLanguage>());
        shaders.upload([] {});
    }
    EXPECT_TRUE(ledger(NameKind::ShaderObject).live.empty());
    EXPECT_TRUE(ledger(NameKind::Texture).live.empty());
}

TEST_F(SceneShadersTest, scalesTheLightsOfAFileTogetherAndTakesTheBrightest) {
    Scene scene = twentyOneMaterials();
    for (int i = 0; i < 10; ++i) {
        Light& light = scene.lights.emplace_back();
        light.kind = Light::Kind::Directional;
        light.intensity = 100.0 * (i + 1);
    }
    scene.lights[9].kind = Light::Kind::Spot;
    scene.lights[9].range = 40.0;
    scene.lights[9].intensity = 1e6; // candela
    scene.lights[0].intensity = 0.0;
    const SceneLights lights(scene);
    ASSERT_EQ(lights.specs().size(), 8U);
    EXPECT_EQ(lights.fileLight(0), &scene.lights[9]);
    EXPECT_TRUE(lights.specs()[0].fType == LightSpec::kSpot && lights.specs()[0].fHasRange &&
                lights.specs()[0].fHasInnerCone);
    EXPECT_EQ(lights.fileLight(7), &scene.lights[2]);
    EXPECT_EQ(lights.warnings(),
              std::vector<std::string>{"warning: of its 9 lights the 8 brightest are drawn"});

    scene.lights[9].kind = Light::Kind::Ambient;
    const SceneLights withAmbient(scene);
    EXPECT_EQ(withAmbient.fileLight(7), &scene.lights[9]) << "behind those that cast shadows";
    EXPECT_EQ(withAmbient.specs()[7].fType, LightSpec::kAmbient);
    EXPECT_TRUE(withAmbient.hasMainLight());

    for (Light& light : scene.lights)
        light.intensity = 0.0;
    EXPECT_TRUE(SceneLights(scene).specs().empty()) << "the file wants the dark";
    scene.lights.clear();
    EXPECT_EQ(SceneLights(scene).specs().size(), 3U);
}

} // namespace
} // namespace orloview
