#include "window/ViewerWindow.h"

#include "base/ExitCode.h"
#include "base/Say.h"
#include "draw/Fountain.h"
#include "frame/PictureRenderer.h"
#include "frame/ViewAndLook.h"
#include "load/ModelFeed.h"
#include "output/PictureFile.h"
#include "session/GLSession.h"
#include "window/DropTarget.h"
#include "window/HostWindow.h"
#include "window/Mouse.h"
#include "window/Overlay.h"
#include "window/ShownScene.h"
#include "window/WindowPainter.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <poll.h>

#include <X11/Xutil.h>

namespace orloview {

namespace {

using Clock = std::chrono::steady_clock;

/// A view that has rested for so long is drawn once more, smoothly.
constexpr auto kRest = std::chrono::milliseconds(120);

constexpr auto kMessageTime = std::chrono::seconds(4);

/// The height of a line of text, pixels: larger on a display whose user asks for larger letters.
int lineHeightOn(Display* display) {
    constexpr int kUsual = 18;
    constexpr double kUsualDpi = 96.0;
    const char* dpi = XGetDefault(display, "Xft", "dpi");
    const double scale = dpi ? std::strtod(dpi, nullptr) / kUsualDpi : 1.0;
    return static_cast<int>(kUsual * std::clamp(scale, 0.5, 8.0));
}

std::string titleOf(const Options& options) {
    std::string title = std::filesystem::path(options.subject()).filename();
    if (options.models.size() > 1)
        title += " and " + std::to_string(options.models.size() - 1) + " more";
    return title + " - orloview";
}

/// A name for a screenshot that no file has yet.
std::string screenshotPath(const Options& options) {
    const std::string stem = std::filesystem::path(options.subject()).stem();
    for (int n = 1;; ++n) {
        std::string path = stem + "_" + std::to_string(n) + ".png";
        std::error_code error;
        if (!std::filesystem::exists(path, error))
            return path;
    }
}

/// What is read, for people.
std::string nameOf(const Options& options) {
    return std::filesystem::path(options.subject()).filename();
}

KeySym symbolOf(XKeyEvent& event) {
    KeySym key = NoSymbol;
    char text[8];
    XLookupString(&event, text, sizeof text, &key, nullptr);
    return key;
}

/// For a search through events that wait.
Bool isWishToStop(Display*, XEvent* event, XPointer window) {
    const bool isStop =
        event->type == KeyPress && commandOf(symbolOf(event->xkey), event->xkey.state) == Command::Stop;
    return isStop || reinterpret_cast<HostWindow*>(window)->isClose(*event) ? True : False;
}

void print(const std::string& line) {
    std::puts(line.c_str());
    std::fflush(stdout);
}

/// As often the screen shows how far reading is.
constexpr auto kProgressStep = std::chrono::milliseconds(100);

/// Leaves the upload of a scene that the user doesn't want any more.
struct Stopped {};

/// The window: what is shown in it, what is being read, and what the user does.
class ViewerWindow {
public:
    ViewerWindow(const Options& options, Progress& progress);
    ~ViewerWindow();

    ViewerWindow(const ViewerWindow&) = delete;
    ViewerWindow& operator=(const ViewerWindow&) = delete;

    /// Until the user closes the window.
    void run();

private:
    void openWindow();
    void waitForModel();

    // What is shown.
    void finishReading();
    void show(const Options& options, Scene&& scene);
    void onUpload(const std::string& name, double fraction);

    // What the user does.
    void handleEvents();
    void handle(XEvent& event);
    void press(XKeyEvent& event);
    void follow(const Mouse::Outcome& outcome);
    void execute(Command command);
    void executeOnScene(Command command);
    void moveOn(Command command);
    Mouse::Room room() const { return {fWindow->width(), fWindow->height(), fLineHeight}; }
    void screenshot();
    void note(const std::string& message);

