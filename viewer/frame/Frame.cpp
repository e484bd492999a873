#include "frame/Frame.h"

#include "draw/PassGroup.h"
#include "draw/Placed.h"
#include "draw/TextureUnits.h"

#include <algorithm>

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
    gl->glViewport(-look.left, -look.bottom, look.width, look.height);
    const koColor::Color color =
        isToneMapped(look) ? koColor::Color(0.0F, 0.0F, 0.0F, 0.0F) : look.background;
    gl->glClearColor(color[0], color[1], color[2], color[3]);
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
    if (gl->usable(kCapSeparateSpecularColor)) // highlights lie over the textures
        gl->glLightModeli(GL_LIGHT_MODEL_COLOR_CONTROL, GL_SEPARATE_SPECULAR_COLOR);
    const koColor::Color ambient(0.09F * look.exposure, 0.09F * look.exposure, 0.1F * look.exposure);
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

void setMaterial(const Material& material, bool lit, bool cullBackFaces, bool emitsByTexture) {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    const koColor::Color color = storedColor(material, material.baseColor);
    enable(GL_LIGHTING, lit);
    enable(GL_CULL_FACE, cullBackFaces);
    enable(GL_ALPHA_TEST, material.alphaMode == AlphaMode::Mask);
    enable(GL_BLEND, material.alphaMode == AlphaMode::Blend);
    gl->glColor4fv(color.data());
    setGloss(material);
    const koColor::Color emission = emitsByTexture ? koColor::Color() : material.emissive;
    gl->glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, emission.data());
}

GLPassState passStateOf(const Material& material) {
    GLPassState state;
    state.setDepthMask(material.alphaMode != AlphaMode::Blend);
    if (material.alphaMode == AlphaMode::Blend)
        state.setBlendFuncFactors(GLPassState::kBlendOne, GLPassState::kBlendOneMinusSourceAlpha);
    if (material.alphaMode == AlphaMode::Mask) // its alpha is for the test only
        state.setColorMask(true, true, true, false);
    state.setAlphaFunc(GLPassState::kTestGreaterEqual, material.alphaCutoff * 255.0F);
    return state;
}

/// Whether its emission comes as a texture, or would, if the picture could be read.
bool emitsByTexture(const Material& material, const TextureLayer* layer) {
    return layer || material.emissiveTexture.texture >= 0;
}

bool cullsBackFaces(const DrawableScene& drawable, size_t index, const FrameLook& look) {
    return look.culling && !look.wireframe && !drawable.isDoubleSided(index);
}

/// Sets what GL's own functions draw an instance by, and a shader of the user's, which may be null.
void setFixedMaterial(const DrawableScene& drawable, size_t index, const FrameLook& look, TextureUnits& units,
                      UserShader* shader = nullptr) {
    const Material& material = drawable.materialOf(index);
    const TextureLayer* base = drawable.baseLayerOf(index);
    const TextureLayer* emission = drawable.emissionLayerOf(index);
    const TextureLayer* normal = drawable.normalLayerOf(index);
    passStateOf(material).applyGL(false);
    units.set(base, emission, normal);
    if (shader)
        shader->setTextures(base, normal);
    setMaterial(material, look.lights && drawable.isLit(index), cullsBackFaces(drawable, index, look),
                emitsByTexture(material, emission));
}

/// Sets what surrounds a compiled material, whose shader hides and multiplies by its alpha itself.
void setShadedMaterial(const DrawableScene& drawable, size_t index, const FrameLook& look) {
    const Material& material = drawable.materialOf(index);
    GLPassState state = passStateOf(material);
    state.setColorMask(true, true, true, true);
    state.applyGL(false);
    GLFunctionTable::fpGlobalFunctionTable->glColor4f(1.0F, 1.0F, 1.0F, 1.0F); // of meshes without colours
    enable(GL_CULL_FACE, cullsBackFaces(drawable, index, look));
    enable(GL_BLEND, material.alphaMode == AlphaMode::Blend);
    GLFunctionTable::fpGlobalFunctionTable->glDisable(GL_ALPHA_TEST);
}

