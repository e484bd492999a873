#include "window/Playback.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace orloview {

Playback::Playback(double length, double time, double step, bool plays)
    : fLength(length), fTime(0.0), fStep(step), fPlays(plays) {
    fTime = wrapped(time);
}

double Playback::wrapped(double time) const {
    if (time >= 0.0 && time <= fLength)
        return time;
    const double rest = fLength > 0.0 ? std::fmod(time, fLength) : 0.0;
    return rest < 0.0 ? rest + fLength : rest;
}

void Playback::stopAt(double time) {
    fTime = wrapped(time);
    fPlays = false;
}

bool Playback::apply(Command command) {
    constexpr double kSlowest = 1.0 / 16.0;
    constexpr double kFastest = 16.0;
    switch (command) {
    case Command::PlayOrStop:
        fPlays = !fPlays;
        return true;
    case Command::StepBack:
        stopAt(std::isfinite(fLength) ? fTime - fStep : std::max(fTime - fStep, 0.0));
        return true;
    case Command::StepOn:
        stopAt(fTime + fStep);
        return true;
    case Command::Slower:
        fSpeed = std::max(fSpeed / 2.0, kSlowest);
        return true;
    case Command::Faster:
        fSpeed = std::min(fSpeed * 2.0, kFastest);
        return true;
    default:
        return false;
    }
}

void Playback::seek(double share) {
    stopAt(std::clamp(share, 0.0, 1.0) * fLength);
}

void Playback::begin(double length) {
    fLength = length;
    fTime = 0.0;
}

std::string Playback::timeSwitch() const {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, fTime).ptr};
}

} // namespace orloview
