#pragma once

#include "shading/MaterialShader.h"

#include <shader/GlslManager.h>

namespace orloview {

/// Needs the table to have shader objects.
class GlslLanguage final : public MaterialLanguage {
public:
    std::unique_ptr<MaterialShader> compile(koShadingDag::ShadingNodeSpec& node, const koString::CString& key,
                                            const std::vector<LightSpec>& lights) const override;
    LateShaders compileLate(const koShadingDag::ShadingNodeSpec& node, const std::vector<LightSpec>& lights,
                            size_t looks) const override;
    void leave() const override;
    std::vector<Source> sources(const koShadingDag::ShadingNodeSpec& node,
                                const std::vector<LightSpec>& lights) const override;

private:
    GlslManager fManager;
};

} // namespace orloview
