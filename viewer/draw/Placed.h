#pragma once

#include "draw/DrawableScene.h"

#include <gl/GLFunctionTable.h>

namespace orloview {

/// Draws in an instance's own space: sets its matrix and its front side, lets `draw` draw, and takes the
/// matrix back.
template <typename Draw>
void drawPlaced(const DrawableScene& drawable, size_t index, Draw draw) {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    const koLinear::AffineMatrix& toWorld = drawable.scene().instances[index].toWorld;
    gl->glFrontFace(toWorld.determinant() < 0.0 ? GL_CW : GL_CCW);
    gl->glPushMatrix();
    gl->glMultMatrixd(koLinear::ProjMatrix(toWorld).data());
    draw();
    gl->glPopMatrix();
}

} // namespace orloview
