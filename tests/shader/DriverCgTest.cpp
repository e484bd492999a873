#include "DriverTest.h"

#include "shader/CGManager.h"

#include <filesystem>
#include <fstream>
#include <functional>

#include <orlohost/HWEnvironment.h>

namespace {

using namespace koLinear;
using Shader = CGManager::CGShader;

constexpr auto kVertex = CGManager::kVertexProgram;
constexpr auto kFragment = CGManager::kFragmentProgram;

/// Shaders of files through the Cg runtime of our own. The shader "probe" shows VALUE, made of a parameter p
/// of a TYPE.
class DriverCg : public DriverTest {
protected:
    void SetUp() override {
        DriverTest::SetUp();
        char folder[] = "/tmp/drivercgXXXXXX";
        fFolder = mkdtemp(folder);
        std::filesystem::create_directories(fFolder + "/bin/Cg");
        HWEnvironment::orlo_path = fFolder.c_str();
        write("probe_vertex.cg", "#include \"pass.cg\"\n");
        write("pass.cg", "void main(float4 position : POSITION, uniform float4 tint = {1, 1, 1, 1}, "
                         "float2 uv : TEXCOORD3, out float4 color : COLOR) { color = tint; }\n");
        write("probe_fragment.cg",
              "float4 main(float4 color : COLOR, uniform TYPE p) : COLOR { return VALUE; }\n");
        fTarget = std::make_unique<DrawTarget>(gl(), 4, 4);
        gl().glColor4f(0, 0, 1, 1);
        fManager = std::make_unique<CGManager>(CG_PROFILE_GLSLV, CG_PROFILE_GLSLF);
        ASSERT_NE(*CGcontextSingleton::theCgContext(), nullptr) << "there is no Cg runtime";
    }

    void TearDown() override {
        fManager.reset();
        fTarget.reset();
        std::filesystem::remove_all(fFolder);
        DriverTest::TearDown();
    }

    void write(const std::string& name, const std::string& text) const {
        std::ofstream(fFolder + "/bin/Cg/" + name) << text;
    }

    Shader bindProbe(const std::string& type, const std::string& value) const {
        return fManager->bindShader("probe", {}, {("-DTYPE=" + type).c_str(), ("-DVALUE=" + value).c_str()});
    }

    Pixel drawn() {
        gl().glBegin(GL_QUADS);
        for (const auto& [x, y] : {std::pair{-1.0F, -1.0F}, {1.0F, -1.0F}, {1.0F, 1.0F}, {-1.0F, 1.0F}})
            gl().glVertex2f(x, y);
        gl().glEnd();
        return readPixel(1, 1);
    }

    /// Colours by quarters of 255.
    void expectQuarters(const std::array<int, 4>& quarters, const std::string& what) {
        const Pixel pixel = drawn();
        for (size_t i = 0; i < 4; ++i)
            EXPECT_NEAR(pixel[i], 63.75 * quarters[i], 1) << what << ", channel " << i;
    }

