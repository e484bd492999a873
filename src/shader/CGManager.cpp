#include "shader/CGManager.h"

#include "shader/CgCall.h"
#include "shader/NodeManager.h"

#include <array>
#include <cstdio>

#include <orlohost/HWEnvironment.h>

using koString::CString;
using koString::IString;

namespace {

constexpr std::array<const char*, 4> kLightStrings = {"point_light", "spot_light", "directional_light",
                                                      "ambient_light"};
constexpr std::array<const char*, 4> kTransparencyStrings = {"", "", "OpacityInAlpha", "TransparencyInRGB"};

const char* profileString(CGprofile profile) {
    if (profile == CG_PROFILE_UNKNOWN || !F_cgGetProfileString)
        return "Unknown";
    return F_cgGetProfileString(profile);
}

/// A shader's files.
struct ShaderFiles {
    IString folder;
    IString vertex;
    IString fragment;

    explicit ShaderFiles(const CString& name) : folder(HWEnvironment::orlo_path) {
        vertex = fragment = folder.plusEqual("/bin/Cg/").plus(IString(name));
        vertex.plusEqual("_vertex.cg");
        fragment.plusEqual("_fragment.cg");
    }
};

void append(IString& key, const std::vector<CString>& options) {
    for (const CString& option : options)
        key.plusEqual(" ").plusEqual(option.asChar());
}

/// What a compiler is given: a host's own switches, then ours.
class Switches {
public:
    Switches(const std::vector<CString>& options, const IString& folder, bool placesLikeGL)
        : fInclude(CString("-I ").plus(folder.convertToCString())) {
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

Switches vertexSwitches(const std::vector<CString>& options, const ShaderFiles& files) {
    return {options, files.folder, true};
}

bool compile(CGManager::CGShader& shader, const ShaderFiles& files, const std::vector<CString>& vertexOptions,
             const std::vector<CString>& fragmentOptions) {
    Switches forVertices = vertexSwitches(vertexOptions, files);
    if (!shader.loadVertexProgram(files.vertex, forVertices.list())) {
        forVertices.print("Failing vertex params[%d] = %s\n", forVertices.size() - 1);
        return false;
    }
    Switches forFragments(fragmentOptions, files.folder, false);
    if (!shader.loadFragmentProgram(files.fragment, forFragments.list())) {
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
    return type < kLightStrings.size() ? kLightStrings[type] : "";
}

CString CGManager::getTransparencyTypeStringFromType(CGTransparencyType type) {
    return type < kTransparencyStrings.size() ? kTransparencyStrings[type] : "";
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
    const ShaderFiles files(name);
    if (!fileExists(files.vertex) || !fileExists(files.fragment))
        return shader;

    // The last of the vertex options runs straight into the fragment file's path.
    IString key = files.vertex.plus(" : ");
    append(key, vertexOptions);
    key.plusEqual(files.fragment).plusEqual(" : ");
    append(key, fragmentOptions);

    const auto known = fShaderMap.find(key);
    if (known == fShaderMap.end()) {
        if (compile(shader, files, vertexOptions, fragmentOptions))
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
    const ShaderFiles files(name);
    IString key = files.vertex;
    append(key, vertexOptions);
    const auto known = fShaderMap.find(key);
    if (known != fShaderMap.end())
        return known->second;
    CGShader shader = emptyShader();
    shader.loadVertexProgram(files.vertex, vertexSwitches(vertexOptions, files).list());
    return fShaderMap.emplace(key, shader).first->second;
}

const CGManager::CGShader* CGManager::bindKOSLShader(koShadingDag::ShadingNodeSpec& node, const CString& key,
                                                     const std::vector<LightSpec>* lights) const {
    auto* manager = managerOf<CGManager>(node, fVertexProfile, fFragmentProfile);
    if (!manager)
        return nullptr;
    try {
        const IString name(key);
        auto place = manager->fShaderMap.lower_bound(name);
        if (place == manager->fShaderMap.end() || koString::less(name, place->first)) {
            CString vertexSource;
            CString fragmentSource;
            compileMaterialToCg(node, lights, vertexSource, fragmentSource);
            CGShader shader = emptyShader();
            shader.loadVertexProgramFromString(IString(vertexSource));
            shader.loadFragmentProgramFromString(IString(fragmentSource));
            place = manager->fShaderMap.emplace_hint(place, name, shader);
        }
        place->second.enable();
        return &place->second;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void CGManager::releaseShaderMap() {
    for (auto& [key, shader] : fShaderMap)
        shader.destroy();
    fShaderMap.clear();
}

bool fileExists(const IString& path) {
    std::FILE* const file = std::fopen(path.asMultibyte(), "r");
    if (!file)
        return false;
    std::fclose(file);
    return true;
}
