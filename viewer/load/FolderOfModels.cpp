#include "load/FolderOfModels.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "import/Format.h"

namespace orloview {

namespace fs = std::filesystem;

std::vector<std::string> modelsIn(const std::string& folder) {
    std::vector<std::string> models;
    std::error_code error;
    for (fs::directory_iterator at(folder, fs::directory_options::skip_permission_denied, error), end;
         !error && at != end; at.increment(error)) {
        const fs::path& path = at->path();
        if (at->is_regular_file(error) && readsSuffix(path.extension()) &&
            !path.filename().string().starts_with('.'))
            models.push_back(path);
    }
    std::sort(models.begin(), models.end(), [](const std::string& a, const std::string& b) {
        return strverscmp(a.c_str(), b.c_str()) < 0;
    });
    return models;
}

std::string modelBeside(const std::string& path, int steps) {
    const fs::path given(path);
    const fs::path folder = given.has_parent_path() ? given.parent_path() : ".";
    const std::vector<std::string> models = modelsIn(folder);
    if (models.empty())
        return path;
    const auto count = static_cast<int>(models.size());
    const auto isGiven = [&](const std::string& model) {
        return fs::path(model).filename() == given.filename();
    };
    const auto found = std::find_if(models.begin(), models.end(), isGiven);
    const auto at = found == models.end() ? -1 : static_cast<int>(found - models.begin());
    return models[static_cast<size_t>(((at + steps) % count + count) % count)];
}

} // namespace orloview
