#include "texture/IGLTexture.h"

#include "gl/GLFunctionTable.h"

#include <array>

namespace {

struct UploadFormat {
    GLenum dataFormat;
    GLenum dataType;
    GLenum pixelFormat;
};

/// Indexed by RasterFormat. Oddity: luminance is stored as intensity, so that its alpha is the value too, and
/// the last colour format as four channels.
constexpr std::array<UploadFormat, 10> kUploadFormats = {{
    {GL_ALPHA, GL_UNSIGNED_BYTE, GL_ALPHA8},
    {GL_RGB, GL_UNSIGNED_BYTE, GL_RGB8},
    {GL_RGBA, GL_UNSIGNED_BYTE, GL_RGBA8},
    {GL_RGBA, GL_HALF_FLOAT, GL_RGBA16F_ARB},
    {GL_RGBA, GL_FLOAT, GL_RGBA32F_ARB},
    {GL_LUMINANCE, GL_UNSIGNED_BYTE, GL_INTENSITY8},
    {GL_DEPTH_COMPONENT, GL_UNSIGNED_SHORT, GL_DEPTH_COMPONENT16},
    {GL_DEPTH_COMPONENT, GL_UNSIGNED_INT, GL_DEPTH_COMPONENT24},
    {GL_RGB, GL_UNSIGNED_BYTE, GL_RGBA8},
    {GL_DEPTH_STENCIL, GL_UNSIGNED_INT_24_8, GL_DEPTH24_STENCIL8},
}};

constexpr UploadFormat kOtherFormats = {GL_RGB, GL_UNSIGNED_BYTE, GL_RGBA8};

const UploadFormat& uploadFormat(RasterFormat format) {
    return format < kUploadFormats.size() ? kUploadFormats[format] : kOtherFormats;
}

} // namespace

IGLTexture::IGLTexture() {
    GLFunctionTable::fpGlobalFunctionTable->glGenTextures(1, &fTextureName);
}

IGLTexture::~IGLTexture() {
    GLFunctionTable::fpGlobalFunctionTable->glDeleteTextures(1, &fTextureName);
}

GLenum IGLTexture::sysDataType() const {
    return uploadFormat(fRasterFormat).dataType;
}

GLenum IGLTexture::sysDataFormat() const {
    return uploadFormat(fRasterFormat).dataFormat;
}

GLenum IGLTexture::sysPixelFormat() const {
    if (fRasterFormat == kRasterRGBA8 && fCompressionRequest &&
        GLFunctionTable::fpGlobalFunctionTable->usable(kCapTextureCompressionS3TC))
        return GL_COMPRESSED_RGBA_S3TC_DXT5_EXT;
    return uploadFormat(fRasterFormat).pixelFormat;
}
