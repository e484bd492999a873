#pragma once

#include "base/ImportLimits.h"

#include <string>
#include <vector>

namespace orloview {

/// A picture of all that is seen from a place, all round from left to right and from straight up to straight
/// down: linear red, green, blue, in units of light and without a limit, rows from the top down.
struct SkyPicture {
    int width = 0;
    int height = 0;
    std::vector<float> rgb;

    /// The file's own size; a larger picture than kMostWidth is made smaller.
    int fileWidth = 0;
    int fileHeight = 0;

    static constexpr int kMostWidth = 4096;

    /// Whether it is twice as wide as high, as it has to be to show everything as it is.
    bool isWhole() const;
};

/// Reads a Radiance (.hdr) or OpenEXR (.exr) file, whatever its name. Its bytes are looked at in a process of
/// its own, limited and confined; as runInChild, not for a process that has started threads. Throws Failure
/// (kExitUsage).
SkyPicture readSkyPicture(const std::string& path, const ImportLimits& limits);

} // namespace orloview
