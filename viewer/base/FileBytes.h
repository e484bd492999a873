#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace orloview {

/// The whole of a regular file. Throws an ImportError that says why there is nothing to read: no such file, a
/// directory or device, no permission, empty.
std::vector<std::uint8_t> readFile(const std::filesystem::path& path);

} // namespace orloview
