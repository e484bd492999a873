#include "window/HostWindow.h"

#include "base/ExitCode.h"

#include <algorithm>

#include <X11/Xatom.h>
#include <X11/Xutil.h>

namespace orloview {

namespace {

constexpr long kInput = KeyPressMask | ButtonPressMask | ButtonReleaseMask | ButtonMotionMask;

/// Tells the window manager what the program is called and that it wants the keyboard.
void introduce(Display* display, Window window) {
    char name[] = "orloview";
    XClassHint classHint{name, name};
    XSetClassHint(display, window, &classHint);
    XWMHints hints{};
    hints.flags = InputHint | StateHint;
    hints.input = True;
    hints.initial_state = NormalState;
    XSetWMHints(display, window, &hints);
}

} // namespace

HostWindow::HostWindow(Display* display, const std::string& title, int width, int height)
    : fDisplay(display), fWidth(std::min(width, DisplayWidth(display, DefaultScreen(display)))),
      fHeight(std::min(height, DisplayHeight(display, DefaultScreen(display)))) {
    XSetWindowAttributes attributes{};
    attributes.background_pixmap = None; // the child covers it: a background would only flash
    attributes.event_mask = KeyPressMask | StructureNotifyMask;
    fWindow = XCreateWindow(display, DefaultRootWindow(display), 0, 0, static_cast<unsigned>(fWidth),
                            static_cast<unsigned>(fHeight), 0, CopyFromParent, InputOutput, CopyFromParent,
                            CWBackPixmap | CWEventMask, &attributes);
    setTitle(title);
    introduce(display, fWindow);
    fDeleteAtom = XInternAtom(display, "WM_DELETE_WINDOW", False);
    XSetWMProtocols(display, fWindow, &fDeleteAtom, 1);

    const koBufferFormat format(kRasterRGBA8, kRasterDepth24, kRasterNoStencil, kSamplingSingle,
                                IHWTexture::kTexture2D);
    if (fBuffer.createInWindowPortably(WindowWrapper(nullptr, fWindow, display), format) !=
        GLFrameBuffer::kSuccess) {
        XDestroyWindow(display, fWindow);
        throw Failure(kExitNoGL, "the X display gives no window that OpenGL can draw in; give -o picture.png "
                                 "for a picture");
    }
    const Window child = fBuffer.fWindow.fbWindow();
    XSelectInput(display, child, kInput | ExposureMask | StructureNotifyMask);
    XMapWindow(display, child);
    XMapWindow(display, fWindow);
}

HostWindow::~HostWindow() {
    fBuffer.deleteInternalState();
    XDestroyWindow(fDisplay, fWindow);
}

void HostWindow::setTitle(const std::string& title) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(title.data());
    XChangeProperty(fDisplay, fWindow, XInternAtom(fDisplay, "_NET_WM_NAME", False),
                    XInternAtom(fDisplay, "UTF8_STRING", False), 8, PropModeReplace, bytes,
                    static_cast<int>(title.size()));
    XStoreName(fDisplay, fWindow, title.c_str());
}

bool HostWindow::followResize(const XEvent& event) {
    if (event.type != ConfigureNotify || event.xconfigure.window != fWindow ||
        (event.xconfigure.width == fWidth && event.xconfigure.height == fHeight))
        return false;
    fWidth = event.xconfigure.width;
    fHeight = event.xconfigure.height;
    fBuffer.resizeWindow(static_cast<unsigned>(fWidth), static_cast<unsigned>(fHeight));
    return true;
}

bool HostWindow::isClose(const XEvent& event) const {
    if (event.type == DestroyNotify)
        return true; // of this window or of the child
    return event.type == ClientMessage && event.xclient.window == fWindow &&
           static_cast<Atom>(event.xclient.data.l[0]) == fDeleteAtom;
}

} // namespace orloview
