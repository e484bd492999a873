#include "import/PictureSearch.h"

#include <algorithm>
#include <array>
#include <system_error>
#include <vector>

#include "base/FileBytes.h"
#include "base/ImportError.h"
#include "base/Text.h"

namespace orloview {

namespace fs = std::filesystem;

namespace {

constexpr std::array kUsualFolders{"textures", "texture", "tex", "images", "maps", "materials"};

bool isRemote(std::string_view name) {
    return name.starts_with("http://") || name.starts_with("https://") || name.starts_with("ftp://");
}

} // namespace

std::string PictureSearch::find(std::string_view name) {
    if (isRemote(name))
        throw ImportError("it is in the network; save it beside the model");
    if (name.starts_with("file://"))
        name.remove_prefix(std::string_view("file://").size());
    const fs::path path = withSlashes(name);
    const fs::path& folder = fFolder.path();
    const fs::path asItIs = folder / path; // which is the path itself where that begins at the root
    const fs::path last = path.filename();
    std::vector<fs::path> candidates{asItIs, findIgnoringCase(folder, path), findIgnoringCase(folder, last)};
    if (path.has_parent_path())
        candidates.push_back(findIgnoringCase(folder, path.parent_path().filename() / last));
    for (const fs::path& above : {folder, folder / ".."}) {
        for (const char* usual : kUsualFolders)
            candidates.push_back(findIgnoringCase(above, fs::path(usual) / last));
    }
    const auto found = std::find_if(candidates.begin(), candidates.end(), [this](const fs::path& candidate) {
        return isFile(candidate) && fFolder.allows(candidate);
    });
    if (found != candidates.end())
        return found->string();
    std::error_code error;
    if (isFile(asItIs))
        fFolder.check(asItIs);
    throw ImportError(fs::is_other(asItIs, error) ? "this is a device or a pipe; save it to a file first"
                                                  : "there is no such file");
}

/// Empty where there is none.
fs::path PictureSearch::findIgnoringCase(const fs::path& folder, const fs::path& name) {
    fs::path place = folder;
    for (const fs::path& part : name.relative_path()) {
        const bool asItIs = part == "." || part == "..";
        place = asItIs ? place / part : entryIgnoringCase(place, part.string());
        if (place.empty())
            return place;
    }
    return place;
}

fs::path PictureSearch::entryIgnoringCase(const fs::path& folder, const std::string& name) {
    const auto [listing, isNew] = fListings.try_emplace(folder);
    if (isNew) {
        std::error_code error;
        for (fs::directory_iterator entry(folder.empty() ? "." : folder, error), end; !error && entry != end;
             entry.increment(error))
            listing->second.emplace(lowered(entry->path().filename().string()), entry->path().filename());
    }
    const auto found = listing->second.find(lowered(name));
    return found == listing->second.end() ? fs::path() : folder / found->second;
}

} // namespace orloview
