#include "output/OutputFile.h"

#include "base/ExitCode.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace orloview {

namespace {

namespace fs = std::filesystem;

/// For signals: the short name of what isn't in its place yet. Null: there is none.
std::atomic<const char*> fsUnfinished = nullptr;

using FileIdentity = std::pair<dev_t, ino_t>;

std::set<FileIdentity>& sparedFiles() {
    static std::set<FileIdentity> files;
    return files;
}

void endBySignal(int signal) {
    OutputFile::removeUnfinished();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

/// All signals that would end the program and that nobody else has taken.
void removeOnSignals() {
    constexpr std::array kHarmless{SIGCHLD, SIGCONT, SIGTSTP, SIGTTIN, SIGTTOU, SIGURG, SIGWINCH};
    for (int number = 1; number <= SIGRTMAX; ++number) {
        struct sigaction action = {};
        if (std::find(kHarmless.begin(), kHarmless.end(), number) != kHarmless.end() ||
            sigaction(number, nullptr, &action) != 0 || action.sa_handler != SIG_DFL)
            continue;
        action.sa_handler = endBySignal;
        action.sa_flags = SA_NODEFER;
        sigaction(number, &action, nullptr);
    }
}

/// The file that a chain of symbolic links ends at, whether it is there or not.
fs::path behindLinks(fs::path path) {
    std::error_code error;
    for (fs::path next = fs::read_symlink(path, error); !error; next = fs::read_symlink(path, error))
        path = path.parent_path() / next;
    return path;
}

fs::path folderOf(const fs::path& path) {
    return path.has_parent_path() ? path.parent_path() : ".";
}

/// A file without a name, or -1. It gets one by way of /proc.
int openNameless(const fs::path& folder) {
    constexpr const char* kOurFiles = "/proc/self/fd";
    return access(kOurFiles, X_OK) == 0 ? open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666) : -1;
}

} // namespace

void OutputFile::spare(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) == 0)
        sparedFiles().emplace(status.st_dev, status.st_ino);
}

bool OutputFile::isSpared(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && sparedFiles().contains({status.st_dev, status.st_ino});
}

void OutputFile::removeUnfinished() {
    if (const char* name = fsUnfinished.exchange(nullptr))
        unlink(name);
}

OutputFile::OutputFile(std::string path) : fPath(std::move(path)) {
    if (fPath == "-") {
        fPath = "standard output";
        fStream = stdout;
        return;
    }
    struct stat status = {};
    errno = 0;
    const bool isThere = stat(fPath.c_str(), &status) == 0;
    if (!isThere && errno != ENOENT)
        fail();
    if (isThere && sparedFiles().contains({status.st_dev, status.st_ino}))
        throw Failure(kExitUsage, fPath + ": this is one of the files that are read; give another name");
    const int file = isThere && !S_ISREG(status.st_mode)
                         ? ::open(fPath.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY)
                         : openReplacement();
    fStream = file < 0 ? nullptr : fdopen(file, "wb");
    if (fStream)
        return;
    removeUnfinished();
    fail();
}

OutputFile::~OutputFile() {
    if (fStream && fStream != stdout)
        std::fclose(fStream);
    if (!fBeside.empty())
        removeUnfinished();
}

int OutputFile::openReplacement() {
    fPlace = behindLinks(fPath);
    int file = openNameless(folderOf(fPlace));
    if (file >= 0)
        return file;
    makeBeside([&file](const char* name) {
        file = ::open(name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
        return file >= 0;
    });
    return file;
}

/// Gives what has no name yet one beside its place.
void OutputFile::nameBeside() {
    const std::string nameless = "/proc/self/fd/" + std::to_string(fileno(fStream));
    makeBeside([&nameless](const char* name) {
        return linkat(AT_FDCWD, nameless.c_str(), AT_FDCWD, name, AT_SYMLINK_FOLLOW) == 0;
    });
    if (fBeside.empty())
        fail();
}

/// Tries names beside the place until one is free; none where it fails for another reason. Each is known as
/// unfinished before it is there: a signal may come right behind its making.
template <typename Attempt>
void OutputFile::makeBeside(Attempt attempt) {
    constexpr int kMostNames = 1000;
    const std::string start = folderOf(fPlace) / (".orloview-" + std::to_string(getpid()) + "-");
    for (int number = 0; number < kMostNames; ++number) {
        setBeside(start + std::to_string(number));
        if (attempt(fBeside.c_str()))
            return;
        setBeside({});
        if (errno != EEXIST)
            return;
    }
}

void OutputFile::setBeside(std::string name) {
    fsUnfinished = nullptr;
    fBeside = std::move(name);
    if (fBeside.empty())
        return;
    removeOnSignals();
    fsUnfinished = fBeside.c_str();
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
    const bool isReplacement = !fPlace.empty();
    if (isReplacement && fBeside.empty())
        nameBeside();
    const bool isClosed = std::fclose(std::exchange(fStream, nullptr)) == 0;
    if (!isClosed || (isReplacement && std::rename(fBeside.c_str(), fPlace.c_str()) != 0))
        fail();
    setBeside({});
}

void OutputFile::fail() const {
    const std::string reason = errno != 0 ? std::strerror(errno) : "the disk took no more";
    const char* hint =
        errno == EPIPE ? "; who read it has gone" : "; check the folder, its rights and the space left";
    throw Failure(kExitNotWritten, fPath + ": the picture could not be written: " + reason + hint);
}

} // namespace orloview
