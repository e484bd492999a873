#pragma once

#include <string>

#include <framebuffer/GLFrameBuffer.h>

namespace orloview {

/// A window of the desktop with the library's frame buffer in it.
///
/// The library draws in a child window, which covers this one; mapping it, listening to it and giving it the
/// window's size is the host's business. Keys arrive at either of the two, the pointer's events at the child.
class HostWindow {
public:
    /// Opens and shows the window. Throws Failure (kExitNoGL) when no frame buffer can be had for it. Needs a
    /// GLSession, which outlives it.
    HostWindow(Display* display, const std::string& title, int width, int height);

    /// Leaves no context current.
    ~HostWindow();

    HostWindow(const HostWindow&) = delete;
    HostWindow& operator=(const HostWindow&) = delete;

    void setTitle(const std::string& title);

    /// What a desktop knows; the library's window lies in it.
    Window window() const { return fWindow; }

    GLFrameBuffer& buffer() { return fBuffer; }
    int width() const { return fWidth; }
    int height() const { return fHeight; }

    /// Whether the event says that the window has another size; the frame buffer follows.
    bool followResize(const XEvent& event);

    /// Whether the event is the user's wish to close the window, or tells that another client has destroyed
    /// it.
    bool isClose(const XEvent& event) const;

private:
    Display* fDisplay;
    Window fWindow;
    Atom fDeleteAtom;
    int fWidth;
    int fHeight;
    GLFrameBuffer fBuffer;
};

} // namespace orloview
