#include "TestFiles.h"

#include "import/GltfReader.h"
#include "import/ModelReader.h"
#include "scene/Poser.h"

#include <cmath>
#include <limits>

namespace orloview {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

const std::vector<float> kSquare = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};

/// A file whose only primitive has these positions.
GltfFile withPositions(const std::vector<float>& positions) {
    GltfFile file;
    file.primitive()["attributes"]["POSITION"] = file.floats(positions, "VEC3");
    return file;
}

Scene read(const GltfFile& file) {
    return readGltf(file.glb(), ModelFolder("model.glb"));
}

TEST(GltfReader, spellsOutEveryPrimitiveMode) {
    struct Mode {
        int mode;
        Topology topology;
        std::vector<std::uint32_t> indices;
    };
    const Mode kModes[] = {
        {0, Topology::Points, {0, 1, 2, 3}},
        {1, Topology::Lines, {0, 1, 2, 3}},
        {2, Topology::Lines, {0, 1, 1, 2, 2, 3, 3, 0}},
        {3, Topology::Lines, {0, 1, 1, 2, 2, 3}},
    };
    for (const Mode& mode : kModes) {
        GltfFile file = withPositions(kSquare);
        file.primitive()["mode"] = mode.mode;
        const Scene scene = read(file);
        ASSERT_THAT(scene.meshes, SizeIs(1)) << mode.mode;
        EXPECT_EQ(scene.meshes[0].topology, mode.topology);
        EXPECT_EQ(scene.meshes[0].indices, mode.indices) << mode.mode;
    }
    // Strips and fans face one way throughout: by their flat normals.
    const std::vector<float> strip = {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0, 0, 2, 0};
    const std::vector<float> fan = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, -1, 1, 0};
    for (const auto& [mode, positions] : {std::pair(5, strip), std::pair(6, fan)}) {
        GltfFile file = withPositions(positions);
        file.primitive()["mode"] = mode;
        const Scene scene = read(file);
        ASSERT_THAT(scene.meshes, SizeIs(1));
        EXPECT_EQ(scene.meshes[0].elementCount(), 3U);
        for (size_t i = 2; i < scene.meshes[0].normals.size(); i += 3)
            EXPECT_FLOAT_EQ(scene.meshes[0].normals[i], 1.0F) << mode;
    }
    GltfFile unknown = withPositions(kSquare);
    unknown.primitive()["mode"] = 7;
    EXPECT_THAT(read(unknown).meshes, IsEmpty());
    EXPECT_THAT(read(unknown).warnings, ElementsAre(HasSubstr("mode 7")));
}

TEST(GltfReader, readsIndicesOfEveryWidth) {
    const std::vector<std::uint32_t> indices = {2, 1, 0};
    for (int type : {5121, 5123, 5125}) {
        GltfFile file = withPositions(kSquare);
        const Bytes data = type == 5121   ? packed(std::vector<std::uint8_t>{2, 1, 0})
                           : type == 5123 ? packed(std::vector<std::uint16_t>{2, 1, 0})
                                          : packed(indices);
        file.primitive()["indices"] = file.accessor(data, type, "SCALAR", 3);
        file.primitive()["attributes"]["NORMAL"] = file.floats(kSquare, "VEC3"); // so vertices stay shared
        EXPECT_EQ(read(file).meshes.at(0).indices, indices) << type;
    }
}

TEST(GltfReader, resolvesStridesSparseAndQuantisedData) {
    GltfFile file;
    // Positions of 16 bits, normalised, six bytes each and two between; the second one is replaced.
    const Bytes shorts =
        packed(std::vector<std::int16_t>{32767, 0, 0, 99, 0, 7, 0, 99, 0, -32768, 32767, 99});
    const int positions = file.accessor(shorts, 5122, "VEC3", 3);
    file.json["accessors"][positions]["normalized"] = true;
    file.json["bufferViews"][0]["byteStride"] = 8;
    const int indices = file.accessor({1}, 5121, "SCALAR", 1);
    const int values = file.accessor(packed(std::vector<std::int16_t>{0, 0, 16384}), 5122, "VEC3", 1);
    file.json["accessors"][positions]["sparse"] = {
        {"count", 1},
        {"indices", {{"bufferView", indices}, {"componentType", 5121}}},
        {"values", {{"bufferView", values}}}};
    file.primitive()["attributes"]["POSITION"] = positions;
    file.primitive()["mode"] = 0;
    const Scene scene = read(file);
    EXPECT_THAT(scene.meshes.at(0).positions,
                ElementsAre(1, 0, 0, 0, 0, testing::FloatNear(0.5F, 1e-4F), 0, -1, 1));
}

