#include "draw/DrawableScene.h"

#include <gl/GLFunctionTable.h>

namespace orloview {

namespace {

const Material kPlainMaterial;

Bounds boundsOf(const Mesh& mesh, const koLinear::AffineMatrix& toWorld) {
    Bounds bounds;
    for (size_t i = 0; i + 2 < mesh.positions.size(); i += 3)
        bounds.extend(toWorld.transform(
            koLinear::Point(mesh.positions[i], mesh.positions[i + 1], mesh.positions[i + 2])));
    return bounds;
}

} // namespace

koColor::Color storedColor(const Material& material, const koColor::Color& color) {
    if (material.alphaMode == AlphaMode::Opaque)
        return {color[0], color[1], color[2], 1.0F};
    if (material.alphaMode == AlphaMode::Mask)
        return color;
    return {color[0] * color[3], color[1] * color[3], color[2] * color[3], color[3]};
}

DrawableScene::DrawableScene(const Scene& scene, const ProgressReport& report) : fScene(scene) {
    const auto route = [this](GLRouting::GLInterpolant interpolant, GeometryData::DataType type) {
        GLRouting::Slot& slot = fRouting.fSlots[interpolant];
        slot.fMode = GLRouting::kFromGeometry;
        slot.fDataType = type;
    };
    route(GLRouting::kPosition, GeometryData::kPosition);
    route(GLRouting::kNormal, GeometryData::kNormal);
    route(GLRouting::kColor, GeometryData::kColor);

    for (const Mesh& mesh : scene.meshes) {
        fDrawables.push_back(makeDrawable(mesh));
        tell(report, static_cast<double>(fDrawables.size()), static_cast<double>(scene.meshes.size()));
    }
    for (size_t i = 0; i < scene.instances.size(); ++i) {
        const Instance& instance = scene.instances[i];
        const Bounds bounds = boundsOf(scene.meshes[instance.mesh], instance.toWorld);
        fCenters.emplace_back((bounds.min[0] + bounds.max[0]) / 2.0, (bounds.min[1] + bounds.max[1]) / 2.0,
                              (bounds.min[2] + bounds.max[2]) / 2.0);
        (materialOf(i).alphaMode == AlphaMode::Blend ? fBlended : fOpaque).push_back(i);
    }
}

DrawableScene::~DrawableScene() = default;

std::unique_ptr<DrawableScene::Drawable> DrawableScene::makeDrawable(const Mesh& mesh) const {
    auto drawable = std::make_unique<Drawable>();
    const auto vertices = static_cast<uint32_t>(mesh.vertexCount());
    const auto addStream = [&](GeometryData::DataType type, uint32_t components,
                               const std::vector<float>& values) {
        if (!values.empty())
            drawable->group.addStream(
                std::make_unique<GeometryData>(type, components, values.data(), vertices));
    };
    addStream(GeometryData::kPosition, 3, mesh.positions);
    addStream(GeometryData::kNormal, 3, mesh.normals);

    const Material& material = mesh.material < 0 ? kPlainMaterial : fScene.materials[mesh.material];
    drawable->colors.reserve(mesh.colors.size());
    for (size_t i = 0; i + 3 < mesh.colors.size(); i += 4) {
        koColor::Color color;
        for (int channel = 0; channel < 4; ++channel)
            color[channel] = mesh.colors[i + channel] * material.baseColor[channel];
        const koColor::Color stored = storedColor(material, color);
        drawable->colors.insert(drawable->colors.end(), stored.data(), stored.data() + 4);
    }
    addStream(GeometryData::kColor, 4, drawable->colors);

    if (mesh.topology == Topology::Triangles)
        drawable->group.addIndexRecord(std::make_unique<GeometryDataIndex>(
            GeometryDataIndex::kTriangles, mesh.indices.data(), static_cast<uint32_t>(mesh.indices.size())));
    return drawable;
}

const Material& DrawableScene::materialOf(size_t instance) const {
    const int material = fScene.meshes[fScene.instances[instance].mesh].material;
    return material < 0 ? kPlainMaterial : fScene.materials[material];
}

bool DrawableScene::isLit(size_t instance) const {
    return !fScene.meshes[fScene.instances[instance].mesh].normals.empty() && !materialOf(instance).unlit;
}

bool DrawableScene::isDoubleSided(size_t instance) const {
    return fScene.meshes[fScene.instances[instance].mesh].bothSides || materialOf(instance).doubleSided;
}

void DrawableScene::drawMesh(size_t instance) {
    const int index = fScene.instances[instance].mesh;
    const Mesh& mesh = fScene.meshes[index];
    Drawable& drawable = *fDrawables[index];
    if (mesh.topology == Topology::Triangles)
        fRouting.drawGroup(&drawable.group, nullptr, nullptr, nullptr, 0, false);
    else
        drawPointsOrLines(mesh, drawable);
}

void DrawableScene::uploadIndices(const Mesh& mesh, Drawable& drawable) {
    if (!GLRouting::fsUseObjectsForIndexing || drawable.indicesTried)
        return;
    drawable.indicesTried = true;
    auto object = std::make_unique<GLObject>();
    object->fDataType = GLObject::kIndexData;
    const auto bytes = static_cast<long>(mesh.indices.size() * sizeof(uint32_t));
    if (!object->bind() || !object->bufferData(bytes, mesh.indices.data()))
        return;
    object->unbind();
    if (mesh.topology == Topology::Triangles)
        drawable.group.indexRecord(0)->setHanger(object.release()); // the group's from here on
    else
        drawable.indices = std::move(object);
}

void DrawableScene::upload(const ProgressReport& report) {
    for (size_t i = 0; i < fDrawables.size(); ++i) {
        fRouting.fGroup = &fDrawables[i]->group;
        fRouting.setVertexArrays(false, false);
        fRouting.unsetVertexArrays();
        uploadIndices(fScene.meshes[i], *fDrawables[i]);
        tell(report, static_cast<double>(i + 1), static_cast<double>(fDrawables.size()));
    }
}

void DrawableScene::drawPointsOrLines(const Mesh& mesh, Drawable& drawable) {
    // The routing draws triangles and quads only; its arrays serve here too.
    fRouting.fGroup = &drawable.group;
    fRouting.setVertexArrays(false, false);
    uploadIndices(mesh, drawable);
    const bool buffered = drawable.indices && drawable.indices->bind();
    GLFunctionTable::fpGlobalFunctionTable->glDrawElements(
        mesh.topology == Topology::Points ? GL_POINTS : GL_LINES, static_cast<GLsizei>(mesh.indices.size()),
        GL_UNSIGNED_INT, buffered ? nullptr : mesh.indices.data());
    if (buffered)
        drawable.indices->unbind();
    fRouting.unsetVertexArrays();
}

} // namespace orloview
