#include "texture/GLTexture2D.h"

#include "gl/GLFunctionTable.h"
#include "gl/GLULibrary.h"

int32_t GLTexture2D::fsNumInstances_GLTexture2D = 0;

GLTexture2D::GLTexture2D() {
    fTextureType = kTexture2D;
    ++fsNumInstances_GLTexture2D;
}

GLTexture2D::GLTexture2D(RasterFormat format, bool rectangle) : GLTexture2D() {
    fRasterFormat = format;
    if (rectangle && GLFunctionTable::fpGlobalFunctionTable->usable(kCapTextureRectangle))
        fTextureType = kTextureRectangle;
}

GLTexture2D::~GLTexture2D() {
    GLFunctionTable::fpGlobalFunctionTable->glBindTexture(target(), 0);
    --fsNumInstances_GLTexture2D;
}

GLenum GLTexture2D::target() const {
    return fTextureType == kTextureRectangle ? GL_TEXTURE_RECTANGLE_ARB : GL_TEXTURE_2D;
}

void GLTexture2D::makeLevel(GLenum target, unsigned level, unsigned width, unsigned height,
                            const void* pixels) const {
    GLFunctionTable::fpGlobalFunctionTable->glTexImage2D(
        target, static_cast<GLint>(level), static_cast<GLint>(sysPixelFormat()), static_cast<GLsizei>(width),
        static_cast<GLsizei>(height), 0, sysDataFormat(), sysDataType(), pixels);
}

bool GLTexture2D::bind() {
    if (fTextureName == 0)
        return false;
    GLFunctionTable::fpGlobalFunctionTable->glBindTexture(target(), fTextureName);
    return true;
}

void GLTexture2D::setWidthHeight(unsigned width, unsigned height) {
    fWidth = width;
    fHeight = height;
}

bool GLTexture2D::GLloadImage(void* pixels, unsigned width, unsigned height) {
    setWidthHeight(width, height);
    bind();
    makeLevel(target(), 0, width, height, pixels);
    fAllocated = true;
    return true;
}

bool GLTexture2D::GLloadImageLevel(void* pixels, unsigned level, unsigned width, unsigned height) {
    if (fTextureType == kTextureRectangle)
        return false;
    if (level == 0)
        return GLloadImage(pixels, width, height);
    bind();
    makeLevel(GL_TEXTURE_2D, level, width, height, pixels);
    return true;
}

bool GLTexture2D::GLloadImageMipmap(void* pixels, unsigned width, unsigned height) {
    if (fTextureType == kTextureRectangle)
        return false;
    setWidthHeight(width, height);
    bind();
    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    if (gl->usable(kCapGenerateMipmap)) {
        gl->glTexParameteri(GL_TEXTURE_2D, GL_GENERATE_MIPMAP, 1);
        makeLevel(GL_TEXTURE_2D, 0, width, height, pixels);
        return true;
    }
    // Oddity: an image that GLU refuses counts as loaded all the same; only a missing GLU is a failure.
    return GLULibrary::build2DMipmaps(GL_TEXTURE_2D, static_cast<GLint>(sysPixelFormat()),
                                      static_cast<GLsizei>(width), static_cast<GLsizei>(height),
                                      sysDataFormat(), sysDataType(), pixels) != GLULibrary::kNoLibrary;
}

bool GLTexture2D::GLloadRenderedImage(int x, int y, int width, int height) {
    const auto newWidth = static_cast<unsigned>(width);
    const auto newHeight = static_cast<unsigned>(height);
    bind();
    if (!fAllocated || fWidth != newWidth || fHeight != newHeight) {
        makeLevel(target(), 0, newWidth, newHeight, nullptr);
        fAllocated = true;
    }
    setWidthHeight(newWidth, newHeight);
    GLFunctionTable::fpGlobalFunctionTable->glCopyTexSubImage2D(target(), 0, 0, 0, x, y, width, height);
    return true;
}
