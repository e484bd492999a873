#include "window/ViewerWindow.h"

#include "base/ExitCode.h"
#include "base/Say.h"
#include "frame/DrawnScene.h"
#include "frame/PictureRenderer.h"
#include "frame/ViewAndLook.h"
#include "output/PictureFile.h"
#include "scene/Guides.h"
#include "session/GLSession.h"
#include "window/HostWindow.h"
#include "window/InteractiveView.h"
#include "window/Overlay.h"
#include "window/WindowPainter.h"

#include <algorithm>
#include <chrono>
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

void print(const std::string& line) {
    std::puts(line.c_str());
    std::fflush(stdout);
}

/// Everything that draws, made and ended in the order that contexts ask for.
class ViewerWindow {
public:
    ViewerWindow(const Options& options, const Scene& scene, const Viewpoint& start, Progress& progress);
    ~ViewerWindow();

    ViewerWindow(const ViewerWindow&) = delete;
    ViewerWindow& operator=(const ViewerWindow&) = delete;

    /// Until the user closes the window.
    void run();

private:
    void handle(XEvent& event);
    void press(XKeyEvent& event);
    void press(const XButtonEvent& event);
    void drag(const XMotionEvent& event);
    void execute(Command command);
    void screenshot();
    void note(const std::string& message);
    void paint(int factor);
    void wait();
    void animate();
    View currentView() const;
    FrameContent content() { return fDrawn.content(); }

    const Options& fOptions;
    const Scene& fScene;
    const Clock::time_point fStart = Clock::now();
    Bounds fBounds; ///< of all that is drawn of the scene
    Guides fGuides;
    InteractiveView fView;
    std::unique_ptr<GLSession> fGL;
    Display* fDisplay;
    DrawnScene fDrawn;
    std::optional<HostWindow> fWindow;
    std::optional<WindowPainter> fPainter;
    int fLineHeight;

    bool fChanged = true; ///< what is shown is not what is on the screen
    bool fQuit = false;
    int fPointerX = 0;
    int fPointerY = 0;
    FrameStatistics fStatistics;
    std::string fMessage;
    std::optional<Clock::time_point> fSmoothAt;
    std::optional<Clock::time_point> fMessageEnds;
    size_t fFrames = 0;
    double fTotalMilliseconds = 0.0;
};

ViewerWindow::ViewerWindow(const Options& options, const Scene& scene, const Viewpoint& start,
                           Progress& progress)
    : fOptions(options), fScene(scene), fBounds(drawnBounds(options, scene)),
      fGuides(makeGuides(scene.bounds(), upOf(options))),
      fView(Navigation(start, upOf(options), outlineOf(scene), radiusOf(scene.bounds())),
            lookOf(options, scene)),
      fGL(GLSession::forWindow(options.glWatch())), fDisplay(fGL->display()),
      fDrawn(scene, fGuides, options, progress.report()), fLineHeight(lineHeightOn(fDisplay)) {
    fWindow.emplace(fDisplay, titleOf(options), options.width, options.height);
    fPainter.emplace(fWindow->buffer());
    if (options.verbose && !fPainter->develops())
        say("this OpenGL has no shaders: colours in the window are too dark");
    fView.resize(fWindow->width(), fWindow->height());
    fView.statisticsShown = options.stats;
    CallCounter::install();
    progress.begin(Progress::Stage::Upload);
    fDrawn.upload(progress.report());
    progress.clear();
    if (!options.quiet)
        tellNotesAndWarnings(fDrawn);
    if (!options.dumpShaders.empty())
        fDrawn.dumpShaders(options.dumpShaders);
    note("H lists the keys");
    progress.begin(Progress::Stage::Draw);
    paint(1);
    progress.finish();
}

ViewerWindow::~ViewerWindow() {
    fWindow->buffer().makeCurrent();
    fPainter.reset();
    fWindow.reset();
    fGL->makeCurrent(); // what is uploaded goes in a context
}

void ViewerWindow::run() {
    while (!fQuit) {
        while (!fQuit && XPending(fDisplay) > 0) {
            XEvent event;
            XNextEvent(fDisplay, &event);
            handle(event);
        }
        if (fQuit)
            break;
        if (fOptions.demo) {
            animate();
        } else if (fChanged) {
            paint(1);
            fSmoothAt = Clock::now() + kRest;
        } else {
            wait();
        }
    }
    if (fOptions.stats && fFrames > 0)
        std::fprintf(stderr, "window: %zu frames, %.1f ms each, %.1f per second\n", fFrames,
                     fTotalMilliseconds / static_cast<double>(fFrames),
                     1000.0 * static_cast<double>(fFrames) / fTotalMilliseconds);
}

/// The next picture of what moves, and the rest of its time asleep.
void ViewerWindow::animate() {
    constexpr auto kPicture = std::chrono::milliseconds(16);
    const Clock::time_point now = Clock::now();
    fDrawn.animate(std::chrono::duration<double>(now - fStart).count());
    if (fMessageEnds && *fMessageEnds <= now) {
        fMessage.clear();
        fMessageEnds.reset();
    }
    paint(1);
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(now + kPicture - Clock::now()).count();
    pollfd ready{ConnectionNumber(fDisplay), POLLIN, 0};
    poll(&ready, 1, static_cast<int>(std::max<decltype(left)>(left, 0)));
}