TEST(GltfReader, readsColoursWithAndWithoutAlpha) {
    GltfFile file = withPositions({0, 0, 0});
    file.primitive()["mode"] = 0;
    const int bytes = file.accessor({255, 0, 51, 0}, 5121, "VEC3", 1);
    file.json["accessors"][bytes]["normalized"] = true;
    file.primitive()["attributes"]["COLOR_0"] = bytes;
    EXPECT_THAT(read(file).meshes.at(0).colors, ElementsAre(1, 0, testing::FloatEq(0.2F), 1));
    file.primitive()["attributes"]["COLOR_0"] = file.floats({0.25F, 0.5F, 0.75F, 0.125F}, "VEC4");
    EXPECT_THAT(read(file).meshes.at(0).colors, ElementsAre(0.25F, 0.5F, 0.75F, 0.125F));
}

TEST(GltfReader, showsNodesWithoutParentsWhereThereAreNoScenes) {
    GltfFile file = withPositions(kSquare);
    file.json.erase("scene");
    file.json.erase("scenes");
    file.json["nodes"] = {{{"mesh", 0}}, {{"children", {0}}, {"translation", {1, 0, 0}}}, {{"mesh", 0}}};
    const Scene scene = read(file);
    ASSERT_THAT(scene.instances, SizeIs(2)) << "the child once, with its parent";
    EXPECT_EQ(scene.bounds().max[0], 2.0);
    file.json["nodes"] = {{{"mesh", 0}, {"children", {0}}}};
    EXPECT_THROW(read(file), ImportError) << "none is without a parent";
}

TEST(GltfReader, placesInstancesCamerasAndLights) {
    GltfFile file = withPositions(kSquare);
    const double half = std::sqrt(0.5);
    file.json["scenes"][0]["nodes"] = {0, 2};
    // A quarter turn about z and a doubling, moved; its child mirrored.
    file.json["nodes"] = {
        {{"translation", {10, 0, 0}},
         {"rotation", {0, 0, half, half}},
         {"scale", {2, 2, 2}},
         {"children", {1}}},
        {{"mesh", 0}, {"name", "mirrored"}, {"matrix", {-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 0, 0, 1}}},
        {{"mesh", 0}, {"camera", 0}, {"extensions", {{"KHR_lights_punctual", {{"light", 0}}}}}}};
    file.json["cameras"] = {{{"type", "orthographic"},
                             {"name", "flat"},
                             {"orthographic", {{"xmag", 3}, {"ymag", 2}, {"znear", 0.5}, {"zfar", 9}}}}};
    file.json["extensions"]["KHR_lights_punctual"]["lights"] = {
        {{"type", "spot"}, {"color", {1, 0.5, 0}}, {"intensity", 7}, {"spot", {{"outerConeAngle", 0.3}}}}};
    const Scene scene = read(file);
    ASSERT_THAT(scene.instances, SizeIs(2));
    EXPECT_THAT(scene.meshes, SizeIs(1)) << "shared";
    EXPECT_EQ(scene.instances[0].nodeName, "mirrored");
    const koLinear::Point moved = scene.instances[0].toWorld.transform(koLinear::Point(3, 1, 5));
    // Mirrored and moved to (-2, 1, 5), doubled, turned to (-2, -4, 10), moved on.
    EXPECT_NEAR(moved[0], 8, 1e-12);
    EXPECT_NEAR(moved[1], -4, 1e-12);
    EXPECT_NEAR(moved[2], 10, 1e-12);
    EXPECT_LT(scene.instances[0].toWorld.determinant(), 0.0);
    ASSERT_THAT(scene.cameras, SizeIs(1));
    EXPECT_EQ(scene.cameras[0].kind, Camera::Kind::Orthographic);
    EXPECT_EQ(scene.cameras[0].ymag, 2.0);
    ASSERT_THAT(scene.lights, SizeIs(1));
    EXPECT_EQ(scene.lights[0].kind, Light::Kind::Spot);
    EXPECT_EQ(scene.lights[0].outerConeAngle, 0.3);
}

