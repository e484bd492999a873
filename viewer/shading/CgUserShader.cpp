#include "shading/CgUserShader.h"

#include "base/ExitCode.h"

#include <array>
#include <filesystem>
#include <set>
#include <vector>

#include <orlohost/HWEnvironment.h>

namespace orloview {

namespace {

constexpr std::array kPrograms = {CGManager::kVertexProgram, CGManager::kFragmentProgram};

std::string folder() {
    return std::string(HWEnvironment::orlo_path.asMultibyte()) + "/bin/Cg/";
}

CgSupport neededCg() {
    CgSupport cg = findCg();
    if (!cg.fault.empty())
        throw Failure(kExitNoGL, "--cg: " + cg.fault + "; leave it out");
    return cg;
}

constexpr std::array kEnds = {"_vertex.cg", "_fragment.cg"};

/// A path, or a name that stands for files in the current folder and for none beside the viewer.
bool isFileOfTheUsers(const std::string& name) {
    return name.find('/') != std::string::npos ||
           (!fileExists((folder() + name + kEnds[0]).c_str()) && fileExists((name + kEnds[0]).c_str()));
}

/// The shaders that there are, by their names.
std::vector<std::string> shaderNames() {
    constexpr std::string_view kEnd = kEnds[0];
    std::set<std::string> names;
    std::error_code error;
    for (const auto& file : std::filesystem::directory_iterator(folder(), error)) {
        std::string name = file.path().filename();
        if (!name.ends_with(kEnd))
            continue;
        name.resize(name.size() - kEnd.size());
        if (fileExists((folder() + name + kEnds[1]).c_str()))
            names.insert(name);
    }
    return {names.begin(), names.end()};
}

bool isUniform(CGparameter parameter) {
    return F_cgGetParameterVariability(parameter) == CG_UNIFORM;
}

/// The uniform parameters of a program, whole, in the order of their declaration.
std::vector<std::string> parametersOf(CGprogram program) {
    std::vector<std::string> names;
    for (const CGenum nameSpace : {CG_PROGRAM, CG_GLOBAL}) {
        for (CGparameter parameter = F_cgGetFirstParameter(program, nameSpace); parameter;
             parameter = F_cgGetNextParameter(parameter)) {
            if (isUniform(parameter))
                names.emplace_back(F_cgGetParameterName(parameter));
        }
    }
    return names;
}

} // namespace

CgUserShader::CgUserShader(const CgRequest& request, const SceneLights& lights)
    : CgUserShader(request, lights, neededCg()) {}

CgUserShader::CgUserShader(const CgRequest& request, const SceneLights& lights, const CgSupport& cg)
    : fManager(cg.vertexProfile, cg.fragmentProfile),
      fShader(compile(request)), fBase{ofFragments("baseColorMap"), ofFragments("hasBaseColorMap")},
      fNormal{ofFragments("normalMap"), ofFragments("hasNormalMap")} {
    for (const auto program : kPrograms)
        fShader.setParameter1f(program, "lightCount", static_cast<float>(lights.specs().size()), false);
    for (const CgRequest::Value& value : request.values)
        setValue(request.name, value);
}

CGManager::CGShader CgUserShader::compile(const CgRequest& request) {
    const std::string asked = "--cg " + request.name + ": ";
    const bool isOwn = isFileOfTheUsers(request.name);
    const std::string files = isOwn ? request.name : folder() + request.name;
    for (const char* end : kEnds) {
        std::string file = files;
        if (!fileExists(file.append(end).c_str()))
            throw Failure(kExitUsage, std::string(asked)
                                          .append("there is no ")
                                          .append(file)
                                          .append(isOwn ? "" : "; there are ")
                                          .append(isOwn ? "" : commaSeparated(shaderNames())));
    }
    while (F_cgGetError() != CG_NO_ERROR) {
    }
    std::vector<koString::CString> options;
    for (const std::string& option : request.options)
        options.emplace_back(option.c_str());
    const CGManager::CGShader shader =
        isOwn ? load(files, request.options) : fManager.bindShader(request.name.c_str(), options, options);
    shader.disable();
    if (const CGerror error = F_cgGetError(); error != CG_NO_ERROR)
        throw Failure(kExitUsage, asked + F_cgGetErrorString(error) + cgListing());
    return shader;
}

/// What the manager does for files of its own folder; the programs go with the context.
CGManager::CGShader CgUserShader::load(const std::string& files,
                                       const std::vector<std::string>& options) const {
    const std::string include = "-I" + folder();
    std::vector<const char*> switches;
    switches.reserve(options.size() + 3);
    for (const std::string& option : options)
        switches.push_back(option.c_str());
    switches.insert(switches.end(), {include.c_str(), "-posinv", nullptr});
    CGManager::CGShader shader{nullptr, nullptr, fManager.fVertexProfile, fManager.fFragmentProfile};
    const bool hasVertices = shader.loadVertexProgram((files + kEnds[0]).c_str(), switches.data());
    switches[switches.size() - 2] = nullptr; // there are no positions among fragments
    if (hasVertices && shader.loadFragmentProgram((files + kEnds[1]).c_str(), switches.data()))
        shader.enable();
    return shader;
}

CGparameter CgUserShader::ofFragments(const char* name) const {
    return F_cgGetNamedParameter(fShader.getFragmentProgram(), name);
}

void CgUserShader::setTextures(const TextureLayer* base, const TextureLayer* normal) {
    put(fBase, base);
    put(fNormal, normal);
}

void CgUserShader::put(Slot& slot, const TextureLayer* layer) {
    const int isThere = layer ? 1 : 0;
    if (slot.isThere && slot.told != isThere)
        F_cgGLSetParameter1f(slot.isThere, static_cast<float>(slot.told = isThere));
    if (!slot.sampler || !layer)
        return;
    F_cgGLSetTextureParameter(slot.sampler, layer->texture->textureName());
    F_cgGLEnableTextureParameter(slot.sampler);
}

void CgUserShader::setValue(const std::string& shader, const CgRequest::Value& value) const {
    std::vector<std::string> known;
    bool isThere = false;
    for (const auto program : kPrograms) {
        const CGprogram handle = fShader.getProgramFromType(program);
        for (std::string& name : parametersOf(handle))
            known.push_back(std::move(name));
        isThere = isThere || F_cgGetNamedParameter(handle, value.name.c_str());
        const std::vector<float>& v = value.numbers;
        const koString::CString name = value.name.c_str();
        if (v.size() == 1)
            fShader.setParameter1f(program, name, v[0], false);
        else if (v.size() == 2)
            fShader.setParameter2f(program, name, v[0], v[1]);
        else if (v.size() == 3)
            fShader.setParameter3f(program, name, v[0], v[1], v[2]);
        else if (v.size() == 4)
            fShader.setParameter4f(program, name, v[0], v[1], v[2], v[3]);
        else
            fShader.setParameterMatrixRowMajor(program, name, koLinear::ProjMatrixFlt(v.data()));
    }
    if (!isThere)
        throw Failure(kExitUsage, "--cg-set " + value.name + ": " + shader +
                                      " has no such parameter; its parameters: " + commaSeparated(known));
    if (const CGerror error = F_cgGetError(); error != CG_NO_ERROR)
        throw Failure(kExitUsage, "--cg-set " + value.name + ": " + F_cgGetErrorString(error));
}

} // namespace orloview
