#include "texture/GLTextureCubeMap.h"

#include "gl/GLFunctionTable.h"
#include "gl/GLULibrary.h"

namespace {

GLenum faceOf(IHWTexture::CubeMapSide side) {
    return side <= IHWTexture::kNegativeZ ? GL_TEXTURE_CUBE_MAP_POSITIVE_X + side : 0;
}

void packRowsTightly() {
    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    gl->glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    gl->glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    gl->glPixelStorei(GL_UNPACK_SKIP_ROWS, 0);
    gl->glPixelStorei(GL_UNPACK_SKIP_PIXELS, 0);
}

} // namespace

int32_t GLTextureCubeMap::fsNumInstances_GLTextureCubeMap = 0;

GLTextureCubeMap::GLTextureCubeMap() {
    fTextureType = kTextureCubeMap;
    ++fsNumInstances_GLTextureCubeMap;
}

GLTextureCubeMap::GLTextureCubeMap(RasterFormat format) : GLTextureCubeMap() {
    fRasterFormat = format;
}

GLTextureCubeMap::~GLTextureCubeMap() {
    // Oddity: the base class deletes the name once more, which GL ignores. Hosts whose own bookkeeping counts
    // deletions count on two for a cube map.
    const uint32_t name = fTextureName;
    GLFunctionTable::fpGlobalFunctionTable->glDeleteTextures(1, &name);
    --fsNumInstances_GLTextureCubeMap;
}

bool GLTextureCubeMap::bind() {
    if (fTextureName == 0)
        return false;
    GLFunctionTable::fpGlobalFunctionTable->glBindTexture(GL_TEXTURE_CUBE_MAP, fTextureName);
    return true;
}

void GLTextureCubeMap::storeEdgeSize(unsigned size) {
    fEdgeSize = fWidth = fHeight = size;
}

void GLTextureCubeMap::loadSide(const SideImage& image) {
    const auto size = static_cast<GLsizei>(fEdgeSize);
    GLFunctionTable::fpGlobalFunctionTable->glTexImage2D(faceOf(image.side), 0,
                                                         static_cast<GLint>(sysPixelFormat()), size, size, 0,
                                                         sysDataFormat(), sysDataType(), image.pixels);
}

bool GLTextureCubeMap::loadSideWithMipmaps(const SideImage& image) {
    if (GLFunctionTable::fpGlobalFunctionTable->usable(kCapGenerateMipmap)) {
        loadSide(image);
        return true;
    }
    const auto size = static_cast<GLsizei>(fEdgeSize);
    return GLULibrary::build2DMipmaps(faceOf(image.side), static_cast<GLint>(sysPixelFormat()), size, size,
                                      sysDataFormat(), sysDataType(), image.pixels) == 0;
}

bool GLTextureCubeMap::GLLoadImage(unsigned, CubeMapSide side, void* pixels) {
    packRowsTightly();
    bind();
    loadSide({side, pixels});
    return true;
}

bool GLTextureCubeMap::GLLoadImage(unsigned size, CubeMapSide side1, void* pixels1, CubeMapSide side2,
                                   void* pixels2, CubeMapSide side3, void* pixels3, CubeMapSide side4,
                                   void* pixels4, CubeMapSide side5, void* pixels5, CubeMapSide side6,
                                   void* pixels6) {
    storeEdgeSize(size);
    packRowsTightly();
    bind();
    for (const SideImage& image :
         {SideImage{side1, pixels1}, SideImage{side2, pixels2}, SideImage{side3, pixels3},
          SideImage{side4, pixels4}, SideImage{side5, pixels5}, SideImage{side6, pixels6}})
        loadSide(image);
    return true;
}

bool GLTextureCubeMap::GLLoadImageMipMap(unsigned size, CubeMapSide side1, void* pixels1, CubeMapSide side2,
                                         void* pixels2, CubeMapSide side3, void* pixels3, CubeMapSide side4,
                                         void* pixels4, CubeMapSide side5, void* pixels5, CubeMapSide side6,
                                         void* pixels6) {
    storeEdgeSize(size);
    packRowsTightly();
    bind();
    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    if (gl->usable(kCapGenerateMipmap))
        gl->glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_GENERATE_MIPMAP, 1);
    bool loaded = false;
    for (const SideImage& image :
         {SideImage{side1, pixels1}, SideImage{side2, pixels2}, SideImage{side3, pixels3},
          SideImage{side4, pixels4}, SideImage{side5, pixels5}, SideImage{side6, pixels6}})
        loaded = loadSideWithMipmaps(image);
    return loaded;
}
