#pragma once

#include "base/ImportError.h"
#include "scene/Scene.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace orloview {

using Bytes = std::vector<std::uint8_t>;
using Json = nlohmann::json;

inline Bytes bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

/// Numbers as they lie in a file, one behind the other.
template <typename T>
Bytes packed(const std::vector<T>& values) {
    Bytes bytes(values.size() * sizeof(T));
    if (!bytes.empty())
        std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}

/// A folder that goes with the test.
class Folder {
public:
    Folder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "orloview-XXXXXX").string();
        fPath = mkdtemp(pattern.data());
    }
    ~Folder() { std::filesystem::remove_all(fPath); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::filesystem::path& path() const { return fPath; }

    std::filesystem::path write(const std::string& name, const Bytes& bytes) const {
        std::ofstream file(fPath / name, std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return fPath / name;
    }

private:
    std::filesystem::path fPath;
};

/// A glTF document that grows: `json` is open to any change before it is written.
class GltfFile {
public:
    GltfFile() {
        json = Json::parse(R"({"asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": [0]}],
                               "nodes": [{"mesh": 0}], "meshes": [{"primitives": [{"attributes": {}}]}],
                               "accessors": [], "bufferViews": []})");
    }

    /// Adds data and an accessor over it; its number.
    int accessor(const Bytes& data, int componentType, const std::string& type, size_t count) {
        json["bufferViews"].push_back(
            {{"buffer", 0}, {"byteOffset", binary.size()}, {"byteLength", data.size()}});
        binary.insert(binary.end(), data.begin(), data.end());
        binary.resize((binary.size() + 3) / 4 * 4);
        json["accessors"].push_back({{"bufferView", json["bufferViews"].size() - 1},
                                     {"componentType", componentType},
                                     {"type", type},
                                     {"count", count}});
        return static_cast<int>(json["accessors"].size()) - 1;
    }

    int floats(const std::vector<float>& values, const std::string& type) {
        const size_t width = type == "SCALAR" ? 1
                             : type == "MAT4" ? 16
                                              : static_cast<size_t>(type.back() - '0');
        return accessor(packed(values), 5126, type, values.size() / width);
    }

    Json& primitive() { return json["meshes"][0]["primitives"][0]; }

    /// As a .glb file.
    Bytes glb() const {
        Json document = json;
        document["buffers"] = {{{"byteLength", binary.size()}}};
        std::string text = document.dump();
        text.resize((text.size() + 3) / 4 * 4, ' ');
        Bytes file = bytesOf("glTF");
        const auto word = [&file](size_t value) {
            for (int shift = 0; shift < 32; shift += 8)
                file.push_back(static_cast<std::uint8_t>(value >> shift));
        };
        word(2);
        word(12 + 8 + text.size() + 8 + binary.size());
        word(text.size());
        word(0x4E4F534A);
        file.insert(file.end(), text.begin(), text.end());
        word(binary.size());
        word(0x004E4942);
        file.insert(file.end(), binary.begin(), binary.end());
        return file;
    }

    /// As a .gltf file with its data inside.
    std::string text() const {
        static const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        std::string base64;
        for (size_t i = 0; i < binary.size() * 8; i += 6) {
            const size_t next = i / 8 + 1 < binary.size() ? binary[i / 8 + 1] : 0;
            base64 += kAlphabet[(binary[i / 8] << 8U | next) >> (10 - i % 8) & 63U];
        }
        Json document = json;
        document["buffers"] = {
            {{"byteLength", binary.size()}, {"uri", "data:application/octet-stream;base64," + base64}}};
        return document.dump();
    }

    Json json;
    Bytes binary;
};

/// What a reader says of a file that it can't read; empty when it can.
template <typename Read>
std::string refusal(Read&& read) {
    try {
        read();
    } catch (const ImportError& error) {
        return error.what();
    }
    return "";
}

/// A triangle that a skin of one joint and a morph target bend, and an instance of it that a node carries. In
/// two seconds the node goes from 0 to 2 along x, and the target's weight from 0 to 1.
inline Scene movingScene() {
    Scene scene;
    scene.meshes.resize(1);
    scene.meshes[0].positions = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    scene.meshes[0].indices = {0, 1, 2};
    scene.instances.push_back({"node", 0, {}});
    scene.motion.nodes = {{}, {}};
    scene.motion.nodes[1].parent = 0;
    scene.motion.followers = {{Follower::Kind::Instance, 0, 1, {}}};
    scene.motion.skins = {{{0}, {{}}}};
    Bend& bend = scene.motion.bends.emplace_back();
    bend.mesh = bend.node = bend.skin = 0;
    bend.weights = {0.0};
    bend.targets = {{{0, {1}, {0, 0, 4}}}};
    bend.influences = {{{0, 1.0F}}, {0, 0, 0, 1}}; // of the last vertex
    using enum Track::Interpolation;
    scene.animations = {{"go",
                         2.0,
                         {{0, Track::Path::Translation, Linear, {0, 2}, {0, 0, 0, 2, 0, 0}},
                          {0, Track::Path::Weights, Linear, {0, 2}, {0, 1}}}}};
    return scene;
}

} // namespace orloview
