#include "CgTest.h"

namespace {

using namespace koLinear;

constexpr auto kVertex = CGManager::kVertexProgram;
constexpr auto kFragment = CGManager::kFragmentProgram;
constexpr auto kNoProgram = static_cast<CGManager::CGProgramType>(2);

class CgShaders : public CgTest {
protected:
    CgShaders() {
        CGcontextSingleton::theCgContext();
        clearRecorded();
    }

    /// What a call of one of the shader's operations makes of Cg, behind finding the parameter.
    template <typename Operation>
    std::string madeBy(Operation operation) {
        operation();
        const Calls calls = made();
        EXPECT_EQ(calls.size(), 2u);
        EXPECT_EQ(calls.front(), call("cgGetNamedParameter", program(2), "p"));
        return calls.back();
    }

    const CGManager::CGShader fShader{program(1), program(2), CG_PROFILE_ARBVP1, CG_PROFILE_ARBFP1};
};

TEST_F(CgShaders, loadsFiles) {
    CGManager::CGShader shader{nullptr, nullptr, CG_PROFILE_ARBVP1, CG_PROFILE_ARBFP1};
    const char* options[] = {"-DA", nullptr};
    EXPECT_TRUE(shader.loadVertexProgram("v.cg", options));
    EXPECT_TRUE(shader.loadFragmentProgram("f.cg", nullptr));
    EXPECT_EQ(made(), (Calls{call("cgCreateProgramFromFile", context(), CG_SOURCE, "v.cg", CG_PROFILE_ARBVP1,
                                  nullptr, options),
                             call("cgGLLoadProgram", program(1)),
                             call("cgCreateProgramFromFile", context(), CG_SOURCE, "f.cg", CG_PROFILE_ARBFP1,
                                  nullptr, nullptr),
                             call("cgGLLoadProgram", program(2))}));
    EXPECT_EQ(shader.getVertexProgram(), program(1));
    EXPECT_EQ(shader.getFragmentProgram(), program(2));

    EXPECT_TRUE(shader.loadVertexProgram("other.cg", nullptr));
    EXPECT_EQ(made(), Calls{call("cgGLLoadProgram", program(1))}) << "what is there stays";

    shader.destroy();
    EXPECT_EQ(made(), (Calls{call("cgGLDisableProfile", CG_PROFILE_ARBVP1),
                             call("cgGLDisableProfile", CG_PROFILE_ARBFP1),
                             call("cgDestroyProgram", program(1)), call("cgDestroyProgram", program(2))}));
    shader.destroy();
    EXPECT_EQ(made(), Calls{});
}

TEST_F(CgShaders, tellsOfFilesThatDoNotCompile) {
    fRefuses = [](const std::string&) { return true; };
    CGManager::CGShader shader{nullptr, nullptr, CG_PROFILE_ARBVP1, CG_PROFILE_ARBFP1};
    EXPECT_EQ(printed([&] { EXPECT_FALSE(shader.loadVertexProgram("v.cg", nullptr)); }),
              "Vertex program failed to compile:\nv.cg\n");
    EXPECT_EQ(printed([&] { EXPECT_FALSE(shader.loadFragmentProgram("f.cg", nullptr)); }),
              "Fragment program failed to compile:\nf.cg\n");
    EXPECT_EQ(shader.getVertexProgram(), nullptr);
    clearRecorded();

    CGManager::CGShader blank;
    EXPECT_EQ(printed([&] {
                  EXPECT_FALSE(blank.loadVertexProgram("v.cg", nullptr));
                  EXPECT_FALSE(blank.loadFragmentProgram("f.cg", nullptr));
              }),
              "");
    EXPECT_EQ(made(), Calls{}) << "without a profile there is nothing to compile for";
}

TEST_F(CgShaders, loadsStrings) {
    CGManager::CGShader shader{program(7), program(8), CG_PROFILE_UNKNOWN, CG_PROFILE_ARBFP1};
    const char* options[] = {"-posinv", nullptr};
    shader.loadVertexProgramFromString("vertices");
    shader.loadFragmentProgramFromString("fragments");
    EXPECT_EQ(made(), (Calls{call("cgCreateProgram", context(), CG_SOURCE, "vertices", CG_PROFILE_UNKNOWN,
                                  nullptr, options),
                             call("cgGLLoadProgram", program(1)),
                             call("cgCreateProgram", context(), CG_SOURCE, "fragments", CG_PROFILE_ARBFP1,
                                  nullptr, nullptr),
                             call("cgGLLoadProgram", program(2))}));

    fRefuses = [](const std::string&) { return true; };
    EXPECT_EQ(printed([&] { shader.loadVertexProgramFromString("broken"); }), "");
    EXPECT_EQ(shader.getVertexProgram(), nullptr) << "what was there is gone";
    EXPECT_EQ(made().size(), 1u) << "nothing is handed to GL";
}

TEST_F(CgShaders, enablesThePrograms) {
    fShader.enable();
    EXPECT_EQ(made(),
              (Calls{call("cgGLEnableProfile", CG_PROFILE_ARBVP1), call("cgGLBindProgram", program(1)),
                     call("cgGLEnableProfile", CG_PROFILE_ARBFP1), call("cgGLBindProgram", program(2))}));
    const CGManager::CGShader half{nullptr, program(2), CG_PROFILE_ARBVP1, CG_PROFILE_ARBFP1};
    half.enable();
    half.disable();
    EXPECT_EQ(made(),
              (Calls{call("cgGLEnableProfile", CG_PROFILE_ARBFP1), call("cgGLBindProgram", program(2)),
                     call("cgGLDisableProfile", CG_PROFILE_ARBFP1)}));
}

TEST_F(CgShaders, handsNumbersOver) {
    const CGparameter p = parameter();
    EXPECT_EQ(madeBy([&] { fShader.setParameter1f(kFragment, "p", 2.5F, true); }),
              call("cgGLSetParameter1f", p, 2.5));
    EXPECT_EQ(madeBy([&] { fShader.setParameter1f(kFragment, "p", 2.5F, false); }),
              call("cgGLSetParameter1f", p, 2.5));
    EXPECT_EQ(madeBy([&] { fShader.setParameterBool(kFragment, "p", true); }),
              call("cgGLSetParameter1f", p, 1));
    EXPECT_EQ(madeBy([&] { fShader.setParameterBool(kFragment, "p", false); }),
              call("cgGLSetParameter1f", p, 0));
    EXPECT_EQ(madeBy([&] { fShader.setParameter2f(kFragment, "p", 1, 2); }),
              call("cgGLSetParameter2f", p, 1, 2));
    EXPECT_EQ(madeBy([&] { fShader.setParameter3f(kFragment, "p", 1, 2, 3); }),
              call("cgGLSetParameter3f", p, 1, 2, 3));
    EXPECT_EQ(madeBy([&] { fShader.setParameter3d(kFragment, "p", 1, 2, 3); }),
              call("cgGLSetParameter3d", p, 1, 2, 3));
    EXPECT_EQ(madeBy([&] { fShader.setParameter3fv(kFragment, "p", Point(1, 2, 3)); }),
              call("cgGLSetParameter3dv", p, Values{1, 2, 3}));
    EXPECT_EQ(madeBy([&] { fShader.setParameter3fv(kFragment, "p", PointFlt(1, 2, 3)); }),
              call("cgGLSetParameter3fv", p, Values{1, 2, 3}));
    EXPECT_EQ(madeBy([&] { fShader.setParameter4f(kFragment, "p", 1, 2, 3, 4); }),
              call("cgGLSetParameter4f", p, 1, 2, 3, 4));
    EXPECT_EQ(madeBy([&] { fShader.setParameter4d(kFragment, "p", 1, 2, 3, 4); }),
              call("cgGLSetParameter4d", p, 1, 2, 3, 4));
    EXPECT_EQ(madeBy([&] { fShader.setParameter4fv(kFragment, "p", HPoint(1, 2, 3, 4)); }),
              call("cgGLSetParameter4dv", p, Values{1, 2, 3, 4}));
    EXPECT_EQ(madeBy([&] { fShader.setParameter4fv(kFragment, "p", Point(1, 2, 3)); }),
              call("cgGLSetParameter4d", p, 1, 2, 3, 1));
    EXPECT_EQ(madeBy([&] { fShader.setParameter4fv(kFragment, "p", PointFlt(1, 2, 3)); }),
              call("cgGLSetParameter4f", p, 1, 2, 3, 1));
    EXPECT_EQ(madeBy([&] { fShader.setParameter4fv(kFragment, "p", Vector(1, 2, 3)); }),
              call("cgGLSetParameter4d", p, 1, 2, 3, 1));
    EXPECT_EQ(madeBy([&] { fShader.setParameter4fv(kFragment, "p", VectorFlt(1, 2, 3)); }),
              call("cgGLSetParameter4f", p, 1, 2, 3, 1));
}

TEST_F(CgShaders, handsMatricesOver) {
    const CGparameter p = parameter();
    const double numbers[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    const Values values(std::begin(numbers), std::end(numbers));
    const ProjMatrix matrix(numbers);
    const ProjMatrixFlt ofFloats(matrix);
    EXPECT_EQ(madeBy([&] { fShader.setParameterMatrix(kFragment, "p", matrix); }),
              call("cgGLSetMatrixParameterdc", p, values));
    EXPECT_EQ(madeBy([&] { fShader.setParameterMatrix(kFragment, "p", ofFloats); }),
              call("cgGLSetMatrixParameterfc", p, values));
    EXPECT_EQ(madeBy([&] { fShader.setParameterMatrixRowMajor(kFragment, "p", matrix); }),
              call("cgGLSetMatrixParameterdr", p, values));
    EXPECT_EQ(madeBy([&] { fShader.setParameterMatrixRowMajor(kFragment, "p", ofFloats); }),
              call("cgGLSetMatrixParameterfr", p, values));
}

TEST_F(CgShaders, putsTexturesOnSamplers) {
    fShader.setParameterTexture(kVertex, "p", 42);
    EXPECT_EQ(made(), (Calls{call("cgGetNamedParameter", program(1), "p"),
                             call("cgGLSetTextureParameter", parameter(), 42),
                             call("cgGLEnableTextureParameter", parameter()), call("glGetError")}));
}

TEST_F(CgShaders, passesOverWhatIsNotThere) {
    const auto setAll = [](const CGManager::CGShader& shader, CGManager::CGProgramType type) {
        shader.setParameter1f(type, "p", 1, true);
        shader.setParameter4fv(type, "p", Point(1, 2, 3));
        shader.setParameterMatrix(type, "p", ProjMatrix());
        shader.setParameterTexture(type, "p", 42);
        EXPECT_EQ(shader.getParameterIndex(type, "p"), 0xFFFFFFFF);
        bool found = true;
        EXPECT_EQ(shader.getTextureInterpolant(type, "p", &found), 0u);
        EXPECT_FALSE(found);
        EXPECT_EQ(shader.getTextureInterpolant(type, "p", nullptr), 0u);
    };
    EXPECT_EQ(fShader.getProgramFromType(kVertex), program(1));
    EXPECT_EQ(fShader.getProgramFromType(kFragment), program(2));
    EXPECT_EQ(fShader.getProgramFromType(kNoProgram), nullptr);
    setAll(fShader, kNoProgram);
    EXPECT_EQ(made(), Calls{}) << "without a program there is nothing to look in";

    script().answers["cgGetNamedParameter"] = [](const auto&) { return uint64_t{0}; };
    setAll(fShader, kVertex);
    EXPECT_EQ(made(), Calls(7, call("cgGetNamedParameter", program(1), "p")));
}

TEST_F(CgShaders, tellsWhereParametersAre) {
    const char* semantic = "TEXCOORD5";
    script().answers["cgGetParameterResourceIndex"] = [](const auto&) { return uint64_t{3}; };
    script().answers["cgGetParameterSemantic"] = [&](const auto&) {
        return reinterpret_cast<uint64_t>(semantic);
    };
    EXPECT_EQ(fShader.getParameterIndex(kFragment, "p"), 3u);
    bool found = false;
    EXPECT_EQ(fShader.getTextureInterpolant(kFragment, "p", &found), 5u);
    EXPECT_TRUE(found);
    semantic = "COLOR0";
    EXPECT_EQ(fShader.getTextureInterpolant(kFragment, "p", nullptr), 0xFFFFFFFF);
    semantic = nullptr;
    EXPECT_EQ(fShader.getTextureInterpolant(kFragment, "p", nullptr), 0xFFFFFFFF);

    const auto offset = [](const std::string& text) {
        return CGManager::CGShader::getTextureOffsetFromSemantic(text.c_str());
    };
    for (unsigned i = 0; i < 16; ++i)
        EXPECT_EQ(offset("TEXCOORD" + std::to_string(i)), i);
    for (const char* other : {"TEXCOORD16", "TEXCOORD1 ", "texcoord1", "TEXCOORD01", "TEXCOORD", ""})
        EXPECT_EQ(offset(other), 0xFFFFFFFF) << other;
}

} // namespace