/// Makes opaque what has just been drawn of an instance: what passed the alpha test is there wholly, whatever
/// its alpha.
void fillAlpha(DrawableScene& drawable, size_t index, TextureUnits& units) {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    GLPassState state;
    state.setColorMask(false, false, false, true);
    state.setDepthFunc(GLPassState::kTestEqual);
    state.applyGL(false);
    units.set(nullptr, nullptr);
    gl->glDisable(GL_LIGHTING);
    gl->glDisable(GL_ALPHA_TEST);
    gl->glColor4f(0.0F, 0.0F, 0.0F, 1.0F);
    drawable.drawShape(index);
}

/// Lets a shader of the user's draw an instance; null: there is none.
template <typename Draw>
void drawBy(UserShader* shader, const DrawableScene& drawable, size_t index, const Draw& draw) {
    if (shader)
        shader->draw(drawable.scene().instances[index].toWorld, draw);
    else
        draw();
}

void drawFixed(DrawableScene& drawable, size_t index, const FrameLook& look, TextureUnits& units,
               UserShader* shader = nullptr) {
    setFixedMaterial(drawable, index, look, units, shader);
    drawPlaced(drawable, index, [&] {
        drawBy(shader, drawable, index, [&] { drawable.drawMesh(index); });
        const bool mayBeSeenThrough = look.background[3] < 1.0F || isToneMapped(look);
        if (drawable.materialOf(index).alphaMode == AlphaMode::Mask && mayBeSeenThrough)
            fillAlpha(drawable, index, units);
    });
}

bool isSeen(const FrameContent& content, size_t index) {
    if (content.particles && content.particles->draws(index))
        return false;
    return !content.culling || content.culling->isSeen(index);
}

/// Lets what will be drawn be found out.
void cull(const FrameContent& content, const View& view, const FrameLook& look) {
    if (!content.culling)
        return;
    if (content.answers == Answers::Awaited)
        content.culling->find(view, look.culling, !look.wireframe);
    else
        content.culling->guess(view, !look.wireframe, content.answers == Answers::Ignored);
}

/// What comes over all that hides what is behind it, and under what shines through.
void drawBetween(const FrameContent& content, const View& view, const FrameLook& look, TextureUnits& units) {
    if (look.ground || content.particles)
        units.set(nullptr, nullptr);
    if (look.ground)
        content.ground.draw();
    if (content.particles)
        content.particles->draw(view.worldToEye, look);
}

void drawSceneFixed(const FrameContent& content, const View& view, const FrameLook& look,
                    TextureUnits& units) {
    DrawableScene& drawable = content.drawable;
    UserShader* shader = content.userShader;
    if (shader) {
        shader->beginFrame(view, look.width, look.height);
        shader->bind();
    }
    for (const size_t index : drawable.opaqueInstances()) {
        if (isSeen(content, index))
            drawFixed(drawable, index, look, units, shader);
    }
    if (shader)
        shader->unbind();
    drawBetween(content, view, look, units);
    if (shader)
        shader->bind();
    for (const BlendedElements::Run& run : drawable.farthestFirst(view.worldToEye)) {
        if (!isSeen(content, run.instance))
            continue;
        setFixedMaterial(drawable, run.instance, look, units, shader);
        drawPlaced(drawable, run.instance,
                   [&] { drawBy(shader, drawable, run.instance, [&] { drawable.drawRun(run); }); });
    }
    if (shader)
        shader->unbind();
}

/// Marks what is seen of an instance as a colour that is meant as it is: twice as much alpha as there can be.
void markPlain(DrawableScene& drawable, size_t index) {
    drawPlaced(drawable, index, [&] { drawable.drawShape(index); });
}

