#include "window/WindowPainter.h"

#include "base/ExitCode.h"
#include "frame/ViewAndLook.h"
#include "output/Picture.h"

#include <gl/GLFunctionTable.h>
#include <gl/GLStartupContext.h>

namespace orloview {

namespace {

/// What flat things are drawn with: nothing of what a scene needs.
void setFlatState(const FrameLook& look) {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    gl->glViewport(0, 0, look.width, look.height);
    gl->glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    for (const GLenum capability : {GL_DEPTH_TEST, GL_LIGHTING, GL_CULL_FACE, GL_ALPHA_TEST, GL_BLEND})
        gl->glDisable(capability);
}

float encoded(float linear) {
    return static_cast<float>(encodeSrgb(linear)) / 255.0F;
}

GLFrameBuffer& madeCurrent(GLFrameBuffer& window) {
    window.makeCurrent();
    return window;
}

} // namespace

WindowPainter::WindowPainter(GLFrameBuffer& window)
    : fWindow(madeCurrent(window)), fDevelops(fDeveloper.usable()) {}

Canvas* WindowPainter::canvasFor(const FrameLook& look, size_t factor) {
    std::unique_ptr<Canvas>& canvas = fCanvases[factor];
    const auto width = static_cast<uint32_t>(look.width);
    const auto height = static_cast<uint32_t>(look.height);
    if (!fDevelops || (canvas && canvas->texture().width() == width && canvas->texture().height() == height))
        return canvas.get();
    try {
        canvas.reset();
        canvas = std::make_unique<Canvas>(Canvas::Kind::Picture, look.width, look.height);
    } catch (const Failure&) {
        fDevelops = false;
    }
    return canvas.get();
}

void WindowPainter::paint(const View& view, const FrameContent& content, const FrameLook& look, int factor,
                          const WriteText& writeText) {
    GLStartupContext::fpGlobalGLStartupContext->makeCurrent();
    const FrameLook large = enlarged(look, factor);
    prepareFrame(view, content, large);
    Canvas* canvas = canvasFor(large, static_cast<size_t>(factor));
    if (canvas)
        drawFrame(canvas->target(), view, content, large);
    fWindow.makeCurrent();
    if (!canvas)
        drawFrame(fWindow, view, content, look);
    setFlatState(look);
    if (canvas)
        fDeveloper.develop(canvas->texture(), factor, developmentOf(look));
    finish(look, writeText);
}

void WindowPainter::paintBare(const FrameLook& look, const WriteText& writeText) {
    fWindow.makeCurrent();
    setFlatState(look);
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    const koColor::Color& color = look.background;
    gl->glClearColor(encoded(color[0]), encoded(color[1]), encoded(color[2]), 1.0F);
    gl->glClear(GL_COLOR_BUFFER_BIT);
    finish(look, writeText);
}

void WindowPainter::finish(const FrameLook& look, const WriteText& writeText) {
    writeText(fText);
    fText.paint(look.width, look.height);
    fWindow.swapBuffers();
}

} // namespace orloview
