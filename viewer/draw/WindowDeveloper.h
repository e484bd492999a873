#pragma once

#include "output/Picture.h"

#include <array>

#include <geometry/GLRouting.h>
#include <orlohost/GeometryData.h>
#include <texture/IGLTexture.h>

namespace orloview {

/// Shows a linear frame in a window: developPicture, done by GL. A transparent frame is shown over a pattern
/// of squares.
///
/// Needs shader objects (kCapShaderObjects), and a current context of the share group to be made, used and
/// destroyed.
class WindowDeveloper {
public:
    WindowDeveloper();
    ~WindowDeveloper();

    WindowDeveloper(const WindowDeveloper&) = delete;
    WindowDeveloper& operator=(const WindowDeveloper&) = delete;

    /// False where GL refused the program.
    bool usable() const { return fProgram != 0; }

    /// Fills the current target with the frame, `factor` of whose pixels each way make one of the target's.
    void develop(IGLTexture& frame, int factor, const Development& development);

private:
    GLhandleARB fProgram = 0;
    GLint fFactorLocation = -1;
    GLint fTexelLocation = -1;
    GLint fSoftLocation = -1;
    GLint fBackgroundLocation = -1;
    GeometryLogicalGroup fGroup;
    GLRouting fRouting;
};

} // namespace orloview
