#pragma once

#include "import/GltfJson.h"
#include "import/Warnings.h"

namespace orloview {

/// Makes sure that this program knows each extension that the file can't do without, or that it changes no
/// more than the look. Throws an ImportError that names the first other.
void checkRequiredExtensions(const GltfObject& root);

/// Tells of each extension that the file declares or that one of its objects carries, if it shows in a
/// picture and isn't drawn. `document` is all of the file.
void warnOfExtensions(const nlohmann::json& document, Warnings& warnings);

} // namespace orloview
