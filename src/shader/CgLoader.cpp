#include "shader/CGcontextSingleton.h"

#include <dlfcn.h>

#include <orlohost/HWEnvironment.h>
#include <orlohost/koString.h>

#define CG_CORE(name) decltype(&name) F_##name = nullptr;
#define CG_GL(name) decltype(&name) F_##name = nullptr;
#include "shader/CgEntryPoints.inc"

namespace {

bool isLoaded = false;

// Neither library is closed: the pointers lead into them for as long as the process lives.
void* coreLibrary = nullptr;
void* bindingLibrary = nullptr;

/// Whether it was missing, 1 or 0.
template <typename Function>
int resolve(void* library, const char* name, Function& entry) {
    entry = reinterpret_cast<Function>(dlsym(library, name));
    return entry ? 0 : 1;
}

int resolveCore(void* library) {
    int missing = 0;
#define CG_CORE(name) missing += resolve(library, #name, F_##name);
#define CG_GL(name)
#include "shader/CgEntryPoints.inc"
    return missing;
}

int resolveGL(void* library) {
    int missing = 0;
#define CG_CORE(name)
#define CG_GL(name) missing += resolve(library, #name, F_##name);
#include "shader/CgEntryPoints.inc"
    return missing;
}

} // namespace

bool init_explicit_Cg() {
    if (isLoaded)
        return true;
    // Oddity: looks as if the libraries were searched for there. They are not: they come from where the
    // dynamic loader finds them, whatever a host says about its own place.
    [[maybe_unused]] const char* const location = OrloGetEnv("ORLO_LOCATION");

    coreLibrary = dlopen("libCg.so", RTLD_LAZY);
    if (!coreLibrary)
        return false;
    const int missingOfCore = resolveCore(coreLibrary);
    bindingLibrary = dlopen("libCgGL.so", RTLD_LAZY);
    if (!bindingLibrary)
        return false;
    const int missingOfBinding = resolveGL(bindingLibrary);
    isLoaded = true; // also with gaps: hosts that ask once more go on with what is there
    return missingOfCore + missingOfBinding == 0;
}

CgFunction findCgFunction(const char* name) {
    for (void* library : {coreLibrary, bindingLibrary})
        if (void* found = library ? dlsym(library, name) : nullptr)
            return reinterpret_cast<CgFunction>(found);
    return nullptr;
}
