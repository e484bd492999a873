#include "session/StartGuard.h"

#include "base/ExitCode.h"
#include "session/StartAhead.h"

#include <unistd.h>

namespace orloview {

namespace {

/// Calls nothing that a crash may have left half done.
void tellAndEnd(int signal) {
    static constexpr char kLine[] =
        "orloview: OpenGL broke down while it started; see whether the X server still runs, and try "
        "--display egl or the environment LIBGL_ALWAYS_SOFTWARE=1\n";
    StartAhead::holdBack(kLine);
    if (StartAhead::isElsewhere()) {
        std::signal(signal, SIG_DFL);
        std::raise(signal);
        return; // it waits until this handler has ended
    }
    static_cast<void>(!write(STDERR_FILENO, kLine, sizeof kLine - 1));
    _exit(kExitNoGL);
}

} // namespace

StartGuard::StartGuard() {
    struct sigaction action {};
    action.sa_handler = tellAndEnd;
    for (size_t i = 0; i < kSignals.size(); ++i)
        sigaction(kSignals[i], &action, &fBefore[i]);
}

StartGuard::~StartGuard() {
    for (size_t i = 0; i < kSignals.size(); ++i)
        sigaction(kSignals[i], &fBefore[i], nullptr);
}

} // namespace orloview