    std::string fFolder;
    std::unique_ptr<DrawTarget> fTarget;
    std::unique_ptr<CGManager> fManager;
};

TEST_F(DriverCg, showsWhatIsSet) {
    // A point times a matrix whose columns are stored one behind the other, and the same row by row.
    const double columns[] = {0, 1, 0, 0, 0, 0, 1, 0, 1, 0, 0, 0, 0.25, 0, 0, 1};
    const ProjMatrix matrix(columns);
    struct Case {
        const char* type;
        const char* value;
        std::function<void(const Shader&)> set;
        std::array<int, 4> quarters;
    };
    const Case cases[] = {
        {"float",
         "float4(p,p,p,1)",
         [](auto& s) { s.setParameter1f(kFragment, "p", 0.25F, true); },
         {1, 1, 1, 4}},
        {"float", "float4(p,p,p,1)", [](auto& s) { s.setParameterBool(kFragment, "p", true); }, {4, 4, 4, 4}},
        {"bool", "p?0.5:0.25", [](auto& s) { s.setParameterBool(kFragment, "p", true); }, {2, 2, 2, 2}},
        {"float2", "p.xyxy", [](auto& s) { s.setParameter2f(kFragment, "p", 0.25F, 0.5F); }, {1, 2, 1, 2}},
        {"float3", "p.xyzx", [](auto& s) { s.setParameter3f(kFragment, "p", 0.25F, 0.5F, 1); }, {1, 2, 4, 1}},
        {"float3", "p.xyzx", [](auto& s) { s.setParameter3d(kFragment, "p", 0.5, 0.25, 1); }, {2, 1, 4, 2}},
        {"float3",
         "p.xyzx",
         [](auto& s) { s.setParameter3fv(kFragment, "p", Point(0.25, 0.5, 0.75)); },
         {1, 2, 3, 1}},
        {"float3",
         "p.xyzx",
         [](auto& s) { s.setParameter3fv(kFragment, "p", PointFlt(0.5F, 0.5F, 0.75F)); },
         {2, 2, 3, 2}},
        {"float4",
         "p",
         [](auto& s) { s.setParameter4f(kFragment, "p", 0.25F, 0.5F, 0.75F, 1); },
         {1, 2, 3, 4}},
        {"float4", "p", [](auto& s) { s.setParameter4d(kFragment, "p", 1, 0.75, 0.5, 0.25); }, {4, 3, 2, 1}},
        {"float4",
         "p",
         [](auto& s) { s.setParameter4fv(kFragment, "p", HPoint(0.25, 0.5, 0.75, 0.5)); },
         {1, 2, 3, 2}},
        {"float4",
         "p",
         [](auto& s) { s.setParameter4fv(kFragment, "p", Point(0.25, 0.5, 0.75)); },
         {1, 2, 3, 4}},
        {"float4",
         "p",
         [](auto& s) { s.setParameter4fv(kFragment, "p", PointFlt(0.25F, 0.25F, 0.75F)); },
         {1, 1, 3, 4}},
        {"float4",
         "p",
         [](auto& s) { s.setParameter4fv(kFragment, "p", Vector(0.5, 0.5, 0.75)); },
         {2, 2, 3, 4}},
        {"float4",
         "p",
         [](auto& s) { s.setParameter4fv(kFragment, "p", VectorFlt(0.5F, 0.25F, 0.75F)); },
         {2, 1, 3, 4}},
        {"float4x4",
         "mul(p,float4(0.25,0.5,0.75,1))",
         [&](auto& s) { s.setParameterMatrix(kFragment, "p", matrix); },
         {4, 1, 2, 4}},
        {"float4x4",
         "mul(p,float4(0.25,0.5,0.75,1))",
         [&](auto& s) { s.setParameterMatrix(kFragment, "p", ProjMatrixFlt(matrix)); },
         {4, 1, 2, 4}},
        {"float4x4",
         "mul(float4(0.25,0.5,0.75,1),p)",
         [&](auto& s) { s.setParameterMatrixRowMajor(kFragment, "p", matrix); },
         {4, 1, 2, 4}},
        {"float4x4",
         "mul(float4(0.25,0.5,0.75,1),p)",
         [&](auto& s) { s.setParameterMatrixRowMajor(kFragment, "p", ProjMatrixFlt(matrix)); },
         {4, 1, 2, 4}},
        {"float",
         "color",
         [](auto& s) { s.setParameter4f(kVertex, "tint", 0.5F, 0.25F, 1, 1); },
         {2, 1, 4, 4}},
    };
    int number = 0;
    for (const Case& each : cases) {
        const Shader shader = bindProbe(each.type, each.value);
        each.set(shader);
        expectQuarters(each.quarters, "case " + std::to_string(number++));
    }
}

TEST_F(DriverCg, putsTexturesOnSamplers) {
    GLuint textures[2] = {};
    gl().glGenTextures(2, textures);
    const GLubyte texels[2][4] = {{255, 0, 0, 255}, {0, 255, 0, 255}};
    for (int i = 0; i < 2; ++i) {
        gl().glBindTexture(GL_TEXTURE_2D, textures[i]);
        gl().glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        gl().glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels[i]);
    }
    gl().glBindTexture(GL_TEXTURE_2D, 0);
    write("pair_vertex.cg", "#include \"pass.cg\"\n");
    write("pair_fragment.cg",
          "float4 main(uniform sampler2D a, uniform sampler2D b : TEXUNIT3, uniform sampler2D idle) : COLOR "
          "{ return 0.5 * tex2D(a, float2(0, 0)) + 0.25 * tex2D(b, float2(0, 0)); }\n");
    const Shader shader = fManager->bindShader("pair", {}, {});
    shader.setParameterTexture(kFragment, "a", textures[0]);
    shader.setParameterTexture(kFragment, "b", textures[1]);
    shader.setParameterTexture(kFragment, "idle", textures[1]);
    expectQuarters({2, 1, 0, 3}, "both");
    EXPECT_EQ(shader.getParameterIndex(kFragment, "a"), 0U);
    EXPECT_EQ(shader.getParameterIndex(kFragment, "b"), 3U);
    EXPECT_EQ(shader.getParameterIndex(kFragment, "c"), 0xFFFFFFFF);
    EXPECT_EQ(shader.getTextureInterpolant(kVertex, "uv", nullptr), 3U);
    EXPECT_EQ(shader.getTextureInterpolant(kVertex, "position", nullptr), 0xFFFFFFFF);
    gl().glActiveTexture(GL_TEXTURE3);
    gl().glBindTexture(GL_TEXTURE_2D, 0);
    gl().glActiveTexture(GL_TEXTURE0);
    gl().glDeleteTextures(2, textures);
}

