#include "base/ChildProcess.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <new>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/Messages.h"

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
constexpr size_t kBuffer = size_t{1} << 16;
constexpr int kRoomInPipe = 1 << 20;

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

/// How a child ended.
int waitFor(pid_t child) {
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

/// Ends the child that nobody has waited for.
class Child {
public:
    explicit Child(pid_t process) : fProcess(process) {}
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child() {
        if (fProcess < 0)
            return;
        ::kill(fProcess, SIGKILL);
        wait();
    }

    pid_t process() const { return fProcess; }

    /// Tells how it ended.
    int wait() { return waitFor(std::exchange(fProcess, -1)); }

private:
    pid_t fProcess;
};

// What goes between a starter and the process that forks for it.

struct Order {
    ChildLimits limits; ///< the words follow
};
constexpr std::string_view kWait = "w"; ///< and tell how it ended
constexpr std::string_view kEnd = "e";  ///< the same, at once

template <typename T>
std::string_view bytesOf(const T& value) {
    static_assert(std::is_trivially_copyable_v<T>);
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

template <typename T>
T received(int socket, T otherwise) {
    const std::optional<Message> message = receiveMessage(socket);
    if (message && message->bytes.size() == sizeof otherwise)
        std::memcpy(&otherwise, message->bytes.data(), sizeof otherwise);
    return otherwise;
}

/// The process that forks, for as long as somebody is there who asks for it.
[[noreturn]] void startChildren(int socket, const ChildStarter::Work& work) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    while (std::optional<Message> message = receiveMessage(socket)) {
        Order order;
        if (message->bytes.size() < sizeof order || message->descriptors.size() != 1)
            break;
        std::memcpy(&order, message->bytes.data(), sizeof order);
        const std::string words = message->bytes.substr(sizeof order);
        const pid_t child = ::fork();
        if (child == 0)
            beChild([&](int output) { return work(words, output); }, order.limits,
                    message->descriptors[0].number());
        message->descriptors.clear();
        if (!sendMessage(socket, bytesOf(child)) || child < 0)
            continue;
        const std::optional<Message> next = receiveMessage(socket);
        if (!next || next->bytes == kEnd)
            ::kill(child, SIGKILL);
        sendMessage(socket, bytesOf(waitFor(child)));
    }
    ::_exit(0);
}

/// The same as Child, of another process.
class ChildElsewhere {
public:
    ChildElsewhere(int socket, pid_t process) : fSocket(socket), fProcess(process) {}
    ChildElsewhere(const ChildElsewhere&) = delete;
    ChildElsewhere& operator=(const ChildElsewhere&) = delete;
    ~ChildElsewhere() {
        if (fProcess >= 0)
            tell(kEnd);
    }

    pid_t process() const { return fProcess; }
    int wait() { return tell(kWait); }

private:
    int tell(std::string_view what) {
        fProcess = -1;
        sendMessage(fSocket, what);
        return received(fSocket, SIGKILL);
    }

    int fSocket;
    pid_t fProcess;
};

/// A pipe that a child writes to.
struct ChildPipe {
    ChildPipe() {
        int ends[2] = {-1, -1};
        if (::pipe2(ends, O_CLOEXEC) != 0)
            return;
        readEnd = Descriptor(ends[0]);
        writeEnd = Descriptor(ends[1]);
        ::fcntl(ends[1], F_SETPIPE_SZ, kRoomInPipe); // fewer turns; as it was where that's too much
    }

    Descriptor readEnd;
    Descriptor writeEnd;
};

template <typename AnyChild>
ChildResult takeFrom(AnyChild& child, int pipe, const ChildLimits& limits, const ChildTaker& take,
                     const std::function<void()>& whileWaiting) {
    ChildResult result;
    ChildOutput output(pipe, child.process(), limits.seconds, whileWaiting);
    take(output);
    const bool hasEnded = output.isAtEnd();
    result.limits = limitsOf(child.process());
    if (!hasEnded) {
        result.outcome = output.hasWaitedTooLong() ? ChildOutcome::OutOfTime : ChildOutcome::Crashed;
        return result;
    }
    result.outcome = outcomeOf(child.wait());
    if (result.outcome == ChildOutcome::OutOfTime)
        --result.limits.seconds; // the kernel has moved it on, to tell again
    return result;
}

} // namespace

