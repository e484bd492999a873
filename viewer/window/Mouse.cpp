#include "window/Mouse.h"

#include "window/Overlay.h"

#include <cstdlib>
#include <vector>

namespace orloview {

Mouse::Outcome Mouse::press(const XButtonEvent& event, ShownScene* shown, const Room& room) {
    fX = fPressedX = event.x;
    fY = fPressedY = event.y;
    if (!shown)
        return {};
    if (event.button == Button4 || event.button == Button5) {
        shown->view().zoom(event.button == Button4 ? 1 : -1, event.x, event.y);
        return {true, {}};
    }
    if (event.button != Button1)
        return {};
    fGrip.reset();
    const std::vector<Slider> sliders = shown->sliders();
    for (size_t i = 0; i < sliders.size(); ++i) {
        if (placeOfSlider(i, room.width, room.height, room.lineHeight).contains(event.y))
            fGrip = sliders[i].kind;
    }
    if (fGrip)
        slide(*shown, room);
    return {fGrip.has_value(), {}};
}

Mouse::Outcome Mouse::drag(const XMotionEvent& event, ShownScene* shown, const Room& room) {
    const int right = event.x - fX;
    const int down = event.y - fY;
    fX = event.x;
    fY = event.y;
    if (!shown)
        return {};
    if (fGrip && (event.state & Button1Mask))
        slide(*shown, room);
    else if ((event.state & Button2Mask) || ((event.state & Button1Mask) && (event.state & ShiftMask)))
        shown->view().move(right, down);
    else if (event.state & Button1Mask)
        shown->view().turn(right, down);
    else
        return {};
    return {true, {}};
}

/// Takes what is held to where the mouse is.
void Mouse::slide(ShownScene& shown, const Room& room) const {
    shown.slide(*fGrip, placeOfSlider(0, room.width, room.height, room.lineHeight).shareAt(fX));
}

/// Where a button goes up near where it went down, that was a click.
Mouse::Outcome Mouse::release(const XButtonEvent& event, ShownScene* shown) {
    constexpr int kSteady = 3;
    fX = event.x;
    fY = event.y;
    const bool isSteady = std::abs(fX - fPressedX) <= kSteady && std::abs(fY - fPressedY) <= kSteady;
    if (shown && event.button == Button1 && !fGrip && isSteady)
        return click(*shown);
    return {};
}

Mouse::Outcome Mouse::click(ShownScene& shown) {
    constexpr auto kDouble = std::chrono::milliseconds(400);
    const auto now = std::chrono::steady_clock::now();
    if (shown.view().shown.measuring)
        return {true,
                shown.inspector().measure(shown.rayAt(fX, fY)) ? "" : "nothing is there to measure from"};
    if (!fClickedAt || now - *fClickedAt >= kDouble) {
        fClickedAt = now;
        return {};
    }
    shown.inspector().pick(shown.rayAt(fX, fY));
    fClickedAt.reset();
    return {true, {}};
}

} // namespace orloview
