#pragma once

#include "ProgressReport.h"
#include "output/Picture.h"

#include <string>

namespace orloview {

/// Writes a PNG, with alpha when asked, tagged as sRGB; "-" is standard output. The file appears whole or not
/// at all: it is written beside and renamed at the end, so an older one stays where that fails. Throws
/// Failure (kExitNotWritten).
void writePng(const std::string& path, const Picture& picture, bool withAlpha,
              const ProgressReport& report = {});

} // namespace orloview
