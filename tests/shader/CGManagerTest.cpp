#include "CgTest.h"

#include <filesystem>
#include <fstream>

#include <orlohost/HWEnvironment.h>

using namespace koShadingDag;

namespace {

/// With a folder of shader files, "toon" among them.
class CgManagers : public CgTest {
protected:
    CgManagers() {
        char folder[] = "/tmp/cgmanagerXXXXXX";
        fFolder = mkdtemp(folder);
        std::filesystem::create_directories(fFolder + "/bin/Cg");
        fFiles = fFolder + "/bin/Cg/toon";
        fInclude = "-I " + fFolder + "/bin/Cg/";
        std::ofstream(vertexFile()) << "vertices";
        std::ofstream(fragmentFile()) << "fragments";
        HWEnvironment::orlo_path = fFolder.c_str();
        fManager = std::make_unique<CGManager>(CG_PROFILE_ARBVP1, CG_PROFILE_ARBFP1);
        clearRecorded();
    }
    ~CgManagers() override {
        fManager.reset();
        std::filesystem::remove_all(fFolder);
    }

    std::string vertexFile() const { return fFiles + "_vertex.cg"; }
    std::string fragmentFile() const { return fFiles + "_fragment.cg"; }

    std::string createVertex(std::vector<const char*> options, uint64_t contextNumber = 1) const {
        return create(vertexFile(), CG_PROFILE_ARBVP1, std::move(options), contextNumber);
    }
    std::string createFragment(std::vector<const char*> options) const {
        return create(fragmentFile(), CG_PROFILE_ARBFP1, std::move(options), 1);
    }
    std::string create(const std::string& file, CGprofile profile, std::vector<const char*> options,
                       uint64_t contextNumber) const {
        options.push_back(fInclude.c_str());
        options.push_back(nullptr);
        return call("cgCreateProgramFromFile", context(contextNumber), CG_SOURCE, file.c_str(), profile,
                    nullptr, options.data());
    }

    static Calls enabling(uint64_t vertex, uint64_t fragment) {
        return {call("cgGLEnableProfile", CG_PROFILE_ARBVP1), call("cgGLBindProgram", program(vertex)),
                call("cgGLEnableProfile", CG_PROFILE_ARBFP1), call("cgGLBindProgram", program(fragment))};
    }

    size_t compilesOf(const std::vector<koString::CString>& vertexOptions,
                      const std::vector<koString::CString>& fragmentOptions) {
        fManager->bindShader("toon", vertexOptions, fragmentOptions);
        const Calls calls = made();
        return static_cast<size_t>(std::count_if(calls.begin(), calls.end(), [](const std::string& text) {
            return text.starts_with("cgCreateProgramFromFile");
        }));
    }

    /// Refuses the files of a stage.
    void refuse(const std::string& suffix) {
        fRefuses = [suffix](const std::string& path) { return path.ends_with(suffix); };
    }