/// The same for all that has no light, once all that may cover it is drawn.
void markPlain(const FrameContent& content, const FrameLook& look) {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    GLPassState state;
    state.setColorMask(false, false, false, true);
    state.setDepthMask(false);
    state.setDepthFunc(GLPassState::kTestEqual);
    state.setBlendFuncFactors(GLPassState::kBlendOne, GLPassState::kBlendOne);
    state.applyGL(false);
    enable(GL_BLEND, true);
    for (const GLenum capability : {GL_LIGHTING, GL_CULL_FACE, GL_ALPHA_TEST})
        enable(capability, false);
    gl->glColor4f(0.0F, 0.0F, 0.0F, 1.0F);
    if (look.grid)
        markPlain(content.grid, 0);
    if (look.axes)
        markPlain(content.axes, 0);
    for (const size_t index : content.drawable.opaqueInstances()) {
        if (!content.drawable.isLit(index) && isSeen(content, index))
            markPlain(content.drawable, index);
    }
}

/// What is clear can't be drawn while what stands behind it is.
enum class Clear : std::uint8_t { Drawn, LeftOut };

/// Whether what hides all behind it can be lit once it is drawn: only it is drawn by then.
bool isLitLate(const GLFrameBuffer& target, const FrameContent& content, const FrameLook& look) {
    return content.lateLight && content.shaders->canLightLate() && look.lights && !isOccluded(look) &&
           !look.wireframe && !look.grid && !look.axes && !look.clip &&
           LateLight::suits(target, content.shaders->recordsFloats());
}

void drawLitLate(const FrameContent& content, const FrameLook& look) {
    DrawableScene& drawable = content.drawable;
    for (const size_t index : drawable.opaqueInstances()) {
        if (!isSeen(content, index))
            continue;
        content.shaders->bindRecorder(index);
        setShadedMaterial(drawable, index, look);
        drawPlaced(drawable, index, [&] { drawable.drawMesh(index); });
    }
    content.shaders->bindLateLight();
    content.lateLight->light();
}

void drawSceneShaded(const FrameContent& content, const View& view, const FrameLook& look,
                     TextureUnits& units, Clear clear, bool lateLight) {
    DrawableScene& drawable = content.drawable;
    content.shaders->beginFrame(view.worldToEye, isOccluded(look));
    const auto prepare = [&](size_t index) {
        if (content.shaders->bind(index, look.lights))
            setShadedMaterial(drawable, index, look);
        else
            setFixedMaterial(drawable, index, look, units);
    };
    const auto isLeftOut = [&](size_t index) {
        const bool isClear = clear == Clear::LeftOut && drawable.materialOf(index).isClear();
        return isClear || !isSeen(content, index);
    };
    const auto drawMeshes = [&] {
        for (const size_t index : drawable.opaqueInstances()) {
            if (isLeftOut(index))
                continue;
            prepare(index);
            drawPlaced(drawable, index, [&] { drawable.drawMesh(index); });
        }
    };
    if (lateLight)
        drawLitLate(content, look);
    else
        drawMeshes();
    const std::vector<BlendedElements::Run>& blended = drawable.farthestFirst(view.worldToEye);
    const bool hasPlain = isToneMapped(look) && (look.grid || look.axes || drawable.hasUnlit());
    if (content.particles || look.ground || hasPlain) {
        content.shaders->endFrame();
        if (hasPlain)
            markPlain(content, look);
        drawBetween(content, view, look, units);
        if (blended.empty())
            return;
        content.shaders->beginFrame(view.worldToEye, isOccluded(look));
    }
    for (const BlendedElements::Run& run : blended) {
        if (isLeftOut(run.instance))
            continue;
        prepare(run.instance);
        drawPlaced(drawable, run.instance, [&] { drawable.drawRun(run); });
    }
    content.shaders->endFrame();
}

