#include "session/DisplaySession.h"

#include "base/ExitCode.h"
#include "output/OutputFile.h"
#include "session/StartAhead.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace orloview {

namespace {

constexpr int kServerStartMilliseconds = 20000;

int ignoreError(Display*, XErrorEvent*) {
    // What fails shows in what the library answers; the server's late report adds nothing for the user.
    return 0;
}

/// What the program comes to once all is done; none until then.
std::optional<int> theCodeOfAll;

int serverLost(Display*) {
    if (theCodeOfAll)
        std::_Exit(*theCodeOfAll);
    static constexpr char kLine[] =
        "orloview: the connection to the X server was lost; start it again and repeat the command\n";
    StartAhead::holdBack(kLine);
    std::fputs(kLine, stderr);
    OutputFile::removeUnfinished();
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

std::unique_ptr<DisplaySession> DisplaySession::named() {
    std::unique_ptr<DisplaySession> session(new DisplaySession);
    const char* name = std::getenv("DISPLAY");
    return name && *name && session->open(name) ? std::move(session) : nullptr;
}

std::unique_ptr<DisplaySession> DisplaySession::onPrivateServer() {
    std::unique_ptr<DisplaySession> session(new DisplaySession);
    const std::string name = session->startServer();
    return !name.empty() && session->open(name.c_str()) ? std::move(session) : nullptr;
}

std::string DisplaySession::whyNotNamed() {
    const char* name = std::getenv("DISPLAY");
    return name && *name ? std::string("the X display ") + name + " can't be opened"
                         : "there is no X display";
}

void DisplaySession::allIsDone(int code) {
    theCodeOfAll = code;
}

bool DisplaySession::open(const char* name) {
    XSetErrorHandler(ignoreError);
    XSetIOErrorHandler(serverLost);
    fDisplay = XOpenDisplay(name);
    return fDisplay != nullptr;
}

DisplaySession::~DisplaySession() {
    if (fDisplay)
        XCloseDisplay(fDisplay);
    if (fServer > 0) {
        kill(fServer, SIGTERM);
        waitpid(fServer, nullptr, 0);
    }
}

std::string DisplaySession::startServer() {
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

} // namespace orloview
