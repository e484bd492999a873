#include "draw/Marks.h"

#include "draw/GL.h"
#include "draw/PassGroup.h"

#include <state/GLPassState.h>

namespace orloview {

namespace {

/// What draws nothing but a colour, over everything.
void setLineState(const FrameLook& look) {
    for (const GLenum capability : {GL_DEPTH_TEST, GL_LIGHTING, GL_CULL_FACE, GL_ALPHA_TEST})
        gl().glDisable(capability);
    gl().glLineWidth(2.0F * look.lineWidth);
    gl().glPointSize(7.0F * look.lineWidth);
}

void drawPoints(const std::vector<koLinear::Point>& points, GLenum kind) {
    gl().glBegin(kind);
    for (const koLinear::Point& point : points)
        gl().glVertex3d(point[0], point[1], point[2]);
    gl().glEnd();
}

} // namespace

void Marks::outline(std::optional<size_t> instance) {
    fOutlined = instance;
    fSilhouette.reset();
    if (instance)
        fSilhouette.emplace(fScene.meshes[static_cast<size_t>(fScene.instances[*instance].mesh)]);
}

void Marks::draw(const View& view, const FrameLook& look) {
    const PassGroup group("marks");
    GLPassState().applyGL(false);
    setLineState(look);
    // First their colour; then an alpha beyond 1, which marks colours that are meant as they are.
    for (const bool isAlpha : {false, true}) {
        gl().glColorMask(!isAlpha, !isAlpha, !isAlpha, GL_TRUE);
        isAlpha ? gl().glEnable(GL_BLEND) : gl().glDisable(GL_BLEND);
        gl().glBlendFunc(GL_ONE, GL_ONE);
        if (isAlpha && !isToneMapped(look))
            break;
        gl().glColor4f(1.0F, 0.35F, 0.02F, 1.0F);
        if (fOutlined)
            drawOutline(view);
        gl().glColor4f(0.1F, 0.9F, 0.25F, 1.0F);
        drawPoints(fPoints, GL_LINE_STRIP);
        drawPoints(fPoints, GL_POINTS);
    }
    gl().glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
}

void Marks::drawOutline(const View& view) {
    const koLinear::AffineMatrix& toWorld = fScene.instances[*fOutlined].toWorld;
    const koLinear::AffineMatrix toEye = toWorld.then(view.worldToEye);
    if (toEye.determinant() == 0.0)
        return;
    const koLinear::AffineMatrix fromEye = toEye.inverse();
    const koLinear::Point eye = fromEye.transform(koLinear::Point(0.0, 0.0, 0.0));
    if (view.projection[2][3] != 0.0) { // with perspective
        fSilhouette->seenFrom(eye, 1.0, fLines);
    } else {
        const koLinear::Point back = fromEye.transform(koLinear::Point(0.0, 0.0, 1.0));
        fSilhouette->seenFrom({back[0] - eye[0], back[1] - eye[1], back[2] - eye[2]}, 0.0, fLines);
    }
    gl().glPushMatrix();
    gl().glMultMatrixd(koLinear::ProjMatrix(toWorld).data());
    gl().glBegin(GL_LINES);
    for (size_t i = 0; i < fLines.size(); i += 3)
        gl().glVertex3fv(fLines.data() + i);
    gl().glEnd();
    gl().glPopMatrix();
}

} // namespace orloview
