#include "gl/GLLibrary.h"

#include "gl/GLFunctionTable.h"

#include <cstdio>
#include <dlfcn.h>

void* openGLLibrary() {
    if (void* library = dlopen("libGL.so", RTLD_LAZY))
        return library;
    return dlopen("libGL.so.1", RTLD_LAZY);
}

void (*findEntryPoint(const char* name))() {
    using LookUp = void (*(*)(const GLubyte*))();
    const auto lookUp = reinterpret_cast<LookUp>(dlsym(openGLLibrary(), "glXGetProcAddressARB"));
    return lookUp ? lookUp(reinterpret_cast<const GLubyte*>(name)) : nullptr;
}

bool hasVersionOrExtension(const GLFunctionTable& table, int version, const char* extension) {
    const char* const told = reinterpret_cast<const char*>(table.glGetString(GL_VERSION));
    int major = 0;
    int minor = 0;
    if (told && std::sscanf(told, "%d.%d", &major, &minor) == 2 && major * 10 + minor >= version)
        return true;
    return isExtensionSupported(table.glGetString(GL_EXTENSIONS), extension);
}
