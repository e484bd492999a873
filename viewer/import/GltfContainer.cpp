#include "import/GltfContainer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <string_view>

#include <glib.h>

#include "base/ImportError.h"
#include "import/GltfExtensions.h"
#include "import/GltfJson.h"

namespace orloview {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint32_t kJsonChunk = 0x4E4F534A;
constexpr std::uint32_t kBinaryChunk = 0x004E4942;

std::uint32_t wordAt(Bytes bytes, size_t offset) {
    return bytes[offset] | bytes[offset + 1] << 8 | bytes[offset + 2] << 16 |
           std::uint32_t{bytes[offset + 3]} << 24;
}

/// The chunk's data; `rest` moves on to the next chunk.
Bytes takeChunk(Bytes& rest, std::uint32_t& type) {
    if (rest.size() < 8)
        throw ImportError("the file is cut off in a chunk's header; copy or export it again");
    const size_t length = wordAt(rest, 0);
    type = wordAt(rest, 4);
    if (length > rest.size() - 8)
        throw ImportError("the file is damaged: a chunk is longer than the file; copy or export it again");
    const Bytes data = rest.subspan(8, length);
    rest = rest.subspan(8 + length);
    return data;
}

nlohmann::json parseJson(Bytes text) {
    nlohmann::json json = nlohmann::json::parse(text.begin(), text.end(), nullptr, false);
    if (json.is_discarded())
        throw ImportError("its JSON is damaged or cut off; copy or export the model again");
    return json;
}

GltfContainer openBinary(Bytes bytes) {
    if (bytes.size() < 12)
        throw ImportError("the file is cut off in its header; copy or export it again");
    const std::uint32_t version = wordAt(bytes, 4);
    if (version != 2)
        throw ImportError("this is binary glTF version " + std::to_string(version) +
                          " and only version 2 can be read; export the model as glTF 2.0");
    const size_t length = wordAt(bytes, 8);
    if (length > bytes.size())
        throw ImportError("the file is cut off: it should have " + std::to_string(length) +
                          " bytes and has " + std::to_string(bytes.size()) + "; copy or export it again");

    GltfContainer container;
    container.isBinary = true;
    Bytes rest = bytes.first(std::max<size_t>(length, 12)).subspan(12);
    std::uint32_t type = 0;
    const Bytes json = takeChunk(rest, type);
    if (type != kJsonChunk)
        throw ImportError("the file is damaged: its first chunk is not JSON; export the model again");
    container.json = parseJson(json);
    if (!rest.empty()) {
        const Bytes data = takeChunk(rest, type);
        if (type == kBinaryChunk)
            container.binary = data;
    }
    return container;
}

void checkVersion(const GltfObject& asset) {
    const std::string version = asset.text("version");
    if (version.empty())
        throw ImportError("the file doesn't say which version of glTF it is; export the model as glTF 2.0");
    if (!version.starts_with("2."))
        throw ImportError("this is glTF version " + version +
                          " and only version 2 can be read; export the model as glTF 2.0");
    const std::string least = asset.text("minVersion", "2.0");
    if (least != "2.0")
        throw ImportError("the file needs a reader of glTF " + least +
                          " and this one knows 2.0; export the model as glTF 2.0");
}

} // namespace

GltfContainer openGltf(std::span<const std::uint8_t> bytes) {
    static constexpr std::array<std::uint8_t, 4> kMagic{'g', 'l', 'T', 'F'};
    const bool isBinary = bytes.size() >= 4 && std::equal(kMagic.begin(), kMagic.end(), bytes.begin());
    GltfContainer container = isBinary ? openBinary(bytes) : GltfContainer{parseJson(bytes), {}, false};
    const GltfObject root(container.json, "");
    checkVersion(root.object("asset"));
    checkRequiredExtensions(root);
    return container;
}

std::vector<std::uint8_t> decodeDataUri(const std::string& uri) {
    constexpr std::string_view kMark = ";base64,";
    const size_t mark = uri.find(kMark);
    if (mark == uri.npos)
        throw ImportError("data within the file is not base64");
    std::string data = uri.substr(mark + kMark.size());
    data.append((4 - data.size() % 4) % 4, '='); // some exporters leave that out
    if (data.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=") !=
        data.npos)
        throw ImportError("data within the file is not base64");
    gsize size = 0;
    const std::unique_ptr<guchar, void (*)(void*)> bytes(g_base64_decode(data.c_str(), &size), g_free);
    return {bytes.get(), bytes.get() + size};
}

std::string decodeUri(const std::string& uri) {
    const char* end = uri.data() + uri.size();
    const std::unique_ptr<char, void (*)(void*)> path(g_uri_unescape_segment(uri.data(), end, nullptr),
                                                      g_free);
    return path ? path.get()
                : uri; // as it stands: some exporters write a bare %, and %00 is no part of a name
}

} // namespace orloview
