#include "TestFiles.h"

#include "import/GltfReader.h"
#include "import/ModelReader.h"

#include <algorithm>
#include <cmath>

#include <draco/compression/encode.h>
#include <meshoptimizer.h>

namespace orloview {
namespace {

using testing::ElementsAre;
using testing::FloatNear;
using testing::HasSubstr;
using testing::Pointwise;

Scene read(const GltfFile& file) {
    return readGltf(file.glb(), ModelFolder("model.glb"));
}

/// Puts packed bytes in the place of a view's own, which are lost.
void replace(GltfFile& file, int view, const Bytes& packed, size_t count, size_t stride, const char* mode,
             const char* filter = "NONE") {
    Json& json = file.json["bufferViews"][view];
    const size_t start = json["byteOffset"];
    std::fill_n(file.binary.begin() + static_cast<long>(start), json["byteLength"].get<size_t>(), 0x7F);
    json["byteLength"] = count * stride;
    json["extensions"]["EXT_meshopt_compression"] = {{"buffer", 0},
                                                     {"byteOffset", file.binary.size()},
                                                     {"byteLength", packed.size()},
                                                     {"byteStride", stride},
                                                     {"count", count},
                                                     {"mode", mode},
                                                     {"filter", filter}};
    file.binary.insert(file.binary.end(), packed.begin(), packed.end());
    file.binary.resize((file.binary.size() + 3) / 4 * 4);
}

Bytes packVertices(const void* data, size_t count, size_t stride) {
    Bytes packed(meshopt_encodeVertexBufferBound(count, stride));
    packed.resize(meshopt_encodeVertexBuffer(packed.data(), packed.size(), data, count, stride));
    return packed;
}

Bytes packTriangles(const std::vector<std::uint32_t>& indices, size_t vertices) {
    Bytes packed(meshopt_encodeIndexBufferBound(indices.size(), vertices));
    packed.resize(meshopt_encodeIndexBuffer(packed.data(), packed.size(), indices.data(), indices.size()));
    return packed;
}

/// Each triangle with its smallest corner first: packing turns them.
std::vector<std::uint32_t> turned(std::vector<std::uint32_t> indices) {
    for (auto corner = indices.begin(); corner != indices.end(); corner += 3)
        std::rotate(corner, std::min_element(corner, corner + 3), corner + 3);
    return indices;
}

/// A bent grid of 5 x 5 points with normals, and what stands in its place.
struct Grid {
    std::vector<float> positions;
    std::vector<float> normals;
    std::vector<std::uint32_t> indices;

    Grid() {
        for (std::uint32_t i = 0; i < 25; ++i) {
            const float x = static_cast<float>(i % 5);
            const float y = static_cast<float>(i / 5);
            const float slope = 0.25F * x;
            positions.insert(positions.end(), {x, y, 0.125F * x * x});
            normals.insert(normals.end(), {-slope / std::hypot(1.0F, slope), 0, 1 / std::hypot(1.0F, slope)});
            if (i % 5 < 4 && i / 5 < 4)
                indices.insert(indices.end(), {i, i + 1, i + 6, i, i + 6, i + 5});
        }
    }

