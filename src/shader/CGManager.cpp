#include "shader/CGManager.h"

#include "shader/CgCall.h"
#include "shader/NodeManager.h"

#include <array>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

#include <orlohost/HWEnvironment.h>

using koString::CString;
using koString::IString;

namespace {

constexpr std::array<const char*, 4> kCgLightStrings = {"point_light", "spot_light", "directional_light",
                                                        "ambient_light"};
constexpr std::array<const char*, 4> kCgTransparencyStrings = {"", "", "OpacityInAlpha", "TransparencyInRGB"};

const char* profileString(CGprofile profile) {
    if (profile == CG_PROFILE_UNKNOWN || !F_cgGetProfileString)
        return "Unknown";
    return F_cgGetProfileString(profile);
}

IString pathOf(const CString& name, const char* tail) {
    IString path;
    path.reserve(512); // more than most, and than most keys that begin with it, so that it grows once
    path.plusEqual(HWEnvironment::orlo_path).plusEqual("/bin/Cg/").plusEqual(name.asChar()).plusEqual(tail);
    return path;
}

IString vertexFileOf(const CString& name) {
    return pathOf(name, "_vertex.cg");
}

IString fragmentFileOf(const CString& name) {
    return pathOf(name, "_fragment.cg");
}

void append(IString& key, const std::vector<CString>& options) {
    for (const CString& option : options)
        key.plusEqual(" ").plusEqual(option.asChar());
}

/// What a compiler is given: a host's own switches, then ours.
class Switches {
public:
    Switches(const std::vector<CString>& options, bool placesLikeGL) {
        fInclude.plusEqual("-I ")
            .plusEqual(HWEnvironment::orlo_path.convertToCString())
            .plusEqual("/bin/Cg/");
        for (const CString& option : options)
            fList.push_back(option.asChar());
        if (placesLikeGL)
            fList.push_back("-posinv");
        fList.push_back(fInclude.asChar());
        fList.push_back(nullptr);
    }

    Switches(const Switches&) = delete; // the list points into it
    Switches& operator=(const Switches&) = delete;

    const char** list() { return fList.data(); }

    /// A line for each of the first `count`.
    void print(const char* line, size_t count) const {
        for (size_t i = 0; i < count; ++i)
            std::printf(line, static_cast<int>(i), fList[i] ? fList[i] : "(null)");
    }

    size_t size() const { return fList.size(); }

private:
    CString fInclude;
    std::vector<const char*> fList;
};

Switches vertexSwitches(const std::vector<CString>& options) {
    return {options, true};
}

bool compile(CGManager::CGShader& shader, const CString& name, const std::vector<CString>& vertexOptions,
             const std::vector<CString>& fragmentOptions) {
    Switches forVertices = vertexSwitches(vertexOptions);
    if (!shader.loadVertexProgram(vertexFileOf(name), forVertices.list())) {
        forVertices.print("Failing vertex params[%d] = %s\n", forVertices.size() - 1);
        return false;
    }
    Switches forFragments(fragmentOptions, false);
    if (!shader.loadFragmentProgram(fragmentFileOf(name), forFragments.list())) {
        // One line more than above, the null at the end: who counts the lines counts it.
        forFragments.print("Failing fragment params[%d] = %s\n", forFragments.size());
        return false;
    }
    return true;
}

} // namespace

CGManager::CGManager(CGprofile vertexProfile, CGprofile fragmentProfile)
    : fVertexProfile(vertexProfile), fFragmentProfile(fragmentProfile) {
    CGcontextSingleton::theCgContext();
}

CGManager::~CGManager() {
    releaseShaderMap();
    // Oddity: shared with all other managers, and yet it goes with the first of them that ends: hosts rely on
    // getting rid of every program like this.
    delete CGcontextSingleton::sCgContext;
    CGcontextSingleton::sCgContext = nullptr;
}

const char* CGManager::vertexProfileString() const {
    return profileString(fVertexProfile);
}

const char* CGManager::fragmentProfileString() const {
    return profileString(fFragmentProfile);
}

