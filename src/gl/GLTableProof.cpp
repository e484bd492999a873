// The compiler's proof that every slot has the type that GL's own headers declare. No code comes of it.

#define GL_GLEXT_PROTOTYPES
#define GLX_GLXEXT_PROTOTYPES
#include "gl/GLFunctionTable.h"

#include <type_traits>

#define ORLO_PROVE(name)                                                                                     \
    static_assert(std::is_same_v<decltype(GLFunctionTable::f##name), decltype(&::name)>,                     \
                  "the slot of " #name " differs from the GL headers");

#define ENTRY_CORE(ret, name, ...) ORLO_PROVE(name)
#define ENTRY_AS(ret, member, name, ...) ORLO_PROVE(name)
#define ENTRY_SLOT(ret, name, ...) ORLO_PROVE(name)
#define ENTRY_GLX(ret, name, ...) ORLO_PROVE(name)
#include "gl/GLEntryPoints.inc"
