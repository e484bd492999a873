#include "session/StartGuard.h"

#include "base/ExitCode.h"

#include <string_view>
#include <unistd.h>

namespace orloview {

namespace {

/// Calls nothing that a crash may have left half done.
void tellAndEnd(int) {
    constexpr std::string_view kLine =
        "orloview: OpenGL broke down while it started; see whether the X server still runs, and try "
        "--display egl or the environment LIBGL_ALWAYS_SOFTWARE=1\n";
    static_cast<void>(!write(STDERR_FILENO, kLine.data(), kLine.size()));
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
