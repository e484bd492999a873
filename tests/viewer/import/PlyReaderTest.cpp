#include "TestFiles.h"

#include "import/PlyReader.h"

#include <algorithm>

namespace orloview {
namespace {

using testing::ElementsAre;
using testing::FloatEq;
using testing::HasSubstr;
using testing::SizeIs;

Scene read(const std::string& text) {
    return readPly(bytesOf(text));
}

TEST(PlyReader, readsTextWithColoursAndQuads) {
    const Scene scene = read("ply\nformat ascii 1.0\ncomment a square\nelement vertex 4\n"
                             "property float x\nproperty float y\nproperty float z\n"
                             "property uchar red\nproperty uchar green\nproperty uchar blue\n"
                             "element face 1\nproperty list uchar int vertex_indices\nend_header\n"
                             "0 0 0 255 0 0\n1 0 0 0 255 0\n1 1 0 0 0 51\n0 1 0 0 0 0\n4 0 1 2 3\n");
    ASSERT_THAT(scene.meshes, SizeIs(1));
    const Mesh& mesh = scene.meshes[0];
    EXPECT_EQ(mesh.elementCount(), 2U);
    EXPECT_TRUE(mesh.bothSides);
    EXPECT_THAT(std::vector<float>(mesh.colors.begin() + 8, mesh.colors.begin() + 12),
                ElementsAre(0, 0, FloatEq(0.2F), 1));
    EXPECT_THAT(std::vector<float>(mesh.normals.begin(), mesh.normals.begin() + 3), ElementsAre(0, 0, 1));
}

TEST(PlyReader, readsBothByteOrders) {
    for (bool big : {false, true}) {
        Bytes file =
            bytesOf(std::string("ply\nformat binary_") + (big ? "big" : "little") +
                    "_endian 1.0\nelement vertex 3\nproperty double x\nproperty float y\n"
                    "property short z\nelement face 1\nproperty list uchar uint vertex_index\nend_header\n");
        const auto append = [&](auto value) {
            Bytes bytes(sizeof value);
            std::memcpy(bytes.data(), &value, sizeof value);
            if (big)
                std::reverse(bytes.begin(), bytes.end());
            file.insert(file.end(), bytes.begin(), bytes.end());
        };
        for (int i = 0; i < 3; ++i) {
            append(1.5 * i);
            append(-2.5F);
            append(static_cast<std::int16_t>(-7 + i * i));
        }
        append(std::uint8_t{3});
        for (std::uint32_t index : {2U, 1U, 0U})
            append(index);
        const Scene scene = readPly(file);
        ASSERT_THAT(scene.meshes, SizeIs(1));
        EXPECT_THAT(scene.meshes[0].positions, ElementsAre(0, -2.5F, -7, 1.5F, -2.5F, -6, 3, -2.5F, -3));
        EXPECT_THAT(scene.meshes[0].indices, ElementsAre(2, 1, 0));
    }
}

TEST(PlyReader, readsStripsEdgesAndClouds) {
    const std::string vertices =
        "ply\nformat ascii 1.0\nelement vertex 5\nproperty float x\nproperty float y\n"
        "property float z\n";
    const std::string data = "0 0 0\n1 0 0\n0 1 0\n1 1 0\n0 2 0\n";
    const Scene strips =
        read(vertices + "element tristrips 1\nproperty list int int vertex_indices\nend_header\n" + data +
             "8 0 1 2 3 -1 2 3 4\n");
    ASSERT_THAT(strips.meshes, SizeIs(1));
    EXPECT_EQ(strips.meshes[0].elementCount(), 3U);
    const Scene edges =
        read(vertices + "element edge 2\nproperty int vertex1\nproperty int vertex2\nend_header\n" + data +
             "0 1\n1 3\n");
    EXPECT_EQ(edges.meshes.at(0).topology, Topology::Lines);
    EXPECT_THAT(edges.meshes.at(0).indices, ElementsAre(0, 1, 1, 3));
    const Scene cloud = read(vertices + "end_header\n" + data);
    EXPECT_EQ(cloud.meshes.at(0).topology, Topology::Points);
    EXPECT_EQ(cloud.count(Topology::Points), 5U);
}

TEST(PlyReader, believesNoCountAndNoIndex) {
    const std::string start = "ply\nformat ascii 1.0\nelement vertex ";
    const std::string properties = "\nproperty float x\nproperty float y\nproperty float z\n";
    for (const char* count : {"4000000000", "300000000", "4", "-1", "99999999999999999999", "many"})
        EXPECT_NE(refusal([&] { read(start + count + properties + "end_header\n0 0 0\n1 0 0\n0 1 0\n"); }),
                  "")
            << count;
    const std::string face =
        "element face 2\nproperty list int int vertex_indices\nend_header\n0 0 0\n1 0 0\n0 1 0\n";
    EXPECT_NE(refusal([&] { read(start + "3" + properties + face + "2000000000 0 1 2\n"); }), "");
    const Scene scene = read(start + "3" + properties + face + "3 0 1 2\n3 0 1 7\n");
    EXPECT_EQ(scene.count(Topology::Triangles), 1U);
    EXPECT_THAT(scene.warnings, ElementsAre(HasSubstr("vertices that the file doesn't have")));
    EXPECT_THAT(refusal([&] { read("ply\nformat ascii 1.0\nproperty float x\nend_header\n"); }),
                HasSubstr("property"));
    EXPECT_THAT(
        refusal([&] { read("ply\nformat ascii 1.0\nelement vertex 1\nelement vertex 1\nend_header\n"); }),
        HasSubstr("two elements 'vertex'"));
}

TEST(PlyReader, readsOtherSpellingsAndMakesUpForZeroNormals) {
    std::string text = "ply\nformat ascii 1.0\nelement vertex 3\n";
    for (const char* name : {"x", "y", "z", "nx", "ny", "nz", "u", "v", "diffuse_red", "diffuse_green",
                             "diffuse_blue", "diffuse_alpha"})
        text += std::string("property float ") + name + "\n";
    const Scene scene = read(text + "element face 1\nproperty list uchar int vertex_index\nend_header\n"
                                    "0 0 0 0 0 0 0 0.25 1 0.5 0 0.75\n0 1 0 0 0 0 0 0 0 0 0 0\n"
                                    "0 0 1 0 0 0 0 0 0 0 0 0\n3 0 1 2\n");
    const Mesh& mesh = scene.meshes.at(0);
    EXPECT_THAT(std::vector<float>(mesh.colors.begin(), mesh.colors.begin() + 4),
                ElementsAre(1, 0.5F, 0, 0.75F));
    EXPECT_EQ(mesh.uvSets.at(0)[1], 0.75F) << "v runs down here";
    EXPECT_THAT(mesh.normals, ElementsAre(1, 0, 0, 1, 0, 0, 1, 0, 0));
}

TEST(PlyReader, scalesColoursByTheirType) {
    for (const auto& [type, full] : {std::pair("uchar", "255"), std::pair("ushort", "65535"),
                                     std::pair("float", "1"), std::pair("double", "1")}) {
        std::string text = "ply\nformat ascii 1.0\nelement vertex 1\n";
        for (const char* name : {"x", "y", "z"})
            text += std::string("property float ") + name + "\n";
        for (const char* name : {"red", "green", "blue"})
            text += std::string("property ") + type + " " + name + "\n";
        const Scene scene = read(text + "end_header\n0 0 0 0 " + full + " 0\n");
        EXPECT_THAT(scene.meshes.at(0).colors, ElementsAre(0, 1, 0, 1)) << type;
    }
}

TEST(PlyReader, takesUnmarkedRemarks) {
    const Scene scene = read("ply\nformat ascii 1.0\nmade by hand, 1999\nelement vertex 1\nproperty float x\n"
                             "property float y\nproperty float z\nend_header\n1 2 3\n");
    EXPECT_THAT(scene.meshes.at(0).positions, ElementsAre(1, 2, 3));
}

} // namespace
} // namespace orloview
