#include "session/StartAhead.h"

#include "base/ExitCode.h"
#include "session/GLSession.h"
#include "session/StartGuard.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <utility>

#include <unistd.h>

namespace orloview {

namespace {

std::atomic<bool> fsIsUnderWay = false;
thread_local StartAhead* fsOfThisThread = nullptr;

/// While it lives, what is started has all signals blocked but those of a crash: the others are the
/// program's.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t blocked;
        sigfillset(&blocked);
        for (const int signal : StartGuard::kSignals)
            sigdelset(&blocked, signal);
        pthread_sigmask(SIG_SETMASK, &blocked, &fBefore);
    }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &fBefore, nullptr); }

private:
    sigset_t fBefore{};
};

} // namespace

StartAhead::StartAhead(Start start) : fStart(std::move(start)) {
    sem_init(&fDone, 0, 0);
    fsIsUnderWay = true;
    const SignalsBlocked blocked;
    fThread = std::thread([this] {
        fsOfThisThread = this;
        try {
            fSession = fStart();
        } catch (const std::exception&) { // whoever asks tries once more, and is told then
        }
        sem_post(&fDone);
    });
}

std::unique_ptr<GLSession> StartAhead::take() {
    while (sem_wait(&fDone) != 0 && errno == EINTR) {
    }
    if (const char* line = fLine) {
        std::fputs(line, stderr);
        std::_Exit(kExitNoGL);
    }
    fThread.join();
    fsIsUnderWay = false;
    return std::move(fSession);
}

void StartAhead::holdBack(const char* line) {
    if (!fsOfThisThread)
        return;
    fsOfThisThread->fLine = line;
    sem_post(&fsOfThisThread->fDone);
    for (;;)
        pause();
}

bool StartAhead::isElsewhere() {
    return fsIsUnderWay && gettid() == getpid();
}

} // namespace orloview
