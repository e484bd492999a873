#include "TestFiles.h"

#include "import/ChildProcess.h"
#include "import/Importer.h"
#include "import/ModelReader.h"
#include "import/SceneStream.h"

#include <csignal>
#include <cstdlib>
#include <sys/wait.h>

namespace orloview {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kLimitsMemory = false; // the sanitizer reserves terabytes of address space
#else
constexpr bool kLimitsMemory = true;
#endif

TEST(ChildProcess, tellsWhatBecameOfTheWork) {
    ImportLimits limits;
    limits.seconds = 1.0;
    const auto outcome = [&](const ChildWork& work) { return runInChild(work, limits).outcome; };
    EXPECT_EQ(outcome([](int) { return true; }), ChildOutcome::Done);
    EXPECT_EQ(outcome([](int) { return false; }), ChildOutcome::Failed);
    EXPECT_EQ(outcome([](int) { return std::raise(SIGSEGV) == 0; }), ChildOutcome::Crashed);
    EXPECT_EQ(outcome([](int) -> bool { std::abort(); }), ChildOutcome::Crashed);
    EXPECT_EQ(outcome([](int) -> bool { throw 1; }), ChildOutcome::Crashed);
    EXPECT_EQ(outcome([](int) -> bool { throw std::bad_alloc(); }), ChildOutcome::OutOfMemory);
    EXPECT_EQ(outcome([](int) -> bool {
                  for (;;)
                      ::pause();
              }),
              ChildOutcome::OutOfTime);
    if (kLimitsMemory) {
        limits = {std::size_t{256} << 20, 60.0};
        EXPECT_EQ(outcome([](int) {
                      std::vector<std::vector<char>> hoard;
                      for (;;)
                          hoard.emplace_back(std::size_t{16} << 20, 'x');
                      return true;
                  }),
                  ChildOutcome::OutOfMemory);
    }
}

TEST(ChildProcess, handsTheOutputOverAndKeepsQuiet) {
    testing::internal::CaptureStdout();
    const ChildResult result = runInChild(
        [](int output) {
            std::puts("chatter of an import library");
            std::fflush(stdout);
            const std::string text(100000, 'z');
            return ::write(output, text.data(), text.size()) == static_cast<ssize_t>(text.size());
        },
        {});
    EXPECT_THAT(testing::internal::GetCapturedStdout(), IsEmpty());
    EXPECT_THAT(result.output, SizeIs(100000));
}

TEST(ChildProcess, needsNoStandardStreams) {
    const pid_t withoutStreams = ::fork();
    if (withoutStreams == 0) {
        for (int stream : {0, 1, 2})
            ::close(stream);
        const ChildResult result = runInChild([](int output) { return ::write(output, "well", 4) == 4; }, {});
        ::_exit(result.output == bytesOf("well") ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(withoutStreams, &status, 0), withoutStreams);
    EXPECT_EQ(status, 0);
}

GltfFile triangle() {
    GltfFile file;
    file.primitive()["attributes"]["POSITION"] = file.floats({0, 0, 0, 1, 0, 0, 0, 1, 0}, "VEC3");
    return file;
}

TEST(Importer, bringsTheSceneOver) {
    const Folder folder;
    GltfFile file = triangle();
    file.json["materials"] = {
        {{"name", "paint"}, {"pbrMetallicRoughness", {{"baseColorFactor", {0, 0.5, 1, 1}}}}}};
    file.primitive()["material"] = 0;
    const ImportResult result = importModel(folder.write("model", file.glb()).string());
    ASSERT_TRUE(result) << result.error;
    EXPECT_EQ(result.scene.format, "glTF 2.0 binary") << "by its content: the name says nothing";
    EXPECT_EQ(result.scene.meshes.at(0).positions, (std::vector<float>{0, 0, 0, 1, 0, 0, 0, 1, 0}));
    EXPECT_EQ(result.scene.materials.at(0).name, "paint");
    EXPECT_EQ(result.scene.materials.at(0).baseColor[1], 0.5F);
}

TEST(Importer, refusesMoreCopiesThanCanBeDrawn) {
    const Folder folder;
    GltfFile file = triangle();
    file.primitive()["indices"] = file.accessor(Bytes(60000, 0), 5121, "SCALAR", 60000);
    for (int node = 0; node < 14000; ++node) { // with 20,000 triangles each
        file.json["nodes"][node]["mesh"] = 0;
        file.json["scenes"][0]["nodes"][node] = node;
    }
    EXPECT_THAT(importModel(folder.write("a.glb", file.glb()).string()).error, HasSubstr("280000000"));
}

TEST(Importer, saysInOneLineWhyThereIsNothing) {
    const Folder folder;
    const auto errorOf = [](const std::filesystem::path& path) { return importModel(path.string()).error; };
    EXPECT_THAT(errorOf(folder.path() / "gone.glb"), HasSubstr("no such file"));
    EXPECT_THAT(errorOf(folder.path()), HasSubstr("directory"));
    EXPECT_THAT(errorOf(folder.write("empty.obj", {})), HasSubstr("empty"));
    EXPECT_THAT(errorOf(folder.write("notes.txt", bytesOf("Dear diary"))),
                HasSubstr(".gltf, .glb, .obj, .ply or .stl"));
    EXPECT_THAT(errorOf(folder.write("a\nb.glb", bytesOf("glTF\n"))), testing::Not(HasSubstr("\n")));
}

/// Every cut of a small file of each kind, each read in this process: a scene or an ImportError, never more.
TEST(Importer, survivesEveryCut) {
    GltfFile withExtras = triangle();
    withExtras.primitive()["indices"] = withExtras.accessor({0, 1, 2}, 5121, "SCALAR", 3);
    const std::string stlFacet = " facet normal 0 0 1\n  outer loop\n   vertex 0 0 0\n   vertex 1 0 0\n"
                                 "   vertex 0 1 0\n  endloop\n endfacet\n";
    Bytes binaryStl(84, 0);
    binaryStl[80] = 1;
    const Bytes facet = packed(std::vector<float>{0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0});
    binaryStl.insert(binaryStl.end(), facet.begin(), facet.end());
    binaryStl.resize(84 + 50);
    Bytes binaryPly = bytesOf("ply\nformat binary_little_endian 1.0\nelement vertex 3\nproperty char x\n"
                              "property char y\nproperty char z\nelement tristrips 1\n"
                              "property list uchar char vertex_indices\nend_header\n");
    for (std::uint8_t byte : {0, 0, 0, 1, 0, 0, 0, 1, 0, 3, 0, 1, 2})
        binaryPly.push_back(byte);
    const std::pair<const char*, Bytes> kFiles[] = {
        {"a.glb", withExtras.glb()},
        {"a.gltf", bytesOf(withExtras.text())},
        {"b.ply", binaryPly},
        {"a.obj", bytesOf("v 0 0 0\nv 1 0 0\nv 0 1 0\nvn 0 0 1\nusemtl x\nf 1//1 2//1 3//1\n")},
        {"a.ply",
         bytesOf("ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty "
                 "float z\nelement face 1\nproperty list uchar int vertex_indices\nend_header\n0 0 0\n1 0 "
                 "0\n0 1 0\n3 0 1 2\n")},
        {"a.stl", bytesOf("solid x\n" + stlFacet + "endsolid x\n")},
        {"b.stl", binaryStl},
    };
    const Folder folder;
    for (const auto& file : kFiles) {
        const char* const name = file.first;
        const Bytes& whole = file.second;
        EXPECT_EQ(refusal([&] {
                      EXPECT_EQ(readModel(folder.write(name, whole)).count(Topology::Triangles), 1U) << name;
                  }),
                  "")
            << name;
        for (std::size_t length = 0; length < whole.size(); ++length) {
            const auto path =
                folder.write(name, Bytes(whole.begin(), whole.begin() + static_cast<long>(length)));
            refusal([&] { EXPECT_TRUE(isConsistent(readModel(path))) << name << " cut to " << length; });
        }
    }
}

/// The import library ends its process on some of these.
TEST(Importer, outlivesTheImportLibrary) {
    const Folder folder;
    const std::string whole = "OFF\n3 1 0\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n";
    EXPECT_EQ(importModel(folder.write("a.off", bytesOf(whole)).string()).scene.count(Topology::Triangles),
              1U);
    for (std::size_t length = 1; length + 1 < whole.size(); ++length) {
        const ImportResult result =
            importModel(folder.write("a.off", bytesOf(whole.substr(0, length))).string());
        EXPECT_NE(result.error.empty(), result.scene.instances.empty()) << length << result.error;
    }
}

TEST(SceneStream, refusesDamagedBytes) {
    Scene scene;
    scene.meshes.resize(1);
    scene.meshes[0].positions = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    scene.meshes[0].indices = {0, 1, 2};
    scene.instances.push_back({"node", 0, {}});
    const ChildResult sent = runInChild([&](int output) { return writeScene(scene, output); }, {});
    Scene back;
    ASSERT_TRUE(readScene(sent.output, back));
    EXPECT_EQ(back.meshes[0].indices, scene.meshes[0].indices);
    EXPECT_EQ(back.instances[0].nodeName, "node");
    for (std::size_t length = 0; length < sent.output.size(); ++length)
        EXPECT_FALSE(readScene(std::span(sent.output).first(length), back)) << length;
    scene.meshes[0].indices[2] = 3;
    const ChildResult wrong = runInChild([&](int output) { return writeScene(scene, output); }, {});
    EXPECT_FALSE(readScene(wrong.output, back)) << "an index without a vertex";
}

} // namespace
} // namespace orloview
