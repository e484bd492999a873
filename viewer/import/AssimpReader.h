#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "import/ModelFolder.h"
#include "scene/Scene.h"

namespace orloview {

/// Reads STL from memory by the import library. Facets are flat, their normals as their vertices turn.
Scene readStl(std::span<const std::uint8_t> bytes);

/// Reads whatever else the import library knows by the file's suffix or content. Its indices, coordinates and
/// references are checked here: the library hands on what stands in the file. Throws an ImportError.
Scene readByLibrary(const std::filesystem::path& path, const ModelFolder& folder);

/// The same from memory. The name's suffix tells the format where the content doesn't.
Scene readByLibrary(std::span<const std::uint8_t> bytes, const std::filesystem::path& name,
                    const ModelFolder& folder);

/// The formats of the import library: what each is called, and its suffixes (with their dots).
struct LibraryFormat {
    std::string name;
    std::vector<std::string> suffixes;
};
std::vector<LibraryFormat> libraryFormats();

/// Whether the import library reads files with this suffix (with its dot).
bool libraryReads(const std::string& suffix);

} // namespace orloview
