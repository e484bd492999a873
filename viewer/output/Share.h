#pragma once

#include <cstdint>
#include <string>

namespace orloview {

/// One of equal parts of what several runs of the viewer write together.
struct Share {
    int part; ///< from 1
    int of;

    /// Of `count` things the first, and the one behind the last.
    struct Range {
        int first;
        int end;
    };
    Range among(int count) const {
        const auto upTo = [this, count](int parts) {
            return static_cast<int>(std::int64_t{count} * parts / of);
        };
        return {upTo(part - 1), upTo(part)};
    }

    std::string text() const { return std::to_string(part) + "/" + std::to_string(of); }
};

/// The file of a part of a picture: of "poster.png", "poster_2_of_4.png".
std::string partPath(const std::string& path, const Share& share);

/// Puts the parts of a picture together, which lie beside its place by the names they were written under, and
/// leaves them. The bytes are those that one run writes. A format that takes rows one by one. Throws Failure
/// (kExitNoInput, kExitNotWritten).
void joinParts(const std::string& path, int parts);

} // namespace orloview
