// The compiler's proof that every slot has the type that GL's own headers declare. No code comes of it.

#define GL_GLEXT_PROTOTYPES
#define GLX_GLXEXT_PROTOTYPES
#include "gl/GLFunctionTable.h"

#include <type_traits>

#define ENTRY_ANY(ret, name, ...)                                                                            \
    static_assert(std::is_same_v<decltype(GLFunctionTable::f##name), decltype(&::name)>,                     \
                  "the slot of " #name " differs from the GL headers");
#define ENTRY_UNUSED(name)
#include "gl/GLEntryPoints.inc"
