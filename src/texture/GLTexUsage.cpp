#include "texture/GLTexUsage.h"

#include "gl/GLFunctionTable.h"

#include <span>

float GLTexUsage::fsMaxAnisotropy = -2.0F;

namespace {

struct Coordinate {
    GLenum name;
    GLenum capability;
};

constexpr std::array<Coordinate, 4> kCoordinates = {{
    {GL_S, GL_TEXTURE_GEN_S},
    {GL_T, GL_TEXTURE_GEN_T},
    {GL_R, GL_TEXTURE_GEN_R},
    {GL_Q, GL_TEXTURE_GEN_Q},
}};

void generate(GLFunctionTable& gl, const Coordinate& coordinate, GLint mode) {
    gl.glEnable(coordinate.capability);
    gl.glTexGeni(coordinate.name, GL_TEXTURE_GEN_MODE, mode);
}

void loadProjection(GLFunctionTable& gl, IHWTexUsage::ProjType type, const float* f) {
    gl.glLoadIdentity();
    if (type == IHWTexUsage::kProjPerspective)
        gl.glFrustum(f[0], f[1], f[2], f[3], f[4], f[5]);
    else
        gl.glOrtho(f[0], f[1], f[2], f[3], f[4], f[5]);
}

/// Sends the constant of a value; nothing where the table has none.
void sendParameter(unsigned target, GLenum name, std::span<const GLint> table, uint32_t value) {
    if (value < table.size())
        GLFunctionTable::fpGlobalFunctionTable->glTexParameteri(target, name, table[value]);
}

bool scales(const float* repeat) {
    return repeat[0] != 0.0F || repeat[1] != 0.0F;
}

} // namespace

void GLTexUsage::setWrapMode(unsigned target, IHWTexUsage::WrapMode s, IHWTexUsage::WrapMode t) {
    sendParameter(target, GL_TEXTURE_WRAP_S, fsWrapModes, s);
    sendParameter(target, GL_TEXTURE_WRAP_T, fsWrapModes, t);
}

void GLTexUsage::setMinMagFilter(unsigned target, IHWTexUsage::Filter min, IHWTexUsage::Filter mag) {
    sendParameter(target, GL_TEXTURE_MIN_FILTER, fsFilterModes, min);
    sendParameter(target, GL_TEXTURE_MAG_FILTER, fsFilterModes, mag);
}

void GLTexUsage::setBorderColor(unsigned target, const koColor::Color& color) {
    GLFunctionTable::fpGlobalFunctionTable->glTexParameterfv(target, GL_TEXTURE_BORDER_COLOR, color.data());
}

void GLTexUsage::setFilterAnisotropic(unsigned target, bool enable) {
    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    if (fsMaxAnisotropy < -1.0F) {
        if (!gl->usable(kCapTextureFilterAnisotropic)) {
            fsMaxAnisotropy = -1.0F;
            return;
        }
        gl->glGetFloatv(GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT, &fsMaxAnisotropy);
    } else if (fsMaxAnisotropy <= 0.0F) {
        return;
    }
    gl->glTexParameterf(target, GL_TEXTURE_MAX_ANISOTROPY_EXT, enable ? fsMaxAnisotropy : 1.0F);
}

void GLTexUsage::setTexGenMode(unsigned target, IHWTexUsage::GenMode* modes) {
    GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    if (target == GL_TEXTURE_CUBE_MAP)
        gl.glEnable(GL_TEXTURE_CUBE_MAP);
    else
        gl.glDisable(GL_TEXTURE_CUBE_MAP);
    for (size_t i = 0; i < kCoordinates.size(); ++i) {
        switch (modes[i]) {
        case IHWTexUsage::kGenNone:
            gl.glDisable(kCoordinates[i].capability);
            break;
        case IHWTexUsage::kGenObjectLinear:
            generate(gl, kCoordinates[i], GL_OBJECT_LINEAR);
            break;
        case IHWTexUsage::kGenSphereMap:
            generate(gl, kCoordinates[i], GL_SPHERE_MAP);
            break;
        case IHWTexUsage::kGenReflectionMap:
            generate(gl, kCoordinates[i], GL_REFLECTION_MAP);
            break;
        case IHWTexUsage::kGenNormalMap:
            generate(gl, kCoordinates[i], GL_NORMAL_MAP);
            break;
        default: // eye planes mean nothing without a projection
            break;
        }
    }
}