    std::string fFolder;
    std::string fFiles;
    std::string fInclude;
    std::unique_ptr<CGManager> fManager;
};

TEST_F(CgManagers, bindsAndKeepsShadersOfFiles) {
    const auto bind = [this] { return fManager->bindShader("toon", {"-DA", "-DB"}, {"-DF"}); };
    const CGManager::CGShader shader = bind();
    Calls wanted{createVertex({"-DA", "-DB", "-posinv"}), call("cgGLLoadProgram", program(1)),
                 createFragment({"-DF"}), call("cgGLLoadProgram", program(2))};
    const Calls enable = enabling(1, 2);
    wanted.insert(wanted.end(), enable.begin(), enable.end());
    EXPECT_EQ(made(), wanted);
    EXPECT_EQ(shader.getVertexProgram(), program(1));
    EXPECT_EQ(shader.getFragmentProgram(), program(2));
    EXPECT_EQ(shader.fVertexProfile, CG_PROFILE_ARBVP1);
    EXPECT_EQ(shader.fFragmentProfile, CG_PROFILE_ARBFP1);
    ASSERT_EQ(fManager->fShaderMap.size(), 1u);
    EXPECT_EQ(fManager->fShaderMap.begin()->first.asMultibyte(),
              vertexFile() + " :  -DA -DB" + fragmentFile() + " :  -DF");

    EXPECT_EQ(bind().getFragmentProgram(), program(2));
    EXPECT_EQ(made(), enable) << "and no more";
}

TEST_F(CgManagers, compilesForEachListOfSwitches) {
    EXPECT_EQ(compilesOf({"-DA"}, {}), 2u);
    EXPECT_EQ(compilesOf({"-DA", ""}, {}), 2u);
    EXPECT_EQ(compilesOf({}, {"-DA"}), 2u);
    EXPECT_EQ(compilesOf({"-DA"}, {}), 0u);
    fManager->sceneHasChanged();
    EXPECT_TRUE(fManager->fShaderMap.empty());
    clearRecorded();
    EXPECT_EQ(compilesOf({"-DA"}, {}), 2u) << "another scene, other programs";
}

TEST_F(CgManagers, leavesMissingFilesUnmentioned) {
    const auto bind = [this] { return fManager->bindShader("toon", {}, {}); };
    const auto expectNothing = [&] {
        EXPECT_EQ(printed([&] {
                      const CGManager::CGShader shader = bind();
                      EXPECT_EQ(shader.getVertexProgram(), nullptr);
                      EXPECT_EQ(shader.fVertexProfile, CG_PROFILE_ARBVP1);
                  }),
                  "");
        EXPECT_EQ(made(), Calls{});
    };
    bind();
    clearRecorded();
    std::filesystem::rename(fragmentFile(), fFolder + "/away");
    expectNothing(); // although it was compiled once
    std::filesystem::rename(fFolder + "/away", fragmentFile());
    std::filesystem::remove(vertexFile());
    expectNothing();
    EXPECT_FALSE(fileExists(vertexFile().c_str()));
    EXPECT_TRUE(fileExists(fragmentFile().c_str()));
}

TEST_F(CgManagers, tellsWhatDoesNotCompileEachTime) {
    refuse("_vertex.cg");
    const auto bind = [this] { fManager->bindShader("toon", {"-DA"}, {}); };
    const std::string told = "Vertex program failed to compile:\n" + vertexFile() +
                             "\nFailing vertex params[0] = -DA\nFailing vertex params[1] = -posinv\n"
                             "Failing vertex params[2] = " +
                             fInclude + "\nShader is invalid !\n";
    EXPECT_EQ(printed(bind), told);
    EXPECT_EQ(printed(bind), told);
    EXPECT_TRUE(fManager->fShaderMap.empty());
    EXPECT_EQ(made(), (Calls(2, createVertex({"-DA", "-posinv"}))));

    refuse("_fragment.cg");
    EXPECT_EQ(printed([this] {
                  const CGManager::CGShader shader = fManager->bindShader("toon", {}, {});
                  EXPECT_EQ(shader.getVertexProgram(), program(1)) << "it compiled";
                  EXPECT_EQ(shader.getFragmentProgram(), nullptr);
              }),
              "Fragment program failed to compile:\n" + fragmentFile() + "\nFailing fragment params[0] = " +
                  fInclude + "\nFailing fragment params[1] = (null)\nShader is invalid !\n");
    EXPECT_TRUE(fManager->fShaderMap.empty());
    EXPECT_EQ(made(),
              (Calls{createVertex({"-posinv"}), call("cgGLLoadProgram", program(1)), createFragment({})}))
        << "nothing is bound";
}

TEST_F(CgManagers, bindsVertexProgramsAlone) {
    const auto bind = [this](const char* name) { return fManager->bindVertexShader(name, {"-DA"}); };
    const Calls enable{call("cgGLEnableProfile", CG_PROFILE_ARBVP1), call("cgGLBindProgram", program(1))};
    EXPECT_EQ(bind("toon").getVertexProgram(), program(1));
    EXPECT_EQ(made(), (Calls{createVertex({"-DA", "-posinv"}), call("cgGLLoadProgram", program(1)), enable[0],
                             enable[1]}));
    EXPECT_EQ(bind("toon").getFragmentProgram(), nullptr);
    EXPECT_EQ(made(), enable);
    EXPECT_EQ(fManager->fShaderMap.begin()->first.asMultibyte(), vertexFile() + " -DA");

    fRefuses = [](const std::string&) { return true; };
    EXPECT_EQ(printed([&] { bind("absent"); }),
              "Vertex program failed to compile:\n" + fFolder + "/bin/Cg/absent_vertex.cg\n");
    clearRecorded();
    EXPECT_EQ(printed([&] { bind("absent"); }), "") << "not tried again";
    EXPECT_EQ(made(), Calls{});
}

TEST_F(CgManagers, compilesNetworksIntoTheManagerOfTheirNode) {
    auto node = std::make_unique<ShadingNodeSpec>(kUnlit);
    const CGManager::CGShader* shader = fManager->bindKOSLShader(*node, "k", nullptr);
    ASSERT_NE(shader, nullptr);
    koString::CString vertexSource;
    koString::CString fragmentSource;
    compileMaterialToCg(*node, nullptr, vertexSource, fragmentSource);
    const char* options[] = {"-posinv", nullptr};
    Calls wanted{call("cgCreateProgram", context(), CG_SOURCE, vertexSource.asChar(), CG_PROFILE_ARBVP1,
                      nullptr, options),
                 call("cgGLLoadProgram", program(1)),
                 call("cgCreateProgram", context(), CG_SOURCE, fragmentSource.asChar(), CG_PROFILE_ARBFP1,
                      nullptr, nullptr),
                 call("cgGLLoadProgram", program(2))};
    const Calls enable = enabling(1, 2);
    wanted.insert(wanted.end(), enable.begin(), enable.end());
    EXPECT_EQ(made(), wanted);
    EXPECT_EQ(fManager->bindKOSLShader(*node, "k", nullptr), shader);
    EXPECT_EQ(made(), enable);
    EXPECT_TRUE(fManager->fShaderMap.empty()) << "the node's manager has it";
    auto* ofNode = dynamic_cast<CGManager*>(node->shaderManager());
    ASSERT_NE(ofNode, nullptr);
    EXPECT_EQ(ofNode->fVertexProfile, CG_PROFILE_ARBVP1);

    CGManager other(CG_PROFILE_VP40, CG_PROFILE_FP40);
    fRefuses = [](const std::string&) { return true; };
    clearRecorded();
    EXPECT_EQ(printed([&] {
                  const CGManager::CGShader* failed = other.bindKOSLShader(*node, "a", nullptr);
                  EXPECT_EQ(failed->getVertexProgram(), nullptr);
                  EXPECT_EQ(failed->fVertexProfile, CG_PROFILE_VP40) << "the profiles of who asks";
                  EXPECT_EQ(made().size(), 2u);
                  EXPECT_EQ(other.bindKOSLShader(*node, "a", nullptr), failed);
                  EXPECT_EQ(made(), Calls{}) << "not tried again";
              }),
              "");
    EXPECT_EQ(ofNode->fShaderMap.size(), 2u);

    node.reset();
    EXPECT_EQ(made(),
              (Calls{call("cgGLDisableProfile", CG_PROFILE_ARBVP1),
                     call("cgGLDisableProfile", CG_PROFILE_ARBFP1), call("cgDestroyProgram", program(1)),
                     call("cgDestroyProgram", program(2)), call("cgDestroyContext", context())}));
}

TEST_F(CgManagers, leavesForeignManagersOfNodesAlone) {
    class Foreign : public IHWShaderManager {};
    ShadingNodeSpec node;
    node.assignShaderManager(new Foreign);
    EXPECT_EQ(fManager->bindKOSLShader(node, "k", nullptr), nullptr);
    EXPECT_EQ(made(), Calls{});
}

TEST_F(CgManagers, takesTheContextDownWithAnyManager) {
    fManager->bindShader("toon", {}, {});
    auto second = std::make_unique<CGManager>(CG_PROFILE_UNKNOWN, CG_PROFILE_UNKNOWN);
    EXPECT_EQ(fContexts, 1u) << "one for both";
    clearRecorded();
    second.reset();
    EXPECT_EQ(made(), Calls{call("cgDestroyContext", context())});
    EXPECT_EQ(CGcontextSingleton::sCgContext, nullptr);

    fManager->bindShader("toon", {}, {});
    EXPECT_EQ(made(), enabling(1, 2)) << "stale programs are bound all the same";
    fManager->bindVertexShader("toon", {});
    EXPECT_EQ(made().at(1), createVertex({"-posinv"}, 2)) << "behind making another context";

    fManager.reset();
    const Calls end = made();
    EXPECT_EQ(end.back(), call("cgDestroyContext", context(2)));
    EXPECT_EQ(std::count(end.begin(), end.end(), call("cgDestroyProgram", program(1))), 1);
    EXPECT_EQ(*CGcontextSingleton::theCgContext(), context(3));
}

TEST_F(CgManagers, namesProfilesAndTypes) {
    script().answers["cgGetProfileString"] = [](const auto& arguments) {
        return reinterpret_cast<uint64_t>(arguments[0].integer() == CG_PROFILE_ARBVP1 ? "arbvp1" : "arbfp1");
    };
    EXPECT_STREQ(fManager->vertexProfileString(), "arbvp1");
    EXPECT_STREQ(fManager->fragmentProfileString(), "arbfp1");
    fManager->fVertexProfile = CG_PROFILE_UNKNOWN;
    EXPECT_STREQ(fManager->vertexProfileString(), "Unknown");

    std::string lights;
    std::string transparencies;
    for (uint32_t type = 0; type < 5; ++type) {
        lights += fManager->getLightStringFromType(static_cast<CGManager::CGLightType>(type)).asChar();
        transparencies +=
            fManager->getTransparencyTypeStringFromType(static_cast<CGManager::CGTransparencyType>(type))
                .asChar();
        lights += '|';
        transparencies += '|';
    }
    EXPECT_EQ(lights, "point_light|spot_light|directional_light|ambient_light||");
    EXPECT_EQ(transparencies, "||OpacityInAlpha|TransparencyInRGB||");
}

} // namespace
