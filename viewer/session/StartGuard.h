#pragma once

#include <array>
#include <csignal>

namespace orloview {

/// While it lives, a crash ends the program with one line and kExitNoGL: drivers crash where the server dies
/// while they start.
class StartGuard {
public:
    StartGuard();
    ~StartGuard();

    StartGuard(const StartGuard&) = delete;
    StartGuard& operator=(const StartGuard&) = delete;

    /// What a crash ends in.
    static constexpr std::array<int, 5> kSignals = {SIGSEGV, SIGBUS, SIGABRT, SIGILL, SIGFPE};

private:
    std::array<struct sigaction, kSignals.size()> fBefore{};
};

} // namespace orloview
