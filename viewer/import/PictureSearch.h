#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "import/ModelFolder.h"

namespace orloview {

/// Finds the picture files that a model names. Names come from other machines: with backslashes, in another
/// case, with the folders or the drive of whoever made the model.
class PictureSearch {
public:
    explicit PictureSearch(ModelFolder folder) : fFolder(std::move(folder)) {}

    /// The path of a regular file. Tried in this order: the name as it is, from the model's folder or from
    /// the root; the same whatever the case; its last part alone, in the model's folder, in the folder of the
    /// name's last but one part, and in those where pictures usually are ("textures", "images", ...), beside
    /// the model and one folder up. None that the model may not name. Throws an ImportError that says why
    /// there is none.
    std::string find(std::string_view name);

private:
    using Path = std::filesystem::path;

    Path findIgnoringCase(const Path& folder, const Path& name);
    Path entryIgnoringCase(const Path& folder, const std::string& name);

    ModelFolder fFolder;
    std::map<Path, std::map<std::string, Path>> fListings; ///< of a folder: its entries by lower-case name
};

} // namespace orloview
