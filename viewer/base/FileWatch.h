#pragma once

#include "base/Descriptor.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace orloview {

/// Tells when one of some files has been written or replaced, by inotify.
class FileWatch {
public:
    FileWatch();

    /// From now on these, and no others. Those that can't be watched aren't.
    void watch(const std::vector<std::string>& files);

    /// Becomes readable when something has happened in their folders.
    int descriptor() const { return fNotices.number(); }

    /// Whether one of them has changed since the last call.
    bool takeChange();

private:
    Descriptor fNotices;
    std::map<int, std::set<std::string>> fNames; ///< in each folder, by its number
};

} // namespace orloview
