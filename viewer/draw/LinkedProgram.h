#pragma once

#include <gl/GLFunctionTable.h>

namespace orloview {

/// A program of these sources, to be deleted by who asked; 0 where there are no shader objects
/// (kCapShaderObjects), or GL refuses it. Needs a current context.
GLhandleARB linkedProgram(const char* vertexSource, const char* fragmentSource);

} // namespace orloview
