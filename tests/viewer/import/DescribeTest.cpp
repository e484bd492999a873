#include "TestFiles.h"

#include "info/Describe.h"

namespace orloview {
namespace {

using testing::HasSubstr;

Scene twoSquares() {
    Scene scene;
    scene.format = "OBJ";
    Mesh& mesh = scene.meshes.emplace_back();
    mesh.positions = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 99, 99, 99};
    mesh.indices = {0, 1, 2, 0, 2, 3}; // the last vertex is not drawn
    scene.instances.resize(2);
    scene.instances[0].mesh = scene.instances[1].mesh = 0;
    scene.instances[1].toWorld = koLinear::AffineMatrix::translation(10, 0, -2);
    scene.animations = {{"", 1.5}};
    scene.cameras.resize(1);
    scene.cameras[0].name = "eye\nball";
    scene.cameras[0].yfov = 0.7853981633974483;
    scene.materials.resize(1);
    scene.materials[0].name = "not UTF-8: \xFF";
    scene.warnings = {"something: left out"};
    return scene;
}

TEST(Describe, countsWhatIsDrawn) {
    const std::string text = describe(twoSquares());
    for (const char* line :
         {"groups     2\n", "triangles  4\n", "lines      0\n", "bounds     (0, 0, -2) to (11, 1, 0)\n",
          "animations 1\n  #0, 1.5 s\n", "cameras    1\n  eye ball, perspective, 45 degrees\n",
          "warnings   1\n  something: left out\n"})
        EXPECT_THAT(text, HasSubstr(line));
    EXPECT_THAT(describe(Scene{}), HasSubstr("bounds     none\n"));
}

TEST(Describe, writesJsonThatCanBeRead) {
    const Json json = Json::parse(describeJson(twoSquares()));
    EXPECT_EQ(json["groups"], 2);
    EXPECT_EQ(json["triangles"], 4);
    EXPECT_EQ(json["points"], 0);
    EXPECT_EQ(json["bounds"], Json::parse(R"({"min": [0, 0, -2], "max": [11, 1, 0]})"));
    EXPECT_EQ(json["materials"][0]["baseColor"], Json::parse("[1, 1, 1, 1]"));
    EXPECT_EQ(json["cameras"][0]["far"], nullptr) << "infinite";
    EXPECT_EQ(Json::parse(describeJson(Scene{}))["bounds"], nullptr);
}

} // namespace
} // namespace orloview
