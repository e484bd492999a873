#include "load/ModelFeed.h"

#include "base/ExitCode.h"
#include "load/FolderOfModels.h"

#include <filesystem>
#include <utility>

namespace orloview {

namespace {

/// A file that has changed is read again once nobody has written to it for so long.
constexpr auto kQuiet = std::chrono::milliseconds(200);

} // namespace

ModelFeed::ModelFeed(const Options& options) : fOptions(options) {
    const std::string folder = options.subject();
    if (options.demo || !std::filesystem::is_directory(folder))
        return;
    const std::vector<std::string> models = modelsIn(folder);
    if (models.empty())
        throw Failure(kExitNoInput,
                      folder + ": no model lies in this folder; --list-formats lists what is read");
    fOptions.models = {models.front()};
    fLeftToTry = models.size() - 1;
}

void ModelFeed::open(const Options& options) {
    noteChanges(); // of those that were watched before
    fWatch.watch(options.models);
    fOpening.emplace(options);
}

void ModelFeed::openOthers(std::vector<std::string> models) {
    Options options = fOptions;
    options.models = std::move(models);
    options.demo = false;
    options.camera.reset();
    options.variant.reset();
    options.animation.reset();
    options.time.reset();
    options.eye.reset();
    options.target.reset();
    options.part.reset();
    options.measure.reset();
    options.clip.reset();
    fIsReload = false;
    open(options);
}

bool ModelFeed::openBeside(int steps) {
    const std::string from = (fOpening ? fOpening->options() : fOptions).subject();
    if (fOptions.demo || fOptions.models.front() == "-")
        return false;
    openOthers({modelBeside(from, steps)});
    return true;
}

void ModelFeed::reload() {
    fReloadAt.reset();
    if (fOptions.demo)
        return;
    fIsReload = true;
    open(fOptions);
}

void ModelFeed::accept(const std::vector<std::string>& files) {
    fOptions = fOpening->options();
    fOpening.reset();
    fLeftToTry = 0;
    noteChanges();
    fWatch.watch(files);
}

bool ModelFeed::refuse() {
    fOptions.models = fOpening->options().models; // where the next file is looked for
    fOpening.reset();
    if (fLeftToTry == 0)
        return false;
    --fLeftToTry;
    fOptions.models = {modelBeside(fOptions.models.front(), 1)};
    open(fOptions);
    return true;
}

void ModelFeed::stop() {
    fOpening.reset();
}

void ModelFeed::noteChanges() {
    if (fWatch.takeChange())
        fReloadAt = Clock::now() + kQuiet;
}

} // namespace orloview
