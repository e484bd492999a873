#include "output/Progress.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <sys/ioctl.h>

namespace orloview {

namespace {

constexpr double kSecondsBeforeBar = 0.3;
constexpr double kSecondsBetweenBars = 0.05;
constexpr double kSecondsBetweenLines = 1.0;
constexpr int kWidest = 80;
constexpr std::array<const char*, 5> kStageNames = {"read", "prepare", "upload", "draw", "write"};

const char* nameOf(Progress::Stage stage) {
    return kStageNames[static_cast<size_t>(stage)];
}

double steadySeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

int columnsOf(std::FILE* terminal) {
    winsize size{};
    return ioctl(fileno(terminal), TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kWidest;
}

/// "upload  [########............]  40%"; without the bar where the line has no room for it.
std::string barLine(const char* stage, double fraction, int width) {
    constexpr int kLeastBar = 4;
    constexpr int kTextWidth = 15; // of what stands beside the bar
    std::string percent = std::to_string(static_cast<int>(fraction * 100.0)) + "%";
    const int length = width - kTextWidth;
    if (length < kLeastBar)
        return (std::string(stage) + " " + percent).substr(0, static_cast<size_t>(std::max(width, 0)));
    std::string line = stage;
    line.resize(8, ' ');
    std::string bar(static_cast<size_t>(length), '.');
    std::fill_n(bar.begin(), static_cast<int>(fraction * length), '#');
    percent.insert(0, 5 - percent.size(), ' ');
    return line + "[" + bar + "]" + percent;
}

} // namespace

Progress::Progress(Mode mode, std::FILE* to)
    : Progress(mode, to, steadySeconds, [to] { return columnsOf(to); }) {}

Progress::Progress(Mode mode, std::FILE* to, std::function<double()> seconds, std::function<int()> columns)
    : fMode(mode), fTo(to), fSeconds(std::move(seconds)), fColumns(std::move(columns)), fStart(fSeconds()),
      fLastShown(fStart) {}

Progress::~Progress() {
    clear();
}

void Progress::begin(Stage stage) {
    endStage();
    fStage = stage;
    fInStage = true;
    fStageStart = fSeconds();
    if (fMode == Mode::Plain)
        fLastShown = fStageStart;
    update(0.0);
}

void Progress::update(double fraction) {
    // The comparison, unlike std::clamp, turns a NaN into 0.
    fFraction = fraction > 0.0 ? std::min(fraction, 1.0) : 0.0;
    show();
}

ProgressReport Progress::report() {
    return [this](double fraction) { update(fraction); };
}

void Progress::show() {
    if (fMode == Mode::Silent || !fInStage)
        return;
    const double now = fSeconds();
    if (now - fLastShown < (fMode == Mode::Bar ? kSecondsBetweenBars : kSecondsBetweenLines))
        return;
    if (fMode == Mode::Plain)
        std::fprintf(fTo, "orloview: %s, %d%%\n", nameOf(fStage), static_cast<int>(fFraction * 100.0));
    else if (now - fStart >= kSecondsBeforeBar)
        showBar();
    else
        return;
    fLastShown = now;
}

void Progress::showBar() {
    // The last column stays free: a character there makes some terminals go on to the next line.
    const std::string line = barLine(nameOf(fStage), fFraction, std::min(fColumns(), kWidest) - 1);
    const auto width = static_cast<int>(line.size());
    const std::string rest(static_cast<size_t>(std::max(fWidthOnScreen - width, 0)), ' ');
    std::fprintf(fTo, "\r%s%s", line.c_str(), rest.c_str());
    std::fflush(fTo);
    fWidthOnScreen = width;
}

void Progress::clear() {
    if (fWidthOnScreen == 0)
        return;
    std::fprintf(fTo, "\r%*s\r", fWidthOnScreen, "");
    std::fflush(fTo);
    fWidthOnScreen = 0;
}

void Progress::endStage() {
    if (fInStage && fMode == Mode::Plain)
        std::fprintf(fTo, "orloview: %s, done in %.2f s\n", nameOf(fStage), fSeconds() - fStageStart);
    fInStage = false;
}

void Progress::finish() {
    endStage();
    clear();
}

} // namespace orloview
