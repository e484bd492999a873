#pragma once

#include "window/Commands.h"

#include <limits>
#include <string>

namespace orloview {

/// When in an animation a window is, and how it goes on: behind its end it begins again. Knows no clock.
class Playback {
public:
    static constexpr double kEndless = std::numeric_limits<double>::infinity();

    /// All in seconds; `step` is how far a key goes.
    Playback(double length, double time, double step, bool plays);

    double time() const { return fTime; }
    double length() const { return fLength; }
    bool plays() const { return fPlays; }

    /// How many seconds of the animation go by in one.
    double speed() const { return fSpeed; }

    /// Goes on by so many seconds of the clock.
    void advance(double seconds) { fTime = wrapped(fTime + seconds * fSpeed); }

    /// Does what a command asks of it; false for one that asks something else.
    bool apply(Command command);

    /// Stops at a share of the length, 0 to 1.
    void seek(double share);

    /// Begins another animation.
    void begin(double length);

    /// The time as --time takes it.
    std::string timeSwitch() const;

private:
    double wrapped(double time) const;
    void stopAt(double time);

    double fLength;
    double fTime;
    double fStep;
    bool fPlays;
    double fSpeed = 1.0;
};

} // namespace orloview
