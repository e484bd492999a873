#pragma once

// Xlib without a server: the program's own definitions of the calls that the library makes, which record
// themselves among the GL calls. Windows are names of NameKind::XWindow. The script's failing and answers
// serve them too: script().failing = {{"XCreateWindow", 1}}.

#include "RecordingGL.h"

#include <X11/Xlib.h>

/// A display that was never opened. Its default screen is 0 of 1.
Display* fakeDisplay();
/// A call that begins with the display, as all of X's and most of GLX's do.
template <typename... Arguments>
std::string on(const char* name, const Arguments&... arguments) {
    return call(name, fakeDisplay(), arguments...);
}

inline constexpr Window kFakeRoot = 0x77;
inline constexpr Colormap kFakeColormap = 0x99;
