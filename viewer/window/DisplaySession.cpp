#include "window/DisplaySession.h"

#include "ExitCode.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orloview {

namespace {

constexpr int kServerStartMilliseconds = 20000;

int ignoreError(Display*, XErrorEvent*) {
    // What fails shows in what the library answers; the server's late report adds nothing for the user.
    return 0;
}

int serverLost(Display*) {
    std::fputs("orloview: the connection to the X server was lost; start it again and repeat the command\n",
               stderr);
    std::_Exit(kExitNoGL);
}

[[noreturn]] void becomeServer(int displayPipe) {
    // The server goes with us, also when we are killed.
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    const int silence = open("/dev/null", O_RDWR);
    dup2(silence, STDIN_FILENO);
    dup2(silence, STDOUT_FILENO);
    dup2(silence, STDERR_FILENO);
    const std::string descriptor = std::to_string(displayPipe);
    execlp("Xvfb", "Xvfb", "-displayfd", descriptor.c_str(), "-screen", "0", "1280x1024x24", "-nolisten",
           "tcp", static_cast<char*>(nullptr));
    _exit(127);
}

/// The line that the server writes once it listens: the number of its display.
std::string readDisplayNumber(int displayPipe) {
    std::string number;
    pollfd ready{displayPipe, POLLIN, 0};
    while (poll(&ready, 1, kServerStartMilliseconds) > 0) {
        std::array<char, 16> bytes{};
        const ssize_t count = read(displayPipe, bytes.data(), bytes.size());
        if (count <= 0)
            return {};
        number.append(bytes.data(), static_cast<size_t>(count));
        if (number.back() == '\n') {
            number.pop_back();
            return number;
        }
    }
    return {};
}

} // namespace

DisplaySession::DisplaySession(Kind kind, bool verbose) {
    XSetErrorHandler(ignoreError);
    XSetIOErrorHandler(serverLost);
    const char* named = std::getenv("DISPLAY");
    if (named && *named)
        fDisplay = XOpenDisplay(named);
    if (fDisplay)
        return;

    const std::string reason = named && *named ? std::string("the X display ") + named + " can't be opened"
                                               : "there is no X display";
    if (kind == Kind::Window)
        throw Failure(kExitNoGL, reason + " for a window; set DISPLAY, or give -o picture.png for a picture");
    const std::string name = startPrivateServer();
    if (!name.empty())
        fDisplay = XOpenDisplay(name.c_str());
    if (!fDisplay) {
        endPrivateServer();
        throw Failure(kExitNoGL,
                      reason + ", and no Xvfb to start one; set DISPLAY, or install the package xvfb");
    }
    if (verbose)
        std::fprintf(stderr, "orloview: started a private X server (Xvfb) on display %s\n", name.c_str());
}

DisplaySession::~DisplaySession() {
    if (fDisplay)
        XCloseDisplay(fDisplay);
    endPrivateServer();
}

std::string DisplaySession::startPrivateServer() {
    std::array<int, 2> displayPipe{};
    if (pipe(displayPipe.data()) != 0)
        return {};
    fcntl(displayPipe[0], F_SETFD, FD_CLOEXEC);
    fServer = fork();
    if (fServer == 0)
        becomeServer(displayPipe[1]);
    close(displayPipe[1]);
    const std::string number = fServer > 0 ? readDisplayNumber(displayPipe[0]) : std::string();
    close(displayPipe[0]);
    return number.empty() ? std::string() : ":" + number;
}

void DisplaySession::endPrivateServer() {
    if (fServer <= 0)
        return;
    kill(fServer, SIGTERM);
    waitpid(fServer, nullptr, 0);
    fServer = -1;
}

} // namespace orloview
