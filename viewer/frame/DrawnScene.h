#pragma once

#include "draw/Fountain.h"
#include "frame/Frame.h"
#include "options/Options.h"
#include "scene/Guides.h"
#include "scene/Poser.h"
#include "shading/CgLanguage.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orloview {

/// A scene with all that it is drawn with. Needs a current context to be made, to upload, to draw and to end;
/// the scene and the guides have to stay.
class DrawnScene {
public:
    /// Throws Failure (kExitNoGL) for a shading that GL can't do; where it is Cg that is missing, materials
    /// are drawn by GLSL, and `notes` says so.
    DrawnScene(const Scene& scene, const Guides& guides, const Options& options,
               const ProgressReport& report);

    void upload(const ProgressReport& report);

    /// What was left out, a line each. Filled by `upload`.
    std::vector<std::string> warnings() const;

    /// What can't be done here, without anything being left out, a line each; empty: nothing.
    std::vector<std::string> notes() const;

    /// Writes the sources of the shaders, if there are any: see SceneShaders::dump.
    void dumpShaders(const std::string& folder) const {
        if (fShaders)
            fShaders->dump(folder);
    }

    /// What time it is from now on, in seconds, for a shader of the user's.
    void setTime(double seconds) {
        if (fUserShader)
            fUserShader->setTime(seconds);
    }

    /// Shows the demo at a time, in seconds.
    void animate(double seconds) { fParticles->replace(fFountain->dropsAt(seconds)); }

    /// Follows the scene into another pose, in which all is within `bounds`.
    void follow(const Moved& moved, const Bounds& bounds);

    Marks& marks() { return fMarks; }

    FrameContent content() {
        return {fDrawable,
                fLights,
                fGrid,
                fAxes,
                fShaders ? &*fShaders : nullptr,
                fShadows ? &*fShadows : nullptr,
                fBehind ? &*fBehind : nullptr,
                fOcclusion ? &*fOcclusion : nullptr,
                fLateLight ? &*fLateLight : nullptr,
                fUserShader.get(),
                fGround,
                fMarks,
                fCulling ? &*fCulling : nullptr,
                fBackdrop ? &*fBackdrop : nullptr,
                fParticles ? &*fParticles : nullptr};
    }

private:
    Shading chooseShading(const Options& options);
    bool isLitBySkyAlone(const Options& options) const;

    CgSupport fCg; ///< where Cg is asked for
    Shading fShading;
    std::optional<SkyLight> fSky;
    SceneLights fLights;
    std::optional<ShadowMap> fShadows;
    std::optional<Behind> fBehind;
    std::optional<Occlusion> fOcclusion;
    std::optional<Backdrop> fBackdrop;
    std::optional<SceneShaders> fShaders;
    std::optional<LateLight> fLateLight;
    std::unique_ptr<UserShader> fUserShader;
    DrawableScene fDrawable;
    std::optional<Culling> fCulling;
    std::optional<SceneParticles> fParticles;
    Ground fGround;
    Marks fMarks;
    std::optional<Fountain> fFountain;
    DrawableScene fGrid;
    DrawableScene fAxes;
    std::vector<std::string> fNotes;
};

/// Tells on standard error what can't be done here and what was left out.
void tellNotesAndWarnings(const DrawnScene& drawn);

} // namespace orloview
