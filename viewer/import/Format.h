#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace orloview {

enum class Format { Gltf, Obj, Ply, Stl, Table, ByLibrary };

/// Which reader a file is for: by what it holds, by its suffix where that says nothing. Throws an ImportError
/// that lists what can be read where neither helps.
Format detectFormat(std::span<const std::uint8_t> bytes, const std::filesystem::path& path);

/// Whether files with this suffix (with its dot) are read.
bool readsSuffix(const std::string& suffix);

/// What is read, a line each: suffixes, and what the format is called.
std::string listModelFormats();

} // namespace orloview