CString CGManager::getLightStringFromType(CGLightType type) {
    return type < kCgLightStrings.size() ? kCgLightStrings[type] : "";
}

CString CGManager::getTransparencyTypeStringFromType(CGTransparencyType type) {
    return type < kCgTransparencyStrings.size() ? kCgTransparencyStrings[type] : "";
}

CGManager::CGShader CGManager::bindShader(const CString& name, const Options& vertexOptions,
                                          const Options& fragmentOptions) {
    try {
        return findOrCompile(name, vertexOptions, fragmentOptions);
    } catch (const std::bad_alloc&) {
        return emptyShader();
    }
}

CGManager::CGShader CGManager::findOrCompile(const CString& name, const Options& vertexOptions,
                                             const Options& fragmentOptions) {
    CGShader shader = emptyShader();
    IString key = vertexFileOf(name);
    const IString fragmentFile = fragmentFileOf(name);
    if (!fileExists(key) || !fileExists(fragmentFile))
        return shader;

    // The last of the vertex options runs straight into the fragment file's path.
    key.plusEqual(" : ");
    append(key, vertexOptions);
    key.plusEqual(fragmentFile).plusEqual(" : ");
    append(key, fragmentOptions);

    const auto known = fShaderMap.find(key);
    if (known == fShaderMap.end()) {
        if (compile(shader, name, vertexOptions, fragmentOptions))
            fShaderMap.emplace(key, shader);
    } else if (koString::equal(known->first, key)) {
        shader = known->second;
    }
    if (shader.fVertexProgram && shader.fFragmentProgram)
        shader.enable();
    else
        std::puts("Shader is invalid !");
    return shader;
}

CGManager::CGShader CGManager::bindVertexShader(const CString& name, const Options& vertexOptions) {
    try {
        const CGShader shader = findOrCompileVertex(name, vertexOptions);
        shader.enable();
        return shader;
    } catch (const std::bad_alloc&) {
        return emptyShader();
    }
}

CGManager::CGShader CGManager::findOrCompileVertex(const CString& name, const Options& vertexOptions) {
    IString key = vertexFileOf(name);
    append(key, vertexOptions);
    const auto known = fShaderMap.find(key);
    if (known != fShaderMap.end())
        return known->second;
    CGShader shader = emptyShader();
    shader.loadVertexProgram(vertexFileOf(name), vertexSwitches(vertexOptions).list());
    return fShaderMap.emplace(key, shader).first->second;
}

const CGManager::CGShader* CGManager::bindKOSLShader(koShadingDag::ShadingNodeSpec& node, const CString& key,
                                                     const std::vector<LightSpec>* lights) const {
    auto* manager = managerOf<CGManager>(node, fVertexProfile, fFragmentProfile);
    if (!manager)
        return nullptr;
    const CGShader* shader = onlyShader(manager->fShaderMap, key);
    try {
        if (!shader)
            shader = manager->findOrCompileMaterial(node, IString(key), lights, emptyShader());
        shader->enable();
        return shader;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

/// A new one is made of `empty`, which has the profiles of the manager that was asked.
const CGManager::CGShader* CGManager::findOrCompileMaterial(const koShadingDag::ShadingNodeSpec& node,
                                                            const IString& key,
                                                            const std::vector<LightSpec>* lights,
                                                            CGShader empty) {
    auto place = fShaderMap.lower_bound(key);
    if (place == fShaderMap.end() || koString::less(key, place->first)) {
        CString vertexSource;
        CString fragmentSource;
        compileMaterialToCg(node, lights, vertexSource, fragmentSource);
        empty.loadVertexProgramFromString(IString(vertexSource));
        empty.loadFragmentProgramFromString(IString(fragmentSource));
        place = fShaderMap.emplace_hint(place, key, empty);
    }
    return &place->second;
}

void CGManager::releaseShaderMap() {
    for (auto& [key, shader] : fShaderMap)
        shader.destroy();
    fShaderMap.clear();
}

bool fileExists(const IString& path) {
    const int file = open(path.asMultibyte(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return false;
    close(file);
    return true;
}
