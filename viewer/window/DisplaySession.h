#pragma once

#include <memory>
#include <string>
#include <sys/types.h>

#include <X11/Xlib.h>

namespace orloview {

/// A connection to an X server: the one that DISPLAY names, or, for what nobody looks at, a private Xvfb that
/// this session starts and ends.
///
/// Installs X error handlers for the whole process: a protocol error is passed over; a lost server
/// ends the program with one line and kExitNoGL.
class DisplaySession {
public:
    enum class Kind { Offscreen, Window };

    /// Throws Failure (kExitNoGL) when there is no display and none can be started; for a window, where no
    /// private one helps, when there is none. `verbose` says on standard error what is started.
    DisplaySession(Kind kind, bool verbose);

    /// Closes the connection and ends the private server.
    ~DisplaySession();

    DisplaySession(const DisplaySession&) = delete;
    DisplaySession& operator=(const DisplaySession&) = delete;

    Display* display() const { return fDisplay; }

private:
    /// Its display name, such as ":99"; empty when there is no Xvfb or it doesn't come up.
    std::string startPrivateServer();
    void endPrivateServer();

    Display* fDisplay = nullptr;
    pid_t fServer = -1;
};

} // namespace orloview
