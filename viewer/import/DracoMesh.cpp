#include "import/DracoMesh.h"

#include <algorithm>
#include <cstddef>
#include <memory>

#include <draco/compression/decode.h>
#include <draco/compression/point_cloud/point_cloud_decoder.h>
#include <draco/core/varint_decoding.h>
#include <draco/metadata/metadata_decoder.h>

#include "base/ImportError.h"

namespace orloview {

namespace {

[[noreturn]] void damaged() {
    throw ImportError("its Draco data is damaged; export the model again");
}

draco::DecoderBuffer bufferOf(std::span<const std::uint8_t> packed) {
    draco::DecoderBuffer buffer;
    buffer.Init(reinterpret_cast<const char*>(packed.data()), packed.size());
    return buffer;
}

/// Holds what the mesh claims to have against its bytes. The decoder takes memory for it first and looks for
/// it afterwards.
void checkClaims(std::span<const std::uint8_t> packed) {
    draco::DecoderBuffer buffer = bufferOf(packed);
    draco::DracoHeader header{};
    if (!draco::PointCloudDecoder::DecodeHeader(&buffer, &header).ok() ||
        header.encoder_type != draco::TRIANGULAR_MESH)
        damaged();
    if (header.version_major != 2 || header.version_minor != 2)
        throw ImportError("its Draco data is of version " + std::to_string(header.version_major) + "." +
                          std::to_string(header.version_minor) + " and glTF has 2.2; export the model again");
    buffer.set_bitstream_version(DRACO_BITSTREAM_VERSION(header.version_major, header.version_minor));
    draco::GeometryMetadata metadata;
    if ((header.flags & METADATA_FLAG_MASK) != 0 &&
        !draco::MetadataDecoder().DecodeGeometryMetadata(&buffer, &metadata))
        damaged();
    std::uint8_t traversal = 0;
    if (header.encoder_method == draco::MESH_EDGEBREAKER_ENCODING && !buffer.Decode(&traversal))
        damaged();
    // The flattest of meshes take a byte for 70 faces.
    constexpr size_t kMostPerByte = 1024;
    std::uint32_t claimed = 0; // of faces, then of vertices, or the other way round
    for (int i = 0; i < 2; ++i)
        if (!draco::DecodeVarint(&claimed, &buffer) || claimed > packed.size() * kMostPerByte)
            damaged();
}

/// An attribute's numbers for each vertex; those that it has less than are asked for are 0.
std::vector<float> valuesOf(const draco::PointAttribute& attribute, std::uint32_t vertices, size_t width) {
    const bool isFloat =
        attribute.data_type() == draco::DT_FLOAT32 || attribute.data_type() == draco::DT_FLOAT64;
    std::vector<float> values(vertices * width);
    std::vector<std::int64_t> whole(width);
    for (std::uint32_t vertex = 0; vertex < vertices; ++vertex) {
        const draco::AttributeValueIndex value = attribute.mapped_index(draco::PointIndex(vertex));
        float* const to = &values[vertex * width];
        // As floats, whole numbers might come out scaled: the accessor says whether they are.
        const bool good =
            value.value() < attribute.size() &&
            (isFloat ? attribute.ConvertValue(value, static_cast<std::int8_t>(width), to)
                     : attribute.ConvertValue(value, static_cast<std::int8_t>(width), whole.data()));
        if (!good)
            damaged();
        if (!isFloat)
            std::transform(whole.begin(), whole.end(), to,
                           [](std::int64_t number) { return static_cast<float>(number); });
    }
    return values;
}

} // namespace

DracoMesh unpackDraco(std::span<const std::uint8_t> packed,
                      const std::vector<std::pair<std::uint32_t, size_t>>& wanted) {
    checkClaims(packed);
    draco::DecoderBuffer buffer = bufferOf(packed);
    draco::StatusOr<std::unique_ptr<draco::Mesh>> decoded = draco::Decoder().DecodeMeshFromBuffer(&buffer);
    if (!decoded.ok() || !decoded.value())
        damaged();
    const draco::Mesh& mesh = *decoded.value();
    DracoMesh result;
    for (const auto& [number, width] : wanted) {
        const draco::PointAttribute* const attribute = mesh.GetAttributeByUniqueId(number);
        if (!attribute)
            throw ImportError("its Draco data has no attribute " + std::to_string(number));
        result.attributes.push_back(valuesOf(*attribute, mesh.num_points(), width));
    }
    result.indices.reserve(size_t{mesh.num_faces()} * 3);
    for (std::uint32_t face = 0; face < mesh.num_faces(); ++face)
        for (const draco::PointIndex& corner : mesh.face(draco::FaceIndex(face)))
            result.indices.push_back(corner.value());
    return result;
}

} // namespace orloview
