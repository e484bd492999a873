#include "FakeX.h"

#include "Recorder.h"

#include <type_traits>

namespace {

/// The attributes that the mask names, in the mask's order. Of those that the library sets.
Argument windowAttributes(unsigned long mask, const XSetWindowAttributes& a) {
    Values values;
    for (const auto& [bit, value] : {std::pair{CWBackPixmap, a.background_pixmap},
                                     {CWBorderPixel, a.border_pixel},
                                     {CWEventMask, static_cast<unsigned long>(a.event_mask)},
                                     {CWColormap, a.colormap}})
        if (mask & bit)
            values.push_back(static_cast<double>(value));
    return values;
}

} // namespace

Display* fakeDisplay() {
    // DefaultScreen, DefaultRootWindow and DefaultDepth are macros that reach into the display.
    static Screen screen = {};
    static std::remove_pointer_t<_XPrivDisplay> display = {};
    screen.root = kFakeRoot;
    screen.root_depth = 24;
    display.screens = &screen;
    display.nscreens = 1;
    return reinterpret_cast<Display*>(&display);
}

extern "C" {

Colormap XCreateColormap(Display* display, Window window, Visual* visual, int allocate) {
    return record("XCreateColormap", {display, window, visual, allocate});
}

int XFreeColormap(Display* display, Colormap colormap) {
    return static_cast<int>(record("XFreeColormap", {display, colormap}));
}

Window XCreateWindow(Display* display, Window parent, int x, int y, unsigned width, unsigned height,
                     unsigned border, int depth, unsigned windowClass, Visual* visual, unsigned long mask,
                     XSetWindowAttributes* attributes) {
    return record("XCreateWindow", {display, parent, x, y, width, height, border, depth, windowClass, visual,
                                    mask, windowAttributes(mask, *attributes)});
}

int XDestroyWindow(Display* display, Window window) {
    return static_cast<int>(record("XDestroyWindow", {display, window}));
}

int XResizeWindow(Display* display, Window window, unsigned width, unsigned height) {
    return static_cast<int>(record("XResizeWindow", {display, window, width, height}));
}

Status XGetGeometry(Display* display, Drawable drawable, Window* root, int* x, int* y, unsigned* width,
                    unsigned* height, unsigned* border, unsigned* depth) {
    if (!record("XGetGeometry", {display, drawable}))
        return 0;
    *root = kFakeRoot;
    *x = *y = 0;
    *width = 640;
    *height = 480;
    *border = 0;
    *depth = 24;
    return 1;
}

int XFree(void* data) {
    return static_cast<int>(record("XFree", {data}));
}

} // extern "C"
