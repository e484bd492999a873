#pragma once

#include "draw/ScreenPass.h"
#include "output/Picture.h"

#include <texture/IGLTexture.h>

namespace orloview {

/// Shows a linear frame in a window: developPicture, done by GL. A transparent frame is shown over a pattern
/// of squares. Needs what a ScreenPass needs.
class WindowDeveloper {
public:
    WindowDeveloper();

    /// False where GL refused the program.
    bool usable() const { return fPass.usable(); }

    /// Fills the current target with the frame, `factor` of whose pixels each way make one of the target's.
    void develop(IGLTexture& frame, int factor, const Development& development);

private:
    ScreenPass fPass;
    GLint fFactorPlace = -1;
    GLint fTexelPlace = -1;
    GLint fSoftPlace = -1;
    GLint fGainPlace = -1;
    GLint fBackgroundPlace = -1;
};

} // namespace orloview
