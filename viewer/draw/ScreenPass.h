#pragma once

#include "draw/ScreenQuad.h"

#include <string>

#include <gl/GLFunctionTable.h>

namespace orloview {

/// A fragment shader that is run for every pixel of the viewport.
///
/// Needs a current context of the share group to be made, used and destroyed.
class ScreenPass {
public:
    explicit ScreenPass(const std::string& fragmentSource);
    ~ScreenPass();

    ScreenPass(const ScreenPass&) = delete;
    ScreenPass& operator=(const ScreenPass&) = delete;

    /// False where GL has no shader objects (kCapShaderObjects), or refused it.
    bool usable() const { return fProgram != 0; }

    /// Where a uniform is. Samplers read unit 0 until told otherwise.
    GLint place(const char* uniform) const;

    /// Makes it current, for uniforms to be set.
    void begin() const;

    /// Runs it and makes none current.
    void run();

private:
    GLhandleARB fProgram = 0;
    ScreenQuad fQuad;
};

} // namespace orloview
