#pragma once

#include "base/FileWatch.h"
#include "load/Opening.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace orloview {

/// Which models a window shows, and the reading of those that take their place: others of the folder, dropped
/// ones, the same ones once they have changed. Needs startReaders.
class ModelFeed {
public:
    using Clock = std::chrono::steady_clock;

    /// A folder stands for the first of its models that can be read. Throws Failure where it has none.
    explicit ModelFeed(const Options& options);

    /// Of the models that are shown, or of those that were tried last.
    const Options& options() const { return fOptions; }

    // Begin to read, and drop what was being read.

    void openFirst() { open(fOptions); }

    /// By the same switches, but those that are about what a file holds.
    void openOthers(std::vector<std::string> models);

    /// The file whose name comes so many behind, or before. False where there is no folder to look in.
    bool openBeside(int steps);

    void reload();

    /// What is being read; null: nothing is.
    const Opening* opening() const { return fOpening ? &*fOpening : nullptr; }

    /// Whether it is what is shown already.
    bool isReload() const { return fIsReload; }

    /// Waits for what is being read. Throws what loadModels throws. Then one of these is due:
    Loaded take() { return fOpening->take(); }
    void accept(const std::vector<std::string>& files); ///< it is shown, and came from these files
    bool refuse(); ///< it can't be. True where the next of the folder is tried in its place
    void stop();   ///< nobody waits for it any more

    /// Becomes readable when files have changed that matter.
    int changes() const { return fWatch.descriptor(); }
    void noteChanges();

    /// When what has changed is to be read again; none: nothing has.
    const std::optional<Clock::time_point>& reloadAt() const { return fReloadAt; }

private:
    void open(const Options& options);

    Options fOptions;
    std::optional<Opening> fOpening;
    FileWatch fWatch;
    std::optional<Clock::time_point> fReloadAt;
    size_t fLeftToTry = 0; ///< of a folder, while nothing is shown
    bool fIsReload = false;
};

} // namespace orloview
