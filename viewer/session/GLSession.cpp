#include "session/GLSession.h"

#include "base/ExitCode.h"
#include "base/Say.h"
#include "session/EglContext.h"
#include "session/StartAhead.h"
#include "session/StartGuard.h"

#include <utility>

#include <geometry/GLRouting.h>
#include <gl/GLFunctionTable.h>

namespace orloview {

namespace {

/// The start-up context, referenced, where it is of use.
GLStartupContext* keptIfValid(GLStartupContext* startup) {
    startup->ref();
    if (startup->valid)
        return startup;
    startup->unref();
    return nullptr;
}

std::unique_ptr<StartAhead>& ahead() {
    static std::unique_ptr<StartAhead> start;
    return start;
}

} // namespace

std::unique_ptr<GLSession> GLSession::forWindow(const GLWatchRequest& watch) {
    std::unique_ptr<GLSession> session = takeAhead();
    if (!session) {
        std::unique_ptr<DisplaySession> display = DisplaySession::named();
        if (!display)
            throw Failure(kExitNoGL, DisplaySession::whyNotNamed() +
                                         " for a window; set DISPLAY, or give -o picture.png for a picture");
        session = onDisplay(std::move(display));
    }
    if (!session)
        throw Failure(kExitNoGL, "the X display offers no OpenGL (GLX) context; install the package libgl1, "
                                 "use a display with GLX, or give -o picture.png for a picture");
    session->begin(watch);
    return session;
}

std::unique_ptr<GLSession> GLSession::forPictures(GLRoad road, const GLWatchRequest& watch) {
    std::unique_ptr<GLSession> session = takeAhead();
    if (!session)
        session = onAnyRoad(road);
    session->begin(watch);
    return session;
}

std::unique_ptr<GLSession> GLSession::onAnyRoad(GLRoad road) {
    std::unique_ptr<GLSession> session;
    std::string reason = DisplaySession::whyNotNamed();
    if (road != GLRoad::Egl) {
        if (std::unique_ptr<DisplaySession> display = DisplaySession::named()) {
            session = onDisplay(std::move(display));
            reason = "the X display offers no OpenGL (GLX) context";
        }
    }
    if (!session && road != GLRoad::X11)
        session = onEgl();
    if (!session && road == GLRoad::Egl)
        throw Failure(kExitNoGL, "EGL gives no OpenGL context; install the packages libgl1 and "
                                 "libegl-mesa0, or leave --display egl out");
    if (!session) {
        std::unique_ptr<DisplaySession> server = DisplaySession::onPrivateServer();
        if (!server)
            throw Failure(kExitNoGL,
                          reason + (road == GLRoad::Auto ? ", no OpenGL by EGL" : "") +
                              ", and no Xvfb to start one; set DISPLAY, or install the packages libgl1 and " +
                              (road == GLRoad::Auto ? "libegl-mesa0" : "xvfb"));
        session = onDisplay(std::move(server));
    }
    if (!session)
        throw Failure(kExitNoGL,
                      "there is no OpenGL (libGL.so.1); install the packages libgl1 and libgl1-mesa-dri");
    return session;
}

void GLSession::startAhead(GLRoad road) {
    EglContext::setEnvironment();
    ahead() = std::make_unique<StartAhead>([road] {
        std::unique_ptr<DisplaySession> display = road == GLRoad::Egl ? nullptr : DisplaySession::named();
        std::unique_ptr<GLSession> session = display ? onDisplay(std::move(display)) : nullptr;
        if (!session && road != GLRoad::X11)
            session = onEgl();
        if (session) // the context goes to another thread
            GLFunctionTable::fpGlobalFunctionTable->glXMakeCurrent(session->display(), None, nullptr);
        return session;
    });
}

bool GLSession::hasWorkedAhead() {
    return ahead() && ahead()->hasWorked();
}

bool GLSession::isStartingAhead() {
    return ahead() != nullptr;
}

std::unique_ptr<GLSession> GLSession::takeAhead() {
    std::unique_ptr<GLSession> session = ahead() ? ahead()->take() : nullptr;
    ahead().reset();
    if (session)
        session->makeCurrent();
    return session;
}

std::unique_ptr<GLSession> GLSession::onDisplay(std::unique_ptr<DisplaySession> display) {
    const StartGuard guard;
    Display* const x = display->display();
    GLStartupContext* startup =
        keptIfValid(new GLStartupContext(WindowWrapper(nullptr, DefaultRootWindow(x), x), nullptr));
    if (!startup)
        return nullptr;
    std::string road = "GLX on the X display " + std::string(DisplayString(x)) +
                       (display->isPrivate() ? ", a private Xvfb" : "");
    return std::unique_ptr<GLSession>(new GLSession(std::move(display), startup, std::move(road)));
}

std::unique_ptr<GLSession> GLSession::onEgl() {
    const StartGuard guard;
    std::unique_ptr<EglContext> context = EglContext::make();
    if (!context)
        return nullptr;
    std::string road = std::string("EGL on ") + context->place();
    const GLHostContext host = EglContext::forStartup(std::move(context));
    GLStartupContext* startup = keptIfValid(new GLStartupContext(host));
    if (!startup) {
        host.destroyContext(nullptr, host.context);
        return nullptr;
    }
    return std::unique_ptr<GLSession>(new GLSession(nullptr, startup, std::move(road)));
}

GLSession::GLSession(std::unique_ptr<DisplaySession> display, GLStartupContext* startup, std::string road)
    : fDisplay(std::move(display)), fStartup(startup), fRoad(std::move(road)) {
    GLStartupContext::fpGlobalGLStartupContext = fStartup;
    makeCurrent();
}

void GLSession::begin(const GLWatchRequest& watch) {
    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    vetoCapabilities();
    gl->ensureLiveMultitexture();
    const bool hasBufferObjects = gl->usable(kCapVertexBufferObject);
    GLRouting::fsUseObjectsForData = hasBufferObjects;
    GLRouting::fsUseObjectsForIndexing = hasBufferObjects;
    if (watch.verbose)
        tellDriver();
    fWatch.emplace(watch);
}

void GLSession::tellDriver() const {
    const auto text = [](GLenum name) -> std::string {
        const auto* string = GLFunctionTable::fpGlobalFunctionTable->glGetString(name);
        return string ? reinterpret_cast<const char*>(string) : "unknown";
    };
    say("OpenGL " + text(GL_VERSION) + " by " + text(GL_VENDOR) + ": " + text(GL_RENDERER) + ", through " +
        fRoad);
}

GLSession::~GLSession() {
    fWatch.reset();
    fStartup->unref();
}

void GLSession::makeCurrent() {
    fStartup->makeCurrent();
}

} // namespace orloview
