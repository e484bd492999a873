#include "draw/Canvas.h"

#include "base/ExitCode.h"

#include <algorithm>
#include <array>
#include <string>

#include <gl/GLFunctionTable.h>
#include <gl/GLStartupContext.h>

namespace orloview {

namespace {

std::string sizeOf(int width, int height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

} // namespace

Canvas::Canvas(Kind kind, int width, int height) {
    if (width > largestSide() || height > largestSide())
        throw Failure(kExitUsage, "--size " + sizeOf(width, height) + ": this OpenGL draws at most " +
                                      std::to_string(largestSide()) + " pixels each way");
    if (kind == Kind::Pbuffer)
        createPbuffer(width, height);
    else
        createFramebuffer(kind, width, height);
}

Canvas::~Canvas() {
    fTarget.deleteInternalState();
    GLStartupContext::fpGlobalGLStartupContext->makeCurrent();
}

void Canvas::createFramebuffer(Kind kind, int width, int height) {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    if (!gl->usable(kCapFramebufferObject))
        throw Failure(kExitNoGL, "this OpenGL has no framebuffer objects (GL_EXT_framebuffer_object), which "
                                 "pictures are drawn in; --gl-info shows what it has");
    const auto type = kind == Kind::CubeMap ? IHWTexture::kTextureCubeMap : IHWTexture::kTexture2D;
    for (const RasterFormat color : {kRasterRGBA32F, kRasterRGBA16F, kRasterRGBA8}) {
        if (color == kRasterRGBA32F && kind != Kind::FloatPicture)
            continue;
        if (color != kRasterRGBA8 && !gl->usable(kCapTextureFloat))
            continue;
        const koBufferFormat format(color, kRasterDepth24, kRasterNoStencil, kSamplingSingle, type);
        if (fTarget.createOffscreen(format, static_cast<unsigned>(width), static_cast<unsigned>(height)) ==
            GLFrameBuffer::kSuccess)
            return;
    }
    throw Failure(kExitNoGL, "this OpenGL can't make a framebuffer of " + sizeOf(width, height) +
                                 " pixels with colour and depth; try a smaller --size");
}

void Canvas::createPbuffer(int width, int height) {
    const koBufferFormat format(kRasterRGBA8, kRasterDepth24, kRasterNoStencil, kSamplingSingle,
                                IHWTexture::kTexture2D);
    const WindowWrapper& window = GLStartupContext::fpGlobalGLStartupContext->wrapper;
    const uint32_t result = fTarget.createPbufferPortably(window, format, static_cast<unsigned>(width),
                                                          static_cast<unsigned>(height));
    const bool isWhole =
        fTarget.fWidth == static_cast<unsigned>(width) && fTarget.fHeight == static_cast<unsigned>(height);
    if (result != GLFrameBuffer::kSuccess || !isWhole)
        throw Failure(kExitNoGL, "this display can't make a pbuffer of " + sizeOf(width, height) +
                                     " pixels; leave --offscreen pbuffer out");
    if (!givesBackWhatIsDrawn())
        throw Failure(kExitNoGL, "what is drawn into this display's pbuffers doesn't come back; leave "
                                 "--offscreen pbuffer out");
}

bool Canvas::givesBackWhatIsDrawn() {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    makeCurrent();
    gl->glClearColor(0.0F, 1.0F, 0.0F, 1.0F);
    gl->glClear(GL_COLOR_BUFFER_BIT);
    std::array<GLubyte, 4> pixel{};
    gl->glReadPixels(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel.data());
    return pixel[1] == 255;
}

void Canvas::makeCurrent() {
    if (fTarget.fFramebufferObjectFlag)
        GLStartupContext::fpGlobalGLStartupContext->makeCurrent();
    else
        fTarget.makeCurrent();
}

int Canvas::largestSide() {
    GLint limit = 0;
    GLFunctionTable::fpGlobalFunctionTable->glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE_EXT, &limit);
    return limit;
}

int Canvas::largestFrame() {
    GLint limits[2] = {};
    GLFunctionTable::fpGlobalFunctionTable->glGetIntegerv(GL_MAX_VIEWPORT_DIMS, limits);
    return std::min(limits[0], limits[1]);
}

} // namespace orloview