void GLTexUsage::setTexGenMode(IHWTexUsage::ProjType type, const koLinear::ProjMatrix& view, float* frustum) {
    // Oddity: the bias from -1..1 to 0..1 stands in the plane of q, where a reader would look for it in the
    // fourth numbers of s, t and r; hosts lay their projector matrices out for it.
    constexpr float kPlanes[4][4] = {{0.5F, 0.0F, 0.0F, 0.0F},
                                     {0.0F, 0.5F, 0.0F, 0.0F},
                                     {0.0F, 0.0F, 0.5F, 0.0F},
                                     {0.5F, 0.5F, 0.5F, 1.0F}};
    GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    gl.glMatrixMode(GL_MODELVIEW);
    gl.glPushMatrix();
    gl.glMultMatrixd(view.data());
    gl.glMatrixMode(GL_PROJECTION);
    gl.glPushMatrix();
    loadProjection(gl, type, frustum);
    gl.glMatrixMode(GL_MODELVIEW);
    for (size_t i = 0; i < kCoordinates.size(); ++i) {
        gl.glTexGeni(kCoordinates[i].name, GL_TEXTURE_GEN_MODE, GL_EYE_LINEAR);
        gl.glTexGenfv(kCoordinates[i].name, GL_EYE_PLANE, kPlanes[i]);
        gl.glEnable(kCoordinates[i].capability);
    }
    gl.glPopMatrix();
    gl.glMatrixMode(GL_PROJECTION);
    gl.glPopMatrix();
    gl.glMatrixMode(GL_MODELVIEW);
}

void GLTexUsage::setTransform(const koLinear::ProjMatrix& matrix) {
    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    gl->glMatrixMode(GL_TEXTURE);
    gl->glLoadMatrixd(matrix.data());
    gl->glMatrixMode(GL_MODELVIEW);
}

void GLTexUsage::setTransform(float* offset, float* repeat, float rotate) {
    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    gl->glMatrixMode(GL_TEXTURE);
    gl->glLoadIdentity();
    if (scales(repeat))
        gl->glScalef(repeat[0], repeat[1], 1.0F);
    gl->glTranslatef(-offset[0], -offset[1], 0.0F);
    if (rotate != 0.0F) {
        gl->glTranslatef(0.5F, 0.5F, 0.0F);
        gl->glRotatef(rotate, 0.0F, 0.0F, 1.0F);
        gl->glTranslatef(-0.5F, -0.5F, 0.0F);
    }
    gl->glMatrixMode(GL_MODELVIEW);
}

void GLTexUsage::setTransform(float* offset, float* repeat, float* repeatPivot, float rotate,
                              float* rotatePivot) {
    GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    gl->glMatrixMode(GL_TEXTURE);
    gl->glLoadIdentity();
    if (scales(repeat)) {
        gl->glTranslatef(-repeatPivot[0], -repeatPivot[1], 0.0F);
        gl->glScalef(repeat[0], repeat[1], 1.0F);
        gl->glTranslatef(repeatPivot[0], repeatPivot[1], 0.0F);
    }
    if (rotate != 0.0F) {
        gl->glTranslatef(-rotatePivot[0], -rotatePivot[1], 0.0F);
        gl->glRotatef(rotate, 0.0F, 0.0F, 1.0F);
        gl->glTranslatef(rotatePivot[0], rotatePivot[1], 0.0F);
    }
    gl->glTranslatef(offset[0], offset[1], 0.0F);
    gl->glMatrixMode(GL_MODELVIEW);
}
