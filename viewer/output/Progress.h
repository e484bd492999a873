#pragma once

#include "base/ProgressReport.h"

#include <cstdint>
#include <cstdio>
#include <functional>

namespace orloview {

/// Tells on a stream how far the way from a file to a picture has come.
///
///     Progress progress(Progress::Mode::Bar, stderr);
///     progress.begin(Stage::Read);
///     ... progress.update(0.5); ...
///     progress.clear();   // before anything else is written to that stream
///     progress.finish();
///
/// A bar stands on one line, at most 79 columns wide and no wider than the terminal; it appears after 0.3 s,
/// changes at most 20 times a second and takes itself away at the end. Plain lines tell the percentage once a
/// second and the time that each stage took.
class Progress {
public:
    enum class Mode : std::uint8_t { Bar, Plain, Silent };
    enum class Stage : std::uint8_t { Read, Prepare, Upload, Draw, Write };

    /// With the time that passes and the width of the terminal on `to`.
    Progress(Mode mode, std::FILE* to);

    /// With another clock, in seconds, and another width, in columns.
    Progress(Mode mode, std::FILE* to, std::function<double()> seconds, std::function<int()> columns);

    /// Takes the bar away, and says nothing of a stage that is not done.
    ~Progress();

    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Ends the stage before it.
    void begin(Stage stage);

    /// What part of the stage is done, 0 to 1.
    void update(double fraction);

    /// An update by call, for work that need not know of this class. Good as long as this object.
    ProgressReport report();

    /// Takes the bar off the screen until the next update.
    void clear();

    /// Ends the last stage and takes the bar away.
    void finish();

private:
    void show();
    void showBar();
    void endStage();

    Mode fMode;
    std::FILE* fTo;
    std::function<double()> fSeconds;
    std::function<int()> fColumns;
    double fStart;
    double fLastShown;
    double fStageStart = 0.0;
    double fFraction = 0.0;
    Stage fStage = Stage::Read;
    bool fInStage = false;
    int fWidthOnScreen = 0; ///< columns that the bar takes at the moment
};

} // namespace orloview