TEST(GltfReader, morphsAllThatATargetMoves) {
    GltfFile file = withPositions({0, 0, 0});
    file.primitive()["mode"] = 0;
    Json& attributes = file.primitive()["attributes"];
    attributes["NORMAL"] = file.floats({0, 0, 1}, "VEC3");
    attributes["TANGENT"] = file.floats({1, 0, 0, -1}, "VEC4");
    attributes["COLOR_0"] = file.floats({0.25F, 0.5F, 0.75F, 0.5F}, "VEC4");
    attributes["TEXCOORD_0"] = file.floats({0.5F, 0}, "VEC2");
    file.primitive()["material"] = 0; // it has a normal map: without one nothing asks for tangents
    file.json["materials"] = {{{"normalTexture", {{"index", 0}}}}};
    file.json["textures"] = {Json::object()};
    file.primitive()["targets"] = {{{"NORMAL", file.floats({0, 8, -2}, "VEC3")},
                                    {"TANGENT", file.floats({-2, 0, 4}, "VEC3")},
                                    {"COLOR_0", file.floats({0.5F, 0.5F, 1}, "VEC3")},
                                    {"TEXCOORD_0", file.floats({1, 2}, "VEC2")}},
                                   {{"POSITION", file.floats({1, 1, 1, 2, 2, 2}, "VEC3")}}};
    file.json["meshes"][0]["weights"] = {0.5, 1};
    const Scene scene = read(file);
    const Mesh& mesh = scene.meshes.at(0);
    EXPECT_THAT(mesh.normals, ElementsAre(0, 1, 0));
    EXPECT_THAT(mesh.tangents, ElementsAre(0, 0, 2, -1));
    EXPECT_THAT(mesh.colors, ElementsAre(0.5F, 0.75F, 1, 0.5F)) << "no more than white";
    EXPECT_THAT(mesh.uvSets.at(0), ElementsAre(1, 1));
    EXPECT_THAT(mesh.positions, ElementsAre(0, 0, 0));
    EXPECT_THAT(scene.warnings, testing::Contains(HasSubstr("morph target 1 of mesh")));
}

TEST(GltfReader, keepsTrianglesFlatThatMorph) {
    GltfFile file = withPositions({0, 0, 0, 1, 0, 0, 0, 1, 0});
    file.primitive()["indices"] = file.accessor({1, 0, 2}, 5121, "SCALAR", 3);
    file.primitive()["targets"] = {{{"POSITION", file.floats({0, 0, 1, 0, 0, 0, 0, 0, 1}, "VEC3")}}};
    const Json sampler{{"input", file.floats({0}, "SCALAR")}, {"output", file.floats({1}, "SCALAR")}};
    const Json channel{{"sampler", 0}, {"target", {{"node", 0}, {"path", "weights"}}}};
    file.json["animations"] = {{{"samplers", {sampler}}, {"channels", {channel}}}};
    Scene scene = read(file);
    const Poser poser(scene);
    EXPECT_THAT(scene.meshes.at(0).positions, ElementsAre(1, 0, 0, 0, 0, 1, 0, 1, 1));
    EXPECT_NEAR(scene.meshes[0].normals.at(6), -std::sqrt(0.5), 1e-6);
    EXPECT_EQ(scene.meshes[0].normals[7], 0.0F);
}

