#include "DoubleTest.h"

#include "texture/SceneTextures.h"

namespace orloview {
namespace {

class SceneTexturesTest : public DoubleTest {};

Scene twoPicturesInFiveMaterials() {
    Scene scene;
    scene.images = {{"good.ppm", "", {'P', '6', ' ', '1', ' ', '1', ' ', '2', '5', '5', '\n', 9, 9, 9}},
                    {"bad.ppm", "", {'P', '6'}},
                    {"absent.ppm", "", {}}};
    scene.images[1].model = "m.gltf";
    scene.images.push_back(scene.images[0]); // the same under another name
    scene.images[3].name = "again.ppm";
    for (const int image : {0, 1, 2, -1, 3}) {
        Texture& texture = scene.textures.emplace_back();
        texture.image = image;
        Material& material = scene.materials.emplace_back();
        material.baseColorTexture.texture = static_cast<int>(scene.textures.size()) - 1;
    }
    scene.materials[4].emissive = koColor::Color(1.0F, 0.0F, 0.0F);
    return scene;
}

TEST_F(SceneTexturesTest, sharesOnePictureAndGivesBackEveryName) {
    const Scene scene = twoPicturesInFiveMaterials();
    {
        SceneTextures textures(scene);
        EXPECT_EQ(textures.count(), 3U) << "good, bad, and a texel for the emission";
        EXPECT_EQ(textures.layersOf(0).base.texture, nullptr) << "not uploaded yet";
        int uploaded = 0;
        textures.upload([&] { ++uploaded; });
        EXPECT_EQ(uploaded, 3);
        EXPECT_NE(textures.layersOf(0).base.texture, nullptr);
        EXPECT_EQ(textures.layersOf(0).base.texture, textures.layersOf(4).base.texture);
        EXPECT_EQ(textures.layersOf(0).emission.texture, nullptr);
        EXPECT_NE(textures.layersOf(4).emission.texture, nullptr);
        EXPECT_FALSE(textures.layersOf(4).emission.uvSet);
        for (const int without : {-1, 1, 2, 3})
            EXPECT_EQ(textures.layersOf(without).base.texture, nullptr) << without;
        ASSERT_EQ(textures.warnings().size(), 1U) << "of the absent one the importer has told";
        EXPECT_EQ(textures.warnings()[0].find("m.gltf: warning: the picture 'bad.ppm': left out: "), 0U);
        EXPECT_EQ(ledger(NameKind::Texture).made, 2);
    }
    EXPECT_TRUE(ledger(NameKind::Texture).live.empty());
    EXPECT_EQ(ledger(NameKind::Texture).strayDeletions, 0);
}

TEST_F(SceneTexturesTest, endsWhilePicturesAreStillRead) {
    Scene scene;
    std::vector<std::uint8_t> large(16 + 3 * 1000 * 1000);
    const std::string header = "P6 1000 1000 255\n";
    std::copy(header.begin(), header.end(), large.begin());
    for (int i = 0; i < 20; ++i) {
        large.back() = static_cast<std::uint8_t>(i); // of its own
        scene.images.push_back({"", "", large});
        scene.textures.push_back({"", i});
        scene.materials.emplace_back().baseColorTexture.texture = i;
    }
    const SceneTextures textures(scene);
    EXPECT_EQ(textures.count(), 20U);
}

} // namespace
} // namespace orloview
