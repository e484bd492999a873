#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace orloview {

/// A glTF file taken apart: its JSON and, of a binary file, the chunk of data that follows.
struct GltfContainer { // NOLINT(bugprone-exception-escape): the JSON library's move constructor may throw
    nlohmann::json json;
    std::span<const std::uint8_t> binary; ///< of the file
    bool isBinary = false;
};

/// Takes a text or binary file apart and makes sure that this program can read it: the JSON is whole, the
/// version is 2 and no extension that it needs is unknown. Throws an ImportError otherwise. The bytes have to
/// stay.
GltfContainer openGltf(std::span<const std::uint8_t> bytes);

/// The bytes of a "data:" URI. Throws an ImportError where it is no base64.
std::vector<std::uint8_t> decodeDataUri(const std::string& uri);

/// A relative URI as a path: %20 and the like become characters.
std::string decodeUri(const std::string& uri);

} // namespace orloview
