// Windows as the drivers of today give them: by a GLX 1.3 configuration, or else by a visual.

#include "framebuffer/DrawableAttributes.h"
#include "framebuffer/GLFrameBuffer.h"
#include "gl/GLFunctionTable.h"
#include "gl/GLStartupContext.h"

#include <memory>
#include <utility>

namespace {

constexpr int kSamples = 4;

struct FreeX {
    void operator()(void* memory) const { XFree(memory); }
};
using VisualInfo = std::unique_ptr<XVisualInfo, FreeX>;

/// What the chooser of configurations found, best first.
struct Configurations {
    int count = 0; // before what fills it
    std::unique_ptr<void*, FreeX> first;

    Configurations(const GLFunctionTable& gl, Display* display, DrawableAttributes wanted)
        : first(gl.glXChooseFBConfig(display, DefaultScreen(display), wanted.values.data(), &count)) {}

    void* operator[](int i) const { return first.get()[i]; }
};

struct VisualConfiguration {
    void* configuration = nullptr;
    VisualInfo visual;
};

/// The first with a visual of the screen's own depth: another depth may be that of windows with see-through
/// pixels. Where there is none, the first with a visual.
VisualConfiguration bestForScreen(const GLFunctionTable& gl, Display* display,
                                  const Configurations& configurations) {
    VisualConfiguration best;
    for (int i = 0; configurations.first && i < configurations.count; ++i) {
        VisualInfo visual(gl.glXGetVisualFromFBConfig(display, configurations[i]));
        const bool fits = visual && visual->depth == DefaultDepth(display, DefaultScreen(display));
        if (fits || (visual && !best.visual))
            best = {configurations[i], std::move(visual)};
        if (fits)
            break;
    }
    return best;
}

DrawableAttributes windowConfiguration(const koBufferFormat& format, int samples) {
    DrawableAttributes wanted;
    wanted.add(GLX_X_RENDERABLE, True);
    wanted.add(GLX_DRAWABLE_TYPE, GLX_WINDOW_BIT);
    wanted.add(GLX_RENDER_TYPE, GLX_RGBA_BIT);
    wanted.add(GLX_DOUBLEBUFFER, True);
    wanted.addSizes(format);
    if (samples > 0) {
        wanted.add(GLX_SAMPLE_BUFFERS, 1);
        wanted.add(GLX_SAMPLES, samples);
    }
    return wanted;
}

} // namespace

uint32_t GLFrameBuffer::createPortableDrawable(const WindowWrapper& parent) {
    const GLFunctionTable& gl = *fFunctionTable;
    if (!sharedContext())
        return kNoContextOrSize;
    uint32_t result = kUnsupported;
    if (gl.usable(kCapGLXFBConfig) && gl.usable(kCapGLXNewContext) && gl.usable(kCapGLXWindow) &&
        gl.fglXGetVisualFromFBConfig && gl.fglXCreateWindow)
        result = createOnConfiguration(parent);
    if ((result == kUnsupported || result == kFormat || result == kNoContextOrSize) && gl.fglXChooseVisual &&
        gl.fglXCreateContext)
        result = createOnVisual(parent);
    return result;
}

uint32_t GLFrameBuffer::createOnConfiguration(const WindowWrapper& parent) {
    const GLFunctionTable& gl = *fFunctionTable;
    const auto best = [&](int samples) {
        return bestForScreen(gl, fDisplay,
                             Configurations(gl, fDisplay, windowConfiguration(fRequestedFormat, samples)));
    };
    VisualConfiguration chosen;
    if (fRequestedFormat.fSamplingType != kSamplingSingle)
        chosen = best(kSamples);
    if (!chosen.visual)
        chosen = best(0);
    if (!chosen.visual)
        return kFormat;
    fContext = gl.glXCreateNewContext(fDisplay, chosen.configuration, GLX_RGBA_TYPE, sharedContext(), True);
    if (!fContext)
        return kNoContextOrSize;
    const uint32_t result = createOwnChildWindow(parent, *chosen.visual);
    if (result != kSuccess)
        return result;
    fDrawable = gl.glXCreateWindow(fDisplay, chosen.configuration, fChildWindow, nullptr);
    if (fDrawable != 0)
        return kSuccess;
    destroyChildWindow();
    destroyContext();
    return kNoWindow;
}

uint32_t GLFrameBuffer::createOnVisual(const WindowWrapper& parent) {
    const GLFunctionTable& gl = *fFunctionTable;
    DrawableAttributes wanted;
    wanted.add(GLX_RGBA, GLX_DOUBLEBUFFER); // no pair: two names, which have no values for this chooser
    wanted.addSizes(fRequestedFormat);
    const VisualInfo visual(gl.glXChooseVisual(fDisplay, DefaultScreen(fDisplay), wanted.values.data()));
    if (!visual)
        return kFormat;
    fContext = gl.glXCreateContext(fDisplay, visual.get(), sharedContext(), True);
    if (!fContext)
        return kNoContextOrSize;
    return createOwnChildWindow(parent, *visual);
}

/// A child window that goes with this buffer, as its context does where it can't be had.
uint32_t GLFrameBuffer::createOwnChildWindow(const WindowWrapper& parent, const XVisualInfo& visual) {
    const uint32_t result = createChildWindow(parent, visual);
    if (result == kSuccess) {
        fChildWindow = fDrawable;
        return kSuccess;
    }
    if (fChildColormap != 0)
        XFreeColormap(fDisplay, std::exchange(fChildColormap, 0));
    destroyContext();
    return result;
}

void GLFrameBuffer::destroyContext() {
    fFunctionTable->glXDestroyContext(fDisplay, fContext);
    fContext = nullptr;
}

void GLFrameBuffer::destroyChildWindow() {
    if (fDrawable != 0 && fDrawable != fChildWindow)
        fFunctionTable->glXDestroyWindow(fDisplay, fDrawable);
    XDestroyWindow(fDisplay, fChildWindow);
    XFreeColormap(fDisplay, fChildColormap);
    fChildWindow = 0;
    fChildColormap = 0;
}
