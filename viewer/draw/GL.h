#pragma once

#include <gl/GLFunctionTable.h>

namespace orloview {

/// The one way to OpenGL. There is one once a GLSession is up.
inline GLFunctionTable& gl() {
    return *GLFunctionTable::fpGlobalFunctionTable;
}

} // namespace orloview
