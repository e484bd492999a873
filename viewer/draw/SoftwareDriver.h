#pragma once

#include "draw/GL.h"

#include <string_view>

namespace orloview {

/// Whether the processor draws. Such a driver fetches at once, what it is asked for later too, and into a
/// pixel buffer in a longer way; and it shades whole blocks of pixels, for each triangle that touches one.
inline bool drawsInSoftware() {
    const auto* told = reinterpret_cast<const char*>(gl().glGetString(GL_RENDERER));
    const std::string_view renderer = told ? told : "";
    return renderer.starts_with("llvmpipe") || renderer.starts_with("softpipe");
}

} // namespace orloview
