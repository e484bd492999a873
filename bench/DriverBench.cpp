#include "GroupBench.h"

#include "gl/GLStartupContext.h"

#include <cstdio>

// What the library adds where a real driver does the work: groups drawn into the start-up context's own
// window.

int main() {
    Display* display = XOpenDisplay(nullptr);
    if (!display) {
        std::fputs("orlodriverbench: no display\n", stderr);
        return 1;
    }
    auto* startup = new GLStartupContext(WindowWrapper(nullptr, 0, display), nullptr);
    startup->ref();
    if (!startup->valid || !startup->makeCurrent() || !table().ensureLiveMultitexture()) {
        std::fputs("orlodriverbench: no usable GL on this display\n", stderr);
        return 1;
    }
    measure("nothing/by hand", [] {});
    benchDrawGroup(1'000, "drawGroup, 1,000 groups");
    startup->unref();
    XCloseDisplay(display);
}