    /// Views 0, 1 and 2 hold positions, normals and indices.
    GltfFile file() const {
        GltfFile file;
        Json& primitive = file.primitive();
        primitive["attributes"]["POSITION"] = file.floats(positions, "VEC3");
        primitive["attributes"]["NORMAL"] = file.floats(normals, "VEC3");
        primitive["indices"] = file.accessor(packed(indices), 5125, "SCALAR", indices.size());
        return file;
    }
};

TEST(CompressedGltf, unpacksMeshopt) {
    const Grid grid;
    GltfFile file = grid.file();
    file.json["extensionsRequired"] = {"EXT_meshopt_compression"};
    replace(file, 0, packVertices(grid.positions.data(), 25, 12), 25, 12, "ATTRIBUTES");
    replace(file, 2, packTriangles(grid.indices, 25), grid.indices.size(), 4, "TRIANGLES");
    Scene scene = read(file);
    EXPECT_EQ(scene.meshes.at(0).positions, grid.positions);
    EXPECT_EQ(turned(scene.meshes.at(0).indices), turned(grid.indices));
    EXPECT_THAT(scene.warnings, testing::IsEmpty());

    // Normals of 8 bits, places of 16 bits of mantissa, indices one by one.
    std::vector<float> fourFold;
    for (size_t i = 0; i < 75; i += 3)
        fourFold.insert(fourFold.end(), {grid.normals[i], grid.normals[i + 1], grid.normals[i + 2], 0});
    std::vector<std::int8_t> bytes(100);
    meshopt_encodeFilterOct(bytes.data(), 25, 4, 8, fourFold.data());
    std::vector<std::uint32_t> exponents(75);
    meshopt_encodeFilterExp(exponents.data(), 25, 12, 16, grid.positions.data());
    Bytes sequence(meshopt_encodeIndexSequenceBound(grid.indices.size(), 25));
    sequence.resize(meshopt_encodeIndexSequence(sequence.data(), sequence.size(), grid.indices.data(),
                                                grid.indices.size()));
    file = grid.file();
    replace(file, 0, packVertices(exponents.data(), 25, 12), 25, 12, "ATTRIBUTES", "EXPONENTIAL");
    replace(file, 1, packVertices(bytes.data(), 25, 4), 25, 4, "ATTRIBUTES", "OCTAHEDRAL");
    file.json["bufferViews"][1]["byteStride"] = 4;
    file.json["accessors"][1].update({{"componentType", 5120}, {"normalized", true}});
    replace(file, 2, sequence, grid.indices.size(), 4, "INDICES");
    scene = read(file);
    EXPECT_THAT(scene.meshes.at(0).positions, Pointwise(FloatNear(4.0F / (1 << 15)), grid.positions));
    EXPECT_THAT(scene.meshes.at(0).normals, Pointwise(FloatNear(2.0F / 127), grid.normals));
    EXPECT_EQ(scene.meshes.at(0).indices, grid.indices);

    // Turns of copies: a quarter about z.
    const float half = std::sqrt(0.5F);
    const std::vector<float> turn = {0, 0, half, half};
    std::vector<std::int16_t> shorts(4);
    meshopt_encodeFilterQuat(shorts.data(), 1, 8, 12, turn.data());
    const int rotation = file.accessor(packed(shorts), 5122, "VEC4", 1);
    file.json["accessors"][rotation]["normalized"] = true;
    replace(file, rotation, packVertices(shorts.data(), 1, 8), 1, 8, "ATTRIBUTES", "QUATERNION");
    file.json["nodes"][0]["extensions"]["EXT_mesh_gpu_instancing"]["attributes"]["ROTATION"] = rotation;
    const koLinear::Point turned = read(file).instances.at(0).toWorld.transform(koLinear::Point(4, 0, 0));
    EXPECT_NEAR(turned[1], 4.0, 0.01);
}

TEST(CompressedGltf, refusesDamagedMeshopt) {
    const Grid grid;
    GltfFile good = grid.file();
    replace(good, 0, packVertices(grid.positions.data(), 25, 12), 25, 12, "ATTRIBUTES");
    const std::pair<Json, const char*> kChanges[] = {
        {{{"byteLength", 40}}, "is damaged"},
        {{{"byteLength", 100000}}, "reaches beyond its buffer"},
        {{{"count", 1ULL << 60}}, "more elements than its bytes could hold"},
        {{{"byteStride", 10}}, "of a kind that there isn't"},
        {{{"byteStride", 0}}, "of a kind that there isn't"},
        {{{"mode", "TRIANGLES"}}, "of a kind that there isn't"},
        {{{"filter", "QUATERNION"}}, "of a kind that there isn't"},
        {{{"mode", "new"}}, "of a kind that there isn't"},
        {{{"filter", "COLOR"}}, "doesn't know; pack the model for EXT_meshopt_compression"},
        {{{"buffer", 7}}, "buffer should be less than 1"},
    };
    for (const auto& [change, words] : kChanges) {
        GltfFile file = good;
        file.json["bufferViews"][0]["extensions"]["EXT_meshopt_compression"].update(change);
        EXPECT_THAT(read(file).warnings, ElementsAre(HasSubstr(words))) << change;
    }
    Json& extensions = good.json["bufferViews"][0]["extensions"];
    extensions = {{"KHR_meshopt_compression", extensions["EXT_meshopt_compression"]}};
    EXPECT_EQ(read(good).meshes.at(0).positions, grid.positions);
    good.binary[extensions["KHR_meshopt_compression"]["byteOffset"].get<size_t>()] |= 1; // a later version
    EXPECT_THAT(read(good).warnings, ElementsAre(HasSubstr("doesn't know; pack the model")));
}

/// The grid with colours, packed by Draco: positions to 12 bits, normals to 8.
Bytes packGrid(const Grid& grid, const std::vector<std::uint8_t>& colors, int method) {
    using namespace draco;
    draco::Mesh mesh;
    mesh.set_num_points(25);
    const auto add = [&mesh](GeometryAttribute::Type type, std::int8_t width, const auto& values) {
        constexpr bool kIsByte = sizeof(values[0]) == 1;
        const auto stride = static_cast<std::int64_t>(width * sizeof(values[0]));
        GeometryAttribute attribute;
        attribute.Init(type, nullptr, width, kIsByte ? DT_UINT8 : DT_FLOAT32, kIsByte, stride, 0);
        const int number = mesh.AddAttribute(attribute, true, 25);
        for (std::uint32_t i = 0; i < 25; ++i)
            mesh.attribute(number)->SetAttributeValue(AttributeValueIndex(i), &values[i * width]);
    };
    add(GeometryAttribute::POSITION, 3, grid.positions);
    add(GeometryAttribute::NORMAL, 3, grid.normals);
    add(GeometryAttribute::COLOR, 4, colors);
    for (size_t i = 0; i < grid.indices.size(); i += 3)
        mesh.AddFace(
            {PointIndex(grid.indices[i]), PointIndex(grid.indices[i + 1]), PointIndex(grid.indices[i + 2])});
    Encoder encoder;
    encoder.SetEncodingMethod(method);
    encoder.SetAttributeQuantization(GeometryAttribute::POSITION, 12);
    encoder.SetAttributeQuantization(GeometryAttribute::NORMAL, 8);
    EncoderBuffer buffer;
    EXPECT_TRUE(encoder.EncodeMeshToBuffer(mesh, &buffer).ok());
    return {buffer.data(), buffer.data() + buffer.size()};
}

/// A file that holds nothing of the grid but these bytes.
GltfFile withDraco(const Bytes& packed) {
    GltfFile file;
    Json& primitive = file.primitive();
    file.accessor(packed, 5121, "SCALAR", packed.size());
    primitive["indices"] = 1;
    primitive["attributes"] = {{"POSITION", 2}, {"NORMAL", 3}, {"COLOR_0", 4}};
    primitive["extensions"]["KHR_draco_mesh_compression"] = {
        {"bufferView", 0}, {"attributes", {{"POSITION", 0}, {"NORMAL", 1}, {"COLOR_0", 2}}}};
    const auto add = [&](int type, const char* shape, int count) {
        file.json["accessors"].push_back({{"componentType", type}, {"type", shape}, {"count", count}});
    };
    add(5125, "SCALAR", 96);
    add(5126, "VEC3", 25);
    add(5126, "VEC3", 25);
    add(5121, "VEC4", 25);
    file.json["accessors"][4]["normalized"] = true;
    file.json["extensionsRequired"] = {"KHR_draco_mesh_compression"};
    return file;
}

TEST(CompressedGltf, unpacksDraco) {
    const Grid grid;
    std::vector<std::uint8_t> colors(100);
    for (size_t i = 0; i < colors.size(); ++i)
        colors[i] = static_cast<std::uint8_t>(i * 37);
    for (const int method : {draco::MESH_SEQUENTIAL_ENCODING, draco::MESH_EDGEBREAKER_ENCODING}) {
        const Scene scene = read(withDraco(packGrid(grid, colors, method)));
        ASSERT_EQ(scene.meshes.size(), 1U) << scene.warnings.at(0);
        const Mesh& mesh = scene.meshes[0];
        std::vector<std::uint32_t> indices; // by the grid's own numbers: packing changes the order
        for (const std::uint32_t index : mesh.indices) {
            const float* const at = &mesh.positions[index * 3];
            const auto own = static_cast<std::uint32_t>(std::lround(at[0]) + 5 * std::lround(at[1]));
            indices.push_back(own);
            ASSERT_LT(own, 25U);
            for (size_t k = 0; k < 3; ++k) {
                EXPECT_NEAR(at[k], grid.positions[own * 3 + k], 0.51F * 4 / 4095)
                    << "half a quantum of 4 units";
                EXPECT_NEAR(mesh.normals[index * 3 + k], grid.normals[own * 3 + k], 0.02F);
            }
            for (size_t k = 0; k < 4; ++k)
                EXPECT_EQ(mesh.colors[index * 4 + k], static_cast<float>(colors[own * 4 + k]) / 255);
        }
        const auto sorted = [](std::vector<std::uint32_t> corners) {
            std::vector<std::array<std::uint32_t, 3>> triangles;
            corners = turned(corners);
            for (size_t i = 0; i < corners.size(); i += 3)
                triangles.push_back({corners[i], corners[i + 1], corners[i + 2]});
            std::sort(triangles.begin(), triangles.end());
            return triangles;
        };
        EXPECT_EQ(sorted(indices), sorted(grid.indices));
    }
}

TEST(CompressedGltf, refusesDamagedDraco) {
    const Grid grid;
    const Bytes good = packGrid(grid, std::vector<std::uint8_t>(100), draco::MESH_SEQUENTIAL_ENCODING);
    struct Damage {
        size_t at;
        Bytes bytes;
        const char* words;
    };
    const Damage kDamages[] = {
        {0, {'d'}, "is damaged"},
        {6, {1}, "of version 2.1"},
        {7, {0}, "is damaged"},                             // a cloud of points
        {11, {0xFF, 0xFF, 0xFF, 0xFF, 0x0F}, "is damaged"}, // 4 billion faces
        {12, {0xFF, 0xFF, 0xFF, 0xFF, 0x0F}, "is damaged"}, // and vertices
        {20, Bytes(good.size() - 20, 0xFF), "is damaged"},
    };
    for (const Damage& damage : kDamages) {
        Bytes bad = good;
        std::copy(damage.bytes.begin(), damage.bytes.end(), bad.begin() + static_cast<long>(damage.at));
        EXPECT_THAT(read(withDraco(bad)).warnings, ElementsAre(HasSubstr(damage.words))) << damage.at;
    }
    GltfFile other = withDraco(good);
    other.primitive()["extensions"]["KHR_draco_mesh_compression"]["attributes"]["POSITION"] = 9;
    EXPECT_THAT(read(other).warnings, ElementsAre(HasSubstr("no attribute 9")));
}

} // namespace
} // namespace orloview
