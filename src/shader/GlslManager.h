#pragma once

#include "gl/Export.h"
#include "shader/GlslShader.h"

#include <cstdint>
#include <map>
#include <vector>

#include <orlohost/ShadingNodeSpec.h>

/// Compiles shading networks to GLSL, once for each key, and binds them.
///
///     GlslManager manager;
///     GlslShader* shader = manager.bindKOSLShader(material, material.networkKey(&lights), &lights);
///     // set the uniforms and samplers of shader, draw
///
/// The shaders of a node are kept by a manager of the node's own. Needs the table and a current context to
/// bind and, once something is bound, to end.
class ORLOGL_API GlslManager : public IHWShaderManager {
public:
    /// What a light of a compiled shader is.
    enum GlslLightType : uint32_t {
        kPointLight = 0,
        kSpotLight = 1,
        kDirectionalLight = 2,
        kAmbientLight = 3,
    };

    /// How an image tells what is seen through.
    enum GlslTransparencyType : uint32_t {
        kOpacityInAlpha = 0,
        kTransparencyInRGB = 1,
    };

    GlslManager() = default;

    /// Destroys its shaders, in the order of their keys.
    ~GlslManager() override;

    /// Makes the node's shader of that key current, and compiles it first where there is none yet: only the
    /// key decides, so let it tell all that the sources depend on (ShadingNodeSpec::networkKey does). One
    /// that doesn't compile or link is kept all the same, and tells so at every bind.
    ///
    /// The node gets a manager where it has none. The shader stays where it is as long as the node's manager
    /// lives. Null, with nothing called, where the node's manager is of another kind or memory is short.
    GlslShader* bindKOSLShader(koShadingDag::ShadingNodeSpec& node, const koString::CString& key,
                               const std::vector<LightSpec>* lights) const;

    /// The names that light types have in shader sources. Two of them have grown together: sources that hosts
    /// keep look for "directional_lightambient_light" under 2 and for nothing under 3.
    koString::CString getLightStringFromType(GlslLightType type);

    /// Empty for a type that is none.
    koString::CString getTransparencyTypeStringFromType(GlslTransparencyType type);

    /// The shaders made so far, by their sources' names.
    std::map<koString::CString, GlslShader, GlslShader::ByName> fShaders;

private:
    GlslShader* findOrCompile(const koShadingDag::ShadingNodeSpec& node, const koString::CString& key,
                              const std::vector<LightSpec>* lights);
};
