#include "window/InteractiveView.h"

#include "base/Text.h"
#include "output/Picture.h"
#include "scene/Vectors.h"

#include <cmath>
#include <cstdio>
#include <numbers>

namespace orloview {

namespace {

constexpr double kRadiansPerPixel = 0.007;
constexpr double kRadiansPerKey = std::numbers::pi / 12.0;
constexpr double kZoomPerStep = 1.15;

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", value);
    return text;
}

template <typename Triple>
std::string triple(const Triple& t) {
    return number(t[0]) + "," + number(t[1]) + "," + number(t[2]);
}

/// The --up that makes such a view: the axis that points up, unless the view is rolled.
Vector upSwitch(const Navigation& navigation) {
    const Viewpoint& v = navigation.viewpoint();
    const bool level = std::abs(dot(v.right, navigation.up())) < 1e-9 && dot(v.up, navigation.up()) > -1e-9;
    return level ? navigation.up() : v.up;
}

/// As --background takes it: the colour before alpha was multiplied in, encoded.
std::string backgroundSwitch(const koColor::Color& stored) {
    const float alpha = stored[3];
    std::string text = "#";
    for (int channel = 0; channel < 4; ++channel) {
        const unsigned byte = channel == 3 ? static_cast<unsigned>(std::lround(alpha * 255.0F))
                                           : encodeSrgb(alpha > 0.0F ? stored[channel] / alpha : 0.0F);
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte & 0xFFU);
        if (channel < 3 || byte != 255)
            text += digits;
    }
    return text;
}

/// What a command switches; null for one that does something else. To read and to write.
template <typename Look, typename Shown>
auto switchOf(Command command, Look& look, Shown& shown) -> decltype(&shown.help) {
    switch (command) {
    case Command::Wireframe:
        return &look.wireframe;
    case Command::Lights:
        return &look.lights;
    case Command::Culling:
        return &look.culling;
    case Command::Grid:
        return &look.grid;
    case Command::Axes:
        return &look.axes;
    case Command::Ground:
        return &look.ground;
    case Command::AmbientOcclusion:
        return &look.ambientOcclusion;
    case Command::Sky:
        return &look.sky;
    case Command::Edges:
        return &look.edges;
    case Command::Statistics:
        return &shown.statistics;
    case Command::Tree:
        return &shown.tree;
    case Command::Warnings:
        return &shown.warnings;
    case Command::Exposure:
        return &shown.exposure;
    case Command::Measure:
        return &shown.measuring;
    case Command::Help:
        return &shown.help;
    default:
        return nullptr;
    }
}

} // namespace

void InteractiveView::resize(int width, int height) {
    fLook.width = width;
    fLook.height = height;
}

void InteractiveView::takeSwitches(const InteractiveView& other) {
    resize(other.fLook.width, other.fLook.height);
    for (const CommandHelp& help : commandHelp()) {
        if (bool* state = switchOf(help.command, fLook, shown))
            *state = *switchOf(help.command, other.fLook, other.shown);
    }
    fLook.gain = other.fLook.gain;
    fNavigation.setOrthographic(other.fNavigation.viewpoint().orthographic);
}

std::optional<bool> InteractiveView::isOn(Command command) const {
    if (command == Command::Orthographic)
        return fNavigation.viewpoint().orthographic;
    const bool* state = switchOf(command, fLook, shown);
    return state ? std::optional(*state) : std::nullopt;
}

bool InteractiveView::apply(Command command) {
    if (bool* state = switchOf(command, fLook, shown)) {
        *state = !*state;
        return true;
    }
    switch (command) {
    case Command::Fit:
        fNavigation.fit(aspect());
        break;
    case Command::Front:
    case Command::Back:
    case Command::Right:
    case Command::Left:
    case Command::Top:
    case Command::Bottom: // in the order of the sides
        fNavigation.face(
            static_cast<Navigation::Side>(static_cast<int>(command) - static_cast<int>(Command::Front)));
        break;
    case Command::Home:
        fNavigation.home();
        break;
    case Command::Orthographic:
        fNavigation.setOrthographic(!fNavigation.viewpoint().orthographic);
        break;
    case Command::TurnLeft:
        fNavigation.orbit(-kRadiansPerKey, 0.0);
        break;
    case Command::TurnRight:
        fNavigation.orbit(kRadiansPerKey, 0.0);
        break;
    case Command::TurnUp:
        fNavigation.orbit(0.0, kRadiansPerKey);
        break;
    case Command::TurnDown:
        fNavigation.orbit(0.0, -kRadiansPerKey);
        break;
    case Command::Nearer:
        fNavigation.zoom(kZoomPerStep, 0.0, 0.0, aspect());
        break;
    case Command::Farther:
        fNavigation.zoom(1.0 / kZoomPerStep, 0.0, 0.0, aspect());
        break;
    default:
        return false;
    }
    return true;
}

void InteractiveView::turn(int right, int down) {
    fNavigation.orbit(-right * kRadiansPerPixel, down * kRadiansPerPixel);
}

void InteractiveView::move(int right, int down) {
    const double half = fLook.height / 2.0;
    fNavigation.pan(right / half, -down / half);
}

void InteractiveView::zoom(int steps, int x, int y) {
    const double right = 2.0 * (x + 0.5) / fLook.width - 1.0;
    const double up = 1.0 - 2.0 * (y + 0.5) / fLook.height;
    fNavigation.zoom(std::pow(kZoomPerStep, steps), right, up, aspect());
}

std::string InteractiveView::switches() const {
    const Viewpoint& v = fNavigation.viewpoint();
    std::string text = "--eye " + triple(v.eye()) + " --target " + triple(v.target);
    const Vector up = upSwitch(fNavigation);
    if (length(between({0.0, 1.0, 0.0}, {up[0], up[1], up[2]})) > 1e-9)
        text += " --up " + triple(up);
    text += " --fov " + number(v.fieldOfView * 180.0 / std::numbers::pi);
    for (const auto& [name, given] : {std::pair{" --orthographic", v.orthographic},
                                      {" --wireframe", fLook.wireframe},
                                      {" --edges", fLook.edges},
                                      {" --no-lights", !fLook.lights},
                                      {" --no-culling", !fLook.culling},
                                      {" --grid", fLook.grid},
                                      {" --axes", fLook.axes},
                                      {" --ground", fLook.ground},
                                      {" --ao", fLook.ambientOcclusion},
                                      {" --show-sky", fLook.sky},
                                      {" --tree", shown.tree},
                                      {" --warnings", shown.warnings},
                                      {" --exposure-slider", shown.exposure}}) {
        if (given)
            text += name;
    }
    if (fLook.clip)
        text += std::string(" --clip ") + "xyz"[fLook.clip->axis] + "," + number(fLook.clip->place);
    text += " --background " + shellWord(backgroundSwitch(fLook.background));
    return text + " --size " + std::to_string(fLook.width) + "x" + std::to_string(fLook.height);
}

} // namespace orloview
