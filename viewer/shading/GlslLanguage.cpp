#include "shading/GlslLanguage.h"

#include "draw/GL.h"
#include "shading/LateLight.h"

namespace orloview {

namespace {

class CompiledGlsl : public MaterialShader {
public:
    explicit CompiledGlsl(GlslShader& shader) : fShader(shader) {}

    void enable() override { fShader.enable(); }

    Place placeOf(const koString::CString& name) const override {
        return gl().glGetUniformLocationARB(fShader.fProgram, name.asChar());
    }

    void set(Place place, size_t count, const float* floats) const override {
        const auto location = static_cast<GLint>(place);
        if (count == 1)
            gl().glUniform1fARB(location, floats[0]);
        else if (count == 2)
            gl().glUniform2fvARB(location, 1, floats);
        else if (count == 3)
            gl().glUniform3fvARB(location, 1, floats);
        else
            gl().glUniformMatrix4fvARB(location, 1, GL_FALSE, floats);
    }

    std::optional<unsigned> setTexture(const koString::CString& sampler, GLuint texture) const override {
        fShader.setParameterTexture(sampler, texture);
        const auto unit = fShader.fSamplerUnits.find(sampler);
        return unit == fShader.fSamplerUnits.end() ? std::nullopt : std::optional(unit->second);
    }

private:
    GlslShader& fShader;
};

void clearErrors() {
    while (gl().glGetError() != GL_NO_ERROR) {
    }
}

/// A shader that no node has.
class OwnGlsl final : public CompiledGlsl {
public:
    OwnGlsl() : CompiledGlsl(fOwn) {}
    ~OwnGlsl() override { fOwn.destroy(); }

    OwnGlsl(const OwnGlsl&) = delete;
    OwnGlsl& operator=(const OwnGlsl&) = delete;

    /// Null where OpenGL refuses it.
    static std::unique_ptr<MaterialShader> of(const std::string& vertex, const std::string& fragment) {
        auto shader = std::make_unique<OwnGlsl>();
        shader->fOwn.loadVertexProgramFromString(vertex.c_str());
        shader->fOwn.loadFragmentProgramFromString(fragment.c_str());
        shader->fOwn.enable();
        const bool isUsable = shader->fOwn.fProgram != 0 && !shader->fOwn.fNeedsLink;
        return isUsable ? std::move(shader) : nullptr;
    }

private:
    GlslShader fOwn;
};

} // namespace

std::unique_ptr<MaterialShader> GlslLanguage::compile(koShadingDag::ShadingNodeSpec& node,
                                                      const koString::CString& key,
                                                      const std::vector<LightSpec>& lights) const {
    GlslShader* shader = fManager.bindKOSLShader(node, key, &lights);
    if (shader && shader->fProgram != 0 && !shader->fNeedsLink)
        return std::make_unique<CompiledGlsl>(*shader);
    clearErrors(); // what doesn't link was made current all the same
    leave();
    return nullptr;
}

LateShaders GlslLanguage::compileLate(const koShadingDag::ShadingNodeSpec& node,
                                      const std::vector<LightSpec>& lights, size_t looks) const {
    const std::vector<Source> whole = sources(node, lights);
    LateRequest request{whole[0].text.asChar(), whole[1].text.asChar(), {}, looks};
    for (const auto& uniform : node.uniforms())
        request.uniforms.emplace_back(uniform.fName.asChar());
    const std::optional<LateSources> late = lateSources(request);
    if (!late)
        return {};
    LateShaders shaders{OwnGlsl::of(late->recordVertex, late->recordFragment),
                        OwnGlsl::of(late->lightVertex, late->lightFragment), late->needsFloats};
    clearErrors();
    leave();
    return shaders.recorder && shaders.light ? std::move(shaders) : LateShaders{};
}

void GlslLanguage::leave() const {
    gl().glUseProgramObjectARB(0);
}

std::vector<MaterialLanguage::Source> GlslLanguage::sources(const koShadingDag::ShadingNodeSpec& node,
                                                            const std::vector<LightSpec>& lights) const {
    Source vertex{".vert", {}};
    Source fragment{".frag", {}};
    compileMaterialToGlsl(node, &lights, vertex.text, fragment.text);
    return {vertex, fragment};
}

} // namespace orloview
