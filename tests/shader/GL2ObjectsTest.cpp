#include "ShaderTest.h"

#include "gl/GLShaderCompiler.h"
#include "shader/GL2ProgramObject.h"
#include "shader/GL2Shader.h"

#include <cstdio>
#include <fstream>

#include <unistd.h>

namespace {

const Calls kFinish{call("glFinish")};

class GL2Objects : public ShaderTest {};

TEST_F(GL2Objects, readTheirSourcesFromFiles) {
    GL2Shader shader;
    EXPECT_EQ(shader.readShaderSource(nullptr), 0);
    EXPECT_EQ(made(), Calls{});
    std::string path = testing::TempDir() + "gl2_" + std::to_string(getpid());
    std::ofstream(path) << "void main() {}";
    EXPECT_EQ(shader.readShaderSource(path.data()), 14);
    EXPECT_STREQ(shader.fSource.get(), "void main() {}");
    EXPECT_EQ(shader.fSourceLength, 14);
    EXPECT_EQ(made(), kFinish);
    std::ofstream(path, std::ios::trunc).flush();
    for (std::string bad : {path, path + ".gone", std::string("/dev/null")}) {
        EXPECT_EQ(printed([&] { EXPECT_EQ(shader.readShaderSource(bad.data()), 0); }),
                  "Cannot determine size of the GL2 shader " + bad + "\n");
        EXPECT_EQ(shader.fSource, nullptr);
        EXPECT_EQ(shader.fSourceLength, 0);
    }
    std::remove(path.c_str());
}

TEST_F(GL2Objects, compileWhatTheyHave) {
    auto shader = std::make_unique<GL2Shader>(GL2Shader::kFragmentShader);
    EXPECT_FALSE(shader->compileShaderSource(false) || shader->assignShaderSource(""));
    unsigned char text[] = "the old way to give a source takes nothing";
    EXPECT_FALSE(shader->setShaderSource(text, -1));
    ASSERT_TRUE(shader->assignShaderSource("source"));
    EXPECT_FALSE(shader->setShaderSource(nullptr, 3) || shader->setShaderSource(text, 0));
    EXPECT_NE(shader->fSource, nullptr);
    clearRecorded();
    const Calls created{call("glCreateShaderObjectARB", GL_FRAGMENT_SHADER_ARB)};
    EXPECT_TRUE(shader->compileShaderSource(false));
    EXPECT_EQ(made(), kFinish + created + sent(0, "source") + compiled(0));
    fRefused = {GL_OBJECT_COMPILE_STATUS_ARB};
    EXPECT_FALSE(shader->compileShaderSource(true)) << "without its source";
    EXPECT_EQ(made(), kFinish + noneUsed() + deleted(0) + created + compiled(1));
    EXPECT_FALSE(shader->setShaderSource(text, 3));
    EXPECT_EQ(shader->fSource, nullptr);
    EXPECT_EQ(made(), kFinish + noneUsed() + deleted(1));
}

TEST_F(GL2Objects, linkTwoShadersIntoAProgram) {
    GL2Shader vertex;
    GL2Shader fragment(GL2Shader::kFragmentShader);
    for (GL2Shader* shader : {&vertex, &fragment})
        ASSERT_TRUE(shader->assignShaderSource("x") && shader->compileShaderSource(false));
    clearRecorded();
    const auto detached = [](int n) {
        return Calls{call("glDetachObjectARB", shaderName(2), shaderName(n))};
    };
    GL2ProgramObject object(&vertex, &fragment);
    object.attachVertexShader(&vertex);
    GL2Shader uncompiled;
    object.attachFragmentShader(&uncompiled);
    object.detachFragmentShader();
    EXPECT_EQ(object.fFragmentShader, nullptr);
    EXPECT_EQ(made(), Calls{call("glCreateProgramObjectARB")} + attached(2, 0) + attached(2, 1) +
                          detached(0) + attached(2, 0) + detached(1));
    EXPECT_TRUE(object.linkShaders());
    fRefused = {GL_OBJECT_LINK_STATUS_ARB};
    EXPECT_FALSE(object.linkShaders());
    EXPECT_TRUE(object.bind() && object.unbind() && object.deleteObject());
    EXPECT_FALSE(object.deleteObject());
    EXPECT_TRUE(object.bind());
    EXPECT_EQ(made(), linked(2) + linked(2) + used(2) + noneUsed() + detached(0) + noneUsed() + deleted(2));
    failNext("glCreateProgramObjectARB");
    EXPECT_FALSE(object.createObject());
}

TEST_F(GL2Objects, callNothingWithoutShaderObjects) {
    withoutShaderObjects();
    GL2Shader shader;
    EXPECT_TRUE(shader.assignShaderSource("x"));
    EXPECT_FALSE(shader.compileShaderSource(false));
    GL2ProgramObject object(&shader, nullptr);
    EXPECT_FALSE(object.createObject() || object.linkShaders() || object.deleteObject());
    EXPECT_TRUE(object.bind() && object.unbind());
    EXPECT_EQ(made(), kFinish + kFinish);
    GLFunctionTable::fpGlobalFunctionTable = nullptr; // the rest ends without a table
}

TEST_F(GL2Objects, releaseTheirCompilerWhereOpenGLCan) {
    const std::string release = call("glReleaseShaderCompiler");
    for (const auto& [version, extensions, can] :
         {std::tuple("4.0", "", false), {"4.1", "", true}, {"2.1", "GL_ARB_ES2_compatibility", true}}) {
        script().version = version;
        script().extensions = extensions;
        EXPECT_EQ(GLShaderCompiler::release(), can) << version;
        EXPECT_EQ(made().back() == release, can) << version;
    }
    GLFunctionTable::fpGlobalFunctionTable = nullptr;
    EXPECT_FALSE(GLShaderCompiler::release());
}

} // namespace
