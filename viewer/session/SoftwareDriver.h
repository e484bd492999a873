#pragma once

#include <cstddef>
#include <string_view>

#include <gl/GLFunctionTable.h>

namespace orloview {

/// Whether the processor draws. Such a driver fetches at once, what it is asked for later too, and into a
/// pixel buffer in a longer way; it would copy what a buffer object gets; and it shades whole blocks of
/// pixels, for each triangle that touches one.
inline bool drawsInSoftware() {
    const auto* told =
        reinterpret_cast<const char*>(GLFunctionTable::fpGlobalFunctionTable->glGetString(GL_RENDERER));
    const std::string_view renderer = told ? told : "";
    return renderer.starts_with("llvmpipe") || renderer.starts_with("softpipe");
}

/// Whether the processor draws so many triangles that it is worth a shader and other calls to spare it some.
inline bool drawsManyInSoftware(size_t triangles) {
    constexpr size_t kMany = 50000;
    return triangles >= kMany && drawsInSoftware();
}

} // namespace orloview
