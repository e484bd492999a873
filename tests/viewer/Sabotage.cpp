// Preloaded into a program, does it the harm that SABOTAGE names.

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>

#include <X11/Xlib.h>

namespace {

bool isAsked(std::string_view harm) {
    const char* asked = std::getenv("SABOTAGE");
    return asked && asked == harm;
}

template <typename Function>
Function next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {

/// Finds no library whose name begins with libGL.
__attribute__((visibility("default"))) void* dlopen(const char* name, int mode) noexcept {
    if (name && std::strncmp(name, "libGL", 5) == 0 && isAsked("no GL"))
        return nullptr;
    static const auto open = next<void* (*)(const char*, int)>("dlopen");
    return open(name, mode);
}

/// Crashes while OpenGL starts, as a driver does whose server dies then.
__attribute__((visibility("default"))) Colormap XCreateColormap(Display* display, Window window,
                                                                Visual* visual, int allocate) {
    if (isAsked("crash"))
        std::raise(SIGSEGV);
    return next<decltype(&XCreateColormap)>("XCreateColormap")(display, window, visual, allocate);
}

/// Is asked to end right behind the making of a name.
__attribute__((visibility("default"))) int linkat(int fromFolder, const char* from, int toFolder,
                                                  const char* to, int flags) noexcept {
    const int result = next<decltype(&linkat)>("linkat")(fromFolder, from, toFolder, to, flags);
    if (isAsked("signal"))
        std::raise(SIGTERM);
    return result;
}

/// Loses the server at the very end.
__attribute__((visibility("default"))) int XCloseDisplay(Display* display) {
    if (isAsked("lost server"))
        shutdown(ConnectionNumber(display), SHUT_RDWR);
    XSync(display, False);
    return next<decltype(&XCloseDisplay)>("XCloseDisplay")(display);
}

} // extern "C"
