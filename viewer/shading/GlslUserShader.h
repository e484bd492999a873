#pragma once

#include "draw/SceneLights.h"
#include "shading/UserShader.h"

#include <string>

#include <shader/GL2ProgramObject.h>
#include <shader/GL2Shader.h>

namespace orloview {

/// A user's shader in GLSL: NAME.vert and NAME.frag. Samplers read texture units 0 and 2.
class GlslUserShader final : public UserShader {
public:
    /// Throws Failure (kExitUsage) for files that can't be read, and for what doesn't compile or link, with
    /// GL's words and the lines that they are about.
    GlslUserShader(const std::string& name, const SceneLights& lights);

    void bind() override;
    void setTextures(const TextureLayer* base, const TextureLayer* normal) override;
    void unbind() override { fProgram.unbind(); }

private:
    GL2Shader fVertex{GL2Shader::kVertexShader};
    GL2Shader fFragment{GL2Shader::kFragmentShader};
    GL2ProgramObject fProgram; // ends before its shaders
    GLint fHasBaseLocation = -1;
    GLint fHasNormalLocation = -1;
};

} // namespace orloview