TEST(GltfReader, posesSkinnedMeshes) {
    GltfFile file = withPositions({1, 0, 0, 1, 0, 0, 1, 0, 0});
    file.primitive()["mode"] = 0;
    Json& attributes = file.primitive()["attributes"];
    attributes["JOINTS_0"] = file.accessor({0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0}, 5121, "VEC4", 3);
    attributes["WEIGHTS_0"] =
        file.floats({1, 0, 0, 0, 0, 1, 0, 0, 1, 1, 0, 0}, "VEC4"); // the last to be halved
    // Before the joints move it the second one takes the vertex to the origin.
    const int inverses = file.floats(
        {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -1, 0, 0, 1},
        "MAT4");
    file.json["skins"] = {{{"joints", {1, 2}}, {"inverseBindMatrices", inverses}}};
    file.json["nodes"] = {{{"mesh", 0}, {"skin", 0}, {"translation", {99, 99, 99}}},
                          {{"scale", {3, 3, 3}}},
                          {{"translation", {0, 5, 0}}}};
    file.json["scenes"][0]["nodes"] = {0, 1, 2};
    const Scene scene = read(file);
    EXPECT_THAT(scene.meshes.at(0).positions, ElementsAre(3, 0, 0, 0, 5, 0, 1.5F, 2.5F, 0));
    EXPECT_EQ(scene.instances.at(0).toWorld[3][0], 0.0) << "the node's own place says nothing";

    file.json["skins"][0]["joints"] = {1};
    EXPECT_THAT(read(file).warnings, ElementsAre(HasSubstr("joints that its skin doesn't have")));
    file.json["skins"][0]["joints"] = {1, 2, 0};
    EXPECT_THAT(read(file).warnings, ElementsAre(HasSubstr("not one matrix for each joint")));
    EXPECT_EQ(read(file).instances.at(0).toWorld[3][0], 99.0) << "shown without its skin";
}

TEST(GltfReader, readsMaterials) {
    GltfFile file = withPositions(kSquare);
    file.primitive()["material"] = 0;
    file.json["materials"] = {Json::parse(R"({"name": "paint", "doubleSided": true, "alphaMode": "MASK",
        "alphaCutoff": 0.25, "emissiveFactor": [0.5, 0, 1], "extensions": {"KHR_materials_unlit": {}},
        "pbrMetallicRoughness": {"baseColorFactor": [0.1, 0.2, 0.3, 0.4], "metallicFactor": 0.6}})"),
                              Json::object()};
    const Scene scene = read(file);
    ASSERT_THAT(scene.materials, SizeIs(2));
    const Material& paint = scene.materials[0];
    EXPECT_FLOAT_EQ(paint.baseColor[2], 0.3F);
    EXPECT_FLOAT_EQ(paint.baseColor[3], 0.4F);
    EXPECT_FLOAT_EQ(paint.metallic, 0.6F);
    EXPECT_FLOAT_EQ(paint.roughness, 1.0F);
    EXPECT_FLOAT_EQ(paint.emissive[2], 1.0F);
    EXPECT_EQ(paint.alphaMode, AlphaMode::Mask);
    EXPECT_FLOAT_EQ(paint.alphaCutoff, 0.25F);
    EXPECT_TRUE(paint.doubleSided && paint.unlit);
    EXPECT_FLOAT_EQ(scene.materials[1].metallic, 1.0F) << "what the file leaves out is a metal";

    file.json["materials"][1] = Json::parse(R"({"extensions": {"KHR_materials_pbrSpecularGlossiness":
        {"diffuseFactor": [0.5, 0, 0, 1], "glossinessFactor": 0.75}}})");
    const Material shiny = read(file).materials.at(1);
    EXPECT_FLOAT_EQ(shiny.baseColor[0], 0.5F);
    EXPECT_FLOAT_EQ(shiny.roughness, 0.25F);
    EXPECT_FLOAT_EQ(shiny.metallic, 0.0F);
}

