#include "texture/SkyPicture.h"

#include "base/ChildProcess.h"
#include "base/Confinement.h"
#include "base/ExitCode.h"
#include "base/FileBytes.h"
#include "base/ImportError.h"
#include "base/MappedFile.h"
#include "base/Text.h"
#include "texture/PictureHeader.h"
#include "texture/SkyRows.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <tuple>
#include <unistd.h>

namespace orloview {

namespace {

using Sizes = std::array<int, 4>;

bool writeAll(int output, const void* bytes, size_t size) {
    const auto* from = static_cast<const char*>(bytes);
    while (size > 0) {
        const ssize_t count = ::write(output, from, size);
        if (count <= 0)
            return false;
        from += count;
        size -= static_cast<size_t>(count);
    }
    return true;
}

SkyPicture decodeSky(std::span<const std::uint8_t> file) {
    const std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
    if (text.starts_with("\x76\x2F\x31\x01"))
        return readOpenExr(file);
    if (text.starts_with("#?"))
        return readRadiance(file);
    throw PictureError("it is neither Radiance (.hdr) nor OpenEXR (.exr); save it as one of these");
}

/// The child's work: the picture, or one line that says what is wrong.
bool decodeInto(int output, std::span<const std::uint8_t> file) {
    try {
        const SkyPicture picture = decodeSky(file);
        const Sizes sizes{picture.width, picture.height, picture.fileWidth, picture.fileHeight};
        return writeAll(output, &sizes, sizeof sizes) &&
               writeAll(output, picture.rgb.data(), picture.rgb.size() * sizeof(float));
    } catch (const PictureError& error) {
        const std::string_view line = error.what();
        writeAll(output, line.data(), line.size());
        return false;
    }
}

/// False for what no decoder writes.
bool take(const std::vector<std::uint8_t>& output, SkyPicture& picture) {
    Sizes sizes{};
    if (output.size() < sizeof sizes)
        return false;
    std::memcpy(&sizes, output.data(), sizeof sizes);
    std::tie(picture.width, picture.height, picture.fileWidth, picture.fileHeight) = std::tuple_cat(sizes);
    if (std::min(picture.width, picture.height) < 1 ||
        std::max(picture.width, picture.height) > SkyPicture::kMostWidth)
        return false;
    picture.rgb.resize(static_cast<size_t>(picture.width) * static_cast<size_t>(picture.height) * 3);
    const size_t size = picture.rgb.size() * sizeof(float);
    if (output.size() != sizeof sizes + size)
        return false;
    std::memcpy(picture.rgb.data(), output.data() + sizeof sizes, size);
    return true;
}

/// A file is part of the memory; no picture takes as long as a model may.
ChildLimits limitsFor(const ImportLimits& asked, size_t fileBytes) {
    ChildLimits limits;
    limits.memoryBytes = limits.mostMemoryBytes = asked.memoryBytes.value_or(limits.memoryBytes + fileBytes);
    limits.seconds = limits.mostSeconds = asked.seconds.value_or(limits.seconds);
    return limits;
}

std::string whatHappened(const ChildResult& result) {
    switch (result.outcome) {
    case ChildOutcome::Failed:
        return printable(std::string(result.output.begin(), result.output.end()), 1000);
    case ChildOutcome::OutOfMemory:
        return "it takes too much memory; --limit-memory allows more";
    case ChildOutcome::OutOfTime:
        return "it takes too long; --limit-time allows more";
    case ChildOutcome::NotStarted:
        return "no process could be started for it; try again later";
    default:
        return "decoding it crashed (it is probably damaged); save it again";
    }
}

} // namespace

SkyPicture readSkyPicture(const std::string& path, const ImportLimits& limits) {
    std::string fault;
    try {
        const Descriptor descriptor = openFile(path);
        const MappedFile file(descriptor.number());
        const ChildResult child = runInChild(
            [&](int output) {
                confine({});
                return decodeInto(output, file.bytes());
            },
            limitsFor(limits, file.bytes().size()));
        SkyPicture picture;
        if (child.outcome == ChildOutcome::Done && take(child.output, picture))
            return picture;
        fault = whatHappened(child);
    } catch (const ImportError& error) {
        fault = error.what();
    }
    throw Failure(kExitUsage, "--sky " + path + ": " + fault);
}

} // namespace orloview
