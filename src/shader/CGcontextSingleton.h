#pragma once

#include "gl/Export.h"
#include "shader/CgEntryPoints.h"

/// Opens libCg.so and libCgGL.so, wherever the dynamic loader finds them, and fills the F_cg pointers. True
/// when each was found.
///
/// Done once both libraries are open, and then true at once: where an entry point is missing, the first call
/// alone tells. Until then each call tries again. Prints nothing.
ORLOGL_API bool init_explicit_Cg();

/// An entry point of the run time that has no pointer of its own, such as those of effects; null: there is
/// none, or no run time. Needs init_explicit_Cg.
using CgFunction = void (*)();
ORLOGL_API CgFunction findCgFunction(const char* name);

/// The one Cg context of the process. It is made, and the run time loaded, when somebody first asks for it;
/// any CGManager that ends takes it down, and the next who asks gets a new one.
///
///     CGcontext context = *CGcontextSingleton::theCgContext();
class ORLOGL_API CGcontextSingleton {
public:
    /// Null in it when the run time could not be loaded whole.
    CGcontextSingleton();

    /// Destroys the context with all its programs.
    ~CGcontextSingleton();

    CGcontextSingleton(const CGcontextSingleton&) = delete;
    CGcontextSingleton& operator=(const CGcontextSingleton&) = delete;

    /// Where the context's handle is; never null, but the handle may be.
    static CGcontext* theCgContext();

    /// Null without a runtime.
    CGcontext fContext = nullptr;

    /// The one there is, or null.
    static CGcontextSingleton* sCgContext;
};
