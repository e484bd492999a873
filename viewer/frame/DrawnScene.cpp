#include "frame/DrawnScene.h"

#include "base/ExitCode.h"
#include "base/Say.h"
#include "frame/ViewAndLook.h"
#include "options/Values.h"
#include "shading/CgUserShader.h"
#include "shading/EffectShader.h"
#include "shading/GlslLanguage.h"
#include "shading/GlslUserShader.h"

#include <gl/GLFunctionTable.h>

namespace orloview {

namespace {

bool hasUserShader(const Options& options) {
    return options.cg || !options.shader.empty();
}

DrawableScene::Extras extrasOf(const Options& options) {
    using Extras = DrawableScene::Extras;
    if (options.cg && options.cg->isEffect)
        return Extras::NormalMapsAndTangents;
    return hasUserShader(options) ? Extras::NormalMaps : Extras::Nothing;
}

size_t partOf(const Scene& scene, const std::string& wanted) {
    std::vector<std::string> names;
    for (const Instance& instance : scene.instances)
        names.push_back(instance.nodeName);
    return indexOf("part", wanted, names);
}

} // namespace

Shading DrawnScene::chooseShading(const Options& options) {
    const bool hasShaders = GLFunctionTable::fpGlobalFunctionTable->usable(kCapShaderObjects);
    if (options.shading == Shading::Glsl && !hasShaders)
        throw Failure(kExitNoGL, "--shading glsl: this OpenGL has no shaders (GL_ARB_shader_objects); give "
                                 "--shading fixed");
    if (!options.shader.empty() && !hasShaders)
        throw Failure(kExitNoGL,
                      "--shader: this OpenGL has no shaders (GL_ARB_shader_objects); leave it out");
    if (hasUserShader(options))
        return Shading::Fixed; // a shader of the user's finds what GL's own functions need
    const Shading usual = hasShaders ? Shading::Glsl : Shading::Fixed;
    if (options.shading != Shading::Cg)
        return options.shading.value_or(usual);
    fCg = findCg();
    if (!fCg.fault.empty() && options.compare)
        throw Failure(kExitNoGL, "--compare cg: " + fCg.fault);
    return fCg.fault.empty() ? Shading::Cg : usual;
}

/// A picture of a sky has its own sun. What isn't drawn by compiled materials doesn't see it.
bool DrawnScene::isLitBySkyAlone(const Options& options) const {
    return options.skyPicture && fShading != Shading::Fixed && !options.lit;
}

DrawnScene::DrawnScene(const Scene& scene, const Guides& guides, const Options& options,
                       const ProgressReport& report)
    : fShading(chooseShading(options)), fSky(skyOf(options)),
      fLights(scene, !isLitBySkyAlone(options), options.exposure),
      fDrawable(scene, fShading, report, extrasOf(options)), fGround(guides.ground), fMarks(scene),
      fGrid(guides.grid), fAxes(guides.axes) {
    if (options.part)
        fMarks.outline(partOf(scene, *options.part));
    if (options.measure)
        fMarks.measure({options.measure->begin(), options.measure->end()});
    if (options.cull)
        fCulling.emplace(fDrawable);
    if (options.particles)
        fParticles.emplace(scene, ParticleOptions{*options.particles, options.lit, options.spriteImages});
    if (options.demo)
        fFountain.emplace();
    if (options.cg && options.cg->isEffect)
        fUserShader = std::make_unique<EffectShader>(*options.cg, scene, fLights, options.exposure);
    else if (options.cg)
        fUserShader = std::make_unique<CgUserShader>(*options.cg, fLights);
    else if (!options.shader.empty())
        fUserShader = std::make_unique<GlslUserShader>(options.shader, fLights);
    if (fSky)
        fBackdrop.emplace(*fSky);
    if (options.showSky && !GLFunctionTable::fpGlobalFunctionTable->usable(kCapShaderObjects))
        fNotes.emplace_back("this OpenGL has no shaders (GL_ARB_shader_objects): --show-sky shows nothing");
    if (fShading == Shading::Fixed)
        return;
    if (options.shadows && fLights.hasMainLight())
        fShadows.emplace(scene, fLights);
    else if (options.shadows && isLitBySkyAlone(options))
        fNotes.emplace_back("--shadows: the picture of the sky is the only light, and casts none");
    if (fDrawable.hasClear())
        fBehind.emplace();
    fShaders.emplace(scene, fLights, fSky ? &*fSky : nullptr, fShadows ? &*fShadows : nullptr,
                     fBehind ? &*fBehind : nullptr,
                     fShading == Shading::Cg ? std::unique_ptr<MaterialLanguage>(new CgLanguage(fCg))
                                             : std::make_unique<GlslLanguage>());
    fOcclusion.emplace(radiusOf(scene.bounds()));
    if (options.ambientOcclusion)
        fOcclusion->prepare();
    fShaders->useOcclusion(*fOcclusion, options.ambientOcclusion);
    if (!fShadows && !fBehind && LateLight::paysFor(scene)) {
        fLateLight.emplace();
        fShaders->wishLate(fDrawable.opaqueInstances());
    }
}

void DrawnScene::upload(const ProgressReport& report) {
    const double share = fShaders ? 0.5 : 1.0;
    fDrawable.upload([&](double done) { tell(report, share * done, 1.0); });
    if (fParticles)
        fParticles->upload();
    if (!fShaders)
        return;
    const auto all = static_cast<double>(fShaders->count());
    double done = 0.0;
    fShaders->upload([&] { tell(report, share * (1.0 + ++done / all), 1.0); });
}

void DrawnScene::follow(const Moved& moved, const Bounds& bounds) {
    fDrawable.follow(moved);
    if (fCulling)
        fCulling->follow(moved);
    if (fParticles)
        fParticles->follow(moved);
    fGround.follow();
    if (fShadows)
        fShadows->follow(bounds);
}

std::vector<std::string> DrawnScene::warnings() const {
    std::vector<std::string> warnings = fDrawable.warnings();
    for (const std::vector<std::string>& more :
         {fLights.warnings(), fShaders ? fShaders->warnings() : std::vector<std::string>(),
          fUserShader ? fUserShader->warnings() : std::vector<std::string>(),
          fParticles ? fParticles->warnings() : std::vector<std::string>()})
        warnings.insert(warnings.end(), more.begin(), more.end());
    return warnings;
}

std::vector<std::string> DrawnScene::notes() const {
    std::vector<std::string> notes = fNotes;
    if (!fCg.fault.empty())
        notes.push_back("--shading cg: " + fCg.fault + "; drawn by " +
                        (fShading == Shading::Glsl ? "GLSL shaders" : "OpenGL's own functions"));
    if (fCulling && !fCulling->supported())
        notes.emplace_back("this OpenGL counts no samples (GL_ARB_occlusion_query): --cull draws everything");
    return notes;
}

void tellNotesAndWarnings(const DrawnScene& drawn) {
    for (const std::string& note : drawn.notes())
        say(note);
    for (const std::string& warning : drawn.warnings())
        say(warning);
}

} // namespace orloview
