#pragma once

#include "session/DisplaySession.h"
#include "session/GLRoad.h"
#include "session/GLWatch.h"

#include <memory>
#include <optional>
#include <string>

#include <gl/GLStartupContext.h>

namespace orloview {

/// OpenGL brought up: the library's start-up context, kept current, its table live, and the display that it
/// may be on.
class GLSession {
public:
    /// On the display that DISPLAY names. `watch.verbose` says on standard error which way was taken and
    /// whose driver it is. Throws Failure (kExitNoGL), here and below, when there is no OpenGL that way.
    static std::unique_ptr<GLSession> forWindow(const GLWatchRequest& watch);

    /// For what nobody looks at.
    static std::unique_ptr<GLSession> forPictures(GLRoad road, const GLWatchRequest& watch);

    /// Begins on a thread of its own with what one of these will be asked for: on the display, or by EGL
    /// where the road goes there (X11 for a window). Whatever comes of it shows, and is told, when it is
    /// asked for. No process may be forked from here on but one that starts a program.
    static void startAhead(GLRoad road);

    /// Waits until it has begun, and tells whether it will be there when it is asked for.
    static bool hasWorkedAhead();

    /// Whether that was never asked for. It is somewhere inside a driver then: end the program by std::_Exit.
    static bool isStartingAhead();

    ~GLSession();

    GLSession(const GLSession&) = delete;
    GLSession& operator=(const GLSession&) = delete;

    /// Makes the start-up context current, where framebuffer objects live.
    void makeCurrent();

    /// Null without an X server.
    Display* display() const { return fDisplay ? fDisplay->display() : nullptr; }

private:
    /// Null where the display offers no GLX, or EGL nothing.
    static std::unique_ptr<GLSession> onDisplay(std::unique_ptr<DisplaySession> display);
    static std::unique_ptr<GLSession> onEgl();

    static std::unique_ptr<GLSession> onAnyRoad(GLRoad road);
    static std::unique_ptr<GLSession> takeAhead();

    GLSession(std::unique_ptr<DisplaySession> display, GLStartupContext* startup, std::string road);

    /// With what the user has vetoed, on the thread that draws.
    void begin(const GLWatchRequest& watch);
    void tellDriver() const;

    std::unique_ptr<DisplaySession> fDisplay;
    GLStartupContext* fStartup;
    std::string fRoad; ///< for people
    std::optional<GLWatch> fWatch;
};

} // namespace orloview
