#pragma once

#include <memory>
#include <string>
#include <sys/types.h>

#include <X11/Xlib.h>

namespace orloview {

/// A connection to an X server: the one that DISPLAY names, or a private Xvfb that it starts and ends.
///
/// Opening one installs X error handlers for the whole process: a protocol error is passed over; a lost
/// server ends the program with one line and kExitNoGL.
class DisplaySession {
public:
    /// On the server that DISPLAY names; null where it names none or can't be opened.
    static std::unique_ptr<DisplaySession> named();

    /// On an Xvfb of its own; null where there is none or it doesn't come up.
    static std::unique_ptr<DisplaySession> onPrivateServer();

    /// Why `named` gives none, as the beginning of a sentence.
    static std::string whyNotNamed();

    /// All that was wanted is done: from here on a lost server ends the program with this code, and without a
    /// word.
    static void allIsDone(int code);

    /// Closes the connection and ends the private server.
    ~DisplaySession();

    DisplaySession(const DisplaySession&) = delete;
    DisplaySession& operator=(const DisplaySession&) = delete;

    Display* display() const { return fDisplay; }
    bool isPrivate() const { return fServer > 0; }

private:
    DisplaySession() = default;
    bool open(const char* name);

    /// The name of its display, such as ":99"; empty when there is no Xvfb or it doesn't come up.
    std::string startServer();

    Display* fDisplay = nullptr;
    pid_t fServer = -1;
};

} // namespace orloview
