#pragma once

#include <csignal>

namespace orloview {

/// Keeps signals to the program from the threads that start while it lives: the thread that starts them has
/// them handled, as without others. Faults come to who commits them.
class SignalsElsewhere {
public:
    SignalsElsewhere() {
        sigset_t held;
        sigfillset(&held);
        for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT})
            sigdelset(&held, fault);
        pthread_sigmask(SIG_BLOCK, &held, &fBefore);
    }
    ~SignalsElsewhere() { pthread_sigmask(SIG_SETMASK, &fBefore, nullptr); }

    SignalsElsewhere(const SignalsElsewhere&) = delete;
    SignalsElsewhere& operator=(const SignalsElsewhere&) = delete;

private:
    sigset_t fBefore{};
};

} // namespace orloview
