#include "gl/GLStartupContext.h"

#include "gl/GLFunctionTable.h"
#include "gl/GLLibrary.h"

#include <dlfcn.h>
#include <new>

GLStartupContext* GLStartupContext::fpGlobalGLStartupContext = nullptr;
int32_t GLStartupContext::fsNumInstances_GLStartupContext = 0;
GLStartupContext* GLStartupContext::fsNewest = nullptr;

namespace {

/// The few GLX entry points that make the context in which the table can be filled.
struct BootstrapGLX {
    decltype(GLFunctionTable::fglXChooseVisual) chooseVisual;
    decltype(GLFunctionTable::fglXCreateContext) createContext;
    decltype(GLFunctionTable::fglXMakeCurrent) makeCurrent;
    decltype(GLFunctionTable::fglXGetCurrentDrawable) currentDrawable;
    decltype(GLFunctionTable::fglXGetCurrentContext) currentContext;

    BootstrapGLX() {
        void* library = openGLLibrary();
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

/// False without memory for the table.
bool populateGlobalTable() {
    if (!GLFunctionTable::fpGlobalFunctionTable)
        GLFunctionTable::fpGlobalFunctionTable = new (std::nothrow) GLFunctionTable;
    if (!GLFunctionTable::fpGlobalFunctionTable)
        return false;
    GLFunctionTable::fpGlobalFunctionTable->populate();
    return true;
}

/// Leaves of GLX the two functions that stand in for it. What asks for more (windows, pbuffers) is
/// unsupported then, instead of calling GLX with a context that is none of its own.
void replaceGLX(GLFunctionTable& table, const GLHostContext& host) {
    table.nullify_platform();
    for (uint32_t capability = kCapGLXPbuffer; capability <= kCapSGIXVisualFromFBConfig; ++capability)
        table.fExtSupported[capability] = false;
    table.fglXMakeCurrent = host.makeCurrent;
    table.fglXDestroyContext = host.destroyContext;
}

} // namespace

GLStartupContext::GLStartupContext(GLXContext) {}

GLStartupContext::GLStartupContext(const GLHostContext& host) {
    if (!host.context || !host.makeCurrent || !host.destroyContext ||
        !host.makeCurrent(nullptr, None, host.context) || !populateGlobalTable())
        return;
    GLFunctionTable& table = *GLFunctionTable::fpGlobalFunctionTable;
    // A version tells that GL answers. Without a GL library that much may still be found in the process, but
    // nothing to draw into.
    if (!table.fglGetString || !table.glGetString(GL_VERSION) || !table.usable(kCapFramebufferObject))
        return;
    replaceGLX(table, host);
    context = host.context;
    valid = true;
    ++fsNumInstances_GLStartupContext;
}

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

    valid = populateGlobalTable();
    if (hostContext && hostDrawable)
        glx.makeCurrent(display, hostDrawable, hostContext);
    ++fsNumInstances_GLStartupContext;
}

bool GLStartupContext::makeCurrent() {
    return valid && GLFunctionTable::fpGlobalFunctionTable->glXMakeCurrent(display, window, context);
}

uint64_t GLStartupContext::nextSerial() {
    static uint64_t last = 0;
    return ++last;
}

GLStartupContext* GLStartupContext::living(uint64_t serial) {
    GLStartupContext* found = fsNewest;
    while (found && found->fSerial != serial)
        found = found->fNextOlder;
    return found;
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
    GLStartupContext** link = &fsNewest;
    while (*link != this)
        link = &(*link)->fNextOlder;
    *link = fNextOlder;
}
