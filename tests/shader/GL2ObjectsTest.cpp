#include "ShaderTest.h"

#include "shader/GL2ProgramObject.h"
#include "shader/GL2Shader.h"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>

#include <sys/stat.h>
#include <unistd.h>

namespace {

const std::string kCompile = call("glCompileShaderARB", shaderName(0));
const std::string kAskCompiled = call("glGetObjectParameterivARB", shaderName(0), 0x8B81, kOut);

class GL2Objects : public ShaderTest {
protected:
    /// A file of this test's own.
    char* file(const std::string& text) {
        std::ofstream(fPath) << text;
        return fPath.data();
    }
    ~GL2Objects() override { std::remove(fPath.c_str()); }

    std::string fPath =
        testing::TempDir() + "gl2_" + std::to_string(getpid()) + GL2Shader::vertexShaderExtension;
};

TEST_F(GL2Objects, readsItsSourceFromAFile) {
    GL2Shader shader;
    EXPECT_EQ(shader.readShaderSource(nullptr), 0);
    EXPECT_EQ(made(), Calls{});
    EXPECT_EQ(shader.readShaderSource(file("void main() {}")), 14);
    EXPECT_STREQ(shader.fSource.get(), "void main() {}");
    EXPECT_EQ(shader.fSourceLength, 14);
    EXPECT_EQ(made(), Calls{call("glFinish")});

    const std::string gone = fPath + ".gone";
    for (std::string path : {std::string(file("")), gone, std::string("/dev/null")}) {
        EXPECT_EQ(printed([&] { EXPECT_EQ(shader.readShaderSource(path.data()), 0); }),
                  "Cannot determine size of the GL2 shader " + path + "\n");
        EXPECT_EQ(shader.fSource, nullptr);
        EXPECT_EQ(shader.fSourceLength, 0);
    }
    std::string folder = testing::TempDir(); // can be opened, but neither measured nor read
    EXPECT_THAT(printed([&] { EXPECT_EQ(shader.readShaderSource(folder.data()), 0); }),
                testing::EndsWith(folder + "\n"));
    EXPECT_EQ(shader.fSource, nullptr);
}

TEST_F(GL2Objects, compilesWhatItHas) {
    auto shader = std::make_unique<GL2Shader>(GL2Shader::kFragmentShader);
    EXPECT_FALSE(shader->compileShaderSource(false));
    EXPECT_EQ(made(), Calls{});
    ASSERT_TRUE(shader->assignShaderSource("void main() {}"));
    clearRecorded();

    EXPECT_TRUE(shader->compileShaderSource(false));
    const Calls calls = made();
    ASSERT_EQ(calls.size(), 5u);
    EXPECT_EQ(calls[1], call("glCreateShaderObjectARB", GL_FRAGMENT_SHADER_ARB));
    EXPECT_THAT(calls[2], testing::StartsWith("glShaderSourceARB(601, 1, {\"void main() {}\"}, {14"));
    EXPECT_EQ((Calls{calls[0], calls[3], calls[4]}), (Calls{call("glFinish"), kCompile, kAskCompiled}));

    fRefused = {GL_OBJECT_COMPILE_STATUS_ARB};
    EXPECT_FALSE(shader->compileShaderSource(true)) << "without its source";
    EXPECT_EQ(made(), (Calls{call("glFinish"), call("glUseProgramObjectARB", 0),
                             call("glDeleteObjectARB", shaderName(0)),
                             call("glCreateShaderObjectARB", GL_FRAGMENT_SHADER_ARB),
                             call("glCompileShaderARB", shaderName(1)),
                             call("glGetObjectParameterivARB", shaderName(1), 0x8B81, kOut)}));
    shader.reset();
    EXPECT_EQ(made(), (Calls{call("glFinish"), call("glUseProgramObjectARB", 0),
                             call("glDeleteObjectARB", shaderName(1))}));
}

TEST_F(GL2Objects, theOldWayToGiveASourceTakesNothing) {
    unsigned char text[] = "void main() {}";
    GL2Shader shader;
    ASSERT_TRUE(shader.assignShaderSource("x"));
    EXPECT_FALSE(shader.setShaderSource(nullptr, 3) || shader.setShaderSource(text, 0));
    EXPECT_NE(shader.fSource, nullptr);
    EXPECT_FALSE(shader.setShaderSource(text, 14));
    EXPECT_EQ(shader.fSource, nullptr);
    EXPECT_FALSE(shader.setShaderSource(text, -1));
    EXPECT_FALSE(shader.assignShaderSource(""));
}

TEST_F(GL2Objects, linksTwoShadersIntoAProgram) {
    GL2Shader vertex;
    GL2Shader fragment(GL2Shader::kFragmentShader);
    for (GL2Shader* shader : {&vertex, &fragment}) {
        ASSERT_TRUE(shader->assignShaderSource("x"));
        ASSERT_TRUE(shader->compileShaderSource(false));
    }
    clearRecorded();
    const double program = shaderName(2);
    const auto attach = [&](int n) { return call("glAttachObjectARB", program, shaderName(n)); };
    const auto detach = [&](int n) { return call("glDetachObjectARB", program, shaderName(n)); };
    GL2ProgramObject object(&vertex, &fragment);
    EXPECT_EQ(made(), (Calls{call("glCreateProgramObjectARB"), attach(0), attach(1)}));
    object.attachVertexShader(&vertex);
    EXPECT_EQ(made(), (Calls{detach(0), attach(0)}));
    GL2Shader uncompiled;
    object.attachFragmentShader(&uncompiled);
    EXPECT_EQ(made(), Calls{detach(1)});
    object.detachFragmentShader();
    EXPECT_EQ(object.fFragmentShader, nullptr);
    EXPECT_EQ(made(), Calls{});

    for (const bool links : {true, false}) {
        fRefused = links ? std::set<GLenum>{} : std::set<GLenum>{GL_OBJECT_LINK_STATUS_ARB};
        EXPECT_EQ(object.linkShaders(), links);
        EXPECT_TRUE(object.bind() && object.unbind());
        EXPECT_EQ(made(), (Calls{call("glLinkProgramARB", program),
                                 call("glGetObjectParameterivARB", program, 0x8B82, kOut),
                                 call("glUseProgramObjectARB", program), call("glUseProgramObjectARB", 0)}));
    }
    EXPECT_TRUE(object.deleteObject());
    EXPECT_EQ(made(),
              (Calls{detach(0), call("glUseProgramObjectARB", 0), call("glDeleteObjectARB", program)}));
    EXPECT_FALSE(object.deleteObject());
    EXPECT_TRUE(object.bind());
    EXPECT_EQ(made(), Calls{});
    failNext("glCreateProgramObjectARB");
    EXPECT_FALSE(object.createObject());
}

TEST_F(GL2Objects, withoutShaderObjectsNothingIsCalled) {
    withoutShaderObjects();
    GL2Shader shader;
    ASSERT_TRUE(shader.assignShaderSource("x"));
    EXPECT_FALSE(shader.compileShaderSource(false));
    EXPECT_EQ(made(), Calls(2, call("glFinish")));
    GL2ProgramObject object(&shader, nullptr);
    EXPECT_FALSE(object.createObject() || object.linkShaders() || object.deleteObject());
    EXPECT_TRUE(object.bind() && object.unbind());
    EXPECT_EQ(made(), Calls{});
    GLFunctionTable::fpGlobalFunctionTable = nullptr; // the rest ends without a table
}

} // namespace
