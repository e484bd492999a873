#include "base/FileBytes.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

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

std::vector<std::uint8_t> readStandardInput() {
    constexpr size_t kPiece = size_t{1} << 20;
    constexpr size_t kMost = size_t{4} << 30;
    std::vector<std::uint8_t> bytes;
    if (::isatty(STDIN_FILENO) != 0)
        throw ImportError(
            "standard input is the keyboard; lead a model into it, as by 'orloview - < model.glb'");
    for (ssize_t count = 1; count != 0;) {
        const size_t got = bytes.size();
        bytes.resize(got + kPiece);
        count = ::read(STDIN_FILENO, bytes.data() + got, kPiece);
        if (count < 0 && errno != EINTR)
            throw ImportError("standard input can't be read: " + std::generic_category().message(errno) +
                              "; check what is led into it");
        bytes.resize(got + static_cast<size_t>(std::max<ssize_t>(count, 0)));
        if (bytes.size() > kMost)
            throw ImportError("standard input brings more than 4 GB; save it to a file first");
    }
    if (bytes.empty())
        throw ImportError("standard input brings nothing; check what is led into it");
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
