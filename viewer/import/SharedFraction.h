#pragma once

#include <atomic>

namespace orloview {

/// A number that a process and its later children see alike: a child sets it, the parent looks at it.
class SharedFraction {
public:
    SharedFraction();
    ~SharedFraction();

    SharedFraction(const SharedFraction&) = delete;
    SharedFraction& operator=(const SharedFraction&) = delete;

    /// Where there is no memory to share, nothing is kept.
    void set(double fraction);

    /// 0 until it is set.
    double get() const;

private:
    static_assert(std::atomic<double>::is_always_lock_free);
    std::atomic<double>* fShared;
};

} // namespace orloview
