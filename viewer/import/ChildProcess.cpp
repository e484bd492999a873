#include "import/ChildProcess.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <new>

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orloview {

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kAddressSanitizer = true;
#elif defined(__has_feature)
constexpr bool kAddressSanitizer = __has_feature(address_sanitizer);
#else
constexpr bool kAddressSanitizer = false;
#endif

enum ExitCode : int { kDone = 0, kFailed = 10, kOutOfMemory = 11, kThrew = 12 };

/// Closes itself.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : fNumber(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(); }

    int number() const { return fNumber; }
    void close() {
        if (fNumber >= 0)
            ::close(fNumber);
        fNumber = -1;
    }

private:
    int fNumber;
};

void limit(int resource, std::size_t value) {
    const rlimit both{value, value};
    ::setrlimit(static_cast<__rlimit_resource>(resource), &both);
}

void setLimits(const ImportLimits& limits) {
    limit(RLIMIT_CORE, 0);
    limit(RLIMIT_CPU, static_cast<std::size_t>(std::ceil(limits.seconds)) + 1);
    limit(RLIMIT_FSIZE, limits.memoryBytes); // the result is held in memory too
    if (!kAddressSanitizer)                  // which reserves terabytes of address space for itself
        limit(RLIMIT_AS, limits.memoryBytes);
}

void silence() {
    const int nowhere = ::open("/dev/null", O_WRONLY);
    ::dup2(nowhere, STDOUT_FILENO);
    ::dup2(nowhere, STDERR_FILENO);
}

[[noreturn]] void beChild(const ChildWork& work, const ImportLimits& limits, int output) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    silence();
    setLimits(limits);
    int code = kThrew;
    try {
        code = work(output) ? kDone : kFailed;
    } catch (const std::bad_alloc&) {
        code = kOutOfMemory;
    } catch (...) { // told apart from the work's own failures; what it was helps nobody outside
        code = kThrew;
    }
    ::_exit(code); // not exit: the parent's buffered output and its exit handlers are not ours
}

/// Waits until the child has closed its end of the pipe, which it does at its end. False when time is up.
bool waitForEnd(int pipe, double seconds, const std::function<void()>& whileWaiting) {
    using Clock = std::chrono::steady_clock;
    const double longest = whileWaiting ? 50.0 : 1e6; // milliseconds
    const auto deadline = Clock::now() + std::chrono::duration<double>(seconds);
    for (;;) {
        const std::chrono::duration<double, std::milli> left = deadline - Clock::now();
        if (left.count() <= 0.0)
            return false;
        pollfd end{pipe, POLLIN, 0};
        const int ready = ::poll(&end, 1, static_cast<int>(std::min(left.count() + 1.0, longest)));
        if (whileWaiting)
            whileWaiting();
        if (ready > 0)
            return true;
        if (ready < 0 && errno != EINTR)
            return false;
    }
}

ChildOutcome outcomeOf(int status) {
    if (WIFSIGNALED(status)) {
        switch (WTERMSIG(status)) {
        case SIGXCPU:
            return ChildOutcome::OutOfTime;
        case SIGXFSZ:
        case SIGKILL: // not by us: the kernel ran out of memory
            return ChildOutcome::OutOfMemory;
        default:
            return ChildOutcome::Crashed;
        }
    }
    switch (WEXITSTATUS(status)) {
    case kDone:
        return ChildOutcome::Done;
    case kFailed:
        return ChildOutcome::Failed;
    case kOutOfMemory:
        return ChildOutcome::OutOfMemory;
    default:
        return ChildOutcome::Crashed;
    }
}

std::vector<std::uint8_t> contents(int file) {
    struct stat status {};
    if (::fstat(file, &status) != 0 || status.st_size <= 0)
        return {};
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(status.st_size));
    std::size_t got = 0;
    while (got < bytes.size()) {
        const ssize_t count = ::pread(file, bytes.data() + got, bytes.size() - got, static_cast<off_t>(got));
        if (count <= 0 && errno != EINTR)
            return {};
        got += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return bytes;
}

} // namespace

ChildResult runInChild(const ChildWork& work, const ImportLimits& limits,
                       const std::function<void()>& whileWaiting) {
    ChildResult result;
    int ends[2] = {-1, -1};
    const Descriptor output(::memfd_create("orloview", MFD_CLOEXEC));
    if (output.number() < 0 || ::pipe2(ends, O_CLOEXEC) != 0)
        return result;
    const Descriptor readEnd(ends[0]);
    Descriptor writeEnd(ends[1]);

    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child < 0)
        return result;
    if (child == 0)
        beChild(work, limits, output.number());

    writeEnd.close();
    const bool inTime = waitForEnd(readEnd.number(), limits.seconds, whileWaiting);
    if (!inTime)
        ::kill(child, SIGKILL);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    result.outcome = inTime ? outcomeOf(status) : ChildOutcome::OutOfTime;
    if (result.outcome == ChildOutcome::Done || result.outcome == ChildOutcome::Failed)
        result.output = contents(output.number());
    return result;
}

} // namespace orloview
