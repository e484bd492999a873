// Pixels between textures and the current framebuffer.

#include "framebuffer/GLFrameBuffer.h"
#include "gl/GLFunctionTable.h"
#include "texture/GLTexture2D.h"

#include <algorithm>
#include <new>

namespace {

/// Null for a texture that can't be drawn or filled here, and behind a reference to nothing.
GLTexture2D* asTexture2D(const IHWTexture* texture) {
    return texture ? const_cast<GLTexture2D*>(dynamic_cast<const GLTexture2D*>(texture)) : nullptr;
}

/// The corners of the quad and their texture coordinates for a texture of one unit.
struct Corner {
    float x;
    float y;
    int s;
    int t;
};
constexpr Corner kCorners[] = {
    {-1.0F, -1.0F, 0, 0}, {-1.0F, 1.0F, 0, 1}, {1.0F, 1.0F, 1, 1}, {1.0F, -1.0F, 1, 0}};

void drawQuad(GLFunctionTable& gl) {
    gl.glBegin(GL_QUADS);
    for (const Corner& corner : kCorners) {
        gl.glTexCoord2f(static_cast<float>(corner.s), static_cast<float>(corner.t));
        gl.glVertex2f(corner.x, corner.y);
    }
    gl.glEnd();
}

/// With coordinates in texels, as rectangle textures take them.
void drawQuadInTexels(GLFunctionTable& gl, int width, int height) {
    gl.glBegin(GL_QUADS);
    for (const Corner& corner : kCorners) {
        gl.glTexCoord2i(corner.s * width, corner.t * height);
        gl.glVertex2f(corner.x, corner.y);
    }
    gl.glEnd();
}

/// Sets what a quad with the texture needs, calls `draw`, and puts back what is not left set on purpose. The
/// quad spans -1 to 1 while the projection counts texels: hosts place it by the viewport.
template <typename Draw>
void drawTextured(GLFunctionTable& gl, GLTexture2D& texture, bool color, Draw draw) {
    GLboolean hadDepthTest = GL_FALSE;
    GLboolean hadTexturing = GL_FALSE;
    gl.glGetBooleanv(GL_DEPTH_TEST, &hadDepthTest);
    gl.glGetBooleanv(GL_TEXTURE_2D, &hadTexturing);

    gl.glMatrixMode(GL_PROJECTION);
    gl.glPushMatrix();
    gl.glLoadIdentity();
    gl.glOrtho(0.0, texture.width(), 0.0, texture.height(), -1.0, 1.0);
    gl.glMatrixMode(GL_MODELVIEW);
    gl.glLoadIdentity();
    const GLboolean colorMask = color ? GL_TRUE : GL_FALSE;
    gl.glColorMask(colorMask, colorMask, colorMask, colorMask);
    gl.glDepthMask(color ? GL_FALSE : GL_TRUE);
    if (hadDepthTest)
        gl.glDisable(GL_DEPTH_TEST);
    if (!hadTexturing)
        gl.glEnable(GL_TEXTURE_2D);
    texture.bind();

    draw();

    if (hadDepthTest)
        gl.glEnable(GL_DEPTH_TEST);
    if (!hadTexturing)
        gl.glDisable(GL_TEXTURE_2D);
    gl.glMatrixMode(GL_PROJECTION);
    gl.glPopMatrix();
    gl.glMatrixMode(GL_MODELVIEW);
}

} // namespace

void GLFrameBuffer::writeCurrentColorBuffer(const IHWTexture& texture) {
    GLTexture2D* drawn = asTexture2D(&texture);
    if (!drawn || !fFunctionTable)
        return;
    GLFunctionTable& gl = *fFunctionTable;
    drawTextured(gl, *drawn, true, [&] {
        // By what the driver offers, not by the texture: hosts make rectangle textures where they can.
        if (gl.usable(kCapTextureRectangle))
            drawQuadInTexels(gl, static_cast<int>(drawn->width()), static_cast<int>(drawn->height()));
        else
            drawQuad(gl);
    });
}

void GLFrameBuffer::writeDepthBuffer(const IHWTexture& texture) {
    GLTexture2D* drawn = asTexture2D(&texture);
    if (drawn && fFunctionTable)
        drawTextured(*fFunctionTable, *drawn, false, [&] { drawQuad(*fFunctionTable); });
}

void GLFrameBuffer::copyInto(GLTexture2D& texture, int x, int y, int width, int height) {
    texture.GLloadRenderedImage(std::max(x, 0), std::max(y, 0), width, height);
}

void GLFrameBuffer::readCurrentColorBuffer(IHWTexture* texture, unsigned index) {
    GLTexture2D* filled = asTexture2D(texture);
    if (!filled || !fFunctionTable)
        return;
    int width = 0;
    int height = 0;
    getDimensions(&width, &height);
    const bool hasAttachment = !fGLXDrawableFlag && index < fColorAttachmentCount;
    fFunctionTable->glReadBuffer(hasAttachment ? fAttachmentPoints[index] : GLenum{GL_BACK});
    copyInto(*filled, 0, 0, width, height);
}

void GLFrameBuffer::readDepthBuffer(IHWTexture* texture) {
    GLTexture2D* filled = asTexture2D(texture);
    if (!filled || !fFunctionTable)
        return;
    int width = 0;
    int height = 0;
    getDimensions(&width, &height);
    fFunctionTable->glReadBuffer(GL_DEPTH);
    copyInto(*filled, 0, 0, width, height);
}

void GLFrameBuffer::renderTexture(GLTexture2D* texture, int x, int y, int width, int height, unsigned,
                                  unsigned source) {
    if (!texture || !fFunctionTable)
        return;
    const auto [copiedWidth, copiedHeight] = cutToBuffer(width, height);
    if (fColorAttachmentCount != 0)
        fFunctionTable->glReadBuffer(fAttachmentPoints[0]);
    else if (source == 0)
        fFunctionTable->glReadBuffer(GL_FRONT);
    else if (source == 1)
        fFunctionTable->glReadBuffer(GL_BACK);
    else
        return;
    copyInto(*texture, x, y, copiedWidth, copiedHeight);
}

GLTexture2D* GLFrameBuffer::copyDepthBuffer2Texture2D(int x, int y, int width, int height) {
    if (!fFunctionTable)
        return nullptr;
    const auto [copiedWidth, copiedHeight] = cutToBuffer(width, height);
    // RGBX, no depth format: hosts show the copy, they don't compare with it.
    auto* texture = new (std::nothrow) GLTexture2D(kRasterRGBX8, false);
    if (!texture)
        return nullptr;
    fFunctionTable->glReadBuffer(GL_DEPTH);
    copyInto(*texture, x, y, copiedWidth, copiedHeight);
    return texture;
}
