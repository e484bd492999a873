#pragma once

#include <gl/GLStartupContext.h>

namespace orloview {

/// OpenGL brought up on a display: the library's start-up context, kept current, its table live.
class GLSession {
public:
    /// Throws Failure (kExitNoGL) when the display offers no OpenGL.
    explicit GLSession(Display* display);
    ~GLSession();

    GLSession(const GLSession&) = delete;
    GLSession& operator=(const GLSession&) = delete;

    /// Makes the start-up context current, where framebuffer objects live.
    void makeCurrent();

private:
    GLStartupContext* fStartup;
};

} // namespace orloview
