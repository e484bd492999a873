#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "base/ProgressReport.h"
#include "import/ModelFolder.h"
#include "scene/Scene.h"

namespace orloview {

/// Reads a model file in this process. What importModel runs in its child: a damaged file may crash or hang
/// an import library in here. Throws an ImportError where there is nothing to draw and no camera or light
/// either. A file that others shorten meanwhile ends the process by a signal.
Scene readModel(const std::filesystem::path& path, const ModelFolder& folder,
                const ProgressReport& report = {});

/// The same of one that is in memory. Of the name only the suffix counts.
Scene readModel(std::span<const std::uint8_t> bytes, const std::filesystem::path& name,
                const ModelFolder& folder, const ProgressReport& report);

/// Whether all references of the scene lead somewhere and its attributes fit its vertices.
bool isConsistent(const Scene& scene);

} // namespace orloview
