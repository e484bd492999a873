#include "texture/GLTexture1D.h"

int32_t GLTexture1D::fsNumInstances_GLTexture1D = 0;

GLTexture1D::GLTexture1D() {
    fTextureType = kTexture1D;
    ++fsNumInstances_GLTexture1D;
}

GLTexture1D::~GLTexture1D() {
    --fsNumInstances_GLTexture1D;
}

bool GLTexture1D::bind() {
    return false;
}
