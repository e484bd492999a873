#include "base/FileWatch.h"

#include <array>
#include <cstring>
#include <filesystem>
#include <sys/inotify.h>

namespace orloview {

namespace {

/// Programs write a file in its place, or beside it and move it there.
constexpr std::uint32_t kWritten = IN_CLOSE_WRITE | IN_MOVED_TO;

} // namespace

FileWatch::FileWatch() : fNotices(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {}

void FileWatch::watch(const std::vector<std::string>& files) {
    for (const auto& [folder, names] : fNames)
        inotify_rm_watch(fNotices.number(), folder);
    fNames.clear();
    for (const std::string& file : files) {
        const std::filesystem::path path(file);
        if (!path.has_filename())
            continue;
        const std::filesystem::path folder = path.has_parent_path() ? path.parent_path() : ".";
        const int number = inotify_add_watch(fNotices.number(), folder.c_str(), kWritten | IN_ONLYDIR);
        if (number >= 0)
            fNames[number].insert(path.filename());
    }
}

bool FileWatch::takeChange() {
    bool isChanged = false;
    alignas(inotify_event) std::array<char, 4096> bytes;
    for (ssize_t count = 0; (count = read(fNotices.number(), bytes.data(), bytes.size())) > 0;) {
        for (ssize_t at = 0; at < count;) {
            inotify_event notice{};
            std::memcpy(&notice, bytes.data() + at, sizeof notice);
            const auto folder = fNames.find(notice.wd);
            if (folder != fNames.end() && notice.len > 0)
                isChanged |= folder->second.contains(bytes.data() + at + sizeof notice);
            at += static_cast<ssize_t>(sizeof notice + notice.len);
        }
    }
    return isChanged;
}

} // namespace orloview
