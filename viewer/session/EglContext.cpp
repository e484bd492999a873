#include "session/EglContext.h"

#define EGL_NO_PLATFORM_SPECIFIC_TYPES
#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <array>
#include <cstdlib>
#include <cstring>

namespace orloview {

namespace {

template <typename Function>
Function find(const char* name) {
    return reinterpret_cast<Function>(eglGetProcAddress(name));
}

bool lists(const char* extensions, const char* name) {
    return extensions && std::strstr(extensions, name);
}

/// The display of a platform that needs no window system; null where EGL doesn't know the platform.
EGLDisplay displayOf(EGLenum platform, void* native) {
    static const auto get = find<PFNEGLGETPLATFORMDISPLAYEXTPROC>("eglGetPlatformDisplayEXT");
    return get ? get(platform, native, nullptr) : EGL_NO_DISPLAY;
}

/// The first device that isn't a processor in disguise; null where there is none.
EGLDeviceEXT firstGpu() {
    const auto query = find<PFNEGLQUERYDEVICESEXTPROC>("eglQueryDevicesEXT");
    const auto extensionsOf = find<PFNEGLQUERYDEVICESTRINGEXTPROC>("eglQueryDeviceStringEXT");
    std::array<EGLDeviceEXT, 16> devices{};
    EGLint count = 0;
    if (!query || !extensionsOf || !query(static_cast<EGLint>(devices.size()), devices.data(), &count))
        return nullptr;
    for (EGLint i = 0; i < count; ++i) {
        if (!lists(extensionsOf(devices[static_cast<size_t>(i)], EGL_EXTENSIONS), "EGL_MESA_device_software"))
            return devices[static_cast<size_t>(i)];
    }
    return nullptr;
}

void leave(EGLDisplay display) {
    eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
}

} // namespace

void EglContext::setEnvironment() {
    // Mesa tells on standard error of each device that it tries in vain.
    setenv("EGL_LOG_LEVEL", "fatal", 0);
}

std::unique_ptr<EglContext> EglContext::make() {
    setEnvironment();
    const char* client = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    std::unique_ptr<EglContext> made;
    if (lists(client, "EGL_EXT_platform_device")) {
        if (EGLDeviceEXT gpu = firstGpu())
            made = makeOn(displayOf(EGL_PLATFORM_DEVICE_EXT, gpu), "a GPU's device");
    }
    if (!made && lists(client, "EGL_MESA_platform_surfaceless"))
        made = makeOn(displayOf(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY),
                      "Mesa's surfaceless platform");
    return made;
}

std::unique_ptr<EglContext> EglContext::makeOn(void* display, const char* place) {
    if (display == EGL_NO_DISPLAY || !eglInitialize(display, nullptr, nullptr))
        return nullptr;
    constexpr std::array<EGLint, 5> kWanted = {EGL_SURFACE_TYPE, 0, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT,
                                               EGL_NONE};
    EGLConfig configuration = nullptr;
    EGLint count = 0;
    // Without attributes it is a compatibility context, which knows the functions of OpenGL 1.1.
    if (eglBindAPI(EGL_OPENGL_API) && eglChooseConfig(display, kWanted.data(), &configuration, 1, &count) &&
        count > 0) {
        if (EGLContext context = eglCreateContext(display, configuration, EGL_NO_CONTEXT, nullptr)) {
            std::unique_ptr<EglContext> made(new EglContext(display, context, place));
            if (eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context))
                return made;
            return nullptr;
        }
    }
    eglTerminate(display);
    return nullptr;
}

EglContext::~EglContext() {
    leave(fDisplay);
    eglDestroyContext(fDisplay, fContext);
    eglTerminate(fDisplay);
}

GLHostContext EglContext::forStartup(std::unique_ptr<EglContext> context) {
    return {reinterpret_cast<GLXContext>(context.release()), makeCurrent, destroy};
}

Bool EglContext::makeCurrent(Display*, GLXDrawable, GLXContext context) {
    eglBindAPI(EGL_OPENGL_API); // which each thread has to say
    if (const auto* self = reinterpret_cast<EglContext*>(context))
        return eglMakeCurrent(self->fDisplay, EGL_NO_SURFACE, EGL_NO_SURFACE, self->fContext) ? True : False;
    if (EGLDisplay current = eglGetCurrentDisplay())
        leave(current);
    return True;
}

void EglContext::destroy(Display*, GLXContext context) {
    delete reinterpret_cast<EglContext*>(context);
}

} // namespace orloview
