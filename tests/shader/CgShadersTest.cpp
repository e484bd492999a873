#include "CgTest.h"

#include <filesystem>
#include <fstream>

#include <orlohost/HWEnvironment.h>

using namespace koLinear;
using namespace koShadingDag;
using Shader = CGManager::CGShader;

namespace {

constexpr auto kVertex = CGManager::kVertexProgram;
constexpr auto kFragment = CGManager::kFragmentProgram;

/// With a folder of shader files, "toon" among them.
class CgShaders : public CgTest {
protected:
    CgShaders() {
        char folder[] = "/tmp/cgshadersXXXXXX";
        fFolder = mkdtemp(folder) + std::string("/bin/Cg/");
        std::filesystem::create_directories(fFolder);
        fVertexFile = fFolder + "toon_vertex.cg";
        fFragmentFile = fFolder + "toon_fragment.cg";
        fInclude = "-I " + fFolder;
        std::ofstream(fVertexFile) << "vertices";
        std::ofstream(fFragmentFile) << "fragments";
        HWEnvironment::orlo_path = folder;
        fManager = std::make_unique<CGManager>(CG_PROFILE_ARBVP1, CG_PROFILE_ARBFP1);
        clearRecorded();
    }
    ~CgShaders() override {
        fManager.reset();
        std::filesystem::remove_all(std::filesystem::path(fFolder).parent_path().parent_path().parent_path());
    }

    static Calls loaded(uint64_t n) { return {call("cgGLLoadProgram", program(n))}; }
    static Calls enabled(CGprofile profile, uint64_t n) {
        return {call("cgGLEnableProfile", profile), call("cgGLBindProgram", program(n))};
    }
    static Calls disabled(CGprofile profile) { return {call("cgGLDisableProfile", profile)}; }
    static Calls destroyed(uint64_t n) { return {call("cgDestroyProgram", program(n))}; }
    static Calls found(uint64_t n) { return {call("cgGetNamedParameter", program(n), "p")}; }
    static Calls fromString(const char* source, CGprofile profile, const char** options) {
        return {call("cgCreateProgram", context(), CG_SOURCE, source, profile, nullptr, options)};
    }

    Calls compiled(const std::string& file, std::vector<const char*> options, uint64_t number = 1) const {
        const CGprofile profile = file == fVertexFile ? CG_PROFILE_ARBVP1 : CG_PROFILE_ARBFP1;
        options.insert(options.end(), {fInclude.c_str(), nullptr});
        return {call("cgCreateProgramFromFile", context(number), CG_SOURCE, file.c_str(), profile, nullptr,
                     options.data())};
    }
    Shader bind(const std::vector<koString::CString>& vertexOptions = {},
                const std::vector<koString::CString>& fragmentOptions = {}) const {
        return fManager->bindShader("toon", vertexOptions, fragmentOptions);
    }
    void refuse(const std::string& end) {
        fRefuses = [end](const std::string& text) { return text.ends_with(end); };
    }
    std::string firstKey() const { return fManager->fShaderMap.begin()->first.asMultibyte(); }

