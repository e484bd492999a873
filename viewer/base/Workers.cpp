#include "base/Workers.h"

#include "base/SignalsElsewhere.h"

#include <sched.h>
#include <system_error>

namespace orloview {

namespace {

/// Those that this process may run on.
size_t processors() {
    cpu_set_t set;
    if (sched_getaffinity(0, sizeof set, &set) == 0)
        return static_cast<size_t>(CPU_COUNT(&set));
    return std::max(std::thread::hardware_concurrency(), 1U);
}

} // namespace

Workers::Workers() : fMost(processors() > 1 ? processors() : 0) {}

Workers::~Workers() {
    {
        const std::lock_guard lock(fMutex);
        fStop = true;
        fPieces.clear();
    }
    fChanged.notify_all();
    for (std::thread& thread : fThreads)
        thread.join();
}

void Workers::enqueue(std::packaged_task<void()> piece) {
    {
        const std::lock_guard lock(fMutex);
        fPieces.push_back(std::move(piece));
        if (fFree < fPieces.size() && fThreads.size() < fMost)
            startThread();
        if (!fThreads.empty()) {
            fChanged.notify_one();
            return;
        }
        piece = std::move(fPieces.front());
        fPieces.pop_front();
    }
    piece();
}

/// Where the system gives no more threads, those that there are do it all.
void Workers::startThread() {
    const SignalsElsewhere elsewhere;
    try {
        fThreads.emplace_back([this] { work(); });
    } catch (const std::system_error&) {
        fMost = fThreads.size();
    }
}

void Workers::work() {
    std::unique_lock lock(fMutex);
    while (true) {
        ++fFree;
        fChanged.wait(lock, [this] { return fStop || !fPieces.empty(); });
        --fFree;
        if (fStop)
            return;
        std::packaged_task<void()> piece = std::move(fPieces.front());
        fPieces.pop_front();
        lock.unlock();
        piece();
        piece = {}; // and what it holds, before the next one
        lock.lock();
    }
}

} // namespace orloview
