#include "CgTest.h"

#include <filesystem>
#include <fstream>

#include <orlohost/HWEnvironment.h>

using namespace koShadingDag;

namespace {

const Calls kEnableVertex{call("cgGLEnableProfile", CG_PROFILE_ARBVP1),
                          call("cgGLBindProgram", handle<CGprogram>(0x101))};
const Calls kEnable = kEnableVertex + Calls{call("cgGLEnableProfile", CG_PROFILE_ARBFP1),
                                            call("cgGLBindProgram", handle<CGprogram>(0x102))};

/// With a folder of shader files, "toon" among them.
class CgManagers : public CgTest {
protected:
    CgManagers() {
        char folder[] = "/tmp/cgmanagerXXXXXX";
        fFolder = mkdtemp(folder);
        std::filesystem::create_directories(fFolder + "/bin/Cg");
        fVertexFile = fFolder + "/bin/Cg/toon_vertex.cg";
        fFragmentFile = fFolder + "/bin/Cg/toon_fragment.cg";
        fInclude = "-I " + fFolder + "/bin/Cg/";
        std::ofstream(fVertexFile) << "vertices";
        std::ofstream(fFragmentFile) << "fragments";
        HWEnvironment::orlo_path = fFolder.c_str();
        fManager = std::make_unique<CGManager>(CG_PROFILE_ARBVP1, CG_PROFILE_ARBFP1);
        clearRecorded();
    }
    ~CgManagers() override {
        fManager.reset();
        std::filesystem::remove_all(fFolder);
    }

    Calls createVertex(std::vector<const char*> options, uint64_t contextNumber = 1) const {
        return create(fVertexFile, CG_PROFILE_ARBVP1, std::move(options), contextNumber);
    }
    Calls createFragment(std::vector<const char*> options) const {
        return create(fFragmentFile, CG_PROFILE_ARBFP1, std::move(options), 1);
    }
    Calls create(const std::string& file, CGprofile profile, std::vector<const char*> options,
                 uint64_t contextNumber) const {
        options.push_back(fInclude.c_str());
        options.push_back(nullptr);
        return {call("cgCreateProgramFromFile", context(contextNumber), CG_SOURCE, file.c_str(), profile,
                     nullptr, options.data())};
    }
    static Calls load(uint64_t n) { return {call("cgGLLoadProgram", program(n))}; }

    using Options = std::vector<koString::CString>;
    CGManager::CGShader bind(const Options& vertexOptions = {}, const Options& fragmentOptions = {}) const {
        return fManager->bindShader("toon", vertexOptions, fragmentOptions);
    }

    std::string firstKey() const { return fManager->fShaderMap.begin()->first.asMultibyte(); }

