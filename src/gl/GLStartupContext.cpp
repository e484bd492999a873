#include "gl/GLStartupContext.h"

#include "gl/GLFunctionTable.h"

#include <dlfcn.h>
#include <new>

GLStartupContext* GLStartupContext::fpGlobalGLStartupContext = nullptr;
int32_t GLStartupContext::fsNumInstances_GLStartupContext = 0;

namespace {

/// The few GLX entry points that make the context in which the table can be filled.
struct BootstrapGLX {
    decltype(GLFunctionTable::fglXChooseVisual) chooseVisual;
    decltype(GLFunctionTable::fglXCreateContext) createContext;
    decltype(GLFunctionTable::fglXMakeCurrent) makeCurrent;
    decltype(GLFunctionTable::fglXGetCurrentDrawable) currentDrawable;
    decltype(GLFunctionTable::fglXGetCurrentContext) currentContext;

    BootstrapGLX() {
        void* library = dlopen("libGL.so", RTLD_LAZY);
        lookUp(library, "glXChooseVisual", chooseVisual);
        lookUp(library, "glXCreateContext", createContext);
        lookUp(library, "glXMakeCurrent", makeCurrent);
        lookUp(library, "glXGetCurrentDrawable", currentDrawable);
        lookUp(library, "glXGetCurrentContext", currentContext);
    }

    bool complete() const {
        return chooseVisual && createContext && makeCurrent && currentDrawable && currentContext;
    }

private:
    template <typename Entry>
    static void lookUp(void* library, const char* name, Entry& entry) {
        entry = reinterpret_cast<Entry>(dlsym(library, name));
        dlerror(); // so that the host's next dlerror doesn't report our look-up
    }
};

Window createHiddenWindow(Display* display, const XVisualInfo& visual) {
    const Window root = DefaultRootWindow(display);
    XSetWindowAttributes attributes = {};
    attributes.background_pixmap = None;
    attributes.border_pixel = 0;
    attributes.colormap = XCreateColormap(display, root, visual.visual, AllocNone);
    return XCreateWindow(display, root, 0, 0, 10, 10, 0, visual.depth, InputOutput, visual.visual,
                         CWBackPixmap | CWBorderPixel | CWColormap, &attributes);
}

} // namespace

GLStartupContext::GLStartupContext(GLXContext) {}

GLStartupContext::GLStartupContext(const WindowWrapper& host, GLXContext share)
    : display(host.display()), wrapper(host) {
    const BootstrapGLX glx;
    if (!display || !glx.complete())
        return;

    int wanted[] = {GLX_RGBA,
                    GLX_DOUBLEBUFFER,
                    GLX_RED_SIZE,
                    8,
                    GLX_GREEN_SIZE,
                    8,
                    GLX_BLUE_SIZE,
                    8,
                    GLX_ALPHA_SIZE,
                    8,
                    GLX_DEPTH_SIZE,
                    24,
                    GLX_STENCIL_SIZE,
                    8,
                    None};
    XVisualInfo* visual = glx.chooseVisual(display, DefaultScreen(display), wanted);
    if (!visual)
        return;
    context = glx.createContext(display, visual, share, True);
    if (!context)
        return;
    window = createHiddenWindow(display, *visual);
    if (!window) {
        context = nullptr;
        return;
    }

    const GLXDrawable hostDrawable = glx.currentDrawable();
    const GLXContext hostContext = glx.currentContext();
    glx.makeCurrent(display, window, context);

    if (!GLFunctionTable::fpGlobalFunctionTable)
        GLFunctionTable::fpGlobalFunctionTable = new (std::nothrow) GLFunctionTable;
    valid = GLFunctionTable::fpGlobalFunctionTable != nullptr;
    if (valid)
        GLFunctionTable::fpGlobalFunctionTable->populate();

    if (hostContext && hostDrawable)
        glx.makeCurrent(display, hostDrawable, hostContext);
    ++fsNumInstances_GLStartupContext;
}

bool GLStartupContext::makeCurrent() {
    return valid && GLFunctionTable::fpGlobalFunctionTable->glXMakeCurrent(display, window, context);
}

GLStartupContext::~GLStartupContext() {
    if (valid) {
        const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
        gl->glXMakeCurrent(display, None, nullptr);
        if (context)
            gl->glXDestroyContext(display, context);
        if (window)
            XDestroyWindow(display, window);
    }
    --fsNumInstances_GLStartupContext;
    fpGlobalGLStartupContext = nullptr;
}
