#pragma once

#include "draw/SceneLights.h"
#include "shading/Behind.h"
#include "shading/MaterialNetwork.h"
#include "shading/MaterialShader.h"
#include "shading/Occlusion.h"
#include "shading/ShadowMap.h"
#include "shading/SkyMaps.h"
#include "texture/TextureStore.h"

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace orloview {

/// The shaders that a scene's materials are drawn with: a network for each material, and one compiled shader
/// for all networks of the same structure.
///
/// Needs a current context for everything, and the scene and the lights to stay.
class SceneShaders {
public:
    /// `sky`: what shines from all round; null for none. `shadows`: of the first light; null for none.
    /// `behind`: of clear materials; null where there are none. Both are updated before a frame begins.
    SceneShaders(const Scene& scene, const SceneLights& lights, const SkyLight* sky, const ShadowMap* shadows,
                 const Behind* behind, std::unique_ptr<MaterialLanguage> language);

    SceneShaders(const SceneShaders&) = delete;
    SceneShaders& operator=(const SceneShaders&) = delete;

    /// Lets instances be lit late where that can be; as `upload` finds out.
    void wishLate(const std::vector<size_t>& instances) { fLateInstances = instances; }

    /// How many steps `upload` has.
    size_t count() const { return fStore.count(); }

    /// Uploads the textures, and compiles what the scene is drawn with.
    void upload(const std::function<void()>& uploaded);

    /// Pictures that were left out or reduced, and materials whose shader GL refuses, a line each.
    std::vector<std::string> warnings() const;

    /// What `beginFrame` may ask for; it has to stay. `fromTheStart`: it will, and `upload` makes shaders of
    /// that kind; it has to be prepared then.
    void useOcclusion(const Occlusion& occlusion, bool fromTheStart);

    /// `occluded`: near things keep off what comes from all round; needs the occlusion up to date.
    void beginFrame(const koLinear::AffineMatrix& worldToEye, bool occluded);

    /// Makes the shader of an instance current, with all that it reads. False where GL refuses it: none is
    /// current then, and GL's own functions have to do.
    bool bind(size_t instance, bool lit);

    /// Whether what was wished for can be: all of these instances have shaders of the same structure, which
    /// need no more of them than is recorded.
    bool canLightLate() const { return fLate.has_value(); }

    /// Whether what is recorded needs whole floats.
    bool recordsFloats() const { return fLate && fLate->needsFloats; }

    /// Makes the shader current that records an instance, with what it reads.
    void bindRecorder(size_t instance);

    /// Makes the shader current that lights all that is recorded, with what it reads.
    void bindLateLight();

    /// Leaves no shader current, no texture bound and unit 0 active.
    void endFrame();

    /// Writes the sources of all shaders: MATERIAL.vert and MATERIAL.frag (MATERIAL_vertex.cg and
    /// MATERIAL_fragment.cg), named by the first material that uses them. Throws Failure (kExitNotWritten).
    void dump(const std::string& folder) const;

private:
    struct Look;

    struct Value {
        MaterialShader::Place place;
        uint32_t components;
        const float* floats;
    };
    struct Bound {
        uint32_t unit;
        GLuint texture;
    };

    /// A compiled shader.
    struct Program {
        koShadingDag::ShadingNodeSpec* owner = nullptr; ///< the network that it was compiled of
        koString::CString key;
        const std::vector<LightSpec>* specs = nullptr;
        std::string name;
        std::unique_ptr<MaterialShader> shader;         ///< null: OpenGL refuses it
        std::vector<MaterialShader::Place> framePlaces; ///< as fFrameValues
        std::vector<Bound> maps;                        ///< that are nobody's material
        const Look* fed = nullptr;                      ///< whose values it has
        unsigned frame = 0;                             ///< whose values it has
    };

    /// A value that holds for a frame, whatever the material.
    struct FrameValue {
        std::string name;
        std::vector<float> floats; ///< 1, 3, or a matrix of 16
    };

    /// A material on meshes of some kind.
    struct Look {
        std::shared_ptr<koShadingDag::ShadingNodeSpec> network;
        Program* program = nullptr;
        std::vector<Value> values;
        std::vector<Bound> textures;
    };
    using LookKey = std::tuple<int, MeshTraits, bool>; ///< the material's number; whether occluded

    /// Materials that are lit late.
    struct Late {
        std::vector<std::shared_ptr<koShadingDag::ShadingNodeSpec>> looks;
        std::vector<size_t> lookOf; ///< as Scene::instances
        Program program;            ///< that lights
        std::unique_ptr<MaterialShader> recorder;
        MaterialShader::Place lookPlace = MaterialShader::kNowhere; ///< in the recorder
        std::optional<size_t> recordedLook;                         ///< that the recorder holds
        bool needsFloats = false;
    };

    void askTextures(size_t material);
    LookKey keyOf(size_t instance, bool lit) const;
    Look& lookOf(size_t instance, bool lit);
    std::shared_ptr<koShadingDag::ShadingNodeSpec> networkOf(const LookKey& key, size_t instance) const;
    Program& programOf(Look& look, int material, const std::vector<LightSpec>& specs);
    std::string nameOf(int material) const;
    void compile(Program& program, int material);
    void findPlaces(Program& program);
    std::optional<Late> makeLate();
    bool addLateLooks(Late& late) const;
    void prepare(Late& late);
    static void addMap(Program& program, const char* sampler, GLuint texture);
    void prepare(Look& look);
    void feed(Look& look);
    void feedFrame(const Program& program) const;
    void bindTextures(const std::vector<Bound>& textures);
    void addFrameValues();
    void updateFrameValues(const koLinear::AffineMatrix& worldToEye);

    std::unique_ptr<MaterialLanguage> fLanguage; ///< ends behind all that it compiled
    const Scene& fScene;
    const SceneLights& fLights;
    using Specs = std::vector<LightSpec>;
    std::array<Specs, 2> fSpecs; ///< occluded too
    TextureStore fStore;
    std::vector<MaterialTextures> fTextures; ///< as Scene::materials
    std::map<LookKey, Look> fLooks;
    /// As Scene::instances: unlit, lit, and occluded too; null until drawn.
    std::array<std::vector<Look*>, 3> fInstanceLooks;
    std::map<std::string, Program> fPrograms;
    std::vector<size_t> fLateInstances;
    std::optional<Late> fLate;
    std::vector<FrameValue> fFrameValues;
    std::unique_ptr<SkyMaps> fSkyMaps;
    std::vector<koLinear::Vector> fSkyAxes; ///< those that the sky's uniforms hold, in their order
    const ShadowMap* fShadows;
    const Behind* fBehind;
    const Occlusion* fOcclusion = nullptr;
    bool fIsOccluded = false; ///< of this frame; of the first, before

    const Look* fCurrent = nullptr;
    Program* fCurrentProgram = nullptr;
    bool fIsRecording = false; ///< the recorder is current
    unsigned fFrame = 0;
    std::vector<GLuint> fBound; ///< by texture unit
    std::vector<std::string> fWarnings;
};

} // namespace orloview
