#include "gl/GLULibrary.h"

#include <dlfcn.h>
#include <initializer_list>

namespace {

using Build2DMipmaps = GLint (*)(GLenum, GLint, GLsizei, GLsizei, GLenum, GLenum, const void*);

Build2DMipmaps findBuild2DMipmaps() {
    for (const char* name : {"libGLU.so.1", "libGLU.so"}) {
        if (void* library = dlopen(name, RTLD_LAZY))
            return reinterpret_cast<Build2DMipmaps>(dlsym(library, "gluBuild2DMipmaps"));
    }
    return nullptr;
}

} // namespace

GLint GLULibrary::build2DMipmaps(GLenum target, GLint internalFormat, GLsizei width, GLsizei height,
                                 GLenum format, GLenum type, const void* pixels) {
    static const Build2DMipmaps build = findBuild2DMipmaps();
    return build ? build(target, internalFormat, width, height, format, type, pixels) : kNoLibrary;
}