TEST_F(DriverCg, leavesStagesToGLThatItHasNoProgramFor) {
    const Shader shader = fManager->bindVertexShader("probe", {});
    shader.setParameter4f(kVertex, "tint", 0.25F, 0.5F, 0.75F, 1);
    expectQuarters({1, 2, 3, 4}, "GL's fragments");
    shader.disable();
    expectQuarters({0, 0, 4, 4}, "GL alone");
    EXPECT_STREQ(fManager->vertexProfileString(), "glslv");
}

TEST_F(DriverCg, bindsWhatIsMendedOnceItCompiles) {
    write("probe_fragment.cg", "float4 main() : COLOR { return nonsense; }\n");
    testing::internal::CaptureStdout();
    EXPECT_EQ(bindProbe("float", "1").getFragmentProgram(), nullptr);
    EXPECT_THAT(testing::internal::GetCapturedStdout(), testing::EndsWith("Shader is invalid !\n"));
    EXPECT_THAT(F_cgGetLastListing(*CGcontextSingleton::theCgContext()),
                testing::HasSubstr("probe_fragment.cg:1:32: error: there is no variable 'nonsense'"));
    expectQuarters({0, 0, 4, 4}, "nothing is bound");
    write("probe_fragment.cg", "float4 main() : COLOR { return 0.5; }\n");
    bindProbe("float", "1");
    expectQuarters({2, 2, 2, 2}, "mended");
    EXPECT_EQ(F_cgGetError(), CG_COMPILER_ERROR) << "of the first";
}

TEST_F(DriverCg, outlivesTheContext) {
    bindProbe("float", "float4(1,p,0,1)").setParameter1f(kFragment, "p", 0.5F, false);
    expectQuarters({4, 2, 0, 4}, "at first");
    CGManager(CG_PROFILE_GLSLV, CG_PROFILE_GLSLF); // takes all programs with it
    const Shader stale = bindProbe("float", "float4(1,p,0,1)");
    stale.setParameter1f(kFragment, "p", 1.0F, false);
    EXPECT_NE(F_cgGetError(), CG_NO_ERROR);
    stale.disable();
    expectQuarters({0, 0, 4, 4}, "stale");
    fManager->sceneHasChanged();
    bindProbe("float", "float4(1,p,0,1)").setParameter1f(kFragment, "p", 0.25F, false);
    expectQuarters({4, 1, 0, 4}, "anew");
}

} // namespace