TEST(GltfReader, readsTexturesAndHowTheyAreUsed) {
    GltfFile file = withPositions({0, 0, 0, 1, 0, 0, 0, 1, 0});
    const int picture = file.accessor({0x89, 'P', 'N', 'G'}, 5121, "SCALAR", 4);
    file.json["images"] = {{{"bufferView", picture}, {"mimeType", "image/png"}}, {{"uri", "gone%21.png"}}};
    file.json["samplers"] = {{{"wrapS", 33071}, {"wrapT", 33648}, {"magFilter", 9728}, {"minFilter", 9985}}};
    file.json["textures"] = {{{"source", 0}, {"sampler", 0}}, {{"source", 1}}};
    file.json["materials"][0] =
        Json::parse(R"({"normalTexture": {"index": 1, "scale": 0.5, "texCoord": 4294967296},
        "pbrMetallicRoughness": {"metallicFactor": 7, "roughnessFactor": -1, "baseColorTexture": {"index": 0,
        "texCoord": 0, "extensions": {"KHR_texture_transform": {"offset": [0.1, 0.2], "rotation": 0.3,
        "scale": [2, 3], "texCoord": 1}}}}})");
    const Scene scene = read(file);
    EXPECT_EQ(scene.images.at(0).bytes, (Bytes{0x89, 'P', 'N', 'G'}));
    EXPECT_THAT(scene.warnings, ElementsAre(HasSubstr("'gone!.png'")));
    ASSERT_THAT(scene.textures, SizeIs(2)) << "the entry of a missing picture stays";
    EXPECT_EQ(scene.textures[0].wrapU, Wrap::ClampToEdge);
    EXPECT_EQ(scene.textures[0].wrapV, Wrap::MirroredRepeat);
    EXPECT_EQ(scene.textures[0].magFilter, Filter::Nearest);
    EXPECT_EQ(scene.textures[0].minFilter, Filter::LinearMipmapNearest);
    const Material& material = scene.materials.at(0);
    EXPECT_EQ(material.metallic, 1.0F);
    EXPECT_EQ(material.roughness, 0.0F);
    const TextureUse& use = material.baseColorTexture;
    EXPECT_EQ(use.texture, 0);
    EXPECT_EQ(use.uvSet, 1) << "that of the transform counts";
    EXPECT_THAT(use.offset, ElementsAre(0.1F, 0.2F));
    EXPECT_THAT(use.scale, ElementsAre(2.0F, 3.0F));
    EXPECT_EQ(use.rotation, 0.3F);
    EXPECT_EQ(material.normalTexture.strength, 0.5F);
    EXPECT_TRUE(isConsistent(scene)) << "a far set of texture coordinates";
}

TEST(GltfReader, takesThePictureThatItUnderstands) {
    GltfFile file = withPositions({0, 0, 0, 1, 0, 0, 0, 1, 0});
    const int picture = file.accessor({1, 2, 3, 4}, 5121, "SCALAR", 4);
    file.json["images"] = {{{"bufferView", picture}}, {{"bufferView", picture}}};
    file.json["extensionsRequired"] = {"EXT_texture_webp", "KHR_texture_basisu"};
    file.json["textures"] = Json::parse(R"([{"source": 0, "extensions": {"EXT_texture_webp": {"source": 1}}},
        {"extensions": {"EXT_texture_webp": {"source": 1}}},
        {"source": 0, "extensions": {"KHR_texture_basisu": {"source": 1}}},
        {"extensions": {"KHR_texture_basisu": {"source": 1}}}])");
    const Scene scene = read(file);
    std::vector<int> images;
    for (const Texture& texture : scene.textures)
        images.push_back(texture.image);
    EXPECT_THAT(images, ElementsAre(1, 1, 0, -1));
    EXPECT_THAT(scene.warnings,
                ElementsAre(HasSubstr("KHR_texture_basisu), which this program can't decode")));
}

TEST(GltfReader, takesAStrideOfZeroAsNone) {
    GltfFile file = withPositions(kSquare);
    file.json["bufferViews"][0]["byteStride"] = 0;
    file.primitive()["mode"] = 0;
    EXPECT_EQ(read(file).meshes.at(0).positions, kSquare);
}

