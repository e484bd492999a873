#pragma once

#include <filesystem>
#include <vector>

namespace orloview {

/// Where a model lies, and which files it may name: those in its folder, in the one above, where textures
/// often lie, and below both. Models come from anywhere; one that names the files of a password safe is not
/// to be given them.
class ModelFolder {
public:
    explicit ModelFolder(const std::filesystem::path& model, bool allowOutside = false);

    /// Names are relative to it.
    const std::filesystem::path& path() const { return fPath; }

    /// Whether the model may name this file, wherever links on the way lead.
    bool allows(const std::filesystem::path& file) const;

    /// Throws an ImportError that says kOutside where it may not.
    void check(const std::filesystem::path& file) const;

    static const char* const kOutside;

    /// What the reading process needs to see: the two folders, and the model, which may be a link.
    std::vector<std::filesystem::path> readable() const;

private:
    std::filesystem::path fModel;
    std::filesystem::path fPath;
    std::filesystem::path fRoot; ///< what the model may name is below it; without links, empty: nothing is
};

} // namespace orloview
