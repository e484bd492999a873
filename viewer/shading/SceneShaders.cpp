#include "shading/SceneShaders.h"

#include "draw/GL.h"
#include "output/OutputFile.h"
#include "shading/LateLight.h"

#include "base/ExitCode.h"
#include "scene/Vectors.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <set>

namespace orloview {

namespace {

/// As a file name: whatever might mean something to a file system becomes a line.
std::string fileNameOf(const std::string& name) {
    std::string result = name;
    for (char& c : result) {
        if (std::isalnum(static_cast<unsigned char>(c)) == 0 && c != '-' && c != '.' && c != '_')
            c = '_';
    }
    return result.empty() || result[0] == '.' ? "material" + result : result;
}

Encoding encodingOf(TextureUse Material::*use) {
    const bool isColor = use == &Material::baseColorTexture || use == &Material::emissiveTexture ||
                         use == &Material::specularTexture || use == &Material::specularTintTexture ||
                         use == &Material::sheenTexture || use == &Material::diffuseTransmissionColorTexture;
    return isColor ? Encoding::Srgb : Encoding::Linear;
}

bool hasSheen(const Material& material) {
    return material.sheen[0] > 0.0F || material.sheen[1] > 0.0F || material.sheen[2] > 0.0F;
}

/// The alpha of pictures is opacity or glossiness, or a number that goes with a colour.
bool readsAlpha(const Material& material, TextureUse Material::*use) {
    return use == &Material::specularTexture || use == &Material::specularWeightTexture ||
           use == &Material::sheenRoughnessTexture || use == &Material::diffuseTransmissionTexture ||
           (use == &Material::baseColorTexture && material.alphaMode != AlphaMode::Opaque);
}

} // namespace

SceneShaders::SceneShaders(const Scene& scene, const SceneLights& lights, const SkyLight* sky,
                           const ShadowMap* shadows, const Behind* behind,
                           std::unique_ptr<MaterialLanguage> language)
    : fLanguage(std::move(language)), fScene(scene), fLights(lights), fSpecs{lights.specs(), {}},
      fStore(scene), fTextures(scene.materials.size()), fShadows(shadows), fBehind(behind) {
    for (size_t i = 0; i < scene.materials.size(); ++i)
        askTextures(i);
    fStore.begin();
    for (auto& looks : fInstanceLooks)
        looks.resize(scene.instances.size());
    if (shadows)
        fSpecs[0][0].fCastsShadow = true;
    if (sky) {
        fSpecs[0].emplace_back().fType = sky->picture ? LightSpec::kSkyMap : LightSpec::kSky;
        fSkyAxes = {sky->up};
        if (sky->picture)
            fSkyAxes.insert(fSkyAxes.end(), {sky->right, sky->back});
    }
    fSpecs[1] = fSpecs[0];
    for (LightSpec& spec : fSpecs[1])
        spec.fIsOccluded = spec.fType >= LightSpec::kAmbient;
    const bool withSheen = std::any_of(scene.materials.begin(), scene.materials.end(), hasSheen);
    if (sky || withSheen)
        fSkyMaps = std::make_unique<SkyMaps>(sky, withSheen);
    addFrameValues();
}

void SceneShaders::addFrameValues() {
    constexpr std::array kSkyAxes = {"skyUp", "skyRight", "skyBack"};
    for (size_t i = 0; i < fSkyAxes.size(); ++i)
        fFrameValues.push_back({kSkyAxes[i], std::vector<float>(3)});
    if (fShadows)
        fFrameValues.push_back({"light0ShadowMatrix", std::vector<float>(16)});
    if (fBehind)
        fFrameValues.push_back({"behindMatrix", std::vector<float>(16)});
    const Specs& specs = fSpecs[0];
    for (size_t i = 0; i < specs.size(); ++i) {
        const std::string light = "light" + std::to_string(i);
        if (specs[i].fHasRange)
            fFrameValues.push_back(
                {light + "InverseRange", {static_cast<float>(1.0 / fLights.fileLight(i)->range)}});
        if (specs[i].fHasInnerCone)
            fFrameValues.push_back({light + "InnerCosine",
                                    {static_cast<float>(std::cos(fLights.fileLight(i)->innerConeAngle))}});
    }
}

void SceneShaders::askTextures(size_t material) {
    const Material& asking = fScene.materials[material];
    fTextures[material].fill(nullptr);
    for (size_t i = 0; i < kTextureUses.size(); ++i) {
        const TextureUse& use = asking.*kTextureUses[i];
        if (!fStore.hasPicture(use))
            continue;
        fStore.ask(use, encodingOf(kTextureUses[i]),
                   readsAlpha(asking, kTextureUses[i]) ? AlphaUse::Kept : AlphaUse::Ignored,
                   {1.0F, 1.0F, 1.0F},
                   [this, material, i](GLTexture2D* texture) { fTextures[material][i] = texture; });
    }
}

void SceneShaders::upload(const std::function<void()>& uploaded) {
    fStore.upload(uploaded);
    fLate = makeLate();
    for (size_t i = 0; i < fScene.instances.size(); ++i)
        if (!fLate || !std::ranges::binary_search(fLateInstances, i))
            lookOf(i, true);
    fLanguage->leave();
    gl().glActiveTexture(GL_TEXTURE0);
}

std::vector<std::string> SceneShaders::warnings() const {
    std::vector<std::string> warnings = fStore.warnings();
    warnings.insert(warnings.end(), fWarnings.begin(), fWarnings.end());
    return warnings;
}

SceneShaders::LookKey SceneShaders::keyOf(size_t instance, bool lit) const {
    const Mesh& mesh = fScene.meshes[static_cast<size_t>(fScene.instances[instance].mesh)];
    MeshTraits traits;
    for (size_t set = 0; set < mesh.uvSets.size() && set < 8; ++set)
        traits.uvSets |= mesh.uvSets[set].empty() ? 0U : 1U << set;
    traits.hasColors = !mesh.colors.empty();
    traits.hasTangents = fScene.showsTangents(mesh);
    traits.isLit = lit && !mesh.normals.empty();
    return {mesh.material, traits, lit && fIsOccluded};
}

SceneShaders::Look& SceneShaders::lookOf(size_t instance, bool lit) {
    Look*& known = fInstanceLooks[!lit ? 0 : fIsOccluded ? 2 : 1][instance];
    if (known)
        return *known;
    const LookKey key = keyOf(instance, lit);
    Look& look = fLooks[key];
    known = &look;
    if (look.network)
        return look;
    const auto& [material, traits, isOccluded] = key;
    look.network = networkOf(key, instance);
    look.program = &programOf(look, material, fSpecs[isOccluded ? 1 : 0]);
    if (look.program->shader)
        prepare(look);
    return look;
}

std::shared_ptr<koShadingDag::ShadingNodeSpec> SceneShaders::networkOf(const LookKey& key,
                                                                       size_t instance) const {
    static const MaterialTextures kNoTextures{};
    const Mesh& mesh = fScene.meshes[static_cast<size_t>(fScene.instances[instance].mesh)];
    const auto& [material, traits, isOccluded] = key;
    return makeNetwork(fScene.materialOf(mesh),
                       material < 0 ? kNoTextures : fTextures[static_cast<size_t>(material)], traits);
}

/// False where they don't share a structure.
bool SceneShaders::addLateLooks(Late& late) const {
    std::map<LookKey, size_t> numbers;
    late.lookOf.resize(fScene.instances.size());
    for (const size_t i : fLateInstances) {
        const LookKey key = keyOf(i, true);
        if (!std::get<MeshTraits>(key).isLit)
            return false;
        const auto [known, isNew] = numbers.try_emplace(key, late.looks.size());
        late.lookOf[i] = known->second;
        if (!isNew)
            continue;
        late.looks.push_back(networkOf(key, i));
        if (!koString::equal(late.looks.back()->networkKey(&fSpecs[0]),
                             late.looks[0]->networkKey(&fSpecs[0])))
            return false;
    }
    return !late.looks.empty() && late.looks.size() <= kMostLooks;
}

std::optional<SceneShaders::Late> SceneShaders::makeLate() {
    Late late;
    if (fIsOccluded || !addLateLooks(late))
        return std::nullopt;
    LateShaders shaders = fLanguage->compileLate(*late.looks[0], fSpecs[0], late.looks.size());
    if (!shaders.light)
        return std::nullopt;
    late.program.owner = late.looks[0].get();
    late.program.key = late.looks[0]->networkKey(&fSpecs[0]);
    late.program.specs = &fSpecs[0];
    late.program.name = nameOf(std::get<int>(keyOf(fLateInstances[0], true)));
    late.program.shader = std::move(shaders.light);
    late.recorder = std::move(shaders.recorder);
    late.needsFloats = shaders.needsFloats;
    prepare(late);
    return late;
}

void SceneShaders::prepare(Late& late) {
    late.recorder->enable();
    late.lookPlace = late.recorder->placeOf("look");
    late.program.shader->enable();
    findPlaces(late.program);
    for (size_t i = 0; i < late.looks.size(); ++i) {
        const std::string element = late.looks.size() > 1 ? "[" + std::to_string(i) + "]" : "";
        for (const auto& uniform : late.looks[i]->uniforms()) {
            const MaterialShader::Place place =
                late.program.shader->placeOf((uniform.fName.asChar() + element).c_str());
            if (place != MaterialShader::kNowhere)
                late.program.shader->set(place, uniform.fComponents, uniform.fValues);
        }
    }
}

SceneShaders::Program& SceneShaders::programOf(Look& look, int material, const Specs& specs) {
    const koString::CString key = look.network->networkKey(&specs);
    Program& program = fPrograms[key.asChar()];
    if (!program.owner) {
        program.owner = look.network.get();
        program.key = key;
        program.specs = &specs;
        compile(program, material);
    }
    return program;
}

std::string SceneShaders::nameOf(int material) const {
    const std::string name = material < 0 ? "" : fScene.materials[static_cast<size_t>(material)].name;
    return name.empty() ? "material" + std::to_string(material + 1) : name;
}

void SceneShaders::compile(Program& program, int material) {
    program.name = nameOf(material);
    program.shader = fLanguage->compile(*program.owner, program.key, *program.specs);
    fCurrentProgram = nullptr;
    if (!program.shader) {
        fWarnings.push_back("warning: the material '" + program.name +
                            "': OpenGL refuses its shader; drawn by its own functions");
        return;
    }
    findPlaces(program);
}

/// Of what is nobody's material. Needs the program current.
void SceneShaders::findPlaces(Program& program) {
    if (fSkyMaps) {
        for (const SkyMaps::Map& map : fSkyMaps->maps())
            addMap(program, map.name, map.texture->textureName());
    }
    if (fShadows)
        addMap(program, "light0ShadowMap", fShadows->texture());
    if (fBehind)
        addMap(program, "behind", fBehind->texture());
    if (fIsOccluded)
        addMap(program, "occlusionMap", fOcclusion->texture());
    for (const FrameValue& value : fFrameValues)
        program.framePlaces.push_back(program.shader->placeOf(value.name.c_str()));
}

/// Needs the program current.
void SceneShaders::addMap(Program& program, const char* sampler, GLuint texture) {
    if (const auto unit = program.shader->setTexture(sampler, texture))
        program.maps.push_back({*unit, texture});
}

/// Looks up once what every draw needs.
void SceneShaders::prepare(Look& look) {
    MaterialShader& shader = *look.program->shader;
    shader.enable();
    fCurrentProgram = nullptr;
    for (const auto& uniform : look.network->uniforms()) {
        const MaterialShader::Place place = shader.placeOf(uniform.fName);
        if (place != MaterialShader::kNowhere)
            look.values.push_back({place, uniform.fComponents, uniform.fValues});
    }
    for (const auto& sampler : look.network->samplers()) {
        const GLuint texture = static_cast<IGLTexture*>(sampler.fTexture)->textureName();
        if (const auto unit = shader.setTexture(sampler.fName, texture))
            look.textures.push_back({*unit, texture});
    }
}

void SceneShaders::useOcclusion(const Occlusion& occlusion, bool fromTheStart) {
    fOcclusion = &occlusion;
    fIsOccluded = fromTheStart;
    fFrameValues.push_back({"occlusionMatrix", std::vector<float>(16)});
}

void SceneShaders::beginFrame(const koLinear::AffineMatrix& worldToEye, bool occluded) {
    fIsOccluded = occluded;
    ++fFrame;
    updateFrameValues(worldToEye);
    fCurrent = nullptr;
    fCurrentProgram = nullptr;
    fBound.clear();
}

/// Those that follow the eye; the first of all.
void SceneShaders::updateFrameValues(const koLinear::AffineMatrix& worldToEye) {
    auto value = fFrameValues.begin();
    const auto toFloat = [](double number) { return static_cast<float>(number); };
    for (const koLinear::Vector& axis : fSkyAxes) {
        const koLinear::Vector seen = worldToEye.transform(axis);
        std::transform(seen.data(), seen.data() + 3, (value++)->floats.begin(), toFloat);
    }
    if (fShadows) {
        const auto eyeToMap = koLinear::ProjMatrix(worldToEye.inverse()).then(fShadows->worldToMap());
        std::transform(eyeToMap.data(), eyeToMap.data() + 16, (value++)->floats.begin(), toFloat);
    }
    if (fBehind) {
        const double* matrix = fBehind->eyeToMap().data();
        std::transform(matrix, matrix + 16, value->floats.begin(), toFloat);
    }
    if (fIsOccluded) {
        const double* matrix = fOcclusion->eyeToMap().data();
        std::transform(matrix, matrix + 16, fFrameValues.back().floats.begin(), toFloat);
    }
}

bool SceneShaders::bind(size_t instance, bool lit) {
    Look& look = lookOf(instance, lit);
    if (!look.program->shader) {
        fLanguage->leave();
        fCurrentProgram = nullptr;
        return false;
    }
    if (fCurrentProgram != look.program) {
        look.program->shader->enable();
        fCurrentProgram = look.program;
    }
    if (look.program->frame != fFrame) {
        look.program->frame = fFrame;
        feedFrame(*look.program);
    }
    if (fCurrent != &look) {
        fCurrent = &look;
        feed(look);
    }
    return true;
}

void SceneShaders::bindRecorder(size_t instance) {
    if (!fIsRecording)
        fLate->recorder->enable();
    fIsRecording = true;
    const size_t look = fLate->lookOf[instance];
    if (fLate->lookPlace == MaterialShader::kNowhere || fLate->recordedLook == look)
        return;
    fLate->recordedLook = look;
    const auto digit = [look](unsigned place) { return static_cast<float>(look >> (2 * place) & 3U); };
    const std::array<float, 3> digits{digit(0), digit(1), digit(2)};
    fLate->recorder->set(fLate->lookPlace, digits.size(), digits.data());
}

void SceneShaders::bindLateLight() {
    fIsRecording = false;
    fLate->program.shader->enable();
    fCurrentProgram = &fLate->program;
    feedFrame(fLate->program);
    bindTextures(fLate->program.maps);
}

void SceneShaders::feedFrame(const Program& program) const {
    for (size_t i = 0; i < fFrameValues.size(); ++i) {
        const std::vector<float>& floats = fFrameValues[i].floats;
        if (program.framePlaces[i] != MaterialShader::kNowhere)
            program.shader->set(program.framePlaces[i], floats.size(), floats.data());
    }
}

void SceneShaders::feed(Look& look) {
    bindTextures(look.program->maps);
    bindTextures(look.textures);
    if (look.program->fed == &look)
        return;
    look.program->fed = &look;
    for (const Value& value : look.values)
        look.program->shader->set(value.place, value.components, value.floats);
}

void SceneShaders::bindTextures(const std::vector<Bound>& textures) {
    for (const Bound& bound : textures) {
        if (fBound.size() <= bound.unit)
            fBound.resize(bound.unit + 1);
        if (fBound[bound.unit] == bound.texture)
            continue;
        fBound[bound.unit] = bound.texture;
        gl().glActiveTexture(GL_TEXTURE0 + bound.unit);
        gl().glBindTexture(GL_TEXTURE_2D, bound.texture);
    }
}

void SceneShaders::endFrame() {
    fLanguage->leave();
    for (size_t unit = fBound.size(); unit-- > 0;) {
        gl().glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
        gl().glBindTexture(GL_TEXTURE_2D, 0);
    }
    gl().glActiveTexture(GL_TEXTURE0);
}

void SceneShaders::dump(const std::string& folder) const {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error)
        throw Failure(kExitNotWritten, folder + ": the folder could not be made: " + error.message());
    std::set<std::string> taken;
    const auto write = [&](const Program& program) {
        const std::string plain = fileNameOf(program.name);
        std::string name = plain;
        for (int n = 2; !taken.insert(name).second; ++n)
            (name = plain).append("-").append(std::to_string(n));
        for (const MaterialLanguage::Source& source : fLanguage->sources(*program.owner, *program.specs)) {
            std::string path = folder;
            path.append("/").append(name).append(source.suffix);
            OutputFile file(path);
            const std::string_view text = source.text.asChar();
            file.write(text.data(), text.size());
            file.commit();
        }
    };
    for (const auto& [key, program] : fPrograms)
        write(program);
    if (fLate && !fPrograms.contains(fLate->program.key.asChar()))
        write(fLate->program);
}

} // namespace orloview
