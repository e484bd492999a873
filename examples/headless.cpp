// A host without an X server: draws a triangle by EGL and writes it to standard output as a PPM picture.
//
//     ./headless > triangle.ppm
//
// Only the start-up differs from a host on a display; framebuffer objects are what can be drawn into.

#include <orlogl.h>

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <cstdio>
#include <memory>

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;

EGLDisplay theDisplay = EGL_NO_DISPLAY;

// What the library calls in the place of glXMakeCurrent and glXDestroyContext.

Bool makeCurrent(Display*, GLXDrawable, GLXContext context) {
    return eglMakeCurrent(theDisplay, EGL_NO_SURFACE, EGL_NO_SURFACE, static_cast<EGLContext>(context))
               ? True
               : False;
}

void destroyContext(Display*, GLXContext context) {
    eglDestroyContext(theDisplay, static_cast<EGLContext>(context));
}

/// A compatibility context of OpenGL on Mesa's platform without surfaces. (A GPU of whatever driver is
/// reached by EGL_EXT_platform_device instead.)
EGLContext createContext() {
    const auto getDisplay =
        reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(eglGetProcAddress("eglGetPlatformDisplayEXT"));
    if (getDisplay)
        theDisplay = getDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    const EGLint wanted[] = {EGL_SURFACE_TYPE, 0, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
    EGLConfig configuration = nullptr;
    EGLint count = 0;
    if (!eglInitialize(theDisplay, nullptr, nullptr) || !eglBindAPI(EGL_OPENGL_API) ||
        !eglChooseConfig(theDisplay, wanted, &configuration, 1, &count) || count == 0)
        return EGL_NO_CONTEXT;
    return eglCreateContext(theDisplay, configuration, EGL_NO_CONTEXT, nullptr);
}

bool startUp() {
    const GLHostContext context{static_cast<GLXContext>(createContext()), makeCurrent, destroyContext};
    auto* startup = new GLStartupContext(context);
    startup->ref();
    GLStartupContext::fpGlobalGLStartupContext = startup;
    return startup->valid && GLFunctionTable::fpGlobalFunctionTable->ensureLiveMultitexture();
}

} // namespace

int main() {
    if (!startUp()) {
        std::fputs("headless: EGL gives no OpenGL context; install libgl1 and libegl-mesa0\n", stderr);
        return 1;
    }
    {
        GLFrameBuffer buffer;
        const koBufferFormat format(kRasterRGBA8, kRasterDepth24, kRasterNoStencil, kSamplingSingle,
                                    IHWTexture::kTexture2D);
        if (buffer.createOffscreen(format, kWidth, kHeight) != GLFrameBuffer::kSuccess)
            return 1;
        buffer.makeCurrent();
        const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
        gl->glViewport(0, 0, kWidth, kHeight);
        gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        gl->glColor3f(1.0F, 0.6F, 0.2F);
        gl->glBegin(GL_TRIANGLES);
        gl->glVertex2f(-1.0F, -0.8F);
        gl->glVertex2f(1.0F, -0.8F);
        gl->glVertex2f(0.0F, 0.9F);
        gl->glEnd();
        const std::unique_ptr<PixelArray2D> pixels(buffer.readColorBuffer(1, 0, 0, 0, 0, nullptr));
        std::printf("P6\n%d %d\n255\n", kWidth, kHeight);
        for (int row = kHeight - 1; row >= 0; --row) // GL counts rows from the bottom
            std::fwrite(static_cast<const unsigned char*>(pixels->data()) + row * kWidth * 3, 3, kWidth,
                        stdout);
    }
    GLStartupContext::fpGlobalGLStartupContext->unref();
    eglTerminate(theDisplay);
    return 0;
}
