#include "framebuffer/GLFrameBuffer.h"

#include "gl/GLFunctionTable.h"
#include "texture/GLTexture2D.h"

#include <bit>

int32_t GLFrameBuffer::fsNumInstances_GLFrameBuffer = 0;

bool validFrameBufferStatus() {
    return GLFunctionTable::fpGlobalFunctionTable->glCheckFramebufferStatusEXT(GL_FRAMEBUFFER_EXT) ==
           GL_FRAMEBUFFER_COMPLETE_EXT;
}

GLFrameBuffer::GLFrameBuffer() {
    clearInternalState();
    ++fsNumInstances_GLFrameBuffer;
}

GLFrameBuffer::~GLFrameBuffer() {
    deleteInternalState();
}

uint32_t GLFrameBuffer::clearInternalState() {
    fRequestedFormat = koBufferFormat();
    fActualFormat = koBufferFormat();
    fFunctionTable = nullptr;
    fKind = kNotCreated;
    fFramebufferObjectFlag = false;
    fGLXDrawableFlag = true;
    fFramebufferId = 0;
    fColorAttachmentCount = 0;
    fColorTextures.fill(nullptr);
    for (uint32_t slot = 0; slot < fAttachmentPoints.size(); ++slot)
        fAttachmentPoints[slot] = GL_COLOR_ATTACHMENT0_EXT + slot;
    fDepthTexture = nullptr;
    fDepthRenderbufferId = 0;
    fStencilRenderbufferId = 0;
    fCubeFaceMask = 0;
    fOwnsDrawable = false;
    fContext = nullptr;
    fWidth = 0;
    fHeight = 0;
    fDrawable = 0;
    fChildWindow = 0;
    fChildColormap = 0;
    fDisplay = nullptr;
    return 0;
}

void GLFrameBuffer::deleteInternalState() {
    if (fGLXDrawableFlag) {
        deleteInternalStateWindowed();
        fKind = kNotCreated;
        return;
    }
    for (uint32_t slot = 0; slot < fColorAttachmentCount; ++slot) {
        if (fColorTextures[slot])
            fColorTextures[slot]->unref();
        fColorTextures[slot] = nullptr;
    }
    fColorAttachmentCount = 0;
    if (fDepthTexture)
        fDepthTexture->unref();
    fDepthTexture = nullptr;
    if (fDepthRenderbufferId != 0)
        fFunctionTable->glDeleteRenderbuffersEXT(1, &fDepthRenderbufferId);
    fDepthRenderbufferId = 0;
    // The stencil-only renderbuffer stays with the GL context: hosts hand its name on to other framebuffers.
    if (fFramebufferId != 0)
        fFunctionTable->glDeleteFramebuffersEXT(1, &fFramebufferId);
    fFramebufferId = 0;
    fKind = kNotCreated;
}

bool GLFrameBuffer::isOffscreen() const {
    return fKind == kOffscreen;
}

uint32_t GLFrameBuffer::makeCurrent() {
    if (fGLXDrawableFlag) {
        const uint32_t result = makeCurrentWindowed();
        if (result != 0 && fOwnsDrawable && fFunctionTable->usable(kCapFramebufferObject)) {
            fFunctionTable->glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
            if (fColorAttachmentCount != 0)
                fFunctionTable->glDrawBuffer(GL_BACK);
        }
        return result;
    }
    if (fFramebufferId == 0)
        return 0;
    fFunctionTable->glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, fFramebufferId);
    if (fColorAttachmentCount != 0) {
        fFunctionTable->glDrawBuffer(fAttachmentPoints[0]);
        attachCubeFace();
    } else {
        fFunctionTable->glDrawBuffer(GL_NONE);
    }
    return validFrameBufferStatus() ? 1 : 0;
}

void GLFrameBuffer::attachCubeFace() {
    const IGLTexture* texture = fColorTextures[0];
    if (!texture || texture->fTextureType != IHWTexture::kTextureCubeMap)
        return;
    const uint32_t faces = fCubeFaceMask & 0x3FU;
    if (fCubeFaceMask != 0 && faces == 0)
        return;
    const auto face = faces == 0 ? 0U : static_cast<uint32_t>(std::countr_zero(faces));
    fFunctionTable->glFramebufferTexture2DEXT(GL_FRAMEBUFFER_EXT, fAttachmentPoints[0],
                                              GL_TEXTURE_CUBE_MAP_POSITIVE_X + face, texture->textureName(),
                                              0);
}

void GLFrameBuffer::viewportSize(unsigned& width, unsigned& height, unsigned& x, unsigned& y) {
    GLint viewport[4] = {};
    makeCurrent();
    if (fFunctionTable)
        fFunctionTable->glGetIntegerv(GL_VIEWPORT, viewport);
    x = static_cast<unsigned>(viewport[0]);
    y = static_cast<unsigned>(viewport[1]);
    width = static_cast<unsigned>(viewport[2]);
    height = static_cast<unsigned>(viewport[3]);
}

void GLFrameBuffer::getDimensions(int* width, int* height) {
    if (isOffscreen()) {
        *width = static_cast<int>(fWidth);
        *height = static_cast<int>(fHeight);
        return;
    }
    unsigned viewportWidth = 0;
    unsigned viewportHeight = 0;
    unsigned x = 0;
    unsigned y = 0;
    viewportSize(viewportWidth, viewportHeight, x, y);
    // Minus the origin: hosts inset their viewport and place what they draw by the rest.
    *width = static_cast<int>(viewportWidth - x);
    *height = static_cast<int>(viewportHeight - y);
}

bool GLFrameBuffer::resizeViewport(unsigned width, unsigned height, unsigned x, unsigned y) {
    makeCurrent();
    if (width == 0 || height == 0 || !fFunctionTable)
        return false;
    int bufferWidth = 0;
    int bufferHeight = 0;
    getDimensions(&bufferWidth, &bufferHeight);
    if (static_cast<int>(x + width) > bufferWidth || static_cast<int>(y + height) > bufferHeight)
        return false;
    GLint limits[2] = {};
    fFunctionTable->glGetIntegerv(GL_MAX_VIEWPORT_DIMS, limits);
    if (width > static_cast<unsigned>(limits[0]) || height > static_cast<unsigned>(limits[1]))
        return false;
    fFunctionTable->glViewport(static_cast<GLint>(x), static_cast<GLint>(y), static_cast<GLsizei>(width),
                               static_cast<GLsizei>(height));
    return true;
}

void GLFrameBuffer::swapBuffers() {
    if (fGLXDrawableFlag)
        swapBuffersWindowed();
}
