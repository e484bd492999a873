#include "TestFiles.h"

#include "base/ChildProcess.h"
#include "base/Confinement.h"
#include "import/Importer.h"
#include "import/ModelReader.h"
#include "import/SceneStream.h"
#include "scene/Poser.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <numeric>
#include <span>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>

namespace orloview {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

#ifdef ORLOGL_SANITIZED
constexpr bool kLimitsMemory = false; // the sanitizer reserves terabytes of address space
#else
constexpr bool kLimitsMemory = true;
#endif

/// Takes that much and more, piece by piece.
bool hoards(size_t megabytes) {
    std::vector<std::vector<char>> hoard;
    for (size_t i = 0; i < megabytes; ++i)
        hoard.emplace_back(size_t{1} << 20, 'x');
    return hoard.size() == megabytes;
}

TEST(ChildProcess, tellsWhatBecameOfTheWork) {
    ChildLimits limits{size_t{256} << 20, 1, size_t{1024} << 20, 2};
    const auto outcome = [&](const ChildWork& work) { return runInChild(work, limits).outcome; };
    EXPECT_EQ(outcome([](int) { return true; }), ChildOutcome::Done);
    EXPECT_EQ(outcome([](int) { return false; }), ChildOutcome::Failed);
    EXPECT_EQ(outcome([](int) { return std::raise(SIGSEGV) == 0; }), ChildOutcome::Crashed);
    EXPECT_EQ(outcome([](int) -> bool { std::abort(); }), ChildOutcome::Crashed);
    EXPECT_EQ(outcome([](int) -> bool { throw 1; }), ChildOutcome::Crashed);
    EXPECT_EQ(outcome([](int) -> bool { throw std::bad_alloc(); }), ChildOutcome::OutOfMemory);
    EXPECT_EQ(outcome([](int) { return ::pause() == 0; }), ChildOutcome::OutOfTime) << "it waits";
    const auto writesTooMuch = [](int output) { return ::write(output, "ab", 2) == 2; };
    EXPECT_EQ(runInChild(writesTooMuch, limits, [](ChildOutput&) {}).outcome, ChildOutcome::Crashed);
    const ChildResult busy = runInChild(
        [](int) -> bool {
            raiseLimits(0, 9);
            while (::getppid() > 0) {
            }
            return true;
        },
        limits);
    EXPECT_EQ(busy.outcome, ChildOutcome::OutOfTime);
    EXPECT_EQ(busy.limits.seconds, 2U) << "no more than the most";
    if (kLimitsMemory) {
        limits.seconds = limits.mostSeconds = 30; // new pages take a busy machine long
        EXPECT_EQ(outcome([](int) { return hoards(300); }), ChildOutcome::OutOfMemory);
        EXPECT_EQ(outcome([](int) {
                      raiseLimits(size_t{300} << 20, 0);
                      return hoards(300);
                  }),
                  ChildOutcome::Done);
    }
}

TEST(ChildStarter, runsChildrenOfAProcessMadeBefore) {
    ChildStarter starter([](const std::string& order, int output) {
        if (order == "crash")
            std::abort();
        while (order == "wait")
            ::pause();
        return ::write(output, order.data(), order.size()) > 0 && order != "fail";
    });
    std::string output;
    const auto outcome = [&](const std::string& order, const std::function<void()>& whileWaiting = {}) {
        const auto take = [&](ChildOutput& from) {
            const std::vector<std::uint8_t> bytes = from.takeRest();
            output.assign(bytes.begin(), bytes.end());
        };
        return starter.run(order, ChildLimits{size_t{256} << 20, 1}, take, whileWaiting).outcome;
    };
    EXPECT_EQ(outcome("work"), ChildOutcome::Done);
    EXPECT_EQ(output, "work");
    EXPECT_EQ(outcome("fail"), ChildOutcome::Failed);
    EXPECT_EQ(outcome("crash"), ChildOutcome::Crashed);
    EXPECT_EQ(outcome("wait"), ChildOutcome::OutOfTime);
    EXPECT_THROW(outcome("wait", [] { throw 1; }), int) << "nobody waits for it any more";
    EXPECT_EQ(outcome("more"), ChildOutcome::Done);
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
    for (const char* guessed : {"notes.ase", "notes.ask", "notes.csm"})
        EXPECT_THAT(errorOf(folder.write(guessed, bytesOf("Dear diary"))),
                    HasSubstr("nothing in it to draw"));
    EXPECT_THAT(errorOf(folder.write("a\nb.glb", bytesOf("glTF\n"))), testing::Not(HasSubstr("\n")));
}

TEST(Importer, saysWhichLimitAndWhichSwitch) {
    const Folder folder;
    std::string text = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";
    for (int i = 0; i < 8000000; ++i)
        text += "f 1 2 3\n";
    const std::string path = folder.write("a.obj", bytesOf(text)).string();
    EXPECT_THAT(importModel(path, {{}, 1}).error,
                testing::AllOf(HasSubstr("more than 1 s "), HasSubstr("--limit-time 4")));
    if (kLimitsMemory) {
        EXPECT_THAT(importModel(path, {size_t{90} << 20, {}}).error,
                    testing::AllOf(HasSubstr("more than 90 MB "), HasSubstr("--limit-memory 1G")));
    }
}

TEST(Importer, staysInTheFolders) {
    const Folder folder;
    for (const char* sub : {"above", "above/model", "above/maps", "outside"})
        std::filesystem::create_directory(folder.path() / sub);
    const Bytes corners = packed(std::vector<float>{0, 0, 0, 1, 0, 0, 0, 1, 0});
    for (const char* file : {"above/maps/a.bin", "above/model/b.bin", "outside/c.bin"})
        folder.write(file, corners);
    std::filesystem::create_symlink("../maps/a.bin", folder.path() / "above/model/near");
    std::filesystem::create_symlink("../../outside/c.bin", folder.path() / "above/model/far");
    const std::string outside = (folder.path() / "outside/c.bin").string();
    const std::pair<std::string, const char*> kNames[] = {
        {"../maps/a.bin", ""},
        {"near", ""},
        {"far", "outside the model's folder"},
        {outside, "outside the model's folder"},
        {"../../outside/c.bin", "outside the model's folder"},
        {"..%2f../outside%2Fc.bin", "outside the model's folder"},
        {"b.bin%00.png", "no such file"},
    };
    for (const auto& [name, reason] : kNames) {
        GltfFile file = triangle();
        file.json["buffers"][0] = {{"uri", name}, {"byteLength", corners.size()}};
        const std::string path = folder.write("above/model/a.gltf", bytesOf(file.json.dump())).string();
        EXPECT_THAT(importModel(path).error, HasSubstr(reason)) << name;
        EXPECT_EQ(bool{importModel(path)}, *reason == 0) << name;
        EXPECT_EQ(bool{importModel(path, {{}, {}, true})}, !name.starts_with("b.bin")) << name;
    }
    const std::string obj = folder
                                .write("above/model/a.obj", bytesOf("mtllib " + outside +
                                                                    "\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"))
                                .string();
    EXPECT_THAT(importModel(obj).scene.warnings,
                testing::ElementsAre(HasSubstr("outside the model's folder")));
    const std::string x3d =
        folder
            .write("above/model/a.x3d",
                   bytesOf("<X3D><Scene><Inline url='../../outside/b.x3d'/></Scene></X3D>"))
            .string();
    EXPECT_THAT(importModel(x3d).error, HasSubstr("outside the model's folder"));
    const std::string object = folder.write("outside/b.lwo", bytesOf("FORM")).string();
    const Bytes lws = bytesOf("LWSC\n3\n\nLoadObjectLayer 1 " + object + "\n");
    EXPECT_THAT(importModel(folder.write("above/model/a.lws", lws).string()).error,
                HasSubstr("outside the model's folder"));
}

/// What a reader could do that a damaged file has taken over.
TEST(Confinement, leavesNothingButReading) {
    if (!whatIsNotConfined().empty())
        GTEST_SKIP() << "this kernel has no means for " << whatIsNotConfined();
    const Folder folder;
    const std::string inside = folder.write("in", bytesOf("x")).string();
    const std::string linked = (folder.path() / "link").string();
    std::filesystem::create_symlink("/etc/passwd", linked);
    const ChildResult result = runInChild(
        [&](int output) {
            confine({inside, folder.path()});
            rlimit time{};
            raiseLimits(0, 1);
            ::getrlimit(RLIMIT_CPU, &time);
            const bool could[] = {::open("/etc/passwd", O_RDONLY) >= 0,
                                  ::open(linked.c_str(), O_RDONLY) >= 0,
                                  ::open(inside.c_str(), O_WRONLY) >= 0,
                                  ::unlink(inside.c_str()) == 0,
                                  ::socket(AF_UNIX, SOCK_STREAM, 0) >= 0,
                                  ::syscall(0x40000000 | SYS_socket, AF_UNIX, SOCK_STREAM, 0) >= 0,
                                  ::execl("/bin/true", "true", nullptr) == 0,
                                  ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0,
                                  ::kill(::getppid(), 0) == 0,
                                  ::prlimit(::getppid(), RLIMIT_CPU, nullptr, &time) == 0,
                                  time.rlim_cur != 6,
                                  ::open(inside.c_str(), O_RDONLY) < 0};
            return ::write(output, could, sizeof could) == sizeof could;
        },
        {size_t{2} << 30, 5, size_t{2} << 30, 6});
    EXPECT_EQ(result.outcome, ChildOutcome::Done);
    EXPECT_EQ(result.output, Bytes(12, 0));
}

using NamedFile = std::pair<const char*, Bytes>;

/// Hands over the whole file, then every beginning of it.
template <typename Check>
void cutEverywhere(const NamedFile& file, Check&& check) {
    const Folder folder;
    for (size_t length = file.second.size(); length > 0; --length)
        check(
            folder.write(file.first, {file.second.begin(), file.second.begin() + static_cast<long>(length)}),
            length == file.second.size());
}

/// Every cut of a small file of each kind, each read in this process: a scene or an ImportError, never more.
TEST(Importer, survivesEveryCut) {
    GltfFile gltf = triangle();
    gltf.primitive()["indices"] = gltf.accessor({0, 1, 2}, 5121, "SCALAR", 3);
    Bytes binaryPly = bytesOf("ply\nformat binary_little_endian 1.0\nelement vertex 3\nproperty char x\n"
                              "property char y\nproperty char z\nelement tristrips 1\n"
                              "property list uchar char vertex_indices\nend_header\n");
    for (std::uint8_t byte : {0, 0, 0, 1, 0, 0, 0, 1, 0, 3, 0, 1, 2})
        binaryPly.push_back(byte);
    const NamedFile kFiles[] = {
        {"a.glb", gltf.glb()},
        {"a.gltf", bytesOf(gltf.text())},
        {"a.obj", bytesOf("v 0 0 0\nv 1 0 0\nv 0 1 0\nvn 0 0 1\nusemtl x\nf 1//1 2//1 3//1\n")},
        {"a.ply",
         bytesOf("ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty "
                 "float z\nelement face 1\nproperty list uchar int vertex_indices\nend_header\n0 0 0\n1 0 "
                 "0\n0 1 0\n3 0 1 2\n")},
        {"b.ply", binaryPly},
    };
    for (const NamedFile& file : kFiles)
        cutEverywhere(file, [](const std::filesystem::path& path, bool isWhole) {
            size_t triangles = 0;
            const std::string message = refusal([&] {
                const Scene scene = readModel(path, ModelFolder(path));
                EXPECT_TRUE(isConsistent(scene)) << path;
                triangles = scene.count(Topology::Triangles);
            });
            if (isWhole) {
                EXPECT_EQ(triangles, 1U) << path << message;
            }
        });
}

/// The import library leaks on some of these and ends its process on others, so each has one of its own.
TEST(Importer, outlivesTheImportLibrary) {
    Bytes binaryStl(84, 0);
    binaryStl[80] = 1;
    const Bytes facet = packed(std::vector<float>{0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0});
    binaryStl.insert(binaryStl.end(), facet.begin(), facet.end());
    binaryStl.resize(84 + 50);
    const NamedFile kFiles[] = {
        {"a.stl", bytesOf("solid x\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\n"
                          "vertex 0 1 0\nendloop\nendfacet\nendsolid x\n")},
        {"b.stl", binaryStl},
        {"a.off", bytesOf("OFF\n3 1 0\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n")},
    };
    for (const NamedFile& file : kFiles)
        cutEverywhere(file, [](const std::filesystem::path& path, bool isWhole) {
            const ImportResult result = importModel(path.string());
            EXPECT_NE(result.error.empty(), result.scene.instances.empty()) << path << result.error;
            if (isWhole) {
                EXPECT_EQ(result.scene.count(Topology::Triangles), 1U) << path << result.error;
            }
        });
}

/// From bytes in memory; false where they make no good scene or are too many.
bool readAll(std::span<const std::uint8_t> bytes, Scene& scene) {
    const auto take = [&bytes](void* to, size_t size) {
        const bool isThere = size <= bytes.size();
        if (isThere && size > 0)
            std::memcpy(to, bytes.data(), size);
        bytes = bytes.subspan(isThere ? size : 0);
        return isThere;
    };
    return readScene(take, size_t{1} << 34, scene) && bytes.empty();
}

TEST(SceneStream, refusesDamagedBytes) {
    Scene scene = movingScene();
    const Bytes sent = runInChild([&](int output) { return writeScene(scene, output); }, {}).output;
    Scene back;
    ASSERT_TRUE(readAll(sent, back));
    EXPECT_EQ(back.meshes[0].indices, scene.meshes[0].indices);
    EXPECT_EQ(back.instances[0].nodeName, "node");
    for (size_t length = 0; length < sent.size(); ++length)
        EXPECT_FALSE(readAll(std::span(sent).first(length), back)) << length;
    for (size_t place = 0; place + 8 <= sent.size(); ++place) { // any length may be a lie
        Bytes lying = sent;
        std::fill_n(&lying[place], 8, place % 2 == 0 ? 0x03 : 0xFF);
        if (readAll(lying, back))
            Poser(back).pose(1.0);
    }
    struct Wrong {
        const char* what;
        void (*make)(Scene&);
    };
    constexpr Wrong kWrongs[] = {
        {"an index without a vertex", [](Scene& s) { s.meshes[0].indices[2] = 3; }},
        {"a child before its parent", [](Scene& s) { s.motion.nodes[0].parent = 1; }},
        {"a follower of nothing", [](Scene& s) { s.motion.followers[0].node = 2; }},
        {"a follower that isn't there", [](Scene& s) { s.motion.followers[0].kind = Follower::Kind::Light; }},
        {"a joint that is no node", [](Scene& s) { s.motion.skins[0].joints[0] = 2; }},
        {"joints without matrices", [](Scene& s) { s.motion.skins[0].fromMesh.clear(); }},
        {"a bend of no mesh", [](Scene& s) { s.motion.bends[0].mesh = 1; }},
        {"influences of other joints", [](Scene& s) { s.motion.bends[0].influences.all[0].joint = 1; }},
        {"influences of fewer vertices", [](Scene& s) { s.motion.bends[0].influences.begin.pop_back(); }},
        {"influences beyond the last",
         [](Scene& s) {
             s.motion.bends[0].influences.begin = {0, 9, 9, 1};
         }},
        {"a delta of no vertex", [](Scene& s) { s.motion.bends[0].targets[0][0].vertices[0] = 3; }},
        {"a delta of what is missing", [](Scene& s) { s.motion.bends[0].targets[0][0].attribute = 1; }},
        {"a delta without values", [](Scene& s) { s.motion.bends[0].targets[0][0].values.pop_back(); }},
        {"flat normals that aren't there", [](Scene& s) { s.motion.bends[0].isFlat = true; }},
        {"a track of no node", [](Scene& s) { s.animations[0].tracks[0].node = 2; }},
        {"a track without keys", [](Scene& s) { s.animations[0].tracks[0].times.clear(); }},
        {"a track that lacks a value", [](Scene& s) { s.animations[0].tracks[0].values.pop_back(); }},
        {"a track that goes back", [](Scene& s) { s.animations[0].tracks[0].times[0] = 3.0F; }},
    };
    for (const Wrong& wrong : kWrongs) {
        Scene made = scene;
        wrong.make(made);
        const ChildResult told = runInChild([&](int output) { return writeScene(made, output); }, {});
        EXPECT_FALSE(readAll(told.output, back)) << wrong.what;
    }
}

TEST(SceneStream, bringsLargeListsOverWhole) {
    Scene scene;
    Mesh& mesh = scene.meshes.emplace_back();
    mesh.positions.resize(3'000'000);
    std::iota(mesh.positions.begin(), mesh.positions.end(), 0.0F);
    mesh.indices.assign(1000, 999'999);
    Scene back;
    const ChildResult result =
        runInChild([&](int output) { return writeScene(scene, output); }, {},
                   [&](ChildOutput& from) {
                       const auto take = [&from](void* to, size_t size) { return from.take(to, size); };
                       EXPECT_TRUE(readScene(take, size_t{1} << 24, back));
                   });
    EXPECT_EQ(result.outcome, ChildOutcome::Done);
    EXPECT_EQ(back.meshes.at(0).positions, mesh.positions);
    EXPECT_EQ(back.meshes[0].indices, mesh.indices);
}

} // namespace
} // namespace orloview
