#include "CgTest.h"

namespace {

using namespace koLinear;

constexpr auto kVertex = CGManager::kVertexProgram;
constexpr auto kFragment = CGManager::kFragmentProgram;

class CgShaders : public CgTest {
protected:
    CgShaders() {
        CGcontextSingleton::theCgContext();
        clearRecorded();
    }

    static Calls loaded(uint64_t n) { return {call("cgGLLoadProgram", program(n))}; }
    static Calls found(uint64_t n) { return {call("cgGetNamedParameter", program(n), "p")}; }

    const CGManager::CGShader fShader{program(1), program(2), CG_PROFILE_ARBVP1, CG_PROFILE_ARBFP1};
};

TEST_F(CgShaders, loadEnableAndEnd) {
    CGManager::CGShader shader{nullptr, nullptr, CG_PROFILE_ARBVP1, CG_PROFILE_ARBFP1};
    const char* options[] = {"-DA", nullptr};
    const auto created = [](const char* file, CGprofile profile, const char** switches) {
        return Calls{call("cgCreateProgramFromFile", context(), CG_SOURCE, file, profile, nullptr, switches)};
    };
    EXPECT_TRUE(shader.loadVertexProgram("v.cg", options) && shader.loadFragmentProgram("f.cg", nullptr));
    EXPECT_EQ(made(), created("v.cg", CG_PROFILE_ARBVP1, options) + loaded(1) +
                          created("f.cg", CG_PROFILE_ARBFP1, nullptr) + loaded(2));
    EXPECT_EQ(shader.getVertexProgram(), program(1));
    EXPECT_EQ(shader.getFragmentProgram(), program(2));
    EXPECT_TRUE(shader.loadVertexProgram("other.cg", nullptr));
    EXPECT_EQ(made(), loaded(1)) << "what is there stays";

    const Calls enableFragment{call("cgGLEnableProfile", CG_PROFILE_ARBFP1),
                               call("cgGLBindProgram", program(2))};
    const Calls disableFragment{call("cgGLDisableProfile", CG_PROFILE_ARBFP1)};
    shader.enable();
    EXPECT_EQ(made(),
              (Calls{call("cgGLEnableProfile", CG_PROFILE_ARBVP1), call("cgGLBindProgram", program(1))} +
               enableFragment));
    const CGManager::CGShader half{nullptr, program(2), CG_PROFILE_ARBVP1, CG_PROFILE_ARBFP1};
    half.enable();
    half.disable();
    EXPECT_EQ(made(), enableFragment + disableFragment);

    shader.destroy();
    shader.destroy();
    EXPECT_EQ(made(), (Calls{call("cgGLDisableProfile", CG_PROFILE_ARBVP1)} + disableFragment +
                       Calls{call("cgDestroyProgram", program(1)), call("cgDestroyProgram", program(2))}));

    fRefuses = [](const std::string&) { return true; };
    const auto load = [](CGManager::CGShader& into) {
        return printed([&] {
            EXPECT_FALSE(into.loadVertexProgram("v.cg", nullptr) ||
                         into.loadFragmentProgram("f.cg", nullptr));
        });
    };
    EXPECT_EQ(load(shader),
              "Vertex program failed to compile:\nv.cg\nFragment program failed to compile:\nf.cg\n");
    EXPECT_EQ(shader.getVertexProgram(), nullptr);
    clearRecorded();
    CGManager::CGShader blank;
    EXPECT_EQ(load(blank), "");
    EXPECT_EQ(made(), Calls{}) << "without a profile there is nothing to compile for";
}

TEST_F(CgShaders, loadStringsInThePlaceOfWhatWasThere) {
    CGManager::CGShader shader{program(7), program(8), CG_PROFILE_UNKNOWN, CG_PROFILE_ARBFP1};
    const char* options[] = {"-posinv", nullptr};
    const auto created = [](const char* source, CGprofile profile, const char** switches) {
        return Calls{call("cgCreateProgram", context(), CG_SOURCE, source, profile, nullptr, switches)};
    };
    shader.loadVertexProgramFromString("vertices");
    shader.loadFragmentProgramFromString("fragments");
    fRefuses = [](const std::string&) { return true; };
    EXPECT_EQ(printed([&] { shader.loadVertexProgramFromString("broken"); }), "");
    EXPECT_EQ(shader.getVertexProgram(), nullptr);
    EXPECT_EQ(made(), created("vertices", CG_PROFILE_UNKNOWN, options) + loaded(1) +
                          created("fragments", CG_PROFILE_ARBFP1, nullptr) + loaded(2) +
                          created("broken", CG_PROFILE_UNKNOWN, options));
}

TEST_F(CgShaders, handParametersOver) {
    const double numbers[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    const ProjMatrix matrix(numbers);
    fShader.setParameter1f(kFragment, "p", 2.5F, true);
    fShader.setParameter1f(kFragment, "p", 2.5F, false);
    fShader.setParameterBool(kFragment, "p", true);
    fShader.setParameterBool(kFragment, "p", false);
    fShader.setParameter2f(kFragment, "p", 1, 2);
    fShader.setParameter3f(kFragment, "p", 1, 2, 3);
    fShader.setParameter3d(kFragment, "p", 1, 2, 3);
    fShader.setParameter3fv(kFragment, "p", Point(1, 2, 3));
    fShader.setParameter3fv(kFragment, "p", PointFlt(1, 2, 3));
    fShader.setParameter4f(kFragment, "p", 1, 2, 3, 4);
    fShader.setParameter4d(kFragment, "p", 1, 2, 3, 4);
    fShader.setParameter4fv(kFragment, "p", HPoint(1, 2, 3, 4));
    fShader.setParameter4fv(kFragment, "p", Point(1, 2, 3));
    fShader.setParameter4fv(kFragment, "p", PointFlt(1, 2, 3));
    fShader.setParameter4fv(kFragment, "p", Vector(1, 2, 3));
    fShader.setParameter4fv(kFragment, "p", VectorFlt(1, 2, 3));
    fShader.setParameterMatrix(kFragment, "p", matrix);
    fShader.setParameterMatrix(kFragment, "p", ProjMatrixFlt(matrix));
    fShader.setParameterMatrixRowMajor(kFragment, "p", matrix);
    fShader.setParameterMatrixRowMajor(kFragment, "p", ProjMatrixFlt(matrix));
    const auto set = [](const char* function, const auto&... values) {
        return found(2) + Calls{call((std::string("cgGLSet") + function).c_str(), parameter(), values...)};
    };
    const Values all(std::begin(numbers), std::end(numbers));
    EXPECT_EQ(made(), (set("Parameter1f", 2.5) + set("Parameter1f", 2.5) + set("Parameter1f", 1) +
                       set("Parameter1f", 0) + set("Parameter2f", 1, 2) + set("Parameter3f", 1, 2, 3) +
                       set("Parameter3d", 1, 2, 3) + set("Parameter3dv", Values{1, 2, 3}) +
                       set("Parameter3fv", Values{1, 2, 3}) + set("Parameter4f", 1, 2, 3, 4) +
                       set("Parameter4d", 1, 2, 3, 4) + set("Parameter4dv", Values{1, 2, 3, 4}) +
                       set("Parameter4d", 1, 2, 3, 1) + set("Parameter4f", 1, 2, 3, 1) +
                       set("Parameter4d", 1, 2, 3, 1) + set("Parameter4f", 1, 2, 3, 1) +
                       set("MatrixParameterdc", all) + set("MatrixParameterfc", all) +
                       set("MatrixParameterdr", all) + set("MatrixParameterfr", all)));
    fShader.setParameterTexture(kVertex, "p", 42);
    EXPECT_EQ(made(),
              (found(1) + Calls{call("cgGLSetTextureParameter", parameter(), 42),
                                call("cgGLEnableTextureParameter", parameter()), call("glGetError")}));
}

TEST_F(CgShaders, passOverWhatIsNotThere) {
    const auto setAll = [this](CGManager::CGProgramType type) {
        fShader.setParameter1f(type, "p", 1, true);
        fShader.setParameterMatrix(type, "p", ProjMatrix());
        fShader.setParameterTexture(type, "p", 42);
        EXPECT_EQ(fShader.getParameterIndex(type, "p"), 0xFFFFFFFF);
        bool found = true;
        EXPECT_EQ(fShader.getTextureInterpolant(type, "p", &found), 0u);
        EXPECT_FALSE(found);
        EXPECT_EQ(fShader.getTextureInterpolant(type, "p", nullptr), 0u);
    };
    setAll(static_cast<CGManager::CGProgramType>(2));
    EXPECT_EQ(made(), Calls{}) << "without a program there is nothing to look in";
    script().answers["cgGetNamedParameter"] = [](const auto&) { return uint64_t{0}; };
    setAll(kVertex);
    EXPECT_EQ(made(), found(1) + found(1) + found(1) + found(1) + found(1) + found(1));
}

TEST_F(CgShaders, tellWhereParametersAre) {
    const char* semantic = "TEXCOORD5";
    script().answers["cgGetParameterResourceIndex"] = [](const auto&) { return uint64_t{3}; };
    script().answers["cgGetParameterSemantic"] = [&](const auto&) {
        return reinterpret_cast<uint64_t>(semantic);
    };
    EXPECT_EQ(fShader.getParameterIndex(kFragment, "p"), 3u);
    bool found = false;
    EXPECT_EQ(fShader.getTextureInterpolant(kFragment, "p", &found), 5u);
    EXPECT_TRUE(found);
    for (const char* other : {"COLOR0", static_cast<const char*>(nullptr)}) {
        semantic = other;
        EXPECT_EQ(fShader.getTextureInterpolant(kFragment, "p", nullptr), 0xFFFFFFFF);
    }
    const auto offset = [](const std::string& text) {
        return CGManager::CGShader::getTextureOffsetFromSemantic(text.c_str());
    };
    for (unsigned i = 0; i < 16; ++i)
        EXPECT_EQ(offset("TEXCOORD" + std::to_string(i)), i);
    for (const char* other : {"TEXCOORD16", "TEXCOORD1 ", "texcoord1", "TEXCOORD01", "TEXCOORD", ""})
        EXPECT_EQ(offset(other), 0xFFFFFFFF) << other;
}

} // namespace
