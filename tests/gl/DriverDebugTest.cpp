// Labels, groups and messages, as the driver gives them back.

#include "DriverTest.h"

#include "gl/GLDebugOutput.h"
#include "texture/GLTexture2D.h"

#include <dlfcn.h>
#include <string>

namespace {

class DriverDebug : public DriverTest {
protected:
    void TearDown() override {
        GLDebugOutput::end();
        DriverTest::TearDown();
    }

    bool begin() {
        const auto hear = [](void* heard, GLenum, GLenum type, GLenum, const char* message) {
            if (type == GL_DEBUG_TYPE_ERROR)
                static_cast<std::string*>(heard)->append(message);
        };
        return GLDebugOutput::begin(hear, &fHeard);
    }

    static std::string labelOf(GLenum kind, GLuint name) {
        using LookUp = void (*(*)(const char*))();
        const auto lookUp =
            reinterpret_cast<LookUp>(dlsym(dlopen("libGL.so.1", RTLD_LAZY), "glXGetProcAddressARB"));
        const auto get = reinterpret_cast<PFNGLGETOBJECTLABELPROC>(lookUp("glGetObjectLabel"));
        char label[256] = "";
        get(kind, name, sizeof label, nullptr, label);
        return label;
    }

    std::string fHeard;
};

TEST_F(DriverDebug, namesObjectsAndHandsMessagesOn) {
    const auto untouched = gl().fglBindTexture;
    GLDebugOutput::label(GL_TEXTURE, 1, "nobody listens");
    if (!begin())
        GTEST_SKIP() << "this driver has no KHR_debug";
    auto* texture = new GLTexture2D(kRasterRGBA8, false);
    texture->ref();
    GLubyte white[4] = {255, 255, 255, 255};
    texture->GLloadImage(white, 1, 1);
    const GLuint name = texture->textureName();
    EXPECT_EQ(labelOf(GL_TEXTURE, name), "texture " + std::to_string(name) + ", GL_TEXTURE_2D");
    GLDebugOutput::label(GL_TEXTURE, name, "bark");
    texture->bind();
    EXPECT_EQ(labelOf(GL_TEXTURE, name), "bark") << "the host's own stays";
    texture->unref();

    const DrawTarget target(gl(), 4, 4);
    GLint framebuffer = 0;
    gl().glGetIntegerv(GL_FRAMEBUFFER_BINDING_EXT, &framebuffer);
    const auto made = static_cast<GLuint>(framebuffer);
    EXPECT_EQ(labelOf(GL_FRAMEBUFFER, made), "framebuffer " + std::to_string(made));
    const GLhandleARB program = gl().glCreateProgramObjectARB();
    EXPECT_EQ(labelOf(GL_PROGRAM, program), "program " + std::to_string(program));
    gl().glDeleteObjectARB(program);

    GLDebugOutput::pushGroup("a pass");
    GLDebugOutput::popGroup();
    expectNoErrors();
    EXPECT_EQ(fHeard, "");
    gl().glEnable(0xABCDE);
    EXPECT_EQ(gl().glGetError(), GLenum{GL_INVALID_ENUM});
    EXPECT_NE(fHeard, "");
    GLDebugOutput::end();
    EXPECT_EQ(gl().fglBindTexture, untouched);
    EXPECT_FALSE(GLDebugOutput::isOn());
}

} // namespace