    std::string fFolder;
    std::string fVertexFile;
    std::string fFragmentFile;
    std::string fInclude;
    std::unique_ptr<CGManager> fManager;
};

TEST_F(CgManagers, bindAndKeepShadersOfFiles) {
    const CGManager::CGShader shader = bind({"-DA", "-DB"}, {"-DF"});
    EXPECT_EQ(made(), createVertex({"-DA", "-DB", "-posinv"}) + load(1) + createFragment({"-DF"}) + load(2) +
                          kEnable);
    EXPECT_EQ(shader.getVertexProgram(), program(1));
    EXPECT_EQ(shader.fVertexProfile, CG_PROFILE_ARBVP1);
    EXPECT_EQ(shader.fFragmentProfile, CG_PROFILE_ARBFP1);
    EXPECT_EQ(firstKey(), fVertexFile + " :  -DA -DB" + fFragmentFile + " :  -DF");
    EXPECT_EQ(bind({"-DA", "-DB"}, {"-DF"}).getFragmentProgram(), program(2));
    EXPECT_EQ(made(), kEnable) << "and no more";

    bind({"-DA", "-DB", ""}, {"-DF"}); // another list of switches
    EXPECT_EQ(fPrograms, 4);
    fManager->sceneHasChanged();
    EXPECT_TRUE(fManager->fShaderMap.empty());
    bind({"-DA", "-DB"}, {"-DF"});
    EXPECT_EQ(fPrograms, 6) << "another scene, other programs";
}

TEST_F(CgManagers, leaveMissingFilesUnmentioned) {
    bind();
    for (const std::string& file : {fFragmentFile, fVertexFile}) {
        std::filesystem::rename(file, fFolder + "/away");
        EXPECT_FALSE(fileExists(file.c_str()));
        clearRecorded();
        EXPECT_EQ(printed([&] { // although it was compiled once
                      const CGManager::CGShader shader = bind();
                      EXPECT_EQ(shader.getVertexProgram(), nullptr);
                      EXPECT_EQ(shader.fVertexProfile, CG_PROFILE_ARBVP1);
                  }),
                  "");
        EXPECT_EQ(made(), Calls{});
        std::filesystem::rename(fFolder + "/away", file);
    }
}

TEST_F(CgManagers, tellWhatDoesNotCompileEachTime) {
    fRefuses = [](const std::string& path) { return path.ends_with("_vertex.cg"); };
    for (int times = 0; times < 2; ++times)
        EXPECT_EQ(printed([this] { bind({"-DA"}); }),
                  "Vertex program failed to compile:\n" + fVertexFile +
                      "\nFailing vertex params[0] = -DA\nFailing vertex params[1] = -posinv\n"
                      "Failing vertex params[2] = " +
                      fInclude + "\nShader is invalid !\n");
    EXPECT_EQ(made(), createVertex({"-DA", "-posinv"}) + createVertex({"-DA", "-posinv"}));
    fRefuses = [](const std::string& path) { return path.ends_with("_fragment.cg"); };
    EXPECT_EQ(printed([this] { EXPECT_EQ(bind().getVertexProgram(), program(1)) << "it compiled"; }),
              "Fragment program failed to compile:\n" + fFragmentFile + "\nFailing fragment params[0] = " +
                  fInclude + "\nFailing fragment params[1] = (null)\nShader is invalid !\n");
    EXPECT_EQ(made(), createVertex({"-posinv"}) + load(1) + createFragment({})) << "nothing is bound";
    EXPECT_TRUE(fManager->fShaderMap.empty());
}

TEST_F(CgManagers, bindVertexProgramsAlone) {
    const auto bindVertex = [this](const char* name) { return fManager->bindVertexShader(name, {"-DA"}); };
    EXPECT_EQ(bindVertex("toon").getVertexProgram(), program(1));
    EXPECT_EQ(bindVertex("toon").getFragmentProgram(), nullptr);
    EXPECT_EQ(made(), createVertex({"-DA", "-posinv"}) + load(1) + kEnableVertex + kEnableVertex);
    EXPECT_EQ(firstKey(), fVertexFile + " -DA");
    fRefuses = [](const std::string&) { return true; };
    EXPECT_EQ(printed([&] { bindVertex("absent"); }),
              "Vertex program failed to compile:\n" + fFolder + "/bin/Cg/absent_vertex.cg\n");
    clearRecorded();
    EXPECT_EQ(printed([&] { bindVertex("absent"); }), "") << "not tried again";
    EXPECT_EQ(made(), Calls{});
}

TEST_F(CgManagers, compileNetworksIntoTheManagerOfTheirNode) {
    auto node = std::make_unique<ShadingNodeSpec>(kUnlit);
    const CGManager::CGShader* shader = fManager->bindKOSLShader(*node, "k", nullptr);
    koString::CString vertexSource;
    koString::CString fragmentSource;
    compileMaterialToCg(*node, nullptr, vertexSource, fragmentSource);
    const char* options[] = {"-posinv", nullptr};
    const auto created = [](const koString::CString& source, CGprofile profile, const char** switches) {
        return Calls{
            call("cgCreateProgram", context(), CG_SOURCE, source.asChar(), profile, nullptr, switches)};
    };
    EXPECT_EQ(made(), created(vertexSource, CG_PROFILE_ARBVP1, options) + load(1) +
                          created(fragmentSource, CG_PROFILE_ARBFP1, nullptr) + load(2) + kEnable);
    EXPECT_EQ(fManager->bindKOSLShader(*node, "k", nullptr), shader);
    EXPECT_EQ(made(), kEnable);
    EXPECT_TRUE(fManager->fShaderMap.empty()) << "the node's manager has it";

    CGManager other(CG_PROFILE_VP40, CG_PROFILE_FP40);
    fRefuses = [](const std::string&) { return true; };
    clearRecorded();
    EXPECT_EQ(printed([&] {
                  const CGManager::CGShader* failed = other.bindKOSLShader(*node, "a", nullptr);
                  EXPECT_EQ(failed->fVertexProfile, CG_PROFILE_VP40) << "the profiles of who asks";
                  EXPECT_EQ(other.bindKOSLShader(*node, "a", nullptr), failed);
              }),
              "");
    EXPECT_EQ(made().size(), 2u) << "not tried again";
    EXPECT_EQ(dynamic_cast<CGManager&>(*node->shaderManager()).fVertexProfile, CG_PROFILE_ARBVP1);
    node.reset();
    EXPECT_EQ(made(),
              (Calls{call("cgGLDisableProfile", CG_PROFILE_ARBVP1),
                     call("cgGLDisableProfile", CG_PROFILE_ARBFP1), call("cgDestroyProgram", program(1)),
                     call("cgDestroyProgram", program(2)), call("cgDestroyContext", context())}));

    ShadingNodeSpec foreign;
    foreign.assignShaderManager(new IHWShaderManager);
    EXPECT_EQ(fManager->bindKOSLShader(foreign, "k", nullptr), nullptr);
    EXPECT_EQ(made(), Calls{});
}

TEST_F(CgManagers, takeTheContextDownWithAnyOfThem) {
    bind();
    auto second = std::make_unique<CGManager>(CG_PROFILE_UNKNOWN, CG_PROFILE_UNKNOWN);
    clearRecorded();
    second.reset();
    EXPECT_EQ(CGcontextSingleton::sCgContext, nullptr);
    bind(); // stale programs are bound all the same
    EXPECT_EQ(made(), Calls{call("cgDestroyContext", context())} + kEnable);
    fManager->bindVertexShader("toon", {});
    EXPECT_EQ(Calls{made().at(1)}, createVertex({"-posinv"}, 2)) << "behind making another context";
    fManager.reset();
    const Calls end = made();
    EXPECT_EQ(end.back(), call("cgDestroyContext", context(2)));
    EXPECT_EQ(std::ranges::count(end, call("cgDestroyProgram", program(1))), 1);
    EXPECT_EQ(*CGcontextSingleton::theCgContext(), context(3));
}

TEST_F(CgManagers, nameProfilesAndTypes) {
    script().answers["cgGetProfileString"] = [](const auto& arguments) {
        return reinterpret_cast<uint64_t>(arguments[0].integer() == CG_PROFILE_ARBVP1 ? "arbvp1" : "arbfp1");
    };
    EXPECT_STREQ(fManager->vertexProfileString(), "arbvp1");
    EXPECT_STREQ(fManager->fragmentProfileString(), "arbfp1");
    fManager->fVertexProfile = CG_PROFILE_UNKNOWN;
    EXPECT_STREQ(fManager->vertexProfileString(), "Unknown");
    std::string names;
    for (const auto type : {CGManager::kPointLight, CGManager::kSpotLight, CGManager::kDirectionalLight,
                            CGManager::kAmbientLight, CGManager::CGLightType(4)})
        names += std::string("|") + fManager->getLightStringFromType(type).asChar();
    for (const auto type : {CGManager::CGTransparencyType(1), CGManager::kOpacityInAlpha,
                            CGManager::kTransparencyInRGB, CGManager::CGTransparencyType(4)})
        names += std::string("|") + fManager->getTransparencyTypeStringFromType(type).asChar();
    EXPECT_EQ(names, "|point_light|spot_light|directional_light|ambient_light|"
                     "||OpacityInAlpha|TransparencyInRGB|");
}

} // namespace
