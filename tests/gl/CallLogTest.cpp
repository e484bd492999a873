#include "DoubleTest.h"

#include "gl/GLCallLog.h"

#include <regex>

namespace {

class CallLog : public DoubleTest {
protected:
    ~CallLog() override { GLCallLog::end(); }

    static void write(void* lines, const char* line) {
        static_cast<Calls*>(lines)->push_back(std::regex_replace(line, std::regex("  [0-9.]+ us"), ""));
    }

    Calls told() { return std::exchange(fLines, {}); }

    Calls fLines;
};

TEST_F(CallLog, tellsEachCallInNamesOfGL) {
    const auto before = gl().fglBindTexture;
    ASSERT_TRUE(GLCallLog::begin(write, &fLines));
    ASSERT_TRUE(GLCallLog::begin(write, &fLines)); // once more changes nothing
    const GLfloat matrix[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0.5F, 0, 0, 1};
    GLuint names[2] = {};
    gl().glGenTextures(2, names);
    gl().glBindTexture(GL_TEXTURE_2D, names[1]);
    gl().glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 3);
    gl().glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    gl().glBlendFunc(GL_ONE, GL_ZERO);
    gl().glDrawBuffer(GL_NONE);
    gl().glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    gl().glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
    gl().glDepthMask(GL_TRUE);
    gl().glMultMatrixf(matrix);
    gl().glUniform2fvARB(3, 1, matrix);
    gl().glGetUniformLocationARB(7, "gain");
    gl().glCheckFramebufferStatusEXT(GL_FRAMEBUFFER_EXT);
    gl().glDrawArrays(GL_POINTS, 0, 9);
    GLCallLog::note("a pass");
    gl().glXQueryVersion(nullptr, nullptr, nullptr);
    gl().glEnable(0xABCDE);
    EXPECT_EQ(told(), (Calls{"glGenTextures(2, {1, 2})", "glBindTexture(GL_TEXTURE_2D, 2)",
                             "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 3)",
                             "glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)",
                             "glBlendFunc(GL_ONE, GL_ZERO)", "glDrawBuffer(GL_NONE)",
                             "glClear(GL_DEPTH_BUFFER_BIT | GL_COLOR_BUFFER_BIT)",
                             "glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT)", "glDepthMask(GL_TRUE)",
                             "glMultMatrixf({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0.5, 0, 0, 1})",
                             "glUniform2fvARB(3, 1, {1, 0})", "glGetUniformLocationARB(7, \"gain\") = 0",
                             "glCheckFramebufferStatusEXT(GL_FRAMEBUFFER) = GL_FRAMEBUFFER_COMPLETE",
                             "glDrawArrays(GL_POINTS, 0, 9)", "-- a pass",
                             "glXQueryVersion(null, null, null) = 0", "glEnable(0xABCDE)"}));
    GLCallLog::end();
    EXPECT_EQ(gl().fglBindTexture, before);
    EXPECT_EQ(fLines.size(), 18u) << "a head, 16 functions, and all";
    EXPECT_THAT(fLines.back(), testing::HasSubstr(" all"));
}

TEST_F(CallLog, keepsTheFirstErrorForTheHost) {
    ASSERT_TRUE(GLCallLog::begin(write, &fLines));
    script().errors = {GL_INVALID_ENUM, GL_INVALID_VALUE};
    gl().glEnable(GL_FOG);
    gl().glBegin(GL_LINES); // asks for no error before its end
    gl().glVertex2f(1, 2);
    gl().glEnd();
    EXPECT_EQ(gl().glGetError(), GLenum{GL_INVALID_ENUM});
    EXPECT_EQ(gl().glGetError(), GLenum{GL_NO_ERROR});
    EXPECT_EQ(told(), (Calls{"glEnable(GL_FOG)  GL_INVALID_ENUM", "glBegin(GL_LINES)", "glVertex2f(1, 2)",
                             "glEnd()  GL_INVALID_VALUE", "glGetError() = GL_INVALID_ENUM",
                             "glGetError() = GL_NO_ERROR"}));
}

TEST_F(CallLog, goesWithoutATableAndASlot) {
    gl().fglFinish = nullptr;
    ASSERT_TRUE(GLCallLog::begin(write, &fLines));
    EXPECT_EQ(gl().fglFinish, nullptr);
    gl().populate(); // as a start-up context does, which ends the telling
    fLines.clear();
    gl().glFlush();
    EXPECT_EQ(told(), Calls{});
    ASSERT_TRUE(GLCallLog::begin(write, &fLines));
    gl().glFlush();
    EXPECT_EQ(told(), Calls{"glFlush()"});
    GLCallLog::end();
    GLFunctionTable::fpGlobalFunctionTable = nullptr;
    EXPECT_FALSE(GLCallLog::begin(write, &fLines));
}

} // namespace
