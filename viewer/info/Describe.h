#pragma once

#include <string>

#include "scene/Scene.h"

namespace orloview {

/// What a scene holds, in lines for people.
std::string describe(const Scene& scene);

/// The same as one JSON object. Its keys: format, groups, triangles, points, lines, bounds ({min, max}, null
/// where nothing is drawn), materials, textures, cameras, lights (lists) and warnings.
std::string describeJson(const Scene& scene);

} // namespace orloview
