#include "window/ShownScene.h"

#include "frame/ViewAndLook.h"
#include "scene/Guides.h"

#include <utility>

namespace orloview {

namespace {

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
      fDrawn(fScene, fGuides, fOptions, report) {
    fView.statisticsShown = options.stats;
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
