// Offscreen buffers: framebuffer objects with their textures and renderbuffers.

#include "framebuffer/GLFrameBuffer.h"
#include "gl/GLFunctionTable.h"
#include "gl/GLStartupContext.h"
#include "texture/GLTexture2D.h"
#include "texture/GLTextureCubeMap.h"

#include <new>

namespace {

void clampAndUseNearest(const GLFunctionTable& gl, GLenum target) {
    gl.glTexParameterf(target, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    gl.glTexParameterf(target, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    gl.glTexParameterf(target, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    gl.glTexParameterf(target, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
}

/// Storage without data, at level 0.
void allocate(GLTexture2D& texture, unsigned width, unsigned height) {
    texture.fCompressionRequest = false;
    texture.bind();
    texture.GLloadImage(nullptr, width, height);
}

/// Six sides without data.
void allocate(GLTextureCubeMap& texture, unsigned size) {
    texture.fCompressionRequest = false;
    texture.bind();
    texture.GLLoadImage(size, IHWTexture::kPositiveX, nullptr, IHWTexture::kNegativeX, nullptr,
                        IHWTexture::kPositiveY, nullptr, IHWTexture::kNegativeY, nullptr,
                        IHWTexture::kPositiveZ, nullptr, IHWTexture::kNegativeZ, nullptr);
}

/// None for what can't be a colour buffer.
GLenum targetOf(IHWTexture::TextureType type) {
    switch (type) {
    case IHWTexture::kTexture2D:
        return GL_TEXTURE_2D;
    case IHWTexture::kTextureRectangle:
        return GL_TEXTURE_RECTANGLE_ARB;
    case IHWTexture::kTextureCubeMap:
        return GL_TEXTURE_CUBE_MAP;
    default:
        return GL_NONE;
    }
}

/// Bound, with storage and one reference; null without memory. A cube map has the width on all sides.
IGLTexture* makeColorTexture(RasterFormat format, GLenum target, unsigned width, unsigned height) {
    if (target == GL_TEXTURE_CUBE_MAP) {
        auto* cube = new (std::nothrow) GLTextureCubeMap(format);
        if (cube) {
            cube->ref();
            allocate(*cube, width);
        }
        return cube;
    }
    auto* texture = new (std::nothrow) GLTexture2D(format, target == GL_TEXTURE_RECTANGLE_ARB);
    if (texture) {
        texture->ref();
        allocate(*texture, width, height);
    }
    return texture;
}

/// 8 bits by the unsized format, and everything unknown by the sized one: drivers pick their native 8 bits
/// for the first, hosts that pass no stencil format of ours get exactly 8 by the second.
GLenum stencilInternalFormat(RasterFormat stencil) {
    switch (stencil) {
    case kRasterStencil1:
        return GL_STENCIL_INDEX1_EXT;
    case kRasterStencil4:
        return GL_STENCIL_INDEX4_EXT;
    case kRasterStencil8:
        return GL_STENCIL_INDEX;
    case kRasterStencil16:
        return GL_STENCIL_INDEX16_EXT;
    default:
        return GL_STENCIL_INDEX8_EXT;
    }
}

} // namespace

uint32_t GLFrameBuffer::createOffscreen(const koBufferFormat& format, unsigned width, unsigned height) {
    if (!GLStartupContext::fpGlobalGLStartupContext)
        GLStartupContext::fpGlobalGLStartupContext = new (std::nothrow) GLStartupContext(nullptr);
    if (!GLStartupContext::fpGlobalGLStartupContext)
        return kNoContextOrSize;
    referenceStartupContext();
    GLStartupContext::fpGlobalGLStartupContext->makeCurrent();

    fFunctionTable = GLFunctionTable::fpGlobalFunctionTable;
    if (!fFunctionTable)
        return kNoContextOrSize;
    fRequestedFormat = format;
    if (!fFunctionTable->usable(kCapFramebufferObject))
        return kUnsupported;

    GLint largest = 0;
    fFunctionTable->glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE_EXT, &largest);
    if (largest < 0 || static_cast<unsigned>(largest) < width || static_cast<unsigned>(largest) < height)
        return kNoContextOrSize;

    fFramebufferId = 0;
    fFunctionTable->glGenFramebuffersEXT(1, &fFramebufferId);
    if (fFramebufferId == 0)
        return kNoBuffer;
    fFunctionTable->glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, fFramebufferId);
    fGLXDrawableFlag = false;
    fColorAttachmentCount = 0;

    uint32_t result = createColor(format, width, height);
    if (result == kSuccess)
        result = createDepthAndStencil(format, width, height);
    if (result == kSuccess && !validFrameBufferStatus())
        result = kFormat;
    if (result != kSuccess) {
        deleteInternalState();
        return result;
    }

    fKind = kOffscreen;
    fFramebufferObjectFlag = true;
    fActualFormat = format;
    fActualFormat.fSamplingType = kSamplingSingle;
    fWidth = width;
    fHeight = height;
    fOwnsDrawable = true;
    fFunctionTable->glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    return kSuccess;
}

uint32_t GLFrameBuffer::createColor(const koBufferFormat& format, unsigned width, unsigned height) {
    if (format.fColorFormat == kRasterNoColor)
        return kSuccess;
    GLint attachments = 0;
    fFunctionTable->glGetIntegerv(GL_MAX_COLOR_ATTACHMENTS_EXT, &attachments);
    if (attachments == 0)
        return kFormat;
    const GLenum target = targetOf(format.fTextureType);
    if (target == GL_NONE)
        return kFormat;
    IGLTexture* texture = makeColorTexture(format.fColorFormat, target, width, height);
    if (!texture)
        return kNoBuffer;
    fColorTextures[0] = texture;
    clampAndUseNearest(*fFunctionTable, target);
    // The first side of a cube map; makeCurrent attaches the others.
    const GLenum attached = target == GL_TEXTURE_CUBE_MAP ? GL_TEXTURE_CUBE_MAP_POSITIVE_X : target;
    fFunctionTable->glFramebufferTexture2DEXT(GL_FRAMEBUFFER_EXT, fAttachmentPoints[0], attached,
                                              texture->textureName(), 0);
    fColorAttachmentCount = 1;
    fFunctionTable->glBindTexture(target, 0);
    return kSuccess;
}

uint32_t GLFrameBuffer::createDepthAndStencil(const koBufferFormat& format, unsigned width, unsigned height) {
    fDepthRenderbufferId = 0;
    fDepthTexture = nullptr;
    const bool wantsStencil = format.fStencilFormat != kRasterNoStencil;
    if (format.fDepthFormat == kRasterNoDepth) {
        if (wantsStencil)
            createStencil(format.fStencilFormat, width, height);
        return kSuccess;
    }
    if (!wantsStencil || !fFunctionTable->usable(kCapPackedDepthStencil)) {
        const RasterFormat depth = format.fDepthFormat == kRasterDepth16 ? kRasterDepth16 : kRasterDepth24;
        const uint32_t result = createDepth(depth, width, height);
        if (result == kSuccess && fColorAttachmentCount == 0) {
            fFunctionTable->glDrawBuffer(GL_NONE);
            fFunctionTable->glReadBuffer(GL_NONE);
        }
        return result;
    }
    if (format.fStencilFormat != kRasterStencil8)
        return kFormat;
    return createDepth(kRasterDepth24Stencil8, width, height);
}

void GLFrameBuffer::createStencil(RasterFormat stencil, unsigned width, unsigned height) {
    fStencilRenderbufferId = 0;
    fFunctionTable->glGenRenderbuffersEXT(1, &fStencilRenderbufferId);
    if (fStencilRenderbufferId == 0)
        return;
    fFunctionTable->glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, fStencilRenderbufferId);
    fFunctionTable->glRenderbufferStorageEXT(GL_RENDERBUFFER_EXT, stencilInternalFormat(stencil),
                                             static_cast<GLsizei>(width), static_cast<GLsizei>(height));
    fFunctionTable->glFramebufferRenderbufferEXT(GL_FRAMEBUFFER_EXT, GL_STENCIL_ATTACHMENT_EXT,
                                                 GL_RENDERBUFFER_EXT, fStencilRenderbufferId);
}

/// The depth point alone, also for packed depth-stencil, whose stencil half is for who samples the texture.
uint32_t GLFrameBuffer::createDepth(RasterFormat depth, unsigned width, unsigned height) {
    fDepthTexture = new (std::nothrow) GLTexture2D(depth, false);
    if (!fDepthTexture)
        return kNoBuffer;
    fDepthTexture->ref();
    allocate(*fDepthTexture, width, height);
    clampAndUseNearest(*fFunctionTable, GL_TEXTURE_2D);
    fFunctionTable->glFramebufferTexture2DEXT(GL_FRAMEBUFFER_EXT, GL_DEPTH_ATTACHMENT_EXT, GL_TEXTURE_2D,
                                              fDepthTexture->textureName(), 0);
    return kSuccess;
}
