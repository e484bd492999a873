#pragma once

#include "draw/SceneLights.h"
#include "draw/Shading.h"
#include "shading/CgLanguage.h"
#include "shading/UserShader.h"

#include <string>
#include <vector>

namespace orloview {

/// A Cg shader of those that lie beside the viewer, "bin/Cg" in HWEnvironment::orlo_path, or of the user's
/// own files.
class CgUserShader final : public UserShader {
public:
    /// Throws Failure (kExitUsage) where there is no such shader, it doesn't compile, or it has no such
    /// parameter; kExitNoGL without Cg.
    CgUserShader(const CgRequest& request, const SceneLights& lights);

    void bind() override { fShader.enable(); }
    void setTextures(const TextureLayer* base, const TextureLayer* normal) override;
    void unbind() override { fShader.disable(); }

private:
    /// A texture's sampler, and whether there is one; null: the shader doesn't ask.
    struct Slot {
        CGparameter sampler;
        CGparameter isThere;
        int told = -1; ///< what `isThere` was set to
    };

    CgUserShader(const CgRequest& request, const SceneLights& lights, const CgSupport& cg);
    CGManager::CGShader compile(const CgRequest& request);
    CGManager::CGShader load(const std::string& files, const std::vector<std::string>& options) const;
    CGparameter ofFragments(const char* name) const;
    static void put(Slot& slot, const TextureLayer* layer);
    void setValue(const std::string& shader, const CgRequest::Value& value) const;

    CGManager fManager;
    CGManager::CGShader fShader;
    Slot fBase;
    Slot fNormal;
};

} // namespace orloview