TEST(GltfReader, warnsInFewPlainLines) {
    GltfFile file = withPositions({0, 0, 0, 1, 0, 0, 0, 1, 0});
    file.json["meshes"][0]["name"] = "evil\n\x1b[2J" + std::string(5000, 'x');
    const Json good = file.primitive();
    for (int i = 1; i <= 500; ++i) { // each with a reason of its own
        Json accessor = file.json["accessors"][0];
        accessor["count"] = 3 + i;
        file.json["accessors"].push_back(accessor);
        file.json["meshes"][0]["primitives"].push_back(good);
        file.json["meshes"][0]["primitives"].back()["attributes"]["POSITION"] = i;
    }
    const Scene scene = read(file);
    EXPECT_EQ(scene.count(Topology::Triangles), 1U);
    EXPECT_LT(scene.warnings.size(), 20U);
    for (const std::string& line : scene.warnings) {
        EXPECT_LT(line.size(), 1000U);
        EXPECT_EQ(line.find_first_of("\n\x1b"), line.npos) << line;
    }
    EXPECT_THAT(scene.warnings.back(), HasSubstr("more parts"));
}

TEST(GltfReader, leavesOutWhatIsDamagedAndNamesIt) {
    struct Damage {
        const char* what;
        std::function<void(GltfFile&)> make;
        const char* warning;
        size_t triangles;
    };
    const auto twoTriangles = [](GltfFile& file, std::vector<std::uint8_t> indices) {
        file.primitive()["indices"] = file.accessor(indices, 5121, "SCALAR", indices.size());
    };
    const float infinity = std::numeric_limits<float>::infinity();
    const Damage kDamages[] = {
        {"an index beyond the vertices",
         [&](GltfFile& f) {
             twoTriangles(f, {0, 1, 2, 0, 2, 3});
         },
         "they use vertices that the file doesn't have", 1},
        {"indices left over",
         [&](GltfFile& f) {
             twoTriangles(f, {0, 1, 2, 0, 2});
         },
         "no whole line or triangle", 1},
        {"an infinite coordinate",
         [&](GltfFile& f) {
             f.primitive()["attributes"]["POSITION"] =
                 f.floats({0, 0, 0, 1, 0, 0, 0, 1, 0, 1, infinity, 0, 2, 0, 0, 2, 1, 0}, "VEC3");
         },
         "infinite or missing", 1},
        {"an accessor beyond its view", [](GltfFile& f) { f.json["accessors"][0]["count"] = 5; },
         "reaches beyond", 0},
        {"a view beyond its buffer", [](GltfFile& f) { f.json["bufferViews"][0]["byteOffset"] = 1000; },
         "reaches beyond", 0},
        {"a count that no file could hold", [](GltfFile& f) { f.json["accessors"][0]["count"] = 1ULL << 62; },
         "reaches beyond", 0},
        {"too few normals",
         [](GltfFile& f) {
             f.primitive()["attributes"]["NORMAL"] = f.floats({0, 0, 1}, "VEC3");
         },
         "normals", 1},
        {"a transform that is not finite",
         [](GltfFile& f) {
             f.json["nodes"][0]["scale"] = {1e300, 1e300, 1};
             f.json["nodes"][0]["children"] = {1};
             f.json["nodes"].push_back({{"mesh", 0}, {"scale", {1e300, 1, 1}}});
         },
         "not finite", 1},
    };
    for (const Damage& damage : kDamages) {
        GltfFile file = withPositions({0, 0, 0, 1, 0, 0, 0, 1, 0});
        damage.make(file);
        const Scene scene = read(file);
        EXPECT_EQ(scene.count(Topology::Triangles), damage.triangles) << damage.what;
        EXPECT_THAT(scene.warnings, testing::Contains(HasSubstr(damage.warning))) << damage.what;
        EXPECT_TRUE(isConsistent(scene)) << damage.what;
    }
}

