#include "DriverTest.h"

#include "texture/SceneTextures.h"

#include <string>

namespace orloview {
namespace {

class DriverSceneTextures : public DriverTest {};

TEST_F(DriverSceneTextures, memoryStaysLevelOverAThousandRounds) {
    Scene scene;
    const std::string file = "P6 64 64 255\n" + std::string(64UL * 64UL * 3UL, 'x');
    for (int i = 0; i < 3; ++i) {
        scene.images.push_back({"", "", {file.begin(), file.end()}});
        scene.textures.push_back({"", i});
        scene.materials.emplace_back().baseColorTexture.texture = i;
    }
    const auto rounds = [&](int count) {
        for (int round = 0; round < count; ++round) {
            SceneTextures textures(scene);
            textures.upload([] {});
            gl().glFinish();
        }
    };
    rounds(1000); // the pools of the driver and of malloc fill
    const long before = residentPages();
    rounds(1000);
    // Mesa's softpipe takes 200 at once now and then.
    EXPECT_LT(residentPages() - before, 500) << "pages; a round uploads 32 of them";
    expectNoErrors();
}

} // namespace
} // namespace orloview
