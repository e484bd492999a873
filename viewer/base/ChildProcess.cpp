#include "base/ChildProcess.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <new>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/Descriptor.h"

namespace orloview {

namespace {

// Sanitizers reserve terabytes of address space for themselves: no limit of memory then.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
constexpr bool kSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool kSanitized = false;
#endif

constexpr int kMillisecondsBetweenLooks = 50;

/// The kernel tells of computing time that is used up once, by a signal of its own, and then kills.
constexpr size_t kSecondsBeforeTheKill = 1;

enum ChildExit : int { kDone = 0, kFailed = 10, kOutOfMemory = 11, kThrew = 12 };

void limit(__rlimit_resource resource, size_t value, size_t most) {
    const rlimit both{value, most};
    ::setrlimit(resource, &both);
}

std::string inWords(size_t bytes) {
    const bool isSmall = bytes < size_t{1} << 30;
    char text[32];
    std::snprintf(text, sizeof text, "%.3g %s", static_cast<double>(bytes) / (isSmall ? 1 << 20 : 1 << 30),
                  isSmall ? "MB" : "GB");
    return text;
}

std::string beyond(const std::string& limit, const std::string& remedy, const std::string& larger) {
    return "it takes more than " + limit + "; " + remedy + ", or, if it is not damaged, " + larger;
}

/// What is allowed by now; 0: to this process. A child has to be there still, if only to be waited for.
ChildLimits limitsOf(pid_t child) {
    rlimit memory{};
    rlimit time{};
    ::prlimit(child, RLIMIT_AS, nullptr, &memory);
    ::prlimit(child, RLIMIT_CPU, nullptr, &time);
    return {memory.rlim_cur, static_cast<unsigned>(time.rlim_cur), memory.rlim_max,
            static_cast<unsigned>(time.rlim_max)};
}

[[noreturn]] void beChild(const ChildWork& work, const ChildLimits& limits, int output) {
    beLimited(limits);
    ::close_range(STDERR_FILENO + 1, static_cast<unsigned>(output) - 1, 0); // nothing else is its own
    ::close_range(static_cast<unsigned>(output) + 1, ~0U, 0);
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

/// How long the child has kept a processor busy.
timespec timeUsed(pid_t child) {
    clockid_t clock = 0;
    timespec used{};
    if (::clock_getcpuclockid(child, &clock) == 0)
        ::clock_gettime(clock, &used);
    return used;
}

enum class Received { Piece, Nothing, End };

/// Appends what has arrived within a twentieth of a second.
Received receive(int pipe, std::vector<std::uint8_t>& output) {
    pollfd arrived{pipe, POLLIN, 0};
    if (::poll(&arrived, 1, kMillisecondsBetweenLooks) <= 0)
        return Received::Nothing;
    std::array<std::uint8_t, 65536> piece; // NOLINT(cppcoreguidelines-pro-type-member-init): it is read into
    const ssize_t count = ::read(pipe, piece.data(), piece.size());
    if (count > 0)
        output.insert(output.end(), piece.begin(), piece.begin() + count);
    else if (count == 0 || errno != EINTR)
        return Received::End;
    return Received::Piece;
}

/// Takes the output until the child has closed its end of the pipe, which it does at its end. False when it
/// has waited too long for something.
bool takeOutput(int pipe, pid_t child, unsigned seconds, const std::function<void()>& whileWaiting,
                std::vector<std::uint8_t>& output) {
    timespec used{};
    double idle = 0.0; // counted in looks: the whole program may have been stopped for hours
    while (idle < seconds) {
        const Received received = receive(pipe, output);
        if (whileWaiting)
            whileWaiting();
        if (received == Received::End)
            return true;
        const timespec before = std::exchange(used, timeUsed(child));
        const bool isIdle =
            received == Received::Nothing && used.tv_sec == before.tv_sec && used.tv_nsec == before.tv_nsec;
        idle = isIdle ? idle + kMillisecondsBetweenLooks / 1000.0 : 0.0;
    }
    return false;
}

ChildOutcome outcomeOf(int status) {
    if (WIFSIGNALED(status)) {
        switch (WTERMSIG(status)) {
        case SIGXCPU:
            return ChildOutcome::OutOfTime;
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

/// Ends the child that nobody has waited for.
class Child {
public:
    explicit Child(pid_t process) : fProcess(process) {}
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child() {
        if (fProcess > 0)
            ::kill(fProcess, SIGKILL);
        wait();
    }

    /// Tells how it ended.
    int wait() {
        int status = 0;
        while (fProcess > 0 && ::waitpid(fProcess, &status, 0) < 0 && errno == EINTR) {
        }
        fProcess = -1;
        return status;
    }

private:
    pid_t fProcess;
};

} // namespace

ChildResult runInChild(const ChildWork& work, const ChildLimits& limits,
                       const std::function<void()>& whileWaiting) {
    ChildResult result;
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return result;
    const Descriptor readEnd(ends[0]);
    Descriptor writeEnd(ends[1]);

    std::fflush(nullptr);
    const pid_t process = ::fork();
    if (process < 0)
        return result;
    if (process == 0)
        beChild(work, limits, writeEnd.number());
    Child child(process);

    writeEnd.close();
    const bool inTime = takeOutput(readEnd.number(), process, limits.seconds, whileWaiting, result.output);
    result.limits = limitsOf(process);
    result.outcome = inTime ? outcomeOf(child.wait()) : ChildOutcome::OutOfTime;
    if (inTime && result.outcome == ChildOutcome::OutOfTime)
        --result.limits.seconds; // the kernel has moved it on, to tell again
    return result;
}

std::string beyondMemory(size_t bytes, const std::string& remedy) {
    return beyond(inWords(bytes) + " of memory", remedy,
                  "--limit-memory " + std::to_string((bytes >> 29) + 1) + "G");
}

std::string beyondTime(unsigned seconds, const std::string& remedy) {
    return beyond(std::to_string(seconds) + " s of computing", remedy,
                  "--limit-time " + std::to_string(std::max(seconds, 1U) * 4UL));
}

ChildLimits ownLimits() {
    return limitsOf(0);
}

void beLimited(const ChildLimits& limits) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const Descriptor nowhere(::open("/dev/null", O_RDWR));
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        ::dup2(nowhere.number(), stream);
    limit(RLIMIT_CORE, 0, 0);
    limit(RLIMIT_FSIZE, 0, 0);
    ::signal(SIGXCPU, SIG_DFL);
    limit(RLIMIT_CPU, limits.seconds, size_t{limits.mostSeconds} + kSecondsBeforeTheKill);
    if (!kSanitized)
        limit(RLIMIT_AS, limits.memoryBytes, limits.mostMemoryBytes);
}

void raiseLimits(size_t memoryBytes, unsigned seconds) {
    const auto raise = [](__rlimit_resource resource, size_t by, size_t below) {
        rlimit both{};
        ::getrlimit(resource, &both);
        both.rlim_cur += std::min(by, both.rlim_max - below - both.rlim_cur);
        ::setrlimit(resource, &both);
    };
    raise(RLIMIT_AS, memoryBytes, 0);
    raise(RLIMIT_CPU, seconds, kSecondsBeforeTheKill);
}

void lowerMemoryLimit(size_t bytes) {
    if (!kSanitized)
        limit(RLIMIT_AS, bytes, bytes);
}

} // namespace orloview
