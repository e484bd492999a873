#pragma once

#include <X11/Xlib.h>

/// An X window of the host: the widget of the host's toolkit that it belongs to (opaque here, may be null),
/// the window, its display, and the window that a frame buffer made inside it. Owns nothing.
class WindowWrapper {
public:
    WindowWrapper() = default;
    WindowWrapper(void* widget, Window window, Display* display)
        : fWidget(widget), fWindow(window), fDisplay(display) {}

    void* widget() const { return fWidget; }
    Window window() const { return fWindow; }
    Display* display() const { return fDisplay; }

    /// The window that a frame buffer draws into, 0 while there is none.
    Window fbWindow() const { return fFBWindow; }
    void setFBWindow(Window window) { fFBWindow = window; }

private:
    void* fWidget = nullptr;
    Window fWindow = 0;
    Window fFBWindow = 0;
    Display* fDisplay = nullptr;
};
