#include "draw/BlendedElements.h"

#include <gmock/gmock.h>

#include <random>

namespace orloview {
namespace {

using testing::ElementsAre;

/// Triangles in planes of these depths, one mesh.
Mesh sheets(const std::vector<float>& depths) {
    Mesh mesh;
    for (const float z : depths) {
        mesh.positions.insert(mesh.positions.end(), {0, 0, z, 1, 0, z, 0, 1, z});
        for (int corner = 0; corner < 3; ++corner)
            mesh.indices.push_back(static_cast<std::uint32_t>(mesh.indices.size()));
    }
    return mesh;
}

struct Order {
    explicit Order(Scene shown) : scene(std::move(shown)), elements(scene, instances(), boxes()) {}

    std::vector<size_t> instances() const {
        std::vector<size_t> all;
        for (size_t i = 0; i < scene.instances.size(); ++i)
            all.push_back(i);
        return all;
    }
    std::vector<Bounds> boxes() const {
        std::vector<Bounds> all;
        for (const Instance& instance : scene.instances) {
            Scene single;
            single.meshes = scene.meshes;
            single.instances = {instance};
            all.push_back(single.bounds());
        }
        return all;
    }

    /// Depths in the order of drawing, and the instance of each run.
    std::vector<double> depths(const koLinear::AffineMatrix& worldToEye) {
        std::vector<double> result;
        runs.clear();
        for (const BlendedElements::Run& run : elements.farthestFirst(worldToEye)) {
            runs.push_back(run.instance);
            const Instance& instance = scene.instances[run.instance];
            const Mesh& mesh = scene.meshes[static_cast<size_t>(instance.mesh)];
            for (size_t i = 0; i < run.indexCount; i += 3) {
                const float* p = &mesh.positions[size_t{elements.indicesOf(run)[i]} * 3];
                result.push_back(
                    instance.toWorld.then(worldToEye).transform(koLinear::Point(p[0], p[1], p[2]))[2]);
            }
        }
        return result;
    }

    Scene scene;
    BlendedElements elements;
    std::vector<size_t> runs;
};

const koLinear::AffineMatrix kFront = koLinear::AffineMatrix::translation(0, 0, -10);
const koLinear::AffineMatrix kBack(-1, 0, 0, 0, 1, 0, 0, 0, -1, 0, 0, -10);

TEST(BlendedElements, trianglesOfOneGroupGoFarthestFirstFromEitherSide) {
    Scene scene;
    scene.meshes = {sheets({2, 0, 3, 1})};
    scene.instances = {{"", 0, {}}};
    Order order(std::move(scene));
    EXPECT_THAT(order.depths(kFront), ElementsAre(-10, -9, -8, -7));
    EXPECT_THAT(order.depths(kBack), ElementsAre(-13, -12, -11, -10));
    EXPECT_THAT(order.depths(kFront), ElementsAre(-10, -9, -8, -7));
}

TEST(BlendedElements, groupsThatOverlapAreSortedTogetherOthersOneAfterTheOther) {
    Scene scene;
    scene.meshes = {sheets({0, 2}), sheets({1, 3})};
    // 0 and 1 overlap; 2 stands to the side at a depth between theirs, 3 behind all.
    scene.instances = {{"", 0, {}},
                       {"", 1, {}},
                       {"", 0, koLinear::AffineMatrix::translation(50, 0, 0.25)},
                       {"", 0, koLinear::AffineMatrix::translation(-50, 0, -5)}};
    Order order(std::move(scene));
    order.depths(kFront);
    EXPECT_THAT(order.runs, ElementsAre(3, 2, 0, 1, 0, 1));
}

TEST(BlendedElements, everyElementIsDrawnOnce) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> place(-3.0F, 3.0F);
    Scene scene;
    for (int i = 0; i < 12; ++i) {
        scene.meshes.push_back(sheets({place(random), place(random), place(random)}));
        if (i % 4 == 1)
            scene.meshes.back().topology = Topology::Lines; // of 9 indices: four lines
        scene.instances.push_back(
            {"", i, koLinear::AffineMatrix::translation(place(random), place(random), 0)});
    }
    Order order(std::move(scene));
    order.depths(kFront);
    std::vector<size_t> drawn(12);
    for (const BlendedElements::Run& run : order.elements.farthestFirst(kFront))
        drawn[run.instance] += run.indexCount;
    EXPECT_THAT(drawn, ElementsAre(9, 8, 9, 9, 9, 8, 9, 9, 9, 8, 9, 9));
}

} // namespace
} // namespace orloview
