#pragma once

#include <X11/Xlib.h>

/// An X window of the host: the widget of the host's toolkit that it belongs to (opaque here, may be null),
/// the window, its display, and the window that a frame buffer made inside it. Owns nothing.
class WindowWrapper {
public:
    WindowWrapper() = default;

    /// Of the host's toolkit's widget, which may be null, its window and display.
    WindowWrapper(void* widget, Window window, Display* display)
        : fWidget(widget), fWindow(window), fDisplay(display) {}

    void* widget() const { return fWidget; }      ///< the toolkit's, or null
    Window window() const { return fWindow; }     ///< the host's
    Display* display() const { return fDisplay; } ///< of the window

    /// The window that a frame buffer draws into, 0 while there is none.
    Window fbWindow() const { return fFBWindow; }

    /// For frame buffers: remembers the child window that is drawn into.
    void setFBWindow(Window window) { fFBWindow = window; }

private:
    void* fWidget = nullptr;
    Window fWindow = 0;
    Window fFBWindow = 0;
    Display* fDisplay = nullptr;
};