/// Sleeps until an event comes or something is due, and does what is due.
void ViewerWindow::wait() {
    std::optional<Clock::time_point> next = fSmoothAt;
    if (fMessageEnds && (!next || *fMessageEnds < *next))
        next = fMessageEnds;
    int milliseconds = -1;
    if (next) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(*next - Clock::now()).count();
        milliseconds = static_cast<int>(std::max<decltype(left)>(left, 0));
    }
    pollfd ready{ConnectionNumber(fDisplay), POLLIN, 0};
    if (poll(&ready, 1, milliseconds) != 0)
        return;
    if (fMessageEnds && *fMessageEnds <= Clock::now()) {
        fMessage.clear();
        fMessageEnds.reset();
        fSmoothAt = Clock::now();
    }
    if (fSmoothAt && *fSmoothAt <= Clock::now()) {
        fSmoothAt.reset();
        paint(supersampling(fView.look()));
    }
}

void ViewerWindow::handle(XEvent& event) {
    if (fWindow->isClose(event)) {
        if (event.type == DestroyNotify && !fOptions.quiet)
            say("another program has destroyed the window");
        fQuit = true;
    } else if (fWindow->followResize(event)) {
        fView.resize(fWindow->width(), fWindow->height());
        fChanged = true;
    } else if (event.type == Expose) {
        fChanged = true;
    } else if (event.type == KeyPress) {
        press(event.xkey);
    } else if (event.type == ButtonPress) {
        press(event.xbutton);
    } else if (event.type == MotionNotify) {
        drag(event.xmotion);
    } else if (event.type == MappingNotify) {
        XRefreshKeyboardMapping(&event.xmapping);
    }
}

void ViewerWindow::press(XKeyEvent& event) {
    KeySym key = NoSymbol;
    char text[8];
    XLookupString(&event, text, sizeof text, &key, nullptr);
    if (const std::optional<Command> command = commandOf(key, event.state))
        execute(*command);
}

void ViewerWindow::press(const XButtonEvent& event) {
    fPointerX = event.x;
    fPointerY = event.y;
    if (event.button == Button4 || event.button == Button5) {
        fView.zoom(event.button == Button4 ? 1 : -1, event.x, event.y);
        fChanged = true;
    }
}

void ViewerWindow::drag(const XMotionEvent& event) {
    const int right = event.x - fPointerX;
    const int down = event.y - fPointerY;
    fPointerX = event.x;
    fPointerY = event.y;
    if ((event.state & Button2Mask) || ((event.state & Button1Mask) && (event.state & ShiftMask)))
        fView.move(right, down);
    else if (event.state & Button1Mask)
        fView.turn(right, down);
    else
        return;
    fChanged = true;
}

void ViewerWindow::execute(Command command) {
    switch (command) {
    case Command::Quit:
        fQuit = true;
        break;
    case Command::Screenshot:
        screenshot();
        break;
    case Command::PrintSwitches:
        print(fView.switches() + fOptions.shadingSwitches);
        note("the switches stand on standard output");
        break;
    default:
        if (command == Command::Sky && !fOptions.hasSky())
            return note("there is no sky: --sky none");
        fView.apply(command);
        fChanged = true;
    }
}

void ViewerWindow::screenshot() {
    const std::string path = screenshotPath(fOptions);
    try {
        const FrameLook& look = fView.look();
        Workers workers;
        const auto picture =
            createPicture(path, PictureFormat::Png, look.width, look.height, developmentOf(look), workers);
        picture->open();
        PictureRenderer renderer(look, fOptions.sampling, 1, workers);
        renderer.render(currentView(), content(), *picture);
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

View ViewerWindow::currentView() const {
    const FrameLook& look = fView.look();
    return viewFrom(fView.navigation().viewpoint(),
                    boundsWith(fBounds, fGuides, look.grid, look.axes, look.ground),
                    static_cast<double>(look.width) / look.height);
}

void ViewerWindow::paint(int factor) {
    fChanged = false;
    CallCounter::take();
    const Clock::time_point start = Clock::now();
    FrameContent shown = content();
    shown.answers = factor > 1 ? Answers::Ignored : Answers::AsTheyCome; // a view at rest is drawn whole
    if (!fPainter->develops())
        shown.culling = nullptr; // its questions are the start-up context's
    fPainter->paint(currentView(), shown, fView.look(), factor, [this](TextPainter& text) {
        writeOverlay(text, fView, fScene, fStatistics, fMessage, fLineHeight);
    });
    const std::chrono::duration<double, std::milli> took = Clock::now() - start;
    fStatistics = {took.count(), CallCounter::take(), std::nullopt};
    if (shown.culling && shown.culling->supported())
        fStatistics.seen = shown.culling->counts();
    ++fFrames;
    fTotalMilliseconds += took.count();
}

} // namespace

void showInWindow(const Options& options, const Scene& scene, Progress& progress) {
    progress.begin(Progress::Stage::Prepare);
    ViewerWindow(options, scene, chooseEye(options, scene), progress).run();
}

} // namespace orloview
