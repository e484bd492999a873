#pragma once

namespace orloview {

/// How a picture is drawn.
struct Sampling {
    int samples = 2; ///< of a pixel each way
    int tile =
        0; ///< the side of the tiles that the picture is drawn in, pixels; 0: as large as memory allows
    bool pbuffer = false; ///< in a pbuffer instead of a framebuffer object: bytes instead of floats
};

} // namespace orloview
