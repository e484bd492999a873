#include "ShaderTest.h"

#include "shader/GL2ProgramObject.h"
#include "shader/GL2Shader.h"

#include <cstdio>
#include <fstream>

#include <unistd.h>

namespace {

const Calls kFinish{call("glFinish")};

class GL2Objects : public ShaderTest {
protected:
    ~GL2Objects() override { std::remove(fPath.c_str()); }

    /// A file of this test's own.
    std::string fPath =
        testing::TempDir() + "gl2_" + std::to_string(getpid()) + GL2Shader::vertexShaderExtension;
};

TEST_F(GL2Objects, readsItsSourceFromAFile) {
    GL2Shader shader;
    EXPECT_EQ(shader.readShaderSource(nullptr), 0);
    EXPECT_EQ(made(), Calls{});
    std::ofstream(fPath) << "void main() {}";
    EXPECT_EQ(shader.readShaderSource(fPath.data()), 14);
    EXPECT_STREQ(shader.fSource.get(), "void main() {}");
    EXPECT_EQ(shader.fSourceLength, 14);
    EXPECT_EQ(made(), kFinish);

    std::ofstream(fPath, std::ios::trunc).flush();
    for (std::string path : {fPath, fPath + ".gone", std::string("/dev/null"), testing::TempDir()}) {
        const std::string told = printed([&] { EXPECT_EQ(shader.readShaderSource(path.data()), 0); });
        if (path == testing::TempDir()) // can be opened, and on some systems measured, but not read
            EXPECT_THAT(told, testing::EndsWith(path + "\n"));
        else
            EXPECT_EQ(told, "Cannot determine size of the GL2 shader " + path + "\n");
        EXPECT_EQ(shader.fSource, nullptr);
        EXPECT_EQ(shader.fSourceLength, 0);
    }
}

TEST_F(GL2Objects, compilesWhatItHas) {
    auto shader = std::make_unique<GL2Shader>(GL2Shader::kFragmentShader);
    EXPECT_FALSE(shader->compileShaderSource(false) || shader->assignShaderSource(""));
    unsigned char text[] = "the old way to give a source takes nothing";
    EXPECT_FALSE(shader->setShaderSource(text, -1));
    ASSERT_TRUE(shader->assignShaderSource("void main() {}"));
    EXPECT_FALSE(shader->setShaderSource(nullptr, 3) || shader->setShaderSource(text, 0));
    EXPECT_NE(shader->fSource, nullptr);
    clearRecorded();
    const auto compiled = [](int n) {
        return Calls{call("glCompileShaderARB", shaderName(n)),
                     call("glGetObjectParameterivARB", shaderName(n), 0x8B81, kOut)};
    };
    const Calls created{call("glCreateShaderObjectARB", GL_FRAGMENT_SHADER_ARB)};
    const auto gone = [](int n) {
        return kFinish + Calls{call("glUseProgramObjectARB", 0), call("glDeleteObjectARB", shaderName(n))};
    };
    EXPECT_TRUE(shader->compileShaderSource(false));
    const std::string source = "{\"void main() {}\"}";
    EXPECT_EQ(made(), (kFinish + created +
                       Calls{call("glShaderSourceARB", shaderName(0), 1, source, Values{14})} + compiled(0)));
    fRefused = {GL_OBJECT_COMPILE_STATUS_ARB};
    EXPECT_FALSE(shader->compileShaderSource(true)) << "without its source";
    EXPECT_EQ(made(), gone(0) + created + compiled(1));
    EXPECT_FALSE(shader->setShaderSource(text, 3));
    EXPECT_EQ(shader->fSource, nullptr);
    EXPECT_EQ(made(), gone(1));
}

TEST_F(GL2Objects, linksTwoShadersIntoAProgram) {
    GL2Shader vertex;
    GL2Shader fragment(GL2Shader::kFragmentShader);
    for (GL2Shader* shader : {&vertex, &fragment})
        ASSERT_TRUE(shader->assignShaderSource("x") && shader->compileShaderSource(false));
    clearRecorded();
    const double program = shaderName(2);
    const auto attach = [&](int n) { return Calls{call("glAttachObjectARB", program, shaderName(n))}; };
    const auto detach = [&](int n) { return Calls{call("glDetachObjectARB", program, shaderName(n))}; };
    const Calls unbound{call("glUseProgramObjectARB", 0)};
    GL2ProgramObject object(&vertex, &fragment);
    EXPECT_EQ(made(), Calls{call("glCreateProgramObjectARB")} + attach(0) + attach(1));
    object.attachVertexShader(&vertex);
    EXPECT_EQ(made(), detach(0) + attach(0));
    GL2Shader uncompiled;
    object.attachFragmentShader(&uncompiled);
    object.detachFragmentShader();
    EXPECT_EQ(object.fFragmentShader, nullptr);
    EXPECT_EQ(made(), detach(1));
    for (const bool links : {true, false}) {
        fRefused = links ? std::set<GLenum>{} : std::set<GLenum>{GL_OBJECT_LINK_STATUS_ARB};
        EXPECT_EQ(object.linkShaders(), links);
        EXPECT_TRUE(object.bind() && object.unbind());
        EXPECT_EQ(made(), (Calls{call("glLinkProgramARB", program),
                                 call("glGetObjectParameterivARB", program, 0x8B82, kOut),
                                 call("glUseProgramObjectARB", program)} +
                           unbound));
    }
    EXPECT_TRUE(object.deleteObject());
    EXPECT_FALSE(object.deleteObject());
    EXPECT_TRUE(object.bind());
    EXPECT_EQ(made(), detach(0) + unbound + Calls{call("glDeleteObjectARB", program)});
    failNext("glCreateProgramObjectARB");
    EXPECT_FALSE(object.createObject());
}

TEST_F(GL2Objects, withoutShaderObjectsNothingIsCalled) {
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

} // namespace
