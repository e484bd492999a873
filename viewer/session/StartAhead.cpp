#include "session/StartAhead.h"

#include "base/ExitCode.h"
#include "base/SignalsElsewhere.h"
#include "session/GLSession.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <system_error>
#include <utility>

#include <unistd.h>

namespace orloview {

namespace {

std::atomic<bool> fsIsUnderWay = false;
thread_local StartAhead* fsOfThisThread = nullptr;

} // namespace

StartAhead::StartAhead(Start start) : fStart(std::move(start)) {
    sem_init(&fDone, 0, 0);
    fsIsUnderWay = true;
    const SignalsElsewhere elsewhere;
    try {
        fThread = std::thread([this] { run(); });
    } catch (const std::system_error&) { // no more threads: whoever asks starts it
        sem_post(&fDone);
    }
}

void StartAhead::run() {
    fsOfThisThread = this;
    try {
        fSession = fStart();
    } catch (const std::exception&) { // whoever asks tries once more, and is told then
    }
    sem_post(&fDone);
}

void StartAhead::wait() {
    while (sem_wait(&fDone) != 0 && errno == EINTR) {
    }
}

bool StartAhead::hasWorked() {
    wait();
    const bool has = !fLine && fSession;
    sem_post(&fDone);
    return has;
}

std::unique_ptr<GLSession> StartAhead::take() {
    wait();
    if (const char* line = fLine) {
        std::fputs(line, stderr);
        std::_Exit(kExitNoGL);
    }
    if (fThread.joinable())
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
