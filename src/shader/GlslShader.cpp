#include "shader/GlslShader.h"

#include "shader/ShaderObjects.h"
#include "texture/GLTexUsage.h"
#include "texture/IGLTexture.h"
#include "texture/TextureTargets.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <new>

void GlslShader::create() {
    GLFunctionTable* gl = shaderObjectTable();
    if (!gl || fProgram)
        return;
    fProgram = gl->glCreateProgramObjectARB();
    // Those of a try at which GL had no program to give are still there.
    if (!fVertexShader)
        fVertexShader = gl->glCreateShaderObjectARB(GL_VERTEX_SHADER_ARB);
    if (!fFragmentShader)
        fFragmentShader = gl->glCreateShaderObjectARB(GL_FRAGMENT_SHADER_ARB);
    gl->glAttachObjectARB(fProgram, fVertexShader);
    gl->glAttachObjectARB(fProgram, fFragmentShader);
    fNeedsLink = true;
}

void GlslShader::loadVertexProgramFromString(const koString::CString& source) {
    create();
    compile(fVertexShader, source, "### VERTEX SHADER COMPILE FAILED:\n%s\n");
}

void GlslShader::loadFragmentProgramFromString(const koString::CString& source) {
    create();
    compile(fFragmentShader, source, "### FRAGMENT SHADER COMPILE FAILED:\n%s\n");
}

void GlslShader::compile(uint32_t shader, const koString::CString& source, const char* failure) {
    GLFunctionTable* gl = shaderObjectTable();
    if (!gl)
        return;
    const GLcharARB* text = source.asChar();
    const auto length = static_cast<GLint>(std::strlen(text));
    gl->glShaderSourceARB(shader, 1, &text, &length);
    gl->glCompileShaderARB(shader);
    fNeedsLink = true;
    if (!objectHas(*gl, shader, GL_OBJECT_COMPILE_STATUS_ARB))
        std::printf(failure, text);
}

void GlslShader::enable() {
    GLFunctionTable* gl = shaderObjectTable();
    if (!gl)
        return;
    if (fNeedsLink)
        return linkAndUse(*gl);
    gl->glUseProgramObjectARB(fProgram);
}

/// Kept apart from enable, which needs no frame without it: its usual road ends in a jump.
[[gnu::noinline]] void GlslShader::linkAndUse(GLFunctionTable& gl) {
    gl.glLinkProgramARB(fProgram);
    fNeedsLink = !objectHas(gl, fProgram, GL_OBJECT_LINK_STATUS_ARB);
    if (fNeedsLink)
        std::puts("### GLSL PROGRAM LINK FAILED:");
    gl.glUseProgramObjectARB(fProgram);
}

void GlslShader::destroy() {
    if (GLFunctionTable* gl = shaderObjectTable()) {
        gl->glUseProgramObjectARB(0);
        gl->glDeleteObjectARB(fProgram);
        gl->glDeleteObjectARB(fVertexShader);
        gl->glDeleteObjectARB(fFragmentShader);
    }
    fProgram = fVertexShader = fFragmentShader = 0;
    fNeedsLink = false;
    fSamplerUnits.clear();
}

/// Makes the unit of a sampler active. The sampler's place among the uniforms; negative where nothing was
/// done.
int32_t GlslShader::activateSampler(const koString::CString& name, uint32_t& unit) const {
    GLFunctionTable* gl = shaderObjectTable();
    const GLint location = gl ? gl->glGetUniformLocationARB(fProgram, name.asChar()) : -1;
    if (location < 0)
        return -1;
    try {
        unit = fSamplerUnits.emplace(name, static_cast<uint32_t>(fSamplerUnits.size())).first->second;
    } catch (const std::bad_alloc&) {
        return -1;
    }
    gl->glActiveTexture(GL_TEXTURE0 + unit);
    return location;
}

void GlslShader::setParameterTexture(const koString::CString& name, IHWTexture::TextureType type,
                                     IHWTexUsage::WrapMode wrapS, IHWTexUsage::WrapMode wrapT,
                                     IHWTexUsage::Filter minFilter, IHWTexUsage::Filter magFilter,
                                     const koColor::Color& borderColor, bool anisotropic,
                                     IGLTexture* texture) const {
    uint32_t unit = 0;
    const int32_t location = texture ? activateSampler(name, unit) : -1;
    if (location < 0)
        return;
    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    const GLenum target = textureTarget(type);
    gl->glBindTexture(target, texture->textureName());
    GLTexUsage::setWrapMode(target, wrapS, wrapT);
    GLTexUsage::setMinMagFilter(target, minFilter, magFilter);
    GLTexUsage::setBorderColor(target, borderColor);
    GLTexUsage::setFilterAnisotropic(target, anisotropic);
    gl->glUniform1iARB(location, static_cast<GLint>(unit));
}

void GlslShader::setParameterTexture(const koString::CString& name, unsigned int texture) const {
    uint32_t unit = 0;
    const int32_t location = activateSampler(name, unit);
    if (location < 0)
        return;
    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    gl->glBindTexture(GL_TEXTURE_2D, texture);
    gl->glUniform1iARB(location, static_cast<GLint>(unit));
}
