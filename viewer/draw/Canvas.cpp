#include "draw/Canvas.h"

#include "ExitCode.h"

#include <algorithm>

#include <string>

#include <gl/GLFunctionTable.h>

namespace orloview {

Canvas::Canvas(int width, int height) {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    const std::string size = std::to_string(width) + "x" + std::to_string(height);
    if (!gl->usable(kCapFramebufferObject))
        throw Failure(kExitNoGL, "this OpenGL has no framebuffer objects (GL_EXT_framebuffer_object), which "
                                 "pictures are drawn in; --gl-info shows what it has");
    if (width > largestSide() || height > largestSide())
        throw Failure(kExitUsage, "--size " + size + ": this OpenGL draws at most " +
                                      std::to_string(largestSide()) + " pixels each way");
    for (const RasterFormat color : {kRasterRGBA16F, kRasterRGBA8}) {
        if (color == kRasterRGBA16F && !gl->usable(kCapTextureFloat))
            continue;
        const koBufferFormat format(color, kRasterDepth24, kRasterNoStencil, kSamplingSingle,
                                    IHWTexture::kTexture2D);
        if (fTarget.createOffscreen(format, static_cast<unsigned>(width), static_cast<unsigned>(height)) ==
            GLFrameBuffer::kSuccess)
            return;
    }
    throw Failure(kExitNoGL, "this OpenGL can't make a framebuffer of " + size +
                                 " pixels with colour and depth; try a smaller --size");
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
