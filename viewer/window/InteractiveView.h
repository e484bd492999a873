#pragma once

#include "frame/Frame.h"
#include "scene/Navigation.h"
#include "window/Commands.h"

#include <optional>
#include <string>

namespace orloview {

/// What is laid over the frame.
struct Panels {
    bool statistics = false;
    bool help = false;
    bool tree = false;
    bool warnings = false;
    bool exposure = false;
    bool measuring = false; ///< clicks set points
};

/// What a window shows and how: the state that keys and mouse change. Knows no window and makes no GL call.
///
/// Pixels count from the window's top left corner.
class InteractiveView {
public:
    InteractiveView(const Navigation& start, const FrameLook& look) : fNavigation(start), fLook(look) {}

    const Navigation& navigation() const { return fNavigation; }

    /// Width and height are the window's.
    const FrameLook& look() const { return fLook; }

    Panels shown;

    void resize(int width, int height);

    /// Looks from there, to go on with keys and mouse.
    void look(const Viewpoint& viewpoint) { fNavigation.look(viewpoint); }

    /// Has on what another has on, and the same size.
    void takeSwitches(const InteractiveView& other);

    /// Does what a command asks of the view; false for one that asks something else.
    bool apply(Command command);

    /// Whether a command that switches something has it on; null for those that don't.
    std::optional<bool> isOn(Command command) const;

    /// The model follows the pointer: turning, and moving.
    void turn(int right, int down);
    void move(int right, int down);

    /// Nearer by steps of the wheel (farther where negative); what is under the pointer stays there.
    void zoom(int steps, int x, int y);

    void setClip(const std::optional<Clip>& clip) { fLook.clip = clip; }

    /// Multiplies the light of all that has been drawn.
    void setGain(float gain) { fLook.gain = gain; }

    /// The command-line switches that draw the same picture.
    std::string switches() const;

private:
    double aspect() const { return static_cast<double>(fLook.width) / fLook.height; }

    Navigation fNavigation;
    FrameLook fLook;
};

} // namespace orloview
