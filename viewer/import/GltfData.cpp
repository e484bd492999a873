#include "import/GltfData.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <string_view>
#include <type_traits>
#include <utility>

#include "base/ChildProcess.h"
#include "base/FileBytes.h"
#include "base/ImportError.h"
#include "import/Allowance.h"
#include "import/DracoMesh.h"
#include "import/MeshoptView.h"

namespace orloview {

namespace {

enum ComponentType : int {
    kByte = 5120,
    kUnsignedByte = 5121,
    kShort = 5122,
    kUnsignedShort = 5123,
    kUnsignedInt = 5125,
    kFloat = 5126
};

size_t componentSize(int type) {
    switch (type) {
    case kByte:
    case kUnsignedByte:
        return 1;
    case kShort:
    case kUnsignedShort:
        return 2;
    case kUnsignedInt:
    case kFloat:
        return 4;
    default:
        return 0;
    }
}

size_t componentsOf(const std::string& type) {
    if (type == "MAT4")
        return 16;
    static constexpr std::array<std::string_view, 4> kTypes{"SCALAR", "VEC2", "VEC3", "VEC4"};
    const auto found = std::find(kTypes.begin(), kTypes.end(), type);
    return found == kTypes.end() ? 0 : static_cast<size_t>(found - kTypes.begin()) + 1;
}

template <typename Stored>
Stored load(const std::uint8_t* from) {
    Stored value{};
    std::memcpy(&value, from, sizeof value); // accessors of damaged files need not be aligned
    return value;
}

template <typename Stored>
float scaled(const std::uint8_t* from, bool normalized) {
    const auto value = static_cast<float>(load<Stored>(from));
    if (!normalized)
        return value;
    return std::max(value / static_cast<float>(std::numeric_limits<Stored>::max()), -1.0F);
}

float floatAt(const std::uint8_t* from, int type, bool normalized) {
    switch (type) {
    case kByte:
        return scaled<std::int8_t>(from, normalized);
    case kUnsignedByte:
        return scaled<std::uint8_t>(from, normalized);
    case kShort:
        return scaled<std::int16_t>(from, normalized);
    case kUnsignedShort:
        return scaled<std::uint16_t>(from, normalized);
    case kUnsignedInt:
        return scaled<std::uint32_t>(from, normalized);
    default:
        return load<float>(from);
    }
}

std::uint32_t indexAt(const std::uint8_t* from, int type) {
    switch (type) {
    case kUnsignedByte:
        return *from;
    case kUnsignedShort:
        return load<std::uint16_t>(from);
    default:
        return load<std::uint32_t>(from);
    }
}

template <typename Value>
Value valueAt(const std::uint8_t* from, int type, bool normalized) {
    if constexpr (std::is_same_v<Value, float>)
        return floatAt(from, type, normalized);
    else
        return indexAt(from, type);
}

/// The component type that is stored as the value is in memory.
template <typename Value>
constexpr int kStoredAs = std::is_same_v<Value, float> ? kFloat : kUnsignedInt;

/// What 1 is stored as, in a normalised accessor.
float largest(int type) {
    switch (type) {
    case kByte:
        return 127.0F;
    case kUnsignedByte:
        return 255.0F;
    case kShort:
        return 32767.0F;
    case kUnsignedShort:
        return 65535.0F;
    default:
        return 1.0F;
    }
}

constexpr const char* kDraco = "KHR_draco_mesh_compression";
constexpr std::uint32_t kNoAttribute = std::numeric_limits<std::uint32_t>::max(); ///< of Draco's

bool isIndexType(int type) {
    return type == kUnsignedByte || type == kUnsignedShort || type == kUnsignedInt;
}

} // namespace

GltfData::GltfData(const GltfContainer& container, const ModelFolder& folder)
    : fContainer(container), fFolder(folder) {
    const GltfObject root(container.json, "");
    fAccessors = root.objects("accessors");
    fViews = root.objects("bufferViews");
    fBuffers = root.objects("buffers");
    fLoaded.resize(fBuffers.size());
}

size_t GltfData::components(int accessor) const {
    return componentsOf(fAccessors[static_cast<size_t>(accessor)].text("type"));
}

GltfData::Layout GltfData::layout(const GltfObject& accessor) const {
    Layout result;
    result.componentType = static_cast<int>(accessor.whole("componentType", 0));
    result.componentSize = componentSize(result.componentType);
    result.components = componentsOf(accessor.text("type"));
    result.count = accessor.whole("count", 0);
    result.normalized = accessor.flag("normalized");
    if (result.componentSize == 0 || result.components == 0)
        throw ImportError(accessor.place() + " has a type that vertices and indices can't have");
    return result;
}

std::vector<std::uint8_t> GltfData::loadBuffer(size_t index) {
    const GltfObject& buffer = fBuffers[index];
    const std::string uri = buffer.text("uri");
    if (uri.empty())
        throw ImportError(buffer.place() + " names no file");
    if (uri.starts_with("data:"))
        return decodeDataUri(uri);
    const std::string name = decodeUri(uri);
    const std::filesystem::path file = fFolder.path() / name;
    try {
        fFolder.check(file);
        const size_t size = bytesOnDisk(file);
        raiseLimits(memoryFor(size), secondsFor(size));
        fFiles.push_back(file.string());
        return readFile(file);
    } catch (const ImportError& error) {
        throw ImportError("the buffer file '" + name + "', which it names: " + error.what());
    }
}

std::span<const std::uint8_t> GltfData::buffer(size_t index) {
    const bool isChunk = index == 0 && fContainer.isBinary && !fBuffers[index].has("uri");
    if (!isChunk && fLoaded[index].empty())
        fLoaded[index] = loadBuffer(index);
    const std::span<const std::uint8_t> loaded = isChunk ? fContainer.binary : fLoaded[index];
    const size_t length = fBuffers[index].whole("byteLength", 0);
    if (length > loaded.size())
        throw ImportError(fBuffers[index].place() + " should have " + std::to_string(length) +
                          " bytes and has " + std::to_string(loaded.size()));
    return loaded.first(length);
}

/// Of the buffer that the source names, what it says.
std::span<const std::uint8_t> GltfData::slice(const GltfObject& source) {
    const int bufferIndex = source.reference("buffer", fBuffers.size());
    if (bufferIndex < 0)
        throw ImportError(source.place() + " names no buffer");
    const std::span<const std::uint8_t> bytes = buffer(static_cast<size_t>(bufferIndex));
    const size_t offset = source.whole("byteOffset", 0);
    const size_t length = source.whole("byteLength", 0);
    if (offset > bytes.size() || length > bytes.size() - offset)
        throw ImportError(source.place() + " reaches beyond its buffer");
    return bytes.subspan(offset, length);
}

std::span<const std::uint8_t> GltfData::view(size_t index) {
    for (const char* name : kMeshoptExtensions) {
        if (!fViews[index].hasExtension(name))
            continue;
        const auto known = fUnpacked.find(index);
        if (known != fUnpacked.end())
            return known->second;
        const GltfObject compression = fViews[index].extension(name);
        return fUnpacked[index] = unpackMeshopt(compression, slice(compression));
    }
    return slice(fViews[index]);
}

GltfData::Elements GltfData::elements(const GltfObject& source, const Layout& layout, size_t defaultStride) {
    const int viewIndex = source.reference("bufferView", fViews.size());
    if (viewIndex < 0)
        return {};
    const std::span<const std::uint8_t> bytes = view(static_cast<size_t>(viewIndex));
    const size_t offset = source.whole("byteOffset", 0);
    size_t stride = fViews[static_cast<size_t>(viewIndex)].whole("byteStride", 0);
    if (stride == 0) // some exporters write that where others leave it out
        stride = defaultStride;
    const bool fits =
        layout.count == 0 || (offset <= bytes.size() && layout.elementSize() <= bytes.size() - offset &&
                              layout.count - 1 <= (bytes.size() - offset - layout.elementSize()) / stride);
    if (!fits)
        throw ImportError(source.place() + " reaches beyond its buffer view");
    return {bytes.subspan(std::min(offset, bytes.size())), stride};
}

template <typename Value>
std::vector<Value> GltfData::read(int accessor) {
    constexpr size_t kMostWithoutData = size_t{1} << 24;
    const GltfObject& source = fAccessors[static_cast<size_t>(accessor)];
    const Layout format = layout(source);
    const Elements from = elements(source, format, format.elementSize());
    if (from.stride == 0 && format.count > kMostWithoutData)
        throw ImportError(source.place() + " has more elements than its file could hold");

    std::vector<Value> values(format.count * format.components);
    if (from.stride == format.elementSize() && format.componentType == kStoredAs<Value> && !values.empty())
        std::memcpy(values.data(), from.bytes.data(), values.size() * sizeof(Value));
    else
        for (size_t i = 0; from.stride > 0 && i < values.size(); ++i) {
            const size_t place = i / format.components * from.stride;
            values[i] = valueAt<Value>(&from.bytes[place + i % format.components * format.componentSize],
                                       format.componentType, format.normalized);
        }
    if (source.has("sparse"))
        readSparse(source.object("sparse"), format, values);
    return values;
}

template <typename Value>
void GltfData::readSparse(const GltfObject& sparse, const Layout& layout, std::vector<Value>& values) {
    const GltfObject indexSource = sparse.object("indices");
    Layout indexLayout;
    indexLayout.componentType = static_cast<int>(indexSource.whole("componentType", 0));
    indexLayout.componentSize = componentSize(indexLayout.componentType);
    indexLayout.components = 1;
    indexLayout.count = sparse.whole("count", 0);
    Layout valueLayout = layout;
    valueLayout.count = indexLayout.count;
    if (!isIndexType(indexLayout.componentType))
        throw ImportError(indexSource.place() + " should be unsigned integers");

    const Elements indexBytes = elements(indexSource, indexLayout, indexLayout.elementSize());
    const Elements valueBytes = elements(sparse.object("values"), valueLayout, valueLayout.elementSize());
    if (indexBytes.stride == 0 || valueBytes.stride == 0)
        throw ImportError(sparse.place() + " names no buffer view");
    for (size_t i = 0; i < indexLayout.count; ++i) {
        const size_t index = indexAt(&indexBytes.bytes[i * indexBytes.stride], indexLayout.componentType);
        if (index >= layout.count)
            throw ImportError(sparse.place() + " replaces an element that isn't there");
        for (size_t k = 0; k < layout.components; ++k) {
            const std::uint8_t* at = &valueBytes.bytes[i * valueBytes.stride + k * layout.componentSize];
            values[index * layout.components + k] =
                valueAt<Value>(at, layout.componentType, layout.normalized);
        }
    }
}

std::vector<float> GltfData::floats(int accessor) {
    const auto unpacked = fFromPrimitive.find(accessor);
    return unpacked == fFromPrimitive.end() ? read<float>(accessor) : unpacked->second;
}

std::optional<std::vector<std::uint32_t>> GltfData::openPrimitive(const GltfObject& primitive) {
    fFromPrimitive.clear();
    if (!primitive.hasExtension(kDraco))
        return std::nullopt;
    const GltfObject compression = primitive.extension(kDraco);
    const GltfObject numbers = compression.object("attributes");
    const GltfObject attributes = primitive.object("attributes");
    const int packed = compression.reference("bufferView", fViews.size());
    if (packed < 0)
        throw ImportError(compression.place() + " names no buffer view");
    std::vector<int> accessors;
    std::vector<std::pair<std::uint32_t, size_t>> wanted;
    for (const std::string& key : numbers.keys()) {
        const int accessor = attributes.reference(key.c_str(), fAccessors.size());
        if (accessor < 0)
            continue; // a custom one that nothing reads
        accessors.push_back(accessor);
        const size_t number = numbers.whole(key.c_str(), 0);
        wanted.emplace_back(static_cast<std::uint32_t>(std::min<size_t>(number, kNoAttribute)),
                            layout(fAccessors[static_cast<size_t>(accessor)]).components);
    }
    DracoMesh mesh = unpackDraco(view(static_cast<size_t>(packed)), wanted);
    for (size_t i = 0; i < accessors.size(); ++i) {
        const Layout format = layout(fAccessors[static_cast<size_t>(accessors[i])]);
        if (format.normalized)
            for (float& value : mesh.attributes[i])
                value = std::max(value / largest(format.componentType), -1.0F);
        fFromPrimitive[accessors[i]] = std::move(mesh.attributes[i]);
    }
    return std::move(mesh.indices);
}

std::vector<std::uint32_t> GltfData::indices(int accessor) {
    const Layout format = layout(fAccessors[static_cast<size_t>(accessor)]);
    if (!isIndexType(format.componentType) || format.components != 1)
        throw ImportError(fAccessors[static_cast<size_t>(accessor)].place() +
                          " should be single unsigned integers");
    return read<std::uint32_t>(accessor);
}

} // namespace orloview
