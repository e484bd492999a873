#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <X11/Xlib.h>

namespace orloview {

/// Takes files that are dragged onto a window, as desktops hand them over (XDND, version 5).
class DropTarget {
public:
    /// Says so of the window, of which all events have to come here.
    DropTarget(Display* display, Window window);

    /// Whether the event was of a drag. Answers it.
    bool handle(const XEvent& event);

    /// The files that were dropped since the last call.
    std::vector<std::string> take();

private:
    Atom atom(const char* name) const { return XInternAtom(fDisplay, name, False); }
    void enter(const XClientMessageEvent& message);
    void answer(const char* kind, long isTaken, long action);
    void receive(const XSelectionEvent& event);

    Display* fDisplay;
    Window fWindow;
    Window fSource = None; ///< of the drag over the window
    bool fHasFiles = false;
    std::vector<std::string> fFiles;
};

/// The local files of a list of addresses (text/uri-list).
std::vector<std::string> filesOf(std::string_view addresses);

} // namespace orloview
