#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <vector>

namespace orloview {

/// The whole of a regular file. Throws an ImportError that says why there is nothing to read: no such file, a
/// directory or device, no permission, empty.
std::vector<std::uint8_t> readFile(const std::filesystem::path& path);

/// What a file takes on the disk, or its length where that is less: the holes of a sparse one don't count. 0
/// where it can't be told.
std::size_t bytesOnDisk(const std::filesystem::path& path);

} // namespace orloview