/// What has arrived, at most so much; 0 at the end.
size_t ChildOutput::receive(void* to, size_t most) {
    while (!fHasWaitedTooLong) {
        pollfd arrived{fPipe, POLLIN, 0};
        const bool isThere = ::poll(&arrived, 1, kMillisecondsBetweenLooks) > 0;
        if (fWhileWaiting)
            fWhileWaiting();
        if (isThere) {
            fIdle = 0.0;
            const ssize_t count = ::read(fPipe, to, most);
            if (count >= 0 || errno != EINTR)
                return static_cast<size_t>(std::max<ssize_t>(count, 0));
            continue;
        }
        const timespec before = std::exchange(fUsed, timeUsed(fChild));
        const bool isIdle = fUsed.tv_sec == before.tv_sec && fUsed.tv_nsec == before.tv_nsec;
        fIdle = isIdle ? fIdle + kMillisecondsBetweenLooks / 1000.0 : 0.0;
        fHasWaitedTooLong = fIdle >= fSeconds;
    }
    return 0;
}

/// Whether there is something to be taken from the buffer.
bool ChildOutput::fill() {
    fBuffer.resize(kBuffer);
    if (fReceived.empty())
        fReceived = {fBuffer.data(), receive(fBuffer.data(), fBuffer.size())};
    return !fReceived.empty();
}

bool ChildOutput::take(void* to, size_t size) {
    auto* at = static_cast<std::uint8_t*>(to);
    while (size > 0) {
        size_t count = 0;
        if (fReceived.empty() && size >= kBuffer) {
            count = receive(at, size);
        } else if (fill()) {
            count = std::min(size, fReceived.size());
            std::copy_n(fReceived.begin(), count, at);
            fReceived = fReceived.subspan(count);
        }
        if (count == 0)
            return false;
        at += count;
        size -= count;
    }
    return true;
}

std::vector<std::uint8_t> ChildOutput::takeRest() {
    std::vector<std::uint8_t> rest;
    while (fill()) {
        rest.insert(rest.end(), fReceived.begin(), fReceived.end());
        fReceived = {};
    }
    return rest;
}

bool ChildOutput::isAtEnd() {
    return !fill() && !fHasWaitedTooLong;
}

ChildResult runInChild(const ChildWork& work, const ChildLimits& limits, const ChildTaker& take,
                       const std::function<void()>& whileWaiting) {
    ChildPipe pipe;
    std::fflush(nullptr);
    const pid_t process = pipe.writeEnd.number() >= 0 ? ::fork() : -1;
    if (process < 0)
        return {};
    if (process == 0)
        beChild(work, limits, pipe.writeEnd.number());
    Child child(process);
    pipe.writeEnd.close();
    return takeFrom(child, pipe.readEnd.number(), limits, take, whileWaiting);
}

ChildResult runInChild(const ChildWork& work, const ChildLimits& limits) {
    std::vector<std::uint8_t> output;
    ChildResult result = runInChild(work, limits, [&](ChildOutput& from) { output = from.takeRest(); });
    result.output = std::move(output);
    return result;
}

ChildStarter::ChildStarter(const Work& work) {
    auto [ours, theirs] = connectedEnds();
    std::fflush(nullptr);
    const pid_t process = ours.number() >= 0 ? ::fork() : -1;
    if (process < 0)
        return;
    if (process == 0) {
        ours.close();
        startChildren(theirs.number(), work);
    }
    fSocket = std::move(ours);
}

ChildResult ChildStarter::run(const std::string& order, const ChildLimits& limits, const ChildTaker& take,
                              const std::function<void()>& whileWaiting) {
    ChildPipe pipe;
    const std::string words = std::string(bytesOf(Order{limits})) + order;
    if (pipe.writeEnd.number() < 0 || !sendMessage(fSocket.number(), words, {pipe.writeEnd.number()}))
        return {};
    ChildElsewhere child(fSocket.number(), received<pid_t>(fSocket.number(), -1));
    if (child.process() < 0)
        return {};
    pipe.writeEnd.close();
    return takeFrom(child, pipe.readEnd.number(), limits, take, whileWaiting);
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
