#include "gl/GLShaderCompiler.h"

#include "gl/GLFunctionTable.h"
#include "gl/GLLibrary.h"

bool GLShaderCompiler::release() {
    const GLFunctionTable* const table = GLFunctionTable::fpGlobalFunctionTable;
    if (!table || !hasVersionOrExtension(*table, 41, "GL_ARB_ES2_compatibility"))
        return false;
    const auto release =
        reinterpret_cast<PFNGLRELEASESHADERCOMPILERPROC>(findEntryPoint("glReleaseShaderCompiler"));
    if (release)
        release();
    return release != nullptr;
}
