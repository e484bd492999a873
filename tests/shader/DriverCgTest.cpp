#include "DriverTest.h"

#include "shader/CGManager.h"

#include <filesystem>
#include <fstream>

#include <orlohost/HWEnvironment.h>

namespace {

using DriverCg = DriverTest;

TEST_F(DriverCg, drawsByFilesAgainAfterTheContextIsGone) {
    char folder[] = "/tmp/drivercgXXXXXX";
    const std::filesystem::path home = mkdtemp(folder);
    std::filesystem::create_directories(home / "bin/Cg");
    std::ofstream(home / "bin/Cg/probe_vertex.cg") << "#include \"tinted.cg\"\n";
    std::ofstream(home / "bin/Cg/tinted.cg")
        << "float4 main(float4 position : POSITION, uniform float4 tint) : COLOR { return tint; }\n";
    std::ofstream(home / "bin/Cg/probe_fragment.cg")
        << "float4 main(float4 color : COLOR) : COLOR { return color.ORDER; }\n";
    HWEnvironment::orlo_path = folder;
    const DrawTarget target(gl(), 4, 4);
    gl().glColor4f(0, 0, 1, 1);
    const auto drawn = [this] {
        gl().glRectf(-1, -1, 1, 1);
        return readPixel(1, 1);
    };

    CGManager manager(CG_PROFILE_GLSLV, CG_PROFILE_GLSLF);
    ASSERT_NE(*CGcontextSingleton::theCgContext(), nullptr) << "there is no Cg runtime";
    const auto tint = [](const CGManager::CGShader& shader) {
        shader.setParameter4f(CGManager::kVertexProgram, "tint", 0.2F, 0.4F, 0.6F, 1);
        return shader;
    };
    const auto bind = [&] { return tint(manager.bindShader("probe", {}, {"-DORDER=zyxw"})); };
    const auto vertex = tint(manager.bindVertexShader("probe", {}));
    EXPECT_EQ(drawn(), (Pixel{51, 102, 153, 255})) << "GL's fragments";
    vertex.disable();
    EXPECT_EQ(drawn(), (Pixel{0, 0, 255, 255})) << "GL alone";
    bind();
    EXPECT_EQ(drawn(), (Pixel{153, 102, 51, 255})) << "both";
    CGManager(CG_PROFILE_GLSLV, CG_PROFILE_GLSLF); // takes all programs with it
    bind();
    EXPECT_NE(F_cgGetError(), CG_NO_ERROR);
    EXPECT_EQ(drawn(), (Pixel{0, 0, 255, 255})) << "stale";
    manager.sceneHasChanged();
    bind();
    EXPECT_EQ(drawn(), (Pixel{153, 102, 51, 255})) << "anew";
    std::filesystem::remove_all(home);
}

} // namespace