    // What the screen shows.
    void paint(int factor);
    void paintScene(int factor);
    void paintNothing();
    void wait();
    bool sleepUntil(std::optional<Clock::time_point> end);
    void doWhatIsDue();
    void play();

    ModelFeed fModels;
    Progress& fProgress;
    Clock::time_point fPlayedAt = Clock::now(); ///< when the time last went on by itself
    std::unique_ptr<GLSession> fGL;
    Display* fDisplay = nullptr;
    std::unique_ptr<ShownScene> fShown; ///< null until the first is read
    std::optional<HostWindow> fWindow;
    std::optional<WindowPainter> fPainter;
    std::optional<DropTarget> fDrops;
    int fLineHeight = 0;

    bool fChanged = true; ///< what is shown is not what is on the screen
    bool fQuit = false;
    Mouse fMouse;
    FrameStatistics fStatistics;
    std::string fMessage;
    ShownProgress fBusy;
    std::optional<Clock::time_point> fSmoothAt;
    std::optional<Clock::time_point> fMessageEnds;
    Clock::time_point fLastPainted;
    size_t fFrames = 0;
    double fTotalMilliseconds = 0.0;
};

ViewerWindow::ViewerWindow(const Options& options, Progress& progress)
    : fModels(options), fProgress(progress) {
    if (!options.demo) {
        progress.begin(Progress::Stage::Read);
        fModels.openFirst();
    }
    openWindow();
    fPainter.emplace(fWindow->buffer());
    fDrops.emplace(fDisplay, fWindow->window());
    if (options.verbose && !fPainter->develops())
        say("this OpenGL has no shaders: colours in the window are too dark");
    CallCounter::install();
    if (options.demo)
        show(options, Fountain().scene());
}

/// What is wrong with the model is told before what is wrong with OpenGL.
void ViewerWindow::openWindow() {
    GLSession::startAhead(GLRoad::X11);
    if (!GLSession::hasWorkedAhead())
        waitForModel();
    fGL = GLSession::forWindow(fModels.options().glWatch());
    fDisplay = fGL->display();
    fLineHeight = lineHeightOn(fDisplay);
    try {
        const Options& options = fModels.options();
        fWindow.emplace(fDisplay, titleOf(options), options.width, options.height);
    } catch (const Failure&) {
        waitForModel();
        throw;
    }
}

/// Throws where it can't be read.
void ViewerWindow::waitForModel() {
    if (fModels.opening())
        fModels.take();
    fModels.stop();
}

ViewerWindow::~ViewerWindow() {
    fWindow->buffer().makeCurrent();
    fPainter.reset();
    fWindow.reset();
    fGL->makeCurrent(); // what is uploaded goes in a context
}

// What is shown.

void ViewerWindow::finishReading() {
    const std::vector<std::string>& lines = fModels.opening()->lines();
    try {
        Loaded loaded = fModels.take();
        fProgress.clear();
        for (const std::string& line : lines)
            say(line);
        show(fModels.opening()->options(), std::move(loaded.scene));
        if (!lines.empty())
            note(lines.back());
        fModels.accept(fShown->files());
        fWindow->setTitle(titleOf(fModels.options()));
    } catch (const Failure& failure) {
        fProgress.clear();
        if (!fModels.refuse() && !fShown)
            throw;
        say(failure.what());
        note(failure.what());
    } catch (const Stopped&) {
        fModels.stop();
        note("stopped");
        fQuit |= !fShown;
    }
    fBusy = {};
    fChanged = true;
}

void ViewerWindow::show(const Options& options, Scene&& scene) {
    const bool isFirst = !fShown;
    if (isFirst)
        fProgress.begin(Progress::Stage::Upload);
    fGL->makeCurrent();
    const auto report = [this, name = nameOf(options)](double fraction) { onUpload(name, fraction); };
    auto shown = std::make_unique<ShownScene>(options, std::move(scene), report);
    shown->drawn().upload(report);
    fProgress.clear();
    if (!options.quiet)
        tellNotesAndWarnings(shown->drawn());
    if (!options.dumpShaders.empty())
        shown->drawn().dumpShaders(options.dumpShaders);
    if (fShown)
        shown->view().takeSwitches(fShown->view());
    if (fShown && fModels.isReload()) {
        shown->view().look(fShown->view().navigation().viewpoint());
        shown->view().setClip(fShown->view().look().clip);
    }
    shown->view().resize(fWindow->width(), fWindow->height());
    fShown = std::move(shown);
    fBusy = {};
    fPlayedAt = Clock::now();
    if (!isFirst)
        return;
    note("H lists the keys");
    fProgress.begin(Progress::Stage::Draw);
    paint(1);
    fProgress.finish();
}

/// Shows how far it is, and leaves where the user wants that; other events wait.
void ViewerWindow::onUpload(const std::string& name, double fraction) {
    fProgress.update(fraction);
    if (Clock::now() - fLastPainted < kProgressStep)
        return;
    XEvent event;
    if (XCheckIfEvent(fDisplay, &event, isWishToStop, reinterpret_cast<XPointer>(&*fWindow))) {
        fQuit = fWindow->isClose(event);
        throw Stopped();
    }
    fBusy = {"preparing " + name, fraction};
    paint(1);
    fGL->makeCurrent();
}

// What the user does.

void ViewerWindow::handleEvents() {
    while (!fQuit && XPending(fDisplay) > 0) {
        XEvent event;
        XNextEvent(fDisplay, &event);
        handle(event);
    }
}

void ViewerWindow::handle(XEvent& event) {
    if (fDrops->handle(event)) {
        if (std::vector<std::string> files = fDrops->take(); !files.empty())
            fModels.openOthers(std::move(files));
        fChanged = true;
    } else if (fWindow->isClose(event)) {
        if (event.type == DestroyNotify && !fModels.options().quiet)
            say("another program has destroyed the window");
        fQuit = true;
    } else if (fWindow->followResize(event)) {
        if (fShown)
            fShown->view().resize(fWindow->width(), fWindow->height());
        fChanged = true;
    } else if (event.type == Expose) {
        fChanged = true;
    } else if (event.type == KeyPress) {
        press(event.xkey);
    } else if (event.type == ButtonPress) {
        follow(fMouse.press(event.xbutton, fShown.get(), room()));
    } else if (event.type == ButtonRelease) {
        follow(fMouse.release(event.xbutton, fShown.get()));
    } else if (event.type == MotionNotify) {
        follow(fMouse.drag(event.xmotion, fShown.get(), room()));
    } else if (event.type == MappingNotify) {
        XRefreshKeyboardMapping(&event.xmapping);
    }
}

void ViewerWindow::press(XKeyEvent& event) {
    if (const std::optional<Command> command = commandOf(symbolOf(event), event.state))
        execute(*command);
}

void ViewerWindow::follow(const Mouse::Outcome& outcome) {
    fChanged = fChanged || outcome.hasChanged;
    if (!outcome.message.empty())
        note(outcome.message);
}

void ViewerWindow::execute(Command command) {
    switch (command) {
    case Command::Quit:
        fQuit = true;
        break;
    case Command::Stop:
        fQuit = !fModels.opening() || !fShown;
        if (fModels.opening())
            note("stopped");
        fModels.stop();
        fBusy = {};
        break;
    case Command::NextFile:
    case Command::PreviousFile:
        if (!fModels.openBeside(command == Command::NextFile ? 1 : -1))
            note("there is no folder to look for others in");
        fChanged = true;
        break;
    case Command::Reload:
        fModels.reload();
        fChanged = true;
        break;
    default:
        if (fShown)
            executeOnScene(command);
    }
}

void ViewerWindow::executeOnScene(Command command) {
    switch (command) {
    case Command::Screenshot:
        screenshot();
        break;
    case Command::PrintSwitches:
        print(fShown->switches());
        note("the switches stand on standard output");
        break;
    case Command::PlayOrStop:
    case Command::StepBack:
    case Command::StepOn:
    case Command::Slower:
    case Command::Faster:
    case Command::NextAnimation:
        moveOn(command);
        break;
    case Command::Clip:
        if (!fModels.options().canClip())
            return note("what Cg and shaders of your own draw can't be cut");
        fShown->clipNext();
        fChanged = true;
        break;
    case Command::NextCamera:
        if (std::string which; fShown->lookThroughNextCamera(which))
            return note(which);
        executeOnScene(Command::Culling);
        break;
    default:
        if (command == Command::Sky && !fModels.options().hasSky())
            return note("there is no sky: --sky none");
        if (command == Command::Exposure && !isToneMapped(fShown->view().look()))
            return note("nothing is lit by shaders here: --exposure says how bright it is");
        if (command == Command::Measure && !fShown->view().shown.measuring)
            note("click on two places");
        fShown->view().apply(command);
        fChanged = true;
    }
}

void ViewerWindow::moveOn(Command command) {
    if (!fShown->moves())
        return note("nothing in it moves");
    fPlayedAt = Clock::now();
    fChanged = true;
    Playback& playback = fShown->playback();
    if (!playback.apply(command) && !fShown->playNextAnimation())
        note("there is no other animation");
    if (command == Command::Slower || command == Command::Faster)
        note("speed " + std::to_string(playback.speed()).substr(0, 6));
}

void ViewerWindow::screenshot() {
    const std::string path = screenshotPath(fShown->options());
    try {
        const FrameLook& look = fShown->view().look();
        Workers workers;
        const auto picture =
            createPicture(path, PictureFormat::Png, look.width, look.height, developmentOf(look), workers);
        picture->open();
        PictureRenderer renderer(look, fModels.options().sampling, 1, workers);
        renderer.render(fShown->currentView(), fShown->drawn().content(), *picture);
        renderer.finish();
        picture->finish();
        print(path);
        note("wrote " + path);
    } catch (const Failure& failure) {
        say(failure.what());
        note(failure.what());
    }
}

void ViewerWindow::note(const std::string& message) {
    fMessage = message;
    fMessageEnds = Clock::now() + kMessageTime;
    fChanged = true;
}

// What the screen shows.

void ViewerWindow::run() {
    while (!fQuit) {
        handleEvents();
        if (fQuit)
            break;
        if (fModels.opening() && fModels.opening()->isDone()) {
            finishReading();
        } else if (fShown && fShown->playback().plays()) {
            play();
        } else if (fChanged) {
            paint(1);
            if (!fModels.opening())
                fSmoothAt = Clock::now() + kRest;
        } else {
            wait();
        }
    }
    if (fModels.options().stats && fFrames > 0)
        std::fprintf(stderr, "window: %zu frames, %.1f ms each, %.1f per second\n", fFrames,
                     fTotalMilliseconds / static_cast<double>(fFrames),
                     1000.0 * static_cast<double>(fFrames) / fTotalMilliseconds);
}

/// The next picture of what moves, and the rest of its time asleep.
void ViewerWindow::play() {
    constexpr auto kPicture = std::chrono::milliseconds(16);
    const Clock::time_point now = Clock::now();
    fShown->playback().advance(std::chrono::duration<double>(now - fPlayedAt).count());
    fPlayedAt = now;
    fSmoothAt.reset();
    doWhatIsDue();
    paint(1);
    sleepUntil(now + kPicture);
}

/// Sleeps until an event comes or something is due, and does what is due.
void ViewerWindow::wait() {
    std::optional<Clock::time_point> next = fMessageEnds;
    const auto wakeAt = [&next](const std::optional<Clock::time_point>& due) {
        if (due && (!next || *due < *next))
            next = due;
    };
    if (fModels.opening()) {
        wakeAt(fLastPainted + kProgressStep);
    } else {
        wakeAt(fSmoothAt);
        wakeAt(fModels.reloadAt());
    }
    if (!sleepUntil(next))
        doWhatIsDue();
}

/// Without a time for ever. True where something has come before: an event, a change of a file, what is read.
bool ViewerWindow::sleepUntil(std::optional<Clock::time_point> end) {
    int milliseconds = -1;
    if (end) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(*end - Clock::now()).count();
        milliseconds = static_cast<int>(std::max<decltype(left)>(left, 0));
    }
    std::array<pollfd, 3> ready{{{ConnectionNumber(fDisplay), POLLIN, 0},
                                 {fModels.changes(), POLLIN, 0},
                                 {fModels.opening() ? fModels.opening()->descriptor() : -1, POLLIN, 0}}};
    const bool hasCome = poll(ready.data(), ready.size(), milliseconds) != 0;
    if (hasCome && ready[1].revents != 0)
        fModels.noteChanges();
    return hasCome;
}

void ViewerWindow::doWhatIsDue() {
    const Clock::time_point now = Clock::now();
    const auto isDue = [now](std::optional<Clock::time_point>& at) {
        const bool is = at && *at <= now;
        if (is)
            at.reset();
        return is;
    };
    if (isDue(fMessageEnds)) {
        fMessage.clear();
        fSmoothAt = now;
    }
    if (const Opening* opening = fModels.opening()) {
        const double fraction = opening->fraction();
        if (!fShown)
            fProgress.update(fraction);
        fChanged |= fBusy.what.empty() || fBusy.fraction != fraction;
        fBusy = {"reading " + nameOf(opening->options()), fraction};
    } else if (fModels.reloadAt() && *fModels.reloadAt() <= now) {
        fModels.reload();
        fChanged = true;
    } else if (isDue(fSmoothAt) && !fShown->playback().plays()) {
        paint(supersampling(fShown->view().look()));
    }
}

void ViewerWindow::paint(int factor) {
    fChanged = false;
    CallCounter::take();
    const Clock::time_point start = Clock::now();
    if (fShown)
        paintScene(factor);
    else
        paintNothing();
    fLastPainted = Clock::now();
    const std::chrono::duration<double, std::milli> took = fLastPainted - start;
    fStatistics = {took.count(), CallCounter::take(), std::nullopt};
    if (!fShown)
        return;
    const Culling* culling = fShown->drawn().content().culling;
    if (culling && culling->supported() && fPainter->develops())
        fStatistics.seen = culling->counts();
    ++fFrames;
    fTotalMilliseconds += took.count();
}

void ViewerWindow::paintScene(int factor) {
    fShown->followTime(*fGL);
    FrameContent shown = fShown->drawn().content();
    shown.answers = factor > 1 ? Answers::Ignored : Answers::AsTheyCome; // a view at rest is drawn whole
    if (!fPainter->develops())
        shown.culling = nullptr; // its questions are the start-up context's
    const InteractiveView& view = fShown->view();
    const Overlay overlay = fShown->overlay(fStatistics, fMessage, fBusy);
    fPainter->paint(fShown->currentView(), shown, view.look(), factor,
                    [&](TextPainter& text) { writeOverlay(text, overlay, fLineHeight); });
}

void ViewerWindow::paintNothing() {
    FrameLook look = lookOf(fModels.options(), Scene());
    look.width = fWindow->width();
    look.height = fWindow->height();
    fPainter->paintBare(look, [&](TextPainter& text) {
        text.setLineHeight(fLineHeight);
        writeProgress(text, fBusy, look.width, look.height);
    });
}

} // namespace

void showInWindow(const Options& options, Progress& progress) {
    ViewerWindow(options, progress).run();
}

} // namespace orloview
