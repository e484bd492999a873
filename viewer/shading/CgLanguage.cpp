#include "shading/CgLanguage.h"

#include <sstream>

#include <gl/GLFunctionTable.h>

namespace orloview {

namespace {

/// A compiled material's parameters are all of its fragment program. Sets them by their handles: the shader
/// would look each up by its name, every time.
class CompiledCg final : public MaterialShader {
public:
    explicit CompiledCg(const CGManager::CGShader& shader) : fShader(shader) {}

    void enable() override { fShader.enable(); }

    Place placeOf(const koString::CString& name) const override {
        const CGparameter parameter = F_cgGetNamedParameter(fShader.getFragmentProgram(), name.asChar());
        return parameter ? reinterpret_cast<Place>(parameter) : kNowhere;
    }

    void set(Place place, size_t count, const float* floats) const override {
        if (place == kNowhere)
            return;
        const auto parameter = reinterpret_cast<CGparameter>(place); // NOLINT(performance-no-int-to-ptr)
        if (count == 1)
            F_cgGLSetParameter1f(parameter, floats[0]);
        else if (count == 2)
            F_cgGLSetParameter2fv(parameter, floats);
        else if (count == 3)
            F_cgGLSetParameter3fv(parameter, floats);
        else
            F_cgGLSetMatrixParameterfc(parameter, floats);
    }

    std::optional<unsigned> setTexture(const koString::CString& sampler, GLuint texture) const override {
        constexpr auto kFragment = CGManager::kFragmentProgram;
        fShader.setParameterTexture(kFragment, sampler, texture);
        const unsigned unit = fShader.getParameterIndex(kFragment, sampler);
        if (unit == 0xFFFFFFFF)
            return std::nullopt;
        GLFunctionTable::fpGlobalFunctionTable->glActiveTexture(GL_TEXTURE0 + unit);
        GLFunctionTable::fpGlobalFunctionTable->glBindTexture(GL_TEXTURE_2D, texture);
        return unit;
    }

private:
    const CGManager::CGShader fShader;
};

} // namespace

CgSupport findCg() {
    CgSupport cg;
    if (!*CGcontextSingleton::theCgContext()) {
        cg.fault = "there is no Cg runtime (libCg.so and libCgGL.so)";
        return cg;
    }
    cg.vertexProfile = F_cgGLGetLatestProfile(CG_GL_VERTEX);
    cg.fragmentProfile = F_cgGLGetLatestProfile(CG_GL_FRAGMENT);
    if (cg.vertexProfile == CG_PROFILE_UNKNOWN || cg.fragmentProfile == CG_PROFILE_UNKNOWN)
        cg.fault = "this OpenGL has nothing that the Cg runtime could run its programs by";
    return cg;
}

std::string cgListing() {
    const char* listing = F_cgGetLastListing(*CGcontextSingleton::theCgContext());
    std::istringstream lines(listing ? listing : "");
    std::string text;
    for (std::string line; std::getline(lines, line);)
        text.append("\n  ").append(line);
    return text;
}

std::unique_ptr<MaterialShader> CgLanguage::compile(koShadingDag::ShadingNodeSpec& node,
                                                    const koString::CString& key,
                                                    const std::vector<LightSpec>& lights) const {
    while (F_cgGetError() != CG_NO_ERROR) {
    }
    const CGManager::CGShader* shader = fManager.bindKOSLShader(node, key, &lights);
    if (shader && shader->getVertexProgram() && shader->getFragmentProgram() && F_cgGetError() == CG_NO_ERROR)
        return std::make_unique<CompiledCg>(*shader);
    leave();
    return nullptr;
}

void CgLanguage::leave() const {
    F_cgGLDisableProfile(fManager.fVertexProfile);
    F_cgGLDisableProfile(fManager.fFragmentProfile);
}

std::vector<MaterialLanguage::Source> CgLanguage::sources(const koShadingDag::ShadingNodeSpec& node,
                                                          const std::vector<LightSpec>& lights) const {
    Source vertex{"_vertex.cg", {}};
    Source fragment{"_fragment.cg", {}};
    compileMaterialToCg(node, &lights, vertex.text, fragment.text);
    return {vertex, fragment};
}

std::string commaSeparated(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words)
        text.append(text.empty() ? "" : ", ").append(word);
    return text.empty() ? "none" : text;
}

} // namespace orloview
