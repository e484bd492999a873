#include "TestFiles.h"

#include "import/ObjReader.h"

namespace orloview {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::FloatEq;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

Scene read(const std::string& text, const std::filesystem::path& path = "model.obj") {
    return readObj(bytesOf(text), ModelFolder(path));
}

const char* const kSquare = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";

TEST(ObjReader, countsIndicesFromEitherEnd) {
    const Scene scene = read(std::string(kSquare) + "vn 0 0 1\nf 1//1 2//1 3//1\nf -4//-1 -2//-1 -1//-1\n");
    ASSERT_THAT(scene.meshes, SizeIs(1));
    const Mesh& mesh = scene.meshes[0];
    EXPECT_EQ(mesh.elementCount(), 2U);
    EXPECT_EQ(mesh.vertexCount(), 4U) << "corners that are alike share a vertex";
    EXPECT_EQ(mesh.positions[mesh.indices[3] * 3], 0.0F);
    EXPECT_EQ(mesh.positions[mesh.indices[5] * 3 + 1], 1.0F);
}

TEST(ObjReader, cutsConcavePolygonsInside) {
    // An arrow head: the notch at (1, 1) must not be covered.
    const Scene scene = read("v 0 0 0\nv 2 0 0\nv 1 1 0\nv 2 2 0\nv 0 2 0\nf 1 2 3 4 5\n");
    const Mesh& mesh = scene.meshes.at(0);
    ASSERT_EQ(mesh.elementCount(), 3U);
    double area = 0.0;
    for (size_t i = 0; i < mesh.indices.size(); i += 3) {
        const float* a = &mesh.positions[mesh.indices[i] * 3];
        const float* b = &mesh.positions[mesh.indices[i + 1] * 3];
        const float* c = &mesh.positions[mesh.indices[i + 2] * 3];
        const double twice = (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
        EXPECT_GT(twice, 0.0) << "turned over";
        area += twice / 2.0;
    }
    EXPECT_NEAR(area, 3.0, 1e-6); // the square of 4 less the notch of 1
}

TEST(ObjReader, followsSmoothingGroups) {
    // Two walls of a tent that share the ridge 2-3.
    const std::string tent = "v -1 0 0\nv 0 1 0\nv 0 1 1\nv 1 0 0\n";
    const std::string walls = "f 1 3 2\nf 2 3 4\n";
    const auto normalsOfRidge = [&](const std::string& smoothing) {
        const Mesh mesh = read(tent + smoothing + walls).meshes.at(0);
        std::vector<float> xs;
        for (size_t i = 0; i < mesh.vertexCount(); ++i)
            if (mesh.positions[i * 3] == 0.0F)
                xs.push_back(mesh.normals[i * 3]);
        return xs;
    };
    for (const char* smoothing : {"", "s 4\n", "s on\n"})
        for (const float x : normalsOfRidge(smoothing))
            EXPECT_NEAR(x, 0.0F, 1e-6) << "smooth over the ridge";
    for (const float x : normalsOfRidge("s off\n"))
        EXPECT_NEAR(std::abs(x), 0.7071F, 1e-3) << "sharp at the ridge";
}

TEST(ObjReader, keepsGroupsMaterialsLinesAndPointsApart) {
    const Folder folder;
    folder.write("a.mtl", bytesOf("newmtl red\nKd 0.8 0.1 0.1\nd 0.5\nNs 98\nnewmtl plain\nKd 1 1 1\n"
                                  "map_Kd pictures\\gone.png\n"));
    const Scene scene =
        read(std::string("mtllib a.mtl\n") + kSquare +
                 "g first\nusemtl red\nf 1 2 3\nusemtl plain\nf 1 3 4\ng second\nl 1 2 3\np 4\n",
             folder.path() / "model.obj");
    ASSERT_THAT(scene.meshes, SizeIs(4));
    EXPECT_EQ(scene.materials.at(0).alphaMode, AlphaMode::Blend);
    EXPECT_THAT(scene.materials[0].baseColor[0], FloatEq(0.8F));
    EXPECT_NEAR(scene.materials[0].roughness, std::sqrt(0.02), 1e-6);
    EXPECT_EQ(scene.meshes[2].topology, Topology::Lines);
    EXPECT_EQ(scene.meshes[2].elementCount(), 2U);
    EXPECT_EQ(scene.meshes[3].topology, Topology::Points);
    EXPECT_THAT(scene.warnings, ElementsAre(HasSubstr("pictures/gone.png")));
}

TEST(ObjReader, readsHowPicturesAreLaidOn) {
    const Folder folder;
    folder.write("Wood.png", bytesOf("x"));
    folder.write("a.mtl",
                 bytesOf("newmtl placed\nKd 0 0 0\nmap_Kd -clamp on -s 2 3 1 -o 0.25 0.5 0 wood.png\n"
                         "map_d wood.png\n"
                         "newmtl glowing\nKd 0 0 0\nmap_Ke wood.png\nmap_d mask.png\n"));
    const Scene scene = read("mtllib a.mtl\nv 0 0 0\n", folder.path() / "model.obj");
    const Material& placed = scene.materials.at(0);
    EXPECT_EQ(placed.baseColor[0], 1.0F) << "black times a picture would be black";
    EXPECT_EQ(placed.alphaMode, AlphaMode::Blend) << "its opacity is in the same picture";
    // A corner at v = 0.25 from above is at 0.75 from below: 0.75 * 3 + 0.5 from below, 1 less that from
    // above.
    const TextureUse& use = placed.baseColorTexture;
    EXPECT_FLOAT_EQ(0.25F * use.scale[1] + use.offset[1], 1.0F - (0.75F * 3.0F + 0.5F));
    EXPECT_FLOAT_EQ(0.5F * use.scale[0] + use.offset[0], 0.5F * 2.0F + 0.25F);
    EXPECT_EQ(scene.textures.at(static_cast<size_t>(use.texture)).wrapV, Wrap::ClampToEdge);
    const Material& glowing = scene.materials.at(1);
    EXPECT_EQ(glowing.baseColor[0], 0.0F);
    EXPECT_EQ(glowing.emissive[0], 1.0F);
    EXPECT_EQ(glowing.alphaMode, AlphaMode::Opaque);
    EXPECT_EQ(scene.textures.at(static_cast<size_t>(glowing.emissiveTexture.texture)).wrapU, Wrap::Repeat)
        << "the same picture, laid on another way";
    EXPECT_THAT(scene.warnings, ElementsAre(HasSubstr("'mask.png': left out: opacity")));
}

TEST(ObjReader, readsVertexColoursAndLongLines) {
    const Scene scene = read("v 0 0 0 1 0.5 0\nv 1 0 0\nv 0 1 0 0 0 1\nf 1 \\\n2 3\n");
    const Mesh& mesh = scene.meshes.at(0);
    EXPECT_THAT(mesh.colors, ElementsAre(1, 0.5F, 0, 1, 1, 1, 1, 1, 0, 0, 1, 1));
}

TEST(ObjReader, makesTheNormalsThatAreMissing) {
    // The first two corners have a normal, too long; the third names one that isn't there.
    const Scene scene = read(std::string(kSquare) + "vn 3 0 4\nf 1//1 2//1 3//7\n");
    EXPECT_THAT(scene.meshes.at(0).normals,
                ElementsAre(FloatEq(0.6F), 0, FloatEq(0.8F), FloatEq(0.6F), 0, FloatEq(0.8F), 0, 0, 1));
}

TEST(ObjReader, namesWhatItLeavesOut) {
    const Scene scene = read(std::string("mtllib gone.mtl\n") + kSquare +
                             "usemtl red\nf 1 2 3\nf 1 2 9\nf 1 two 3\nf 1 2\nv nan 0 0\nf 1 2 5\n");
    EXPECT_EQ(scene.count(Topology::Triangles), 1U);
    for (const char* word : {"gone.mtl", "vertices that the file doesn't have", "no vertex index", "line 10",
                             "too few", "infinite or missing"})
        EXPECT_THAT(scene.warnings, Contains(HasSubstr(word)));
    EXPECT_THAT(read("v 0 0 0\r\nf 1 two 1\r\np 1\r\n").warnings, ElementsAre(HasSubstr("line 2:")));
    EXPECT_NE(refusal([] { read("# nothing\n"); }), "");
}

} // namespace
} // namespace orloview
