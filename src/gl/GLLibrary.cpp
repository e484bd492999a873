#include "gl/GLLibrary.h"

#include <dlfcn.h>

void* openGLLibrary() {
    if (void* library = dlopen("libGL.so", RTLD_LAZY))
        return library;
    return dlopen("libGL.so.1", RTLD_LAZY);
}
