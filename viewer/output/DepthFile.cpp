#include "output/DepthFile.h"

#include "output/PictureEncoder.h"
#include "output/PictureFile.h"

#include <algorithm>
#include <cmath>

namespace orloview {

namespace {

void writePfm(const std::string& path, int width, int height, const std::vector<float>& distances) {
    OutputFile file(path);
    const std::string header = "Pf\n" + std::to_string(width) + " " + std::to_string(height) + "\n-1.0\n";
    file.write(header.data(), header.size());
    file.write(distances.data(), distances.size() * sizeof(float));
    file.commit();
}

/// Nearest and farthest of what is there.
std::pair<float, float> rangeOf(const std::vector<float>& distances) {
    float nearest = INFINITY;
    float farthest = -INFINITY;
    for (const float distance : distances) {
        if (std::isfinite(distance)) {
            nearest = std::min(nearest, distance);
            farthest = std::max(farthest, distance);
        }
    }
    return {nearest, farthest};
}

void writeGrey(const std::string& path, int width, int height, const std::vector<float>& distances) {
    const auto [nearest, farthest] = rangeOf(distances);
    const float scale = farthest > nearest ? 65534.0F / (farthest - nearest) : 0.0F;
    Picture grey(width, height, 2);
    for (int y = height - 1; y >= 0; --y) {
        const float* in = distances.data() + static_cast<size_t>(y) * static_cast<size_t>(width);
        std::uint8_t* out = grey.row(height - 1 - y);
        for (size_t x = 0; x < static_cast<size_t>(width); ++x) {
            const long value = std::isfinite(in[x]) ? std::lround((in[x] - nearest) * scale) : 65535;
            out[2 * x] = static_cast<std::uint8_t>(value >> 8);
            out[2 * x + 1] = static_cast<std::uint8_t>(value & 0xFF);
        }
    }
    const auto encoder = makeGrey16Encoder(width, height);
    OutputFile file(path);
    for (const Bytes& bytes : {encoder->begin(), encoder->encode(grey, 0, 0, height).bytes, *encoder->end()})
        file.write(bytes.data(), bytes.size());
    file.commit();
}

} // namespace

bool isDepthFile(const std::string& path) {
    const auto format = path == "-" ? std::nullopt : formatOf(path);
    return format == PictureFormat::Pfm || format == PictureFormat::Png;
}

void writeDepth(const std::string& path, int width, int height, const std::vector<float>& distances) {
    if (formatOf(path) == PictureFormat::Pfm)
        writePfm(path, width, height, distances);
    else
        writeGrey(path, width, height, distances);
}

} // namespace orloview
