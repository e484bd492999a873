#pragma once

#include "gl/Export.h"

#include <Cg/cg.h>
#include <Cg/cgGL.h>

// The Cg run time as the library reaches it: a global pointer for each entry point, F_cgCreateContext to
// F_cgGLGetTextureEnum. All are null until init_explicit_Cg finds them (CGcontextSingleton.h), and those that
// it doesn't find stay null.

#define CG_CORE(name) extern ORLOGL_API decltype(&name) F_##name;
#define CG_GL(name) extern ORLOGL_API decltype(&name) F_##name;
#include "shader/CgEntryPoints.inc"