/// Dark, a little in front of the triangles that they are of; what lies between small ones stays visible.
void drawEdges(const FrameContent& content, const FrameLook& look) {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    GLPassState state;
    state.setDepthMask(false);
    state.setBlendFuncFactors(GLPassState::kBlendOne, GLPassState::kBlendOneMinusSourceAlpha);
    state.applyGL(false);
    gl->glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    gl->glEnable(GL_POLYGON_OFFSET_LINE);
    gl->glPolygonOffset(-1.0F, -1.0F);
    enable(GL_LIGHTING, false);
    enable(GL_ALPHA_TEST, false);
    enable(GL_BLEND, true);
    gl->glColor4f(0.0F, 0.0F, 0.0F, 0.4F);
    const Scene& scene = content.drawable.scene();
    for (size_t index = 0; index < scene.instances.size(); ++index) {
        const auto mesh = static_cast<size_t>(scene.instances[index].mesh);
        if (scene.meshes[mesh].topology != Topology::Triangles || !isSeen(content, index))
            continue;
        enable(GL_CULL_FACE, cullsBackFaces(content.drawable, index, look));
        drawPlaced(content.drawable, index, [&] { content.drawable.drawShape(index); });
    }
    gl->glDisable(GL_POLYGON_OFFSET_LINE);
    gl->glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

void draw(GLFrameBuffer& target, const View& view, const FrameContent& content, const FrameLook& look,
          Clear clearThings) {
    target.makeCurrent();
    clear(look);
    cull(content, view, look);
    if (look.sky && content.backdrop)
        content.backdrop->draw(view);
    setFrameState(look);

    GLCamera camera;
    camera.fViewTransform = view.worldToEye;
    camera.fProjection = view.projection;
    camera.bind();
    content.lights.bind(view.worldToEye);
    if (look.clip) {
        GLFunctionTable::fpGlobalFunctionTable->glClipPlane(GL_CLIP_PLANE0, look.clip->plane().data());
        enable(GL_CLIP_PLANE0, true);
    }

    TextureUnits units;
    if (look.grid)
        drawFixed(content.grid, 0, look, units);
    if (look.axes)
        drawFixed(content.axes, 0, look, units);
    if (content.shaders)
        drawSceneShaded(content, view, look, units, clearThings, isLitLate(target, content, look));
    else
        drawSceneFixed(content, view, look, units);
    const bool hasEdges = look.edges && !look.wireframe;
    if (hasEdges || content.marks.any())
        units.set(nullptr, nullptr);
    if (hasEdges)
        drawEdges(content, look);
    if (look.clip)
        enable(GL_CLIP_PLANE0, false);
    if (content.marks.any())
        content.marks.draw(view, look);
    if (content.culling && content.answers == Answers::AsTheyCome)
        content.culling->ask();
}

/// The frame of a view as a square, with nothing left out but what is clear.
void drawBehind(GLFrameBuffer& target, const View& view, FrameContent content, FrameLook look) {
    content.culling = nullptr;
    look.toneMap = ToneMap::Cut;
    look.width = look.height = Behind::kSide;
    draw(target, view, content, look, Clear::LeftOut);
}

} // namespace

void prepareFrame(const View& view, const FrameContent& content, const FrameLook& look) {
    if (content.shadows && look.lights) {
        const PassGroup group("shadow map");
        content.shadows->update(content.drawable, view.worldToEye);
    }
    if (content.occlusion && isOccluded(look)) {
        const PassGroup group("ambient occlusion");
        content.occlusion->update(content.drawable, view);
    }
    if (look.ground) {
        const PassGroup group("shade on the ground");
        content.ground.update(content.drawable);
    }
    if (!content.behind || !look.lights)
        return;
    const PassGroup group("what is behind glass");
    content.behind->update(view, [&](GLFrameBuffer& target) { drawBehind(target, view, content, look); });
}

void drawFrame(GLFrameBuffer& target, const View& view, const FrameContent& content, const FrameLook& look) {
    const PassGroup group("scene");
    draw(target, view, content, look, Clear::Drawn);
}

} // namespace orloview
