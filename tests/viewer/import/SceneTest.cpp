#include "TestFiles.h"

#include "import/ModelReader.h"
#include "scene/Normals.h"
#include "scene/Poser.h"
#include "scene/Triangulate.h"

namespace orloview {
namespace {

using testing::ElementsAre;

/// One of everything, each with a reference.
Scene chain(const std::string& format) {
    Scene scene;
    scene.format = format;
    Mesh& mesh = scene.meshes.emplace_back();
    mesh.positions = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    mesh.indices = {0, 1, 2};
    mesh.material = 0;
    scene.instances.push_back({format, 0, {}});
    scene.variants.push_back({"night", {{0, 0}}});
    scene.images.resize(3);
    scene.textures.resize(2);
    scene.textures[1].image = 2;
    Material& material = scene.materials.emplace_back();
    material.baseColorTexture.texture = 0;
    material.emissiveTexture.texture = 1;
    return scene;
}

TEST(Scene, renumbersWhatItTakesIn) {
    Scene both = chain("OBJ");
    both.materials.emplace_back();
    Scene second = chain("STL");
    second.meshes[0].material = -1;
    both.append(chain("PLY"));
    both.append(second);
    EXPECT_EQ(both.format, "OBJ, PLY, STL");
    EXPECT_TRUE(isConsistent(both));
    EXPECT_EQ(both.meshes.at(1).material, 2);
    EXPECT_EQ(both.meshes.at(2).material, -1) << "none stays none";
    EXPECT_EQ(both.instances.at(2).mesh, 2);
    EXPECT_EQ(both.textures.at(3).image, 5);
    EXPECT_EQ(both.materials.at(2).baseColorTexture.texture, 2);
    EXPECT_EQ(both.materials.at(2).emissiveTexture.texture, 3);
    EXPECT_EQ(both.materials.at(2).normalTexture.texture, -1);
    EXPECT_TRUE(both.show("night") && !both.show("day"));
    EXPECT_EQ(both.meshes.at(2).material, 3) << "a variant's, of its own file";
    EXPECT_EQ(both.count(Topology::Triangles), 3U);
}

TEST(Scene, movesWhatItTookInByItsOwnAnimations) {
    Scene both = movingScene();
    both.append(movingScene());
    ASSERT_TRUE(isConsistent(both));
    Poser poser(both, 1);
    const Moved& moved = poser.pose(1.0);
    EXPECT_THAT(moved.instances, ElementsAre(1U));
    EXPECT_THAT(both.meshes[1].positions, ElementsAre(0, 0, 0, 1, 0, 2, 1, 1, 0));
    EXPECT_EQ(both.instances[1].toWorld[3][0], 1.0);
    EXPECT_THAT(both.meshes[0].positions, ElementsAre(0, 0, 0, 1, 0, 0, 0, 1, 0));
    EXPECT_EQ(poser.bounds().max[0], 2.0);
    EXPECT_EQ(both.bounds().max[0], 1.0) << "as it stood at the first picture";
    poser.choose(0);
    EXPECT_THAT(poser.pose(2.0).instances, ElementsAre(0U, 1U)) << "what others moved goes back";
    EXPECT_EQ(both.instances[1].toWorld[3][0], 0.0);
    EXPECT_EQ(both.meshes[0].positions[5], 4.0F);
}

TEST(Normals, weighTrianglesByTheirArea) {
    Mesh mesh; // the vertex at the origin belongs to a triangle facing z and one of twice its size facing x
    mesh.positions = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 2};
    mesh.indices = {0, 1, 2, 0, 2, 3};
    addSmoothNormals(mesh);
    EXPECT_NEAR(mesh.normals[0], 2 / std::sqrt(5.0), 1e-6);
    EXPECT_NEAR(mesh.normals[2], 1 / std::sqrt(5.0), 1e-6);
    addFlatNormals(mesh);
    EXPECT_EQ(mesh.vertexCount(), 6U);
    EXPECT_THAT(std::vector<float>(mesh.normals.end() - 3, mesh.normals.end()), ElementsAre(1, 0, 0));
}

/// A polygon with a dent, facing along each axis from both sides: its triangles face as it does and cover it.
TEST(Triangulate, cutsPolygonsFacingAnyWay) {
    constexpr float kDented[][2] = {{0, 0}, {4, 0}, {4, 4}, {3, 1}};
    for (size_t axis = 0; axis < 3; ++axis) {
        for (const bool turned : {false, true}) {
            std::vector<float> positions(12);
            std::vector<std::uint32_t> polygon;
            for (std::uint32_t i = 0; i < 4; ++i) {
                positions[i * 3 + (axis + 1) % 3] = kDented[i][0];
                positions[i * 3 + (axis + 2) % 3] = kDented[i][1];
                polygon.insert(turned ? polygon.begin() : polygon.end(), i);
            }
            std::vector<std::uint32_t> triangles;
            triangulate(polygon, positions, triangles);
            ASSERT_EQ(triangles.size(), 6U);
            double areas = 0.0;
            for (size_t t = 0; t < 6; t += 3) {
                const auto corner = [&](size_t i, size_t u) {
                    return positions[triangles[t + i] * 3 + (axis + u) % 3];
                };
                const double area = (corner(1, 1) - corner(0, 1)) * (corner(2, 2) - corner(0, 2)) -
                                    (corner(1, 2) - corner(0, 2)) * (corner(2, 1) - corner(0, 1));
                EXPECT_GT(turned ? -area : area, 0.0) << axis;
                areas += std::abs(area) / 2;
            }
            EXPECT_EQ(areas, 4.0) << axis;
        }
    }
}

} // namespace
} // namespace orloview
