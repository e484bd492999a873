#pragma once

#include <string>
#include <vector>

namespace orloview {

/// The files of a folder that are read by their suffix, by name: numbers in names count as such.
std::vector<std::string> modelsIn(const std::string& folder);

/// In the folder of a model the one that comes so many behind it, round the end; the model itself where there
/// is no other.
std::string modelBeside(const std::string& path, int steps);

} // namespace orloview
