#include "window/ShownScene.h"

#include "base/Text.h"
#include "frame/ViewAndLook.h"
#include "scene/Guides.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <utility>

namespace orloview {

namespace {

/// The slider's ends, in powers of two.
constexpr double kMostExposure = 6.0;

Bounds preparedBounds(const Options& options, Scene& scene, const Poser& poser) {
    prepareForDrawing(options, scene);
    return drawnBounds(options, scene, poser.bounds());
}

} // namespace

ShownScene::ShownScene(const Options& options, Scene&& loaded, const ProgressReport& report)
    : fOptions(options), fScene(std::move(loaded)), fPoser(poserFor(options, fScene)),
      fBounds(preparedBounds(options, fScene, fPoser)), fGuides(makeGuides(fScene.bounds(), upOf(options))),
      fView(
          Navigation(chooseEye(options, fScene), upOf(options), outlineOf(fScene), radiusOf(fScene.bounds())),
          lookOf(options, fScene)),
      fPlayback(options.demo ? Playback::kEndless : fPoser.seconds(), options.time.value_or(0.0),
                1.0 / options.framesPerSecond, moves() && !options.time),
      fDrawn(fScene, fGuides, fOptions, report), fInspector(fScene, fDrawn.marks()) {
    fView.shown = {options.stats, false, options.showTree, options.showWarnings, options.showExposure, false};
}

std::vector<std::string> ShownScene::files() const {
    std::vector<std::string> files = fOptions.models;
    files.insert(files.end(), fScene.files.begin(), fScene.files.end());
    for (const Image& image : fScene.images)
        files.push_back(image.path);
    return files;
}

View ShownScene::currentView() const {
    const FrameLook& look = fView.look();
    return viewFrom(fView.navigation().viewpoint(),
                    boundsWith(fBounds, fGuides, look.grid, look.axes, look.ground),
                    static_cast<double>(look.width) / look.height);
}

void ShownScene::followTime(GLSession& gl) {
    if (fShownTime == fPlayback.time())
        return;
    fShownTime = fPlayback.time();
    gl.makeCurrent();
    fDrawn.setTime(fShownTime);
    if (fOptions.demo)
        return fDrawn.animate(fShownTime);
    fDrawn.follow(fPoser.pose(fShownTime), fPoser.bounds());
    fBounds = drawnBounds(fOptions, fScene, fPoser.bounds());
}

bool ShownScene::playNextAnimation() {
    const size_t count = fScene.animations.size();
    if (count < 2)
        return false;
    fPoser.choose((fPoser.animation() + 1) % count);
    fPlayback.begin(fPoser.seconds());
    fShownTime = -1.0; // whatever time it was, of another
    return true;
}

std::optional<std::string> ShownScene::animation() const {
    if (fOptions.demo || !fPoser.moves())
        return std::nullopt;
    return printable(fScene.animations[fPoser.animation()].name);
}

std::string ShownScene::switches() const {
    std::string text = fView.switches() + fInspector.switches();
    if (exposure() != 0.0) {
        char number[32];
        std::snprintf(number, sizeof number, "%.6g", exposure());
        text += std::string(" --exposure") + (exposure() < 0.0 ? "=" : " ") + number;
    }
    if (!fOptions.demo && fPoser.animation() > 0)
        text += " --animation " + std::to_string(fPoser.animation());
    if (moves())
        text += " --time " + fPlayback.timeSwitch();
    return text + fOptions.shadingSwitches;
}

Ray ShownScene::rayAt(int x, int y) const {
    const FrameLook& look = fView.look();
    return rayThrough(fView.navigation().viewpoint(), 2.0 * (x + 0.5) / look.width - 1.0,
                      1.0 - 2.0 * (y + 0.5) / look.height, static_cast<double>(look.width) / look.height);
}

double ShownScene::exposure() const {
    return std::log2(static_cast<double>(fOptions.exposure) * fView.look().gain);
}

std::vector<Slider> ShownScene::sliders() const {
    std::vector<Slider> sliders;
    char words[64];
    if (const std::optional<std::string> name = animation()) {
        const double length = fPlayback.length();
        std::snprintf(words, sizeof words, "%.2f of %.2f s  ", fPlayback.time(), length);
        std::string line = *name + (name->empty() ? "" : "  ") + words;
        std::snprintf(words, sizeof words, fPlayback.plays() ? "x %.4g" : "stopped", fPlayback.speed());
        sliders.push_back(
            {SliderKind::TimeLine, length > 0.0 ? fPlayback.time() / length : 0.0, line + words});
    }
    if (fView.shown.exposure) {
        std::snprintf(words, sizeof words, "exposure %+.2f", exposure());
        const double share = std::clamp(0.5 + exposure() / kMostExposure / 2.0, 0.0, 1.0);
        sliders.push_back({SliderKind::Exposure, share, words});
    }
    if (const std::optional<Clip>& clip = fView.look().clip) {
        std::snprintf(words, sizeof words, "cut at %c %.6g", "xyz"[clip->axis], clip -> place);
        const auto [least, most] = extent(clip->axis);
        sliders.push_back(
            {SliderKind::Clip, std::clamp((clip->place - least) / (most - least), 0.0, 1.0), words});
    }
    return sliders;
}

void ShownScene::slide(SliderKind kind, double share) {
    constexpr double kSteps = 20.0; // of each power of two
    switch (kind) {
    case SliderKind::TimeLine:
        fPlayback.seek(share);
        break;
    case SliderKind::Exposure: {
        const double exposure = std::round((share - 0.5) * 2.0 * kMostExposure * kSteps) / kSteps;
        fView.setGain(static_cast<float>(std::exp2(exposure) / fOptions.exposure));
        break;
    }
    case SliderKind::Clip: {
        const int axis = fView.look().clip->axis;
        const auto [least, most] = extent(axis);
        fView.setClip(Clip{axis, least + share * (most - least)});
        break;
    }
    }
}

void ShownScene::clipNext() {
    const int axis = fView.look().clip ? fView.look().clip->axis + 1 : 0;
    const auto [least, most] = extent(axis % 3);
    fView.setClip(axis < 3 ? std::optional(Clip{axis, (least + most) / 2.0}) : std::nullopt);
}

std::pair<double, double> ShownScene::extent(int axis) const {
    const double least = fBounds.min[axis];
    return {least, std::max(fBounds.max[axis], std::nextafter(least, std::numeric_limits<double>::max()))};
}

std::vector<std::string> ShownScene::warnings() const {
    std::vector<std::string> warnings = fScene.warnings;
    const std::vector<std::string> more = fDrawn.warnings();
    warnings.insert(warnings.end(), more.begin(), more.end());
    return warnings;
}

Overlay ShownScene::overlay(const FrameStatistics& statistics, const std::string& message,
                            const ShownProgress& progress) {
    const FrameLook& look = fView.look();
    return {fView,
            fScene,
            statistics,
            sliders(),
            fInspector.panels(fView.shown, fView.shown.warnings ? warnings() : std::vector<std::string>()),
            fInspector.distance(currentView(), look.width, look.height),
            message,
            progress};
}

bool ShownScene::lookThroughNextCamera(std::string& which) {
    if (fScene.cameras.empty())
        return false;
    if (fNextCamera == fScene.cameras.size()) {
        fNextCamera = 0;
        fView.apply(Command::Home);
        which = "the first view";
        return true;
    }
    const Camera& camera = fScene.cameras[fNextCamera];
    fView.look(eyeOf(camera, fScene.bounds()));
    which = "camera " + std::to_string(fNextCamera++) + (camera.name.empty() ? "" : " (" + camera.name + ")");
    return true;
}

} // namespace orloview
