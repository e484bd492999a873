// Making a drawable of its own in a host's window: by SGIX configurations, by visuals, or by GLX 1.3.

#include "framebuffer/DrawableAttributes.h"
#include "framebuffer/GLFrameBuffer.h"
#include "gl/GLFunctionTable.h"
#include "gl/GLStartupContext.h"

#include <new>

namespace {

/// ResizeRedirectMask: other programs can't resize the child window, they only ask for it.
constexpr long kEvents = KeyPressMask | KeyReleaseMask | ButtonPressMask | ButtonReleaseMask | ExposureMask |
                         StructureNotifyMask | ResizeRedirectMask;

} // namespace

uint32_t GLFrameBuffer::createInWindow(const WindowWrapper& parent, const koBufferFormat& format) {
    return createInWindowBy(&GLFrameBuffer::createDrawable, parent, format);
}

uint32_t GLFrameBuffer::createInWindowPortably(const WindowWrapper& parent, const koBufferFormat& format) {
    return createInWindowBy(&GLFrameBuffer::createPortableDrawable, parent, format);
}

uint32_t GLFrameBuffer::createInWindowBy(Road road, const WindowWrapper& parent,
                                         const koBufferFormat& format) {
    fRequestedFormat = format;
    fChildWindow = 0;
    fChildColormap = 0;
    if (!GLStartupContext::fpGlobalGLStartupContext)
        GLStartupContext::fpGlobalGLStartupContext = new (std::nothrow) GLStartupContext(parent, nullptr);
    if (!GLStartupContext::fpGlobalGLStartupContext)
        return kNoContextOrSize;
    referenceStartupContext();
    fFunctionTable = GLFunctionTable::fpGlobalFunctionTable;
    fDisplay = parent.display();
    if (!fFunctionTable || !fDisplay)
        return kNoContextOrSize;

    const uint32_t result = (this->*road)(parent);
    if (result != kSuccess)
        return result;
    fActualFormat = fRequestedFormat;
    fWindow = parent;
    fWindow.setFBWindow(fChildWindow != 0 ? fChildWindow : fDrawable);
    fKind = kWindowed;
    fOwnsDrawable = true;
    return kSuccess;
}

uint32_t GLFrameBuffer::createDrawable(const WindowWrapper& parent) {
    GLFunctionTable& gl = *fFunctionTable;
    if (!gl.fglXQueryExtensionsString)
        return kUnsupported;
    const auto attributes =
        DrawableAttributes::configuration(gl, fDisplay, GLX_WINDOW_BIT, true, fRequestedFormat);
    if (gl.usable(kCapSGIXChooseFBConfig) && gl.usable(kCapSGIXVisualFromFBConfig))
        return createBySGIXConfiguration(parent, attributes);
    if (!gl.usable(kCapGLXFBConfig) || !gl.usable(kCapGLXNewContext))
        return createByVisual(parent, visualAttributes());
    return createByConfiguration(parent, attributes);
}

uint32_t GLFrameBuffer::createBySGIXConfiguration(const WindowWrapper& parent,
                                                  DrawableAttributes attributes) {
    const GLFunctionTable& gl = *fFunctionTable;
    const int screen = DefaultScreen(fDisplay);
    if (!gl.fglXCreateContext || !gl.fglXChooseVisual)
        return kUnsupported;

    int count = attributes.count;
    void** configurations = gl.glXChooseFBConfigSGIX(fDisplay, screen, attributes.values.data(), &count);
    if (!configurations || count == 0)
        return kFormat;
    fKind = kWindowed;
    XVisualInfo* firstVisual = gl.glXGetVisualFromFBConfigSGIX(fDisplay, configurations[0]);
    if (!firstVisual)
        return kFormat;
    fContext = gl.glXCreateContext(fDisplay, firstVisual, sharedContext(), True);
    if (!fContext)
        return kNoContextOrSize;

    // Oddity: the configuration only had to prove itself by a context; what is drawn with comes from the
    // chooser of visuals. The first context and its visual look forgotten: they last as long as the process,
    // so that the shared objects of a host that closes its last window live on.
    const uint32_t result = createByVisual(parent, attributes);
    if (result == kSuccess)
        XFree(configurations);
    return result;
}

DrawableAttributes GLFrameBuffer::visualAttributes() const {
    // Oddity: GLX_RGBA is missing though colours are meant, and GLX_USE_GL looks like a value of
    // GLX_DOUBLEBUFFER, which has none. Choosers pass over both, and hosts on old servers get their visual by
    // just this list.
    DrawableAttributes wanted;
    wanted.add(GLX_DOUBLEBUFFER, GLX_USE_GL);
    wanted.addSizes(fRequestedFormat);
    return wanted;
}

uint32_t GLFrameBuffer::createByVisual(const WindowWrapper& parent, DrawableAttributes attributes) {
    const GLFunctionTable& gl = *fFunctionTable;
    if (!gl.fglXChooseVisual || !gl.fglXCreateContext)
        return kUnsupported;
    XVisualInfo* visual = gl.glXChooseVisual(fDisplay, DefaultScreen(fDisplay), attributes.values.data());
    if (!visual)
        return kFormat;
    fContext = gl.glXCreateContext(fDisplay, visual, sharedContext(), True);
    if (!fContext)
        return kNoContextOrSize;
    const uint32_t result = createChildWindow(parent, *visual);
    if (result == kSuccess)
        XFree(visual);
    return result;
}

uint32_t GLFrameBuffer::createByConfiguration(const WindowWrapper& parent, DrawableAttributes attributes) {
    const GLFunctionTable& gl = *fFunctionTable;
    if (!gl.fglXCreateWindow)
        return kUnsupported;

    int count = attributes.count;
    void** configurations =
        gl.glXChooseFBConfig(fDisplay, DefaultScreen(fDisplay), attributes.values.data(), &count);
    // Null when there are none: the refusal of the context is the answer to both.
    void* first = configurations ? configurations[0] : nullptr;
    // Oddity: GLX_DRAWABLE_TYPE is no render type, GLX_RGBA_TYPE would be. Drivers that look at it refuse; on
    // them, hosts count on getting no window this way, and veto it.
    fContext = gl.glXCreateNewContext(fDisplay, first, GLX_DRAWABLE_TYPE, sharedContext(), True);
    if (!fContext || !first)
        return kNoContextOrSize;
    // On the host's window itself: no child, so nothing to map, and its size is the host's.
    fDrawable = gl.glXCreateWindow(fDisplay, first, parent.window(), nullptr);
    if (fDrawable == 0)
        return kNoWindow;
    XFree(configurations);
    return kSuccess;
}

uint32_t GLFrameBuffer::createChildWindow(const WindowWrapper& parent, const XVisualInfo& visual) {
    Window root = 0;
    int x = 0;
    int y = 0;
    unsigned width = 0;
    unsigned height = 0;
    unsigned border = 0;
    unsigned depth = 0;
    if (!XGetGeometry(fDisplay, parent.window(), &root, &x, &y, &width, &height, &border, &depth))
        return kNoWindow;
    XSetWindowAttributes attributes = {};
    attributes.background_pixmap = None;
    attributes.border_pixel = 0;
    attributes.event_mask = kEvents;
    attributes.colormap = XCreateColormap(fDisplay, root, visual.visual, AllocNone);
    fChildColormap = attributes.colormap;
    fDrawable =
        XCreateWindow(fDisplay, parent.window(), 0, 0, width, height, 0, visual.depth, InputOutput,
                      visual.visual, CWBackPixmap | CWBorderPixel | CWEventMask | CWColormap, &attributes);
    return fDrawable != 0 ? kSuccess : kNoWindow;
}
