#include "state/GLCamera.h"

#include "gl/GLFunctionTable.h"

int32_t GLCamera::fsNumInstances_GLCamera = 0;

GLCamera::GLCamera() {
    ++fsNumInstances_GLCamera;
}

GLCamera::~GLCamera() {
    --fsNumInstances_GLCamera;
}

void GLCamera::bind() {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    gl->glMatrixMode(GL_PROJECTION);
    gl->glLoadMatrixd(fProjection.data());
    gl->glMatrixMode(GL_MODELVIEW);
    gl->glLoadMatrixd(koLinear::ProjMatrix(fViewTransform).data());
}
