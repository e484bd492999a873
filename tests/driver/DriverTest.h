#pragma once

// GoogleTest first: Xlib's macros None, Bool and True break its headers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "gl/GLFunctionTable.h"
#include "gl/GLStartupContext.h"

#include <X11/Xlib.h>

#include <array>
#include <fstream>
#include <vector>

using Pixel = std::array<int, 4>;

/// A test on the driver at hand, whosever it is: what GL leaves to drivers is asked of this one. Opens the
/// display (a missing one is a failure), makes the start-up context current and applies the multitexture
/// remedy. Ends with a failure when a GL error is pending or X reported an error.
class DriverTest : public testing::Test {
protected:
    void SetUp() override {
        fDisplay = XOpenDisplay(nullptr);
        ASSERT_NE(fDisplay, nullptr) << "no display: set DISPLAY (a virtual one needs Xvfb -noreset)";
        xErrors().clear();
        XSetErrorHandler(noteXError);
        fStartup = new GLStartupContext(WindowWrapper(nullptr, 0, fDisplay), nullptr);
        fStartup->ref();
        GLStartupContext::fpGlobalGLStartupContext = fStartup;
        ASSERT_TRUE(fStartup->valid) << "no usable GL on this display";
        ASSERT_TRUE(fStartup->makeCurrent());
        EXPECT_TRUE(gl().ensureLiveMultitexture());
        expectNoErrors();
    }

    void TearDown() override {
        if (fStartup && fStartup->valid) {
            fStartup->makeCurrent();
            expectNoErrors();
            GLStartupContext::fpGlobalGLStartupContext = nullptr;
            fStartup->unref();
        }
        if (fDisplay) {
            expectNoXErrors();
            XCloseDisplay(fDisplay);
        }
    }

    GLFunctionTable& gl() { return *GLFunctionTable::fpGlobalFunctionTable; }
    Display* display() { return fDisplay; }
    GLStartupContext& startup() { return *fStartup; }

    /// Drains what is pending.
    void expectNoErrors() {
        while (const GLenum error = gl().glGetError())
            ADD_FAILURE() << "GL error " << error;
    }

    /// A pixel of the current read buffer, 0 to 255; (0, 0) is at the lower left.
    Pixel readPixel(int x, int y) {
        GLubyte rgba[4] = {};
        gl().glReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
        return {rgba[0], rgba[1], rgba[2], rgba[3]};
    }

    float readDepth(int x, int y) {
        GLfloat depth = -1;
        gl().glReadPixels(x, y, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
        return depth;
    }

    /// Memory of this process, in pages. With the address sanitizer always 0: it keeps what is freed, so that
    /// its memory says nothing.
    static long residentPages() {
#ifdef ORLOGL_SANITIZED
        return 0;
#else
        long size = 0;
        long resident = 0;
        std::ifstream("/proc/self/statm") >> size >> resident;
        return resident;
#endif
    }

    /// The codes that X reported so far. Errors arrive late: XSync first.
    static std::vector<int>& xErrors() {
        static std::vector<int> theErrors;
        return theErrors;
    }

    /// Waits for those that are due.
    void expectNoXErrors() {
        XSync(fDisplay, 0);
        EXPECT_THAT(xErrors(), testing::IsEmpty()) << "X error codes";
    }

private:
    static int noteXError(Display*, XErrorEvent* event) {
        xErrors().push_back(event->error_code);
        return 0;
    }

    Display* fDisplay = nullptr;
    GLStartupContext* fStartup = nullptr;
};

/// A picture to draw into, made with the table alone: RGBA of 8 bits each or of another format, depth 24, the
/// viewport over the whole of it. Bound until it goes.
class DrawTarget {
public:
    DrawTarget(GLFunctionTable& gl, int width, int height, GLenum format = GL_RGBA8) : fGL(gl) {
        fGL.glGenRenderbuffersEXT(2, fBuffers);
        fGL.glGenFramebuffersEXT(1, &fFramebuffer);
        fGL.glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, fFramebuffer);
        fGL.glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, fBuffers[0]);
        fGL.glRenderbufferStorageEXT(GL_RENDERBUFFER_EXT, format, width, height);
        fGL.glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, fBuffers[1]);
        fGL.glRenderbufferStorageEXT(GL_RENDERBUFFER_EXT, GL_DEPTH_COMPONENT24, width, height);
        attach(GL_COLOR_ATTACHMENT0_EXT, fBuffers[0]);
        attach(GL_DEPTH_ATTACHMENT_EXT, fBuffers[1]);
        fGL.glViewport(0, 0, width, height);
        EXPECT_EQ(fGL.glCheckFramebufferStatusEXT(GL_FRAMEBUFFER_EXT), GLenum{GL_FRAMEBUFFER_COMPLETE_EXT});
    }

    ~DrawTarget() {
        fGL.glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
        fGL.glDeleteFramebuffersEXT(1, &fFramebuffer);
        fGL.glDeleteRenderbuffersEXT(2, fBuffers);
    }

    DrawTarget(const DrawTarget&) = delete;
    DrawTarget& operator=(const DrawTarget&) = delete;

private:
    void attach(GLenum point, GLuint renderbuffer) {
        fGL.glFramebufferRenderbufferEXT(GL_FRAMEBUFFER_EXT, point, GL_RENDERBUFFER_EXT, renderbuffer);
    }

    GLFunctionTable& fGL;
    GLuint fBuffers[2] = {};
    GLuint fFramebuffer = 0;
};