TEST(GltfReader, refusesWhatItCannotShowRightly) {
    struct Refused {
        const char* word;
        std::function<void(Json&)> make;
    };
    const Refused kRefused[] = {
        {"version 1.0", [](Json& j) { j["asset"]["version"] = "1.0"; }},
        {"which version", [](Json& j) { j["asset"].erase("version"); }},
        {"glTF 2.1", [](Json& j) { j["asset"]["minVersion"] = "2.1"; }},
        {"XYZ_strange", [](Json& j) { j["extensionsRequired"] = {"XYZ_strange"}; }},
        {"contains itself",
         [](Json& j) {
             j["nodes"] = {{{"children", {1}}}, {{"children", {0}}}};
         }},
        {"contains itself",
         [](Json& j) {
             j["nodes"] = {{{"children", {0}}}};
         }},
        {"nodes", [](Json& j) { j["nodes"] = "none"; }},
        {"nodes[0].mesh", [](Json& j) { j["nodes"][0]["mesh"] = 4; }},
    };
    for (const Refused& refused : kRefused) {
        GltfFile file = withPositions(kSquare);
        refused.make(file.json);
        EXPECT_THAT(refusal([&] { read(file); }), HasSubstr(refused.word));
    }
}

TEST(GltfReader, losesNothingInSilence) {
    struct Loss {
        const char* json; ///< laid over the file
        const char* warning;
    };
    constexpr const char* kNone = "";
    const Loss kLosses[] = {
        {R"({"extensionsUsed": ["KHR_animation_pointer"]})", "without some of its animations"},
        {R"({"extensionsRequired": ["EXT_lights_image_based"]})", "EXT_lights_image_based"},
        {R"({"extensionsRequired": ["XYZ_materials_new"]})", "what XYZ_materials_new adds"},
        {R"({"materials": [{"extensions": {"XYZ_materials_old": {}}}]})", "XYZ_materials_old"},
        {R"({"extensionsUsed": ["XYZ_strange"]})", "what XYZ_strange adds"},
        {R"({"animations": [{"name": "walk", "channels": [{"target": {"node": 0, "path": "scale"}}]}]})",
         "channels[0] of the animation 'walk': not played: it has no sampler"},
        {R"({"extensionsUsed": ["KHR_xmp_json_ld", "KHR_xmp", "EXT_structural_metadata", "EXT_mesh_features"]})",
         kNone},
        {R"({"extensionsRequired": ["KHR_materials_clearcoat", "KHR_mesh_quantization"]})", kNone},
        {R"({"extras": {"extensions": {"XYZ_strange": {}}}})", kNone},
    };
    for (const Loss& loss : kLosses) {
        GltfFile file = withPositions({0, 0, 0, 1, 0, 0, 0, 1, 0});
        file.json.update(Json::parse(loss.json));
        const std::vector<std::string> warnings = read(file).warnings;
        if (loss.warning == kNone)
            EXPECT_THAT(warnings, IsEmpty()) << loss.json;
        else
            EXPECT_THAT(warnings, ElementsAre(HasSubstr(loss.warning))) << loss.json;
    }
}

