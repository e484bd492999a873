#include "output/OutputFile.h"

#include "base/ExitCode.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace orloview {

namespace {

/// A device or pipe can't be replaced by a renaming: it is written straight.
bool isReplaceable(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode);
}

} // namespace

OutputFile::OutputFile(std::string path) : fPath(std::move(path)) {
    if (fPath == "-") {
        fPath = "standard output";
        fStream = stdout;
        return;
    }
    if (isReplaceable(fPath))
        fWritten = fPath + ".part" + std::to_string(getpid());
    errno = 0;
    fStream = std::fopen(fWritten.empty() ? fPath.c_str() : fWritten.c_str(), "wb");
    if (!fStream)
        fail();
}

OutputFile::~OutputFile() {
    if (fStream && fStream != stdout)
        std::fclose(fStream);
    if (fStream && !fWritten.empty())
        std::remove(fWritten.c_str());
}

void OutputFile::write(const void* bytes, size_t count) {
    if (std::fwrite(bytes, 1, count, fStream) != count)
        fail();
}

void OutputFile::commit() {
    if (std::fflush(fStream) != 0)
        fail();
    if (fStream == stdout)
        return;
    const bool closed = std::fclose(std::exchange(fStream, nullptr)) == 0;
    if (closed && (fWritten.empty() || std::rename(fWritten.c_str(), fPath.c_str()) == 0))
        return;
    const int error = errno;
    std::remove(fWritten.c_str());
    errno = error;
    fail();
}

void OutputFile::fail() const {
    const std::string reason = errno != 0 ? std::strerror(errno) : "the disk took no more";
    throw Failure(kExitNotWritten, fPath + ": the picture could not be written: " + reason +
                                       "; check the folder, its rights and the space left");
}

} // namespace orloview
