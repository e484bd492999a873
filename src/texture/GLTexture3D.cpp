#include "texture/GLTexture3D.h"

int32_t GLTexture3D::fsNumInstances_GLTexture3D = 0;

GLTexture3D::GLTexture3D() {
    fTextureType = kTexture3D;
    ++fsNumInstances_GLTexture3D;
}

GLTexture3D::~GLTexture3D() {
    --fsNumInstances_GLTexture3D;
}

bool GLTexture3D::bind() {
    return false;
}