TEST(GltfReader, leavesOutChannelsThatCannotBePlayed) {
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    struct Broken {
        const char* reason;
        std::vector<float> times;
        std::vector<float> values;
        Json channel; ///< laid over one that is good
        const char* interpolation = "LINEAR";
    };
    const Json kGood = Json::object();
    const std::vector<float> kTwo(6, 2.0F);
    const Broken kBroken[] = {
        {"", {0, 1}, kTwo, kGood},
        {"out of order", {1, 0}, kTwo, kGood},
        {"not finite", {0, kNan}, kTwo, kGood},
        {"not finite", {0, 1}, {1, 1, 1, 1, kNan, 1}, kGood},
        {"not as many as its times", {0, 1, 2}, kTwo, kGood},
        {"not as many as its times", {0, 1}, kTwo, kGood, "CUBICSPLINE"},
        {"not as many as its times", {0, 1}, kTwo, {{"target", {{"node", 0}, {"path", "rotation"}}}}},
        {"not as many as its times", {0, 1}, kTwo, {{"target", {{"node", 0}, {"path", "weights"}}}}},
        {"its path 'hue' is unknown", {0, 1}, kTwo, {{"target", {{"node", 0}, {"path", "hue"}}}}},
        {"its interpolation 'BEZIER' is unknown", {0, 1}, kTwo, kGood, "BEZIER"},
        {"its node has a matrix", {0, 1}, kTwo, {{"target", {{"node", 1}, {"path", "scale"}}}}},
        {"node should be less than 2", {0, 1}, kTwo, {{"target", {{"node", 2}, {"path", "scale"}}}}},
        {"sampler should be less than 1", {0, 1}, kTwo, {{"sampler", 1}}},
        {"it has no keys", {}, {}, kGood},
    };
    for (const Broken& broken : kBroken) {
        GltfFile file = withPositions({0, 0, 0, 1, 0, 0, 0, 1, 0});
        file.json["nodes"].push_back(
            {{"mesh", 0}, {"matrix", {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}}});
        Json sampler{{"input", file.floats(broken.times, "SCALAR")},
                     {"output", file.floats(broken.values, "VEC3")},
                     {"interpolation", broken.interpolation}};
        Json channel{{"sampler", 0}, {"target", {{"node", 0}, {"path", "scale"}}}};
        channel.update(broken.channel);
        file.json["animations"] = {{{"name", "grow"}, {"samplers", {sampler}}, {"channels", {channel}}}};
        Scene scene = read(file);
        EXPECT_TRUE(isConsistent(scene)) << broken.reason;
        ASSERT_THAT(scene.animations, SizeIs(1));
        const bool isBroken = *broken.reason != '\0';
        EXPECT_EQ(scene.animations[0].tracks.empty(), isBroken) << broken.reason;
        if (isBroken) {
            EXPECT_THAT(scene.warnings,
                        ElementsAre(AllOf(HasSubstr("channels[0] of the animation 'grow': not played: "),
                                          HasSubstr(broken.reason))));
        }
    }
    GltfFile huge = withPositions({0, 0, 0, 1, 0, 0, 0, 1, 0});
    const Json sampler{{"input", huge.floats({0, 1}, "SCALAR")},
                       {"output", huge.floats(std::vector<float>(6, 3e38F), "VEC3")}};
    const Json channel{{"sampler", 0}, {"target", {{"node", 0}, {"path", "scale"}}}};
    huge.json["animations"] = {{{"samplers", {sampler}}, {"channels", {channel}}}};
    Scene scene = read(huge);
    EXPECT_FALSE(Poser(scene).bounds().empty()) << "what is too large for floats is not for a matrix";
}

TEST(GltfReader, walksVeryDeepTrees) {
    GltfFile file = withPositions(kSquare);
    constexpr int kDepth = 20000;
    Json nodes = Json::array();
    for (int i = 0; i < kDepth; ++i)
        nodes.push_back({{"children", {i + 1}}, {"translation", {0, 0, 1}}});
    nodes.push_back({{"mesh", 0}});
    file.json["nodes"] = nodes;
    const Scene scene = read(file);
    ASSERT_THAT(scene.instances, SizeIs(1));
    EXPECT_EQ(scene.instances[0].toWorld[3][2], kDepth);
}

TEST(GltfReader, findsBuffersBesideTheFileAndNamesMissingOnes) {
    const Folder folder;
    GltfFile file = withPositions(kSquare);
    file.json["buffers"] = {{{"byteLength", file.binary.size()}, {"uri", "a%20b.bin"}}};
    const auto path = folder.write("model.gltf", bytesOf(file.json.dump()));
    EXPECT_THAT(refusal([&] { readModel(path, ModelFolder(path)); }), HasSubstr("a b.bin"));
    folder.write("a b.bin", file.binary);
    EXPECT_THAT(readModel(path, ModelFolder(path)).instances, SizeIs(1));
    folder.write("a b.bin", {1, 2, 3});
    EXPECT_THAT(refusal([&] { readModel(path, ModelFolder(path)); }), HasSubstr("and has 3"));
}

} // namespace
} // namespace orloview
