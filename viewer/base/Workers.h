#pragma once

#include <condition_variable>
#include <deque>
#include <future>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace orloview {

/// Threads that do pieces of work beside the caller's thread, in the order in which they are added. Each
/// starts when there is a piece and nobody free for it, until there are as many as the process has
/// processors. With one processor there are none: a piece is done by who first asks for its result.
///
/// A piece may wait for those before it, for none behind it, and calls no GL.
class Workers {
public:
    Workers();

    /// Waits for what is begun; what isn't is dropped.
    ~Workers();

    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    /// How many pieces may be in work at once; 0: none beside the caller.
    size_t most() const { return fMost; }

    /// The result of `piece()`, or what it throws.
    template <typename Piece>
    auto add(Piece piece) {
        if (fMost == 0)
            return std::async(std::launch::deferred, std::move(piece));
        std::packaged_task<decltype(piece())()> task(std::move(piece));
        auto result = task.get_future();
        enqueue(std::packaged_task<void()>(std::move(task)));
        return result;
    }

private:
    void enqueue(std::packaged_task<void()> piece);
    void startThread();
    void work();

    size_t fMost;
    std::mutex fMutex;
    std::condition_variable fChanged;
    std::deque<std::packaged_task<void()>> fPieces;
    size_t fFree = 0; ///< threads that wait for a piece
    bool fStop = false;
    std::vector<std::thread> fThreads;
};

} // namespace orloview
