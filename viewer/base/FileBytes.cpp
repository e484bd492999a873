#include "base/FileBytes.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>

#include "base/ImportError.h"

namespace orloview {

namespace fs = std::filesystem;

Descriptor openFile(const fs::path& path) {
    struct stat status {};
    const bool isThere = ::stat(path.c_str(), &status) == 0;
    if (!isThere && (errno == ENOENT || errno == ENOTDIR))
        throw ImportError("there is no such file; check the name");
    if (isThere && S_ISDIR(status.st_mode))
        throw ImportError("this is a directory; name a file in it");
    if (isThere && !S_ISREG(status.st_mode))
        throw ImportError("this is a device or a pipe; save it to a file first");
    Descriptor file(isThere ? ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC) : -1);
    if (file.number() < 0)
        throw ImportError("the file can't be read: " + std::generic_category().message(errno) +
                          "; check its name and permissions");
    return file;
}

std::vector<std::uint8_t> readFile(const fs::path& path) {
    const Descriptor file = openFile(path);
    const off_t size = ::lseek(file.number(), 0, SEEK_END);
    if (size == 0)
        throw ImportError("the file is empty; export the model again");
    std::vector<std::uint8_t> bytes(static_cast<size_t>(std::max<off_t>(size, 0)));
    for (size_t got = 0; got < bytes.size();) {
        const ssize_t count =
            ::pread(file.number(), bytes.data() + got, bytes.size() - got, static_cast<off_t>(got));
        if (count == 0 || (count < 0 && errno != EINTR))
            throw ImportError("reading the file failed half-way; check the disk");
        got += static_cast<size_t>(std::max<ssize_t>(count, 0));
    }
    return bytes;
}

bool isFile(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
}

size_t bytesOnDisk(const fs::path& path) {
    constexpr size_t kBlock = 512;
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return 0;
    return std::min(static_cast<size_t>(status.st_size), static_cast<size_t>(status.st_blocks) * kBlock);
}

} // namespace orloview
