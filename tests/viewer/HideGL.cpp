// Preloaded into a program, hides OpenGL from it: dlopen finds no library whose name begins with libGL.

#include <cstring>
#include <dlfcn.h>

extern "C" __attribute__((visibility("default"))) void* dlopen(const char* name, int mode) noexcept {
    if (name && std::strncmp(name, "libGL", 5) == 0)
        return nullptr;
    using Open = void* (*)(const char*, int);
    static const auto next = reinterpret_cast<Open>(dlsym(RTLD_NEXT, "dlopen"));
    return next(name, mode);
}
