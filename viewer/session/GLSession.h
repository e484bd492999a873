#pragma once

#include "session/DisplaySession.h"
#include "session/GLRoad.h"

#include <memory>
#include <string>

#include <gl/GLStartupContext.h>

namespace orloview {

/// OpenGL brought up: the library's start-up context, kept current, its table live, and the display that it
/// may be on.
class GLSession {
public:
    /// On the display that DISPLAY names. `verbose` says on standard error which way was taken and whose
    /// driver it is. Throws Failure (kExitNoGL), here and below, when there is no OpenGL that way.
    static std::unique_ptr<GLSession> forWindow(bool verbose);

    /// For what nobody looks at.
    static std::unique_ptr<GLSession> forPictures(GLRoad road, bool verbose);

    ~GLSession();

    GLSession(const GLSession&) = delete;
    GLSession& operator=(const GLSession&) = delete;

    /// Makes the start-up context current, where framebuffer objects live.
    void makeCurrent();

    /// Null without an X server.
    Display* display() const { return fDisplay ? fDisplay->display() : nullptr; }

private:
    /// Null where the display offers no GLX, or EGL nothing.
    static std::unique_ptr<GLSession> onDisplay(std::unique_ptr<DisplaySession> display, bool verbose);
    static std::unique_ptr<GLSession> onEgl(bool verbose);

    GLSession(std::unique_ptr<DisplaySession> display, GLStartupContext* startup, const std::string& road,
              bool verbose);

    std::unique_ptr<DisplaySession> fDisplay;
    GLStartupContext* fStartup;
};

} // namespace orloview
