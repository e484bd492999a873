#include "window/GLSession.h"

#include "ExitCode.h"

#include <dlfcn.h>
#include <geometry/GLRouting.h>
#include <gl/GLFunctionTable.h>

namespace orloview {

GLSession::GLSession(Display* display) {
    // The plain name libGL.so, which the library opens, belongs to a development package. Where only the
    // versioned one is installed it has to stand in the process's global scope.
    const bool hasGL =
        dlopen("libGL.so.1", RTLD_LAZY | RTLD_GLOBAL) || dlopen("libGL.so", RTLD_LAZY | RTLD_GLOBAL);
    if (!hasGL)
        throw Failure(kExitNoGL, "there is no OpenGL library (libGL.so.1); install the package libgl1");
    fStartup = new GLStartupContext(WindowWrapper(nullptr, DefaultRootWindow(display), display), nullptr);
    fStartup->ref();
    if (!fStartup->valid) {
        fStartup->unref();
        throw Failure(kExitNoGL,
                      "the X display offers no OpenGL (GLX) context; use a display with GLX, or unset "
                      "DISPLAY to have a private Xvfb started");
    }
    GLStartupContext::fpGlobalGLStartupContext = fStartup;
    makeCurrent();

    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    gl->ensureLiveMultitexture();
    const bool hasBufferObjects = gl->usable(kCapVertexBufferObject);
    GLRouting::fsUseObjectsForData = hasBufferObjects;
    GLRouting::fsUseObjectsForIndexing = hasBufferObjects;
}

GLSession::~GLSession() {
    fStartup->unref();
}

void GLSession::makeCurrent() {
    fStartup->makeCurrent();
}

} // namespace orloview
