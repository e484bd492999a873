#include "FakeLoader.h"

#include <dlfcn.h>

#include <string_view>

namespace {

/// Off until a test asks for it: sanitizers look up their functions before anything of ours is constructed.
bool recording = false;

/// The C library's own function under our name.
template <typename Function>
Function systemFunction(const char* name) {
    return reinterpret_cast<Function>(dlvsym(RTLD_NEXT, name, "GLIBC_2.34"));
}

} // namespace

FakeLoader& loader() {
    static FakeLoader theLoader;
    return theLoader;
}

void resetLoader() {
    loader() = FakeLoader();
    recording = true;
}

// Without recording each hands over by a jump: RTLD_NEXT means the library after the one that called, and the
// C library finds that one by the return address.
extern "C" {

void* dlopen(const char* file, int mode) {
    static const auto open = systemFunction<decltype(&dlopen)>("dlopen");
    if (!recording || !file)
        return open(file, mode);
    loader().calls.push_back(call("dlopen", file, mode));
    if (loader().missing.contains(file))
        return nullptr;
    // Under either name the double: the machine's own GL has no place in these tests.
    return open(std::string_view(file) == "libGL.so.1" ? "libGL.so" : file, mode);
}

void* dlsym(void* handle, const char* name) {
    static const auto find = systemFunction<decltype(&dlsym)>("dlsym");
    if (!recording)
        return find(handle, name);
    loader().calls.push_back(call("dlsym", name));
    if (const auto other = loader().replaced.find(name); other != loader().replaced.end())
        return other->second;
    return loader().missing.contains(name) ? nullptr : find(handle, name);
}

char* dlerror() {
    static const auto error = systemFunction<decltype(&dlerror)>("dlerror");
    if (recording)
        loader().calls.push_back(call("dlerror"));
    return error();
}

} // extern "C"
