#pragma once

#include "gl/Export.h"

#include <cstdint>
#include <map>

#include <orlohost/HWInterfaces.h>
#include <orlohost/koColor.h>
#include <orlohost/koString.h>

class GLFunctionTable;
class IGLTexture;

/// A GLSL program of one vertex and one fragment shader, and the texture units of its samplers.
///
///     GlslShader shader;
///     shader.loadVertexProgramFromString(vertexSource);
///     shader.loadFragmentProgramFromString(fragmentSource);
///     shader.enable();
///     shader.setParameterTexture("diffuseMap", texture->textureName());
///     ...
///     shader.destroy();
///
/// A plain value: copies share the GL objects, and only destroy() deletes them. Made without a context;
/// everything else needs the table and a current context, and does nothing without shader objects in GL.
class ORLOGL_API GlslShader {
public:
    /// Makes the program and its two shader objects, unless they are there.
    void create();

    /// Makes the program current. Links it first if a source is new; one that doesn't link is told on
    /// standard output, made current all the same (which GL refuses), and tried again next time.
    void enable();

    /// Leaves no program current, deletes the GL objects and forgets the samplers' units.
    void destroy();

    /// Creates what is missing and compiles one stage. What doesn't compile is printed on standard output.
    void loadVertexProgramFromString(const koString::CString& source);

    /// The same for the fragment stage.
    void loadFragmentProgramFromString(const koString::CString& source);

    /// Puts a texture on a sampler: on the unit that the sampler got at its first use, 0, 1, 2 and so on in
    /// the order of first uses. That unit stays active. Enable the shader first: GL sets uniforms of the
    /// current program. Nothing happens when the program has no use for the sampler.
    ///
    /// The full form also says how the texture is applied; a null texture is left out. The short form binds a
    /// 2D texture by its GL name as it is.
    void setParameterTexture(const koString::CString& name, IHWTexture::TextureType type,
                             IHWTexUsage::WrapMode wrapS, IHWTexUsage::WrapMode wrapT,
                             IHWTexUsage::Filter minFilter, IHWTexUsage::Filter magFilter,
                             const koColor::Color& borderColor, bool anisotropic, IGLTexture* texture) const;

    /// Puts a texture, by GL's name, on a unit of the sampler's own. After enable.
    void setParameterTexture(const koString::CString& name, unsigned int texture) const;

    /// Orders shaders by their names.
    struct ByName {
        /// Whether a stands before b.
        bool operator()(const koString::CString& a, const koString::CString& b) const {
            return koString::less(a, b);
        }
    };

    uint32_t fVertexShader = 0;   ///< GL's name, 0 before there is one
    uint32_t fFragmentShader = 0; ///< GL's name, 0 before there is one
    uint32_t fProgram = 0;        ///< GL's name, 0 before there is one
    bool fNeedsLink = false;      ///< whether a stage has been compiled since the last link

    /// By the name of the sampler. Mutable: putting a texture on changes GL, not the shader.
    mutable std::map<koString::CString, uint32_t, ByName> fSamplerUnits;

private:
    void compile(uint32_t shader, const koString::CString& source, const char* failure);
    void linkAndUse(GLFunctionTable& gl);
    int32_t activateSampler(const koString::CString& name, uint32_t& unit) const;
};
