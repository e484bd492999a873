#include "import/ModelFolder.h"

#include <algorithm>
#include <system_error>

#include "base/ImportError.h"

namespace orloview {

namespace fs = std::filesystem;

const char* const ModelFolder::kOutside =
    "it lies outside the model's folder and the one above; move it there, or give --allow-outside";

ModelFolder::ModelFolder(const fs::path& model, bool allowOutside)
    : fModel(model), fPath(model.parent_path()) {
    std::error_code error;
    const fs::path real = fs::canonical(fPath.empty() ? "." : fPath, error);
    const fs::path above = real.parent_path();
    const bool isEverything = above == above.root_path();
    fRoot = allowOutside ? "/" : isEverything ? real : above;
}

bool ModelFolder::allows(const fs::path& file) const {
    std::error_code error;
    const fs::path real = fs::weakly_canonical(file, error);
    return !error && !fRoot.empty() &&
           std::mismatch(fRoot.begin(), fRoot.end(), real.begin(), real.end()).first == fRoot.end();
}

void ModelFolder::check(const fs::path& file) const {
    if (!allows(file))
        throw ImportError(kOutside);
}

std::vector<fs::path> ModelFolder::readable() const {
    return {fRoot, fModel};
}

} // namespace orloview
