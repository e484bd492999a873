#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include <sys/types.h>

#include "base/Descriptor.h"

namespace orloview {

/// What became of a piece of work that ran in a process of its own.
enum class ChildOutcome { Done, Failed, Crashed, OutOfMemory, OutOfTime, NotStarted };

/// What a child may use. One that needs more is ended.
struct ChildLimits {
    size_t memoryBytes = size_t{2} << 30;

    /// Of computing, however long that takes on a busy machine; and of waiting in which it computes nothing.
    unsigned seconds = 30;

    // What raiseLimits may allow it.
    size_t mostMemoryBytes = memoryBytes;
    unsigned mostSeconds = seconds;
};

struct ChildResult {
    ChildOutcome outcome = ChildOutcome::NotStarted;
    std::vector<std::uint8_t> output; ///< what the work wrote, where nobody else took it
    ChildLimits limits;               ///< as they were in the end
};

/// The work of a child: writes its result to the file descriptor, a pipe, and returns whether it succeeded.
/// It may throw std::bad_alloc; anything else that leaves it counts as a crash.
using ChildWork = std::function<bool(int fileDescriptor)>;

/// What a child writes, to be taken while it works.
class ChildOutput {
public:
    /// From a pipe; `seconds` are those that the child may wait for something.
    ChildOutput(int pipe, pid_t child, unsigned seconds, const std::function<void()>& whileWaiting)
        : fPipe(pipe), fChild(child), fSeconds(seconds), fWhileWaiting(whileWaiting) {}

    /// Takes so many bytes. False where the child ends before, or waits too long.
    bool take(void* to, size_t size);

    /// Takes all that comes until the child ends or waits too long.
    std::vector<std::uint8_t> takeRest();

    /// Whether the child has ended and all was taken. Waits for more.
    bool isAtEnd();

    bool hasWaitedTooLong() const { return fHasWaitedTooLong; }

private:
    size_t receive(void* to, size_t most);
    bool fill();

    int fPipe;
    pid_t fChild;
    unsigned fSeconds;
    const std::function<void()>& fWhileWaiting;
    timespec fUsed{};
    double fIdle = 0.0; ///< counted in looks: the whole program may have been stopped for hours
    bool fHasWaitedTooLong = false;
    std::vector<std::uint8_t> fBuffer;
    std::span<const std::uint8_t> fReceived; ///< of the buffer, what nobody has taken yet
};

/// Takes what a child writes. What is left makes the child one that has crashed.
using ChildTaker = std::function<void(ChildOutput&)>;

/// Runs the work in a forked process with these limits, its standard streams led nowhere and
/// no other descriptor open, and hands over what it writes, calling `whileWaiting` about 20 times a second
/// meanwhile. It can write no files. The child ends with its parent. Not for a process that has started
/// threads, or whose standard streams are closed: what is opened here would get their numbers.
ChildResult runInChild(const ChildWork& work, const ChildLimits& limits, const ChildTaker& take,
                       const std::function<void()>& whileWaiting = {});

/// Keeps what it writes.
ChildResult runInChild(const ChildWork& work, const ChildLimits& limits);

/// Runs work in processes of their own for a program that has threads by then: they are forked from one that
/// was made before. A file descriptor that one of them inherits beyond the streams is the pipe's.
class ChildStarter {
public:
    /// Does what it is told in a few words.
    using Work = std::function<bool(const std::string& order, int fileDescriptor)>;

    /// Before the program starts threads; the same holds for all that the work needs.
    explicit ChildStarter(const Work& work);

    /// As runInChild, on any thread, for one child at a time.
    ChildResult run(const std::string& order, const ChildLimits& limits, const ChildTaker& take,
                    const std::function<void()>& whileWaiting = {});

private:
    Descriptor fSocket; ///< none: nothing can be started
};

/// Makes this process, a child, one of these: limited, silenced, without leave to write files, ended with its
/// parent.
void beLimited(const ChildLimits& limits);

// What a limit says of what struck it, and which switch raises it. The remedy is for a file that is damaged.
std::string beyondMemory(size_t bytes, const std::string& remedy);
std::string beyondTime(unsigned seconds, const std::string& remedy);

/// Those of this process, as they are now.
ChildLimits ownLimits();

/// For the work of a child that finds out that there is more to do: allows it that much more, within the
/// most.
void raiseLimits(size_t memoryBytes, unsigned seconds);

/// The other way round, and for good.
void lowerMemoryLimit(size_t bytes);

} // namespace orloview
