#pragma once

#include "window/ShownScene.h"

#include <chrono>
#include <optional>
#include <string>

#include <X11/Xlib.h>

namespace orloview {

/// What the mouse does in a window: it turns, moves and zooms the view, holds sliders, and clicks on parts.
/// Before there is a scene it is only followed.
class Mouse {
public:
    /// The window, by which sliders have their places.
    struct Room {
        int width;
        int height;
        int lineHeight;
    };

    /// What came of an event.
    struct Outcome {
        bool hasChanged = false; ///< what is to be seen
        std::string message;     ///< for the user; empty: none
    };

    Outcome press(const XButtonEvent& event, ShownScene* shown, const Room& room);
    Outcome drag(const XMotionEvent& event, ShownScene* shown, const Room& room);
    Outcome release(const XButtonEvent& event, ShownScene* shown);

private:
    void slide(ShownScene& shown, const Room& room) const;
    Outcome click(ShownScene& shown);

    int fX = 0;
    int fY = 0;
    std::optional<SliderKind> fGrip; ///< that the left button went down on; none: on the scene
    int fPressedX = 0;
    int fPressedY = 0;
    std::optional<std::chrono::steady_clock::time_point> fClickedAt; ///< until it was a double one's second
};

} // namespace orloview