    const CGparameter fParameter = reinterpret_cast<CGparameter>(0xAA);
    const Calls fBothEnabled = enabled(CG_PROFILE_ARBVP1, 1) + enabled(CG_PROFILE_ARBFP1, 2);
    const Calls fBothDisabled = disabled(CG_PROFILE_ARBVP1) + disabled(CG_PROFILE_ARBFP1);
    std::string fFolder;
    std::string fVertexFile;
    std::string fFragmentFile;
    std::string fInclude;
    std::unique_ptr<CGManager> fManager;
    Shader fBoth{program(1), program(2), CG_PROFILE_ARBVP1, CG_PROFILE_ARBFP1};
    const char* fPlacedLikeGL[2] = {"-posinv", nullptr};
};

TEST_F(CgShaders, areCompiledOnceForTheirFilesAndSwitches) {
    const Shader shader = bind({"-DA", "-DB"}, {"-DF"});
    EXPECT_EQ(made(), compiled(fVertexFile, {"-DA", "-DB", "-posinv"}) + loaded(1) +
                          compiled(fFragmentFile, {"-DF"}) + loaded(2) + fBothEnabled);
    EXPECT_EQ(shader.getVertexProgram(), program(1));
    EXPECT_EQ(firstKey(), fVertexFile + " :  -DA -DB" + fFragmentFile + " :  -DF");
    EXPECT_EQ(bind({"-DA", "-DB"}, {"-DF"}).getFragmentProgram(), program(2));
    EXPECT_EQ(made(), fBothEnabled) << "and no more";
    bind({"-DA", "-DB", ""}, {"-DF"}); // another list of switches
    clearRecorded();
    fManager->sceneHasChanged();
    EXPECT_EQ(made(),
              fBothDisabled + destroyed(3) + destroyed(4) + fBothDisabled + destroyed(1) + destroyed(2));
    bind({"-DA", "-DB"}, {"-DF"});
    EXPECT_EQ(fPrograms, 6U) << "another scene, other programs";

    for (const std::string& file : {fFragmentFile, fVertexFile}) {
        std::filesystem::rename(file, fFolder + "away");
        clearRecorded();
        const auto bindAgain = [&] { EXPECT_EQ(bind({"-DA", "-DB"}, {"-DF"}).getVertexProgram(), nullptr); };
        EXPECT_EQ(printed(bindAgain), "") << "although it was compiled once";
        EXPECT_EQ(made(), Calls{});
        std::filesystem::rename(fFolder + "away", file);
    }
}

TEST_F(CgShaders, sayEachTimeThatTheyDoNotCompile) {
    refuse("_vertex.cg");
    for (int times = 0; times < 2; ++times)
        EXPECT_EQ(printed([this] { bind({"-DA"}); }),
                  "Vertex program failed to compile:\n" + fVertexFile +
                      "\nFailing vertex params[0] = -DA\nFailing vertex params[1] = -posinv\n"
                      "Failing vertex params[2] = " +
                      fInclude + "\nShader is invalid !\n");
    EXPECT_EQ(made(), compiled(fVertexFile, {"-DA", "-posinv"}) + compiled(fVertexFile, {"-DA", "-posinv"}));
    refuse("_fragment.cg");
    EXPECT_EQ(printed([this] { EXPECT_EQ(bind().getVertexProgram(), program(1)) << "it compiled"; }),
              "Fragment program failed to compile:\n" + fFragmentFile + "\nFailing fragment params[0] = " +
                  fInclude + "\nFailing fragment params[1] = (null)\nShader is invalid !\n");
    EXPECT_EQ(made(), compiled(fVertexFile, {"-posinv"}) + loaded(1) + compiled(fFragmentFile, {}))
        << "nothing is bound";
    EXPECT_TRUE(fManager->fShaderMap.empty());
}

TEST_F(CgShaders, mayBeOfVerticesAlone) {
    const auto bindVertex = [this](const char* name) { return fManager->bindVertexShader(name, {"-DA"}); };
    EXPECT_EQ(bindVertex("toon").getVertexProgram(), program(1));
    EXPECT_EQ(bindVertex("toon").getFragmentProgram(), nullptr);
    const Calls enable = enabled(CG_PROFILE_ARBVP1, 1);
    EXPECT_EQ(made(), compiled(fVertexFile, {"-DA", "-posinv"}) + loaded(1) + enable + enable);
    EXPECT_EQ(firstKey(), fVertexFile + " -DA");
    refuse("");
    EXPECT_EQ(printed([&] { bindVertex("absent"); }),
              "Vertex program failed to compile:\n" + fFolder + "absent_vertex.cg\n");
    clearRecorded();
    EXPECT_EQ(printed([&] { bindVertex("absent"); }), "") << "not tried again";
    EXPECT_EQ(made(), Calls{});
}

TEST_F(CgShaders, keepOrReplaceWhatIsLoaded) {
    EXPECT_TRUE(fBoth.loadVertexProgram("other.cg", nullptr));
    EXPECT_EQ(made(), loaded(1)) << "what is there stays";
    fBoth.fVertexProfile = CG_PROFILE_UNKNOWN;
    fBoth.loadVertexProgramFromString("vertices");
    refuse("broken");
    EXPECT_EQ(printed([this] { fBoth.loadFragmentProgramFromString("broken"); }), "");
    EXPECT_EQ(made(), fromString("vertices", CG_PROFILE_UNKNOWN, fPlacedLikeGL) + loaded(1) +
                          fromString("broken", CG_PROFILE_ARBFP1, nullptr));
    EXPECT_EQ(fBoth.getFragmentProgram(), nullptr);
    EXPECT_FALSE(fBoth.loadFragmentProgram("broken", nullptr));
    Shader blank;
    clearRecorded();
    EXPECT_FALSE(blank.loadVertexProgram("v.cg", nullptr) || blank.loadFragmentProgram("f.cg", nullptr));
    const Shader half{nullptr, program(2), CG_PROFILE_ARBVP1, CG_PROFILE_ARBFP1};
    half.enable();
    half.disable();
    EXPECT_EQ(made(), enabled(CG_PROFILE_ARBFP1, 2) + disabled(CG_PROFILE_ARBFP1));
}

TEST_F(CgShaders, handParametersOver) {
    const double numbers[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    const Values all(std::begin(numbers), std::end(numbers));
    const ProjMatrix matrix(numbers);
    fBoth.setParameter1f(kFragment, "p", 2.5F, true);
    fBoth.setParameter1f(kFragment, "p", 2.5F, false);
    fBoth.setParameterBool(kFragment, "p", true);
    fBoth.setParameterBool(kFragment, "p", false);
    fBoth.setParameter2f(kFragment, "p", 1, 2);
    fBoth.setParameter3f(kFragment, "p", 1, 2, 3);
    fBoth.setParameter3d(kFragment, "p", 1, 2, 3);
    fBoth.setParameter3fv(kFragment, "p", Point(1, 2, 3));
    fBoth.setParameter3fv(kFragment, "p", PointFlt(1, 2, 3));
    fBoth.setParameter4f(kFragment, "p", 1, 2, 3, 4);
    fBoth.setParameter4d(kFragment, "p", 1, 2, 3, 4);
    const auto set4 = [this](const auto&... places) { (fBoth.setParameter4fv(kFragment, "p", places), ...); };
    set4(HPoint(1, 2, 3, 4), Point(1, 2, 3), PointFlt(1, 2, 3), Vector(1, 2, 3), VectorFlt(1, 2, 3));
    fBoth.setParameterMatrix(kFragment, "p", matrix);
    fBoth.setParameterMatrix(kFragment, "p", ProjMatrixFlt(matrix));
    fBoth.setParameterMatrixRowMajor(kFragment, "p", matrix);
    fBoth.setParameterMatrixRowMajor(kFragment, "p", ProjMatrixFlt(matrix));
    const auto set = [this](const char* function, const auto&... values) {
        return found(2) + Calls{call((std::string("cgGLSet") + function).c_str(), fParameter, values...)};
    };
    EXPECT_EQ(made(), (set("Parameter1f", 2.5) + set("Parameter1f", 2.5) + set("Parameter1f", 1) +
                       set("Parameter1f", 0) + set("Parameter2f", 1, 2) + set("Parameter3f", 1, 2, 3) +
                       set("Parameter3d", 1, 2, 3) + set("Parameter3dv", Values{1, 2, 3}) +
                       set("Parameter3fv", Values{1, 2, 3}) + set("Parameter4f", 1, 2, 3, 4) +
                       set("Parameter4d", 1, 2, 3, 4) + set("Parameter4dv", Values{1, 2, 3, 4}) +
                       set("Parameter4d", 1, 2, 3, 1) + set("Parameter4f", 1, 2, 3, 1) +
                       set("Parameter4d", 1, 2, 3, 1) + set("Parameter4f", 1, 2, 3, 1) +
                       set("MatrixParameterdc", all) + set("MatrixParameterfc", all) +
                       set("MatrixParameterdr", all) + set("MatrixParameterfr", all)));
    fBoth.setParameterTexture(kVertex, "p", 42);
    EXPECT_EQ(made(), (found(1) + Calls{call("cgGLSetTextureParameter", fParameter, 42),
                                        call("cgGLEnableTextureParameter", fParameter), call("glGetError")}));
}

TEST_F(CgShaders, tellWhereParametersAre) {
    const char* semantic = "TEXCOORD5";
    script().answers["cgGetParameterResourceIndex"] = [](const auto&) { return uint64_t{3}; };
    script().answers["cgGetParameterSemantic"] = [&](const auto&) {
        return reinterpret_cast<uint64_t>(semantic);
    };
    EXPECT_EQ(fBoth.getParameterIndex(kFragment, "p"), 3u);
    bool isThere = false;
    EXPECT_EQ(fBoth.getTextureInterpolant(kFragment, "p", &isThere), 5u);
    EXPECT_TRUE(isThere);
    for (const char* other : {"COLOR0", static_cast<const char*>(nullptr)}) {
        semantic = other;
        EXPECT_EQ(fBoth.getTextureInterpolant(kFragment, "p", nullptr), 0xFFFFFFFF);
    }
    const auto offset = [](const std::string& text) {
        return Shader::getTextureOffsetFromSemantic(text.c_str());
    };
    for (unsigned i = 0; i < 16; ++i)
        EXPECT_EQ(offset("TEXCOORD" + std::to_string(i)), i);
    for (const char* other : {"TEXCOORD16", "TEXCOORD1 ", "texcoord1", "TEXCOORD01", "TEXCOORD", ""})
        EXPECT_EQ(offset(other), 0xFFFFFFFF) << other;

    clearRecorded();
    script().answers["cgGetNamedParameter"] = [](const auto&) { return uint64_t{0}; };
    for (const auto type : {static_cast<CGManager::CGProgramType>(2), kVertex}) { // no program, no parameter
        fBoth.setParameter1f(type, "p", 1, true);
        fBoth.setParameterTexture(type, "p", 42);
        EXPECT_EQ(fBoth.getParameterIndex(type, "p"), 0xFFFFFFFF);
        isThere = true;
        EXPECT_EQ(fBoth.getTextureInterpolant(type, "p", &isThere), 0u);
        EXPECT_FALSE(isThere);
        EXPECT_EQ(fBoth.getTextureInterpolant(type, "p", nullptr), 0u);
    }
    EXPECT_EQ(made(), found(1) + found(1) + found(1) + found(1) + found(1));
}

TEST_F(CgShaders, ofNetworksStayWithTheirNode) {
    auto node = std::make_unique<ShadingNodeSpec>(kUnlit);
    const Shader* shader = fManager->bindKOSLShader(*node, "k", nullptr);
    koString::CString vertexSource;
    koString::CString fragmentSource;
    compileMaterialToCg(*node, nullptr, vertexSource, fragmentSource);
    EXPECT_EQ(made(), fromString(vertexSource.asChar(), CG_PROFILE_ARBVP1, fPlacedLikeGL) + loaded(1) +
                          fromString(fragmentSource.asChar(), CG_PROFILE_ARBFP1, nullptr) + loaded(2) +
                          fBothEnabled);
    EXPECT_EQ(fManager->bindKOSLShader(*node, "k", nullptr), shader);
    EXPECT_EQ(made(), fBothEnabled);
    EXPECT_TRUE(fManager->fShaderMap.empty()) << "the node's manager has it";

    CGManager other(CG_PROFILE_VP40, CG_PROFILE_FP40);
    fRefuses = [](const std::string&) { return true; };
    clearRecorded();
    EXPECT_EQ(printed([&] {
                  const Shader* failed = other.bindKOSLShader(*node, "a", nullptr);
                  EXPECT_EQ(failed->fVertexProfile, CG_PROFILE_VP40) << "the profiles of who asks";
                  EXPECT_EQ(other.bindKOSLShader(*node, "a", nullptr), failed);
              }),
              "");
    EXPECT_EQ(made().size(), 2u) << "not tried again";
    EXPECT_EQ(dynamic_cast<CGManager&>(*node->shaderManager()).fVertexProfile, CG_PROFILE_ARBVP1);
    node.reset();
    EXPECT_EQ(made(),
              fBothDisabled + destroyed(1) + destroyed(2) + Calls{call("cgDestroyContext", context())});
    ShadingNodeSpec foreign;
    foreign.assignShaderManager(new IHWShaderManager);
    EXPECT_EQ(fManager->bindKOSLShader(foreign, "k", nullptr), nullptr);
    EXPECT_EQ(made(), Calls{});
}

TEST_F(CgShaders, goStaleWithTheFirstManagerToEnd) {
    bind();
    auto second = std::make_unique<CGManager>(CG_PROFILE_UNKNOWN, CG_PROFILE_UNKNOWN);
    clearRecorded();
    second.reset();
    EXPECT_EQ(CGcontextSingleton::sCgContext, nullptr);
    bind(); // stale programs are bound all the same
    EXPECT_EQ(made(), Calls{call("cgDestroyContext", context())} + fBothEnabled);
    fManager->bindVertexShader("toon", {});
    EXPECT_EQ(Calls{made().at(1)}, compiled(fVertexFile, {"-posinv"}, 2)) << "behind making another context";
    fManager.reset();
    const Calls end = made();
    EXPECT_EQ(end.back(), call("cgDestroyContext", context(2)));
    EXPECT_EQ(std::ranges::count(end, destroyed(1).front()), 1);
    EXPECT_EQ(*CGcontextSingleton::theCgContext(), context(3));
}

TEST_F(CgShaders, areToldOfProfilesAndTypesByName) {
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
        names += fManager->getLightStringFromType(type).asChar() + std::string("|");
    for (const auto type : {CGManager::CGTransparencyType(1), CGManager::kOpacityInAlpha,
                            CGManager::kTransparencyInRGB, CGManager::CGTransparencyType(4)})
        names += fManager->getTransparencyTypeStringFromType(type).asChar() + std::string("|");
    EXPECT_EQ(names, "point_light|spot_light|directional_light|ambient_light|"
                     "||OpacityInAlpha|TransparencyInRGB||");
}

} // namespace
