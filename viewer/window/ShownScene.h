#pragma once

#include "load/LoadModels.h"

#include "frame/DrawnScene.h"
#include "session/GLSession.h"
#include "window/Inspector.h"
#include "window/InteractiveView.h"
#include "window/Playback.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orloview {

/// A scene in the window, with all that it is drawn with and how it is looked at. Needs a current context to
/// be made and to end.
class ShownScene {
public:
    /// By the options that it was read by. Throws Failure where nothing of it can be drawn.
    ShownScene(const Options& options, Scene&& loaded, const ProgressReport& report);

    ShownScene(const ShownScene&) = delete;
    ShownScene& operator=(const ShownScene&) = delete;

    const Options& options() const { return fOptions; }
    const Scene& scene() const { return fScene; }
    InteractiveView& view() { return fView; }
    DrawnScene& drawn() { return fDrawn; }
    Inspector& inspector() { return fInspector; }

    /// What lies under a pixel of the window.
    Ray rayAt(int x, int y) const;

    /// What can be dragged, from the bottom, and to a share of its length.
    std::vector<Slider> sliders() const;
    void slide(SliderKind kind, double share);

    /// Cuts along the next axis, in the middle, or not at all behind the last.
    void clipNext();

    /// What was left out of it, a line each.
    std::vector<std::string> warnings() const;

    /// What is written over its frame.
    Overlay overlay(const FrameStatistics& statistics, const std::string& message,
                    const ShownProgress& progress);

    /// Whether time changes anything.
    bool moves() const { return fOptions.demo || fPoser.moves(); }

    /// When in what moves it is, and where its scene stands then.
    Playback& playback() { return fPlayback; }
    const Playback& playback() const { return fPlayback; }

    /// Lets the scene stand as it does at the time. Leaves the start-up context current where anything moved.
    void followTime(GLSession& gl);

    /// False where there is no other.
    bool playNextAnimation();

    /// The name of what plays, for people; none where that has no end.
    std::optional<std::string> animation() const;

    /// Those that draw the same picture.
    std::string switches() const;

    /// What it came from: models, what lies beside them, pictures.
    std::vector<std::string> files() const;

    /// As it is looked at now.
    View currentView() const;

    /// Looks through the file's next camera, and behind the last one as at first. Tells which; false where
    /// the file has none.
    bool lookThroughNextCamera(std::string& which);

private:
    /// In powers of two.
    double exposure() const;

    /// From where to where the scene reaches along an axis.
    std::pair<double, double> extent(int axis) const;

    Options fOptions;
    Scene fScene;
    Poser fPoser;
    Bounds fBounds; ///< of all that is drawn of the scene
    Guides fGuides;
    InteractiveView fView;
    Playback fPlayback;
    double fShownTime = 0.0; ///< that things stand for
    DrawnScene fDrawn;
    Inspector fInspector;
    size_t fNextCamera = 0;
};

} // namespace orloview
