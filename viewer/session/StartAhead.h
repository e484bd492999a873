#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

#include <semaphore.h>

namespace orloview {

class GLSession;

/// OpenGL that comes up on a thread of its own, while the program does something else first. Where it breaks
/// down or loses its server, nobody hears of that before it is asked for.
class StartAhead {
public:
    using Start = std::function<std::unique_ptr<GLSession>()>;

    /// What `start` gives must have no context current on its thread any more.
    explicit StartAhead(Start start);

    /// Waits for it, and tells whether there is something to take.
    bool hasWorked();

    /// Waits for it. Null where there is none; where it broke down the program ends with one line and
    /// kExitNoGL.
    std::unique_ptr<GLSession> take();

    StartAhead(const StartAhead&) = delete;
    StartAhead& operator=(const StartAhead&) = delete;

    /// For whoever finds OpenGL broken, also in a signal's handler, with what is to be told: on such a thread
    /// it doesn't return, elsewhere it does nothing.
    static void holdBack(const char* line);

    /// Whether a crash of this thread is none of OpenGL's, which starts on another.
    static bool isElsewhere();

private:
    void run();
    void wait();

    Start fStart;
    std::unique_ptr<GLSession> fSession;
    std::atomic<const char*> fLine = nullptr;
    sem_t fDone{};
    std::thread fThread;
};

} // namespace orloview
