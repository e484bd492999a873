#pragma once

#include <cstdint>

namespace orloview {

/// How OpenGL is reached for pictures.
enum class GLRoad : std::uint8_t {
    Auto, ///< GLX on the display that DISPLAY names, else EGL, else GLX on a private Xvfb
    X11,  ///< GLX on that display, else on a private Xvfb
    Egl,  ///< EGL, without any display
};

} // namespace orloview
