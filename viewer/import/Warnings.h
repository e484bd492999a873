#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace orloview {

/// What was left out of a scene and why. A reason that strikes many parts of a file becomes one line, and
/// there are never more lines than a person reads.
class Warnings {
public:
    /// `what` names a part of the file, `reason` says what happened to it and is shared by many parts.
    void add(const std::string& what, const std::string& reason);

    /// "WHAT, WHAT and 3 more: REASON", in the order of the first mention of each reason.
    std::vector<std::string> lines() const;

private:
    struct Entry {
        std::string reason;
        std::vector<std::string> parts; ///< the first few that were named
        size_t count = 0;
    };
    std::vector<Entry> fEntries;
    size_t fUnnamed = 0; ///< parts whose reason found no line any more
};

} // namespace orloview
