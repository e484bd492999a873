#include "FakeLoader.h"

#include <dlfcn.h>

namespace {

struct Loader {
    Calls calls;
    std::set<std::string> missingLibraries;
    std::set<std::string> missingSymbols;
};

Loader& loader() {
    static Loader theLoader;
    return theLoader;
}

/// The C library's own function under our name.
template <typename Function>
Function systemFunction(const char* name) {
    return reinterpret_cast<Function>(dlvsym(RTLD_NEXT, name, "GLIBC_2.34"));
}

} // namespace

const Calls& loaderCalls() {
    return loader().calls;
}

std::set<std::string>& missingLibraries() {
    return loader().missingLibraries;
}

std::set<std::string>& missingSymbols() {
    return loader().missingSymbols;
}

void resetLoader() {
    loader() = Loader();
}

extern "C" {

void* dlopen(const char* file, int mode) {
    static const auto open = systemFunction<void* (*)(const char*, int)>("dlopen");
    if (!file)
        return open(file, mode);
    loader().calls.push_back(call("dlopen", file, mode));
    return loader().missingLibraries.contains(file) ? nullptr : open(file, mode);
}

void* dlsym(void* handle, const char* name) {
    static const auto find = systemFunction<void* (*)(void*, const char*)>("dlsym");
    loader().calls.push_back(call("dlsym", name));
    return loader().missingSymbols.contains(name) ? nullptr : find(handle, name);
}

char* dlerror() {
    static const auto error = systemFunction<char* (*)()>("dlerror");
    loader().calls.push_back(call("dlerror"));
    return error();
}

} // extern "C"
