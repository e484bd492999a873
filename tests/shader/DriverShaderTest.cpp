#include "DriverTest.h"

#include "shader/GL2ProgramObject.h"
#include "shader/GL2Shader.h"
#include "shader/GlslShader.h"

#include <string>

namespace {

const char* const kVertex = "void main() { gl_Position = gl_Vertex; gl_FrontColor = gl_Color; }\n";

class DriverShader : public DriverTest {
protected:
    GLuint texture(const std::array<GLubyte, 4>& texel) {
        GLuint name = 0;
        gl().glGenTextures(1, &name);
        gl().glBindTexture(GL_TEXTURE_2D, name);
        gl().glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        gl().glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, texel.data());
        return name;
    }

    Pixel drawn() {
        gl().glRectf(-1, -1, 1, 1);
        return readPixel(2, 2);
    }

    static std::string printed(const std::function<void()>& act) {
        testing::internal::CaptureStdout();
        act();
        return testing::internal::GetCapturedStdout();
    }
};

TEST_F(DriverShader, drawsWithTwoTextures) {
    DrawTarget target(gl(), 4, 4);
    const GLuint red = texture({200, 0, 0, 255});
    const GLuint green = texture({0, 100, 0, 255});
    GlslShader shader;
    shader.loadVertexProgramFromString(kVertex);
    shader.loadFragmentProgramFromString(
        "uniform sampler2D one, two, unused;\n"
        "void main() { gl_FragColor = texture2D(one, vec2(0.5)) + 2.0 * texture2D(two, vec2(0.5)); }\n");
    shader.enable();
    shader.setParameterTexture("unused", red);
    shader.setParameterTexture("two", green);
    shader.setParameterTexture("one", red);
    EXPECT_EQ(drawn(), (Pixel{200, 200, 0, 255}));
    shader.setParameterTexture("two", red);
    EXPECT_EQ(drawn(), (Pixel{255, 0, 0, 255})) << "600 of red";

    shader.loadFragmentProgramFromString("void main() { gl_FragColor = vec4(0.0, 0.0, 1.0, 1.0); }");
    EXPECT_EQ(drawn(), (Pixel{255, 0, 0, 255})) << "until it is enabled, the program that was linked";
    shader.enable();
    EXPECT_EQ(drawn(), (Pixel{0, 0, 255, 255}));
    shader.destroy();
    const GLuint names[] = {red, green};
    gl().glDeleteTextures(2, names);
    gl().glActiveTexture(GL_TEXTURE0);
}

TEST_F(DriverShader, tellsWhatDoesNotCompileOrLink) {
    GlslShader shader;
    EXPECT_EQ(printed([&] { shader.loadVertexProgramFromString("void main() { nothing }"); }),
              "### VERTEX SHADER COMPILE FAILED:\nvoid main() { nothing }\n");
    for (int times = 0; times < 2; ++times) {
        EXPECT_EQ(printed([&] { shader.enable(); }), "### GLSL PROGRAM LINK FAILED:\n");
        expectErrors({GL_INVALID_OPERATION}); // made current all the same
    }
    shader.loadVertexProgramFromString(kVertex);
    shader.loadFragmentProgramFromString("void main() { gl_FragColor = gl_Color; }");
    shader.enable();
    shader.destroy();
}

TEST_F(DriverShader, linksWhatWasReadIntoAProgram) {
    DrawTarget target(gl(), 4, 4);
    GL2Shader vertex;
    GL2Shader fragment(GL2Shader::kFragmentShader);
    ASSERT_TRUE(vertex.assignShaderSource(kVertex));
    ASSERT_TRUE(fragment.assignShaderSource("void main() { gl_FragColor = vec4(gl_Color.bgr, 1.0); }"));
    vertex.compileShaderSource(true); // no source reaches GL: false on Mesa 22.3.6, true on NVIDIA 580.159
    GLint length = -1;
    gl().glGetObjectParameterivARB(vertex.fShaderObject, GL_OBJECT_SHADER_SOURCE_LENGTH_ARB, &length);
    EXPECT_EQ(length, 0);
    ASSERT_TRUE(vertex.compileShaderSource(false));
    ASSERT_TRUE(fragment.compileShaderSource(false));
    GL2ProgramObject program(&vertex, &fragment);
    ASSERT_TRUE(program.linkShaders());
    gl().glColor4f(1, 0, 0, 1);
    program.bind();
    EXPECT_EQ(drawn(), (Pixel{0, 0, 255, 255}));
    program.unbind();
    EXPECT_EQ(drawn(), (Pixel{255, 0, 0, 255}));

    ASSERT_TRUE(fragment.assignShaderSource("void main() {\n  gl_FragColor = wrong;\n}"));
    EXPECT_FALSE(fragment.compileShaderSource(false));
    // Mesa 22.3.6 says "0:2(17): error: `wrong' undeclared", NVIDIA 580.159
    // "0(2) : error C1008: undefined variable "wrong"".
    char log[1024] = {};
    gl().glGetInfoLogARB(fragment.fShaderObject, sizeof log, nullptr, log);
    EXPECT_THAT(log, testing::HasSubstr("wrong"));
    program.detachFragmentShader(); // it was another object when it was attached
    expectErrors({GL_INVALID_OPERATION});
    gl().glColor4f(1, 1, 1, 1);
}

} // namespace
