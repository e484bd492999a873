#pragma once

#include "shading/MaterialShader.h"

#include <string>
#include <vector>

#include <shader/CGManager.h>

namespace orloview {

/// What of Cg is there.
struct CgSupport {
    /// The latest of each stage that this OpenGL runs.
    CGprofile vertexProfile = CG_PROFILE_UNKNOWN;
    CGprofile fragmentProfile = CG_PROFILE_UNKNOWN;

    /// What is missing, for people; empty: nothing.
    std::string fault;
};

/// Needs a current context.
CgSupport findCg();

/// What the Cg compiler said last, each line on a new one.
std::string cgListing();

class CgLanguage final : public MaterialLanguage {
public:
    explicit CgLanguage(const CgSupport& cg) : fManager(cg.vertexProfile, cg.fragmentProfile) {}

    std::unique_ptr<MaterialShader> compile(koShadingDag::ShadingNodeSpec& node, const koString::CString& key,
                                            const std::vector<LightSpec>& lights) const override;
    void leave() const override;
    std::vector<Source> sources(const koShadingDag::ShadingNodeSpec& node,
                                const std::vector<LightSpec>& lights) const override;

private:
    CGManager fManager;
};

/// Names for people, in one line; "none" where there are none.
std::string commaSeparated(const std::vector<std::string>& words);

} // namespace orloview
