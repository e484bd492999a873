#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <vector>

#include "base/Descriptor.h"

namespace orloview {

/// Opens a regular file to read it. Throws an ImportError that says why not: no such file, a directory,
/// device or pipe, no permission.
Descriptor openFile(const std::filesystem::path& path);

/// The whole of a regular file. Throws an ImportError as openFile does, and where it is empty.
std::vector<std::uint8_t> readFile(const std::filesystem::path& path);

/// All that comes through standard input. Throws an ImportError where nothing does, or far too much.
std::vector<std::uint8_t> readStandardInput();

/// Whether there is a regular file of that name.
bool isFile(const std::filesystem::path& path);

/// What a file takes on the disk, or its length where that is less: the holes of a sparse one don't count. 0
/// where it can't be told.
size_t bytesOnDisk(const std::filesystem::path& path);

} // namespace orloview
