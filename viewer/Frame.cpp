#include "Frame.h"

#include <algorithm>
#include <cmath>

#include <gl/GLFunctionTable.h>
#include <state/GLCamera.h>
#include <state/GLPassState.h>

namespace orloview {

namespace {

void enable(GLenum capability, bool on) {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    on ? gl->glEnable(capability) : gl->glDisable(capability);
}

void clear(const FrameLook& look) {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    gl->glViewport(0, 0, look.width, look.height);
    gl->glClearColor(look.background[0], look.background[1], look.background[2], look.background[3]);
    gl->glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    gl->glDepthMask(GL_TRUE);
    gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

/// What holds for every group of a frame.
void setFrameState(const FrameLook& look) {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    gl->glPolygonMode(GL_FRONT_AND_BACK, look.wireframe ? GL_LINE : GL_FILL);
    gl->glPointSize(look.pointSize);
    gl->glLineWidth(look.lineWidth);
    gl->glEnable(GL_DEPTH_TEST);
    gl->glEnable(GL_NORMALIZE);
    gl->glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, GL_TRUE);
    gl->glLightModeli(GL_LIGHT_MODEL_LOCAL_VIEWER, GL_TRUE);
    const koColor::Color ambient(0.09F, 0.09F, 0.1F);
    gl->glLightModelfv(GL_LIGHT_MODEL_AMBIENT, ambient.data());
    gl->glColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE);
    gl->glEnable(GL_COLOR_MATERIAL);
}

/// A material's gloss: a dielectric reflects 4 parts in 100, a metal its own colour; the rougher, the wider
/// the highlight and the fainter.
void setGloss(const Material& material) {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    const float smoothness = 1.0F - material.roughness;
    koColor::Color specular;
    for (int channel = 0; channel < 3; ++channel)
        specular[channel] =
            smoothness * (0.1F + material.metallic * (0.6F * material.baseColor[channel] - 0.1F));
    const float alpha = std::max(material.roughness * material.roughness, 0.03F);
    const float exponent = std::clamp(2.0F / (alpha * alpha) - 2.0F, 0.0F, 128.0F);
    gl->glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, specular.data());
    gl->glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, exponent);
}

void setMaterial(const Material& material, bool lit, bool cullBackFaces) {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    const koColor::Color color = storedColor(material, material.baseColor);
    enable(GL_LIGHTING, lit);
    enable(GL_CULL_FACE, cullBackFaces);
    enable(GL_ALPHA_TEST, material.alphaMode == AlphaMode::Mask);
    enable(GL_BLEND, material.alphaMode == AlphaMode::Blend);
    gl->glColor4fv(color.data());
    setGloss(material);
    gl->glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, material.emissive.data());
}

GLPassState passStateOf(const Material& material) {
    GLPassState state;
    state.setDepthMask(material.alphaMode != AlphaMode::Blend);
    if (material.alphaMode == AlphaMode::Blend)
        state.setBlendFuncFactors(GLPassState::kBlendOne, GLPassState::kBlendOneMinusSourceAlpha);
    state.setAlphaFunc(GLPassState::kTestGreaterEqual, material.alphaCutoff * 255.0F);
    return state;
}

void drawInstance(DrawableScene& drawable, size_t index, const FrameLook& look) {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    const Material& material = drawable.materialOf(index);
    const koLinear::AffineMatrix& toWorld = drawable.scene().instances[index].toWorld;
    passStateOf(material).applyGL(false);
    const bool cullBackFaces = look.culling && !look.wireframe && !drawable.isDoubleSided(index);
    setMaterial(material, look.lights && drawable.isLit(index), cullBackFaces);
    gl->glFrontFace(toWorld.determinant() < 0.0 ? GL_CW : GL_CCW);
    gl->glPushMatrix();
    gl->glMultMatrixd(koLinear::ProjMatrix(toWorld).data());
    drawable.drawMesh(index);
    gl->glPopMatrix();
}

std::vector<size_t> farthestFirst(const DrawableScene& drawable, const View& view) {
    std::vector<std::pair<double, size_t>> byDepth;
    for (const size_t index : drawable.blendedInstances())
        byDepth.emplace_back(view.worldToEye.transform(drawable.centerOf(index))[2], index);
    std::stable_sort(byDepth.begin(), byDepth.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<size_t> order;
    order.reserve(byDepth.size());
    for (const auto& [depth, index] : byDepth)
        order.push_back(index);
    return order;
}

} // namespace

void drawFrame(GLFrameBuffer& target, const View& view, const FrameContent& content, const FrameLook& look) {
    target.makeCurrent();
    clear(look);
    setFrameState(look);

    GLCamera camera;
    camera.fViewTransform = view.worldToEye;
    camera.fProjection = view.projection;
    camera.bind();
    content.lights.bind(view.worldToEye);

    if (look.grid)
        drawInstance(content.grid, 0, look);
    if (look.axes)
        drawInstance(content.axes, 0, look);
    for (const size_t index : content.drawable.opaqueInstances())
        drawInstance(content.drawable, index, look);
    for (const size_t index : farthestFirst(content.drawable, view))
        drawInstance(content.drawable, index, look);
}

} // namespace orloview
