#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <GL/gl.h>
#include <orlohost/ShadingNodeSpec.h>

namespace orloview {

/// A material's compiled shader, in whichever language. Needs a current context for everything.
class MaterialShader {
public:
    /// Where a value is kept.
    using Place = std::intptr_t;
    static constexpr Place kNowhere = -1;

    virtual ~MaterialShader() = default;

    /// Makes it current.
    virtual void enable() = 0;

    /// kNowhere where it has no use for the name.
    virtual Place placeOf(const koString::CString& name) const = 0;

    /// Sets a value of 1, 2 or 3 floats, or a matrix of 16, column by column. Needs it current.
    virtual void set(Place place, size_t count, const float* floats) const = 0;

    /// Puts a 2D texture on a sampler, and leaves the sampler's unit active with the texture bound: that
    /// unit; none where it has no use for the sampler. Needs it current.
    virtual std::optional<unsigned> setTexture(const koString::CString& sampler, GLuint texture) const = 0;
};

/// The shaders of materials that are lit late (shading/LateLight.h). Null where there can't be any.
struct LateShaders {
    std::unique_ptr<MaterialShader> recorder;
    std::unique_ptr<MaterialShader> light;
    bool needsFloats = false;
};

/// A language that materials are compiled to.
class MaterialLanguage {
public:
    virtual ~MaterialLanguage() = default;

    /// Leaves the shader current. It lives as long as the node. Null where OpenGL refuses it; none is current
    /// then. Leaves no error pending.
    virtual std::unique_ptr<MaterialShader> compile(koShadingDag::ShadingNodeSpec& node,
                                                    const koString::CString& key,
                                                    const std::vector<LightSpec>& lights) const = 0;

    /// Shaders of materials of one network, which have so many looks. Leaves none current, and no error.
    virtual LateShaders compileLate(const koShadingDag::ShadingNodeSpec&, const std::vector<LightSpec>&,
                                    size_t /*looks*/) const {
        return {};
    }

    /// Makes none current.
    virtual void leave() const = 0;

    /// The files that `compile` would make: the suffix of their names, and the source.
    struct Source {
        std::string suffix;
        koString::CString text;
    };
    virtual std::vector<Source> sources(const koShadingDag::ShadingNodeSpec& node,
                                        const std::vector<LightSpec>& lights) const = 0;
};

} // namespace orloview
