#pragma once

#include "draw/SceneLights.h"
#include "texture/SceneTextures.h"

#include <string>

#include <shader/GL2ProgramObject.h>
#include <shader/GL2Shader.h>

namespace orloview {

/// A shader of the user's, in the place of all materials: NAME.vert and NAME.frag.
///
/// What it finds: GL's own attributes, matrices and lights; the base colour in gl_Color and in
/// gl_MultiTexCoord0 where its texture lies; sampler2D baseColorMap with bool hasBaseColorMap; int
/// lightCount.
///
/// Needs a current context of the share group to be made, used and ended.
class UserShader {
public:
    /// Throws Failure (kExitUsage) for files that can't be read, and for what doesn't compile or link, with
    /// GL's words and the lines that they are about.
    UserShader(const std::string& name, const SceneLights& lights);

    UserShader(const UserShader&) = delete;
    UserShader& operator=(const UserShader&) = delete;

    /// Makes it current.
    void bind();

    /// Tells it of the texture that an instance has on unit 0; null for none. Needs it current.
    void setBase(const TextureLayer* base);

    /// Leaves no shader current.
    void unbind() { fProgram.unbind(); }

private:
    GL2Shader fVertex{GL2Shader::kVertexShader};
    GL2Shader fFragment{GL2Shader::kFragmentShader};
    GL2ProgramObject fProgram; // ends before its shaders
    GLint fHasBaseLocation = -1;
};

} // namespace orloview
