#include "shader/CGcontextSingleton.h"

#include "shader/CgCall.h"

#include <new>

CGcontextSingleton* CGcontextSingleton::sCgContext = nullptr;

CGcontextSingleton::CGcontextSingleton() {
    if (init_explicit_Cg())
        fContext = callCg(F_cgCreateContext);
}

CGcontextSingleton::~CGcontextSingleton() {
    if (fContext)
        callCg(F_cgDestroyContext, fContext);
    fContext = nullptr;
    sCgContext = nullptr;
}

CGcontext* CGcontextSingleton::theCgContext() {
    static CGcontext none; // where memory is short
    if (!sCgContext)
        sCgContext = new (std::nothrow) CGcontextSingleton;
    return sCgContext ? &sCgContext->fContext : &(none = nullptr);
}
