#pragma once

#include <memory>
#include <string>

#include <gl/GLStartupContext.h>

namespace orloview {

/// An OpenGL context without a window and without an X server, by EGL: on the first device that is a GPU,
/// else on Mesa's surfaceless platform. Framebuffer objects are what can be drawn into.
class EglContext {
public:
    /// Sets in the environment how much EGL tells, which may not be done beside other threads. `make` does it
    /// too.
    static void setEnvironment();

    /// Current when it is made. Null where no device and no platform gives one.
    static std::unique_ptr<EglContext> make();

    /// Ends it.
    ~EglContext();

    EglContext(const EglContext&) = delete;
    EglContext& operator=(const EglContext&) = delete;

    /// Where it is, to be told to people.
    const char* place() const { return fPlace; }

    /// What the library's start-up context takes; the context is the start-up context's then, which ends it.
    static GLHostContext forStartup(std::unique_ptr<EglContext> context);

private:
    EglContext(void* display, void* context, const char* place)
        : fDisplay(display), fContext(context), fPlace(place) {}

    static std::unique_ptr<EglContext> makeOn(void* display, const char* place);
    static Bool makeCurrent(Display*, GLXDrawable, GLXContext context);
    static void destroy(Display*, GLXContext context);

    void* fDisplay; ///< EGLDisplay
    void* fContext; ///< EGLContext
    const char* fPlace;
};

} // namespace orloview
