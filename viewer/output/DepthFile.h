#pragma once

#include <string>
#include <vector>

namespace orloview {

/// Writes distances, rows from the bottom up, infinity where there is nothing: to a ".pfm" as they are (one
/// float a pixel), to a ".png" in 16 bits of grey, the nearest 0, the farthest 65534, nothing 65535. Throws
/// Failure (kExitNotWritten).
void writeDepth(const std::string& path, int width, int height, const std::vector<float>& distances);

/// Whether it is one of the two.
bool isDepthFile(const std::string& path);

} // namespace orloview
