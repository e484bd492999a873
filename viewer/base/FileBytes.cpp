#include "base/FileBytes.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <sys/stat.h>
#include <system_error>

#include "base/ImportError.h"

namespace orloview {

namespace fs = std::filesystem;

std::vector<std::uint8_t> readFile(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::not_found)
        throw ImportError("there is no such file; check the name");
    if (error)
        throw ImportError("the file can't be read: " + error.message() + "; check its name and permissions");
    if (status.type() == fs::file_type::directory)
        throw ImportError("this is a directory; name a file in it");
    if (status.type() != fs::file_type::regular)
        throw ImportError("this is a device or a pipe; save it to a file first");

    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw ImportError("the file can't be read: " + std::generic_category().message(errno) +
                          "; check its permissions");
    std::vector<std::uint8_t> bytes(fs::file_size(path));
    if (bytes.empty())
        throw ImportError("the file is empty; export the model again");
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!file)
        throw ImportError("reading the file failed half-way; check the disk");
    return bytes;
}

std::size_t bytesOnDisk(const fs::path& path) {
    constexpr std::size_t kBlock = 512;
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return 0;
    return std::min(static_cast<std::size_t>(status.st_size),
                    static_cast<std::size_t>(status.st_blocks) * kBlock);
}

} // namespace orloview
