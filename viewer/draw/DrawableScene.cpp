#include "draw/DrawableScene.h"

#include <algorithm>

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

constexpr GLRouting::GLInterpolant texCoord(size_t layer) {
    return static_cast<GLRouting::GLInterpolant>(GLRouting::kTexCoord0 + layer);
}

bool hasUvSet(const Mesh& mesh, int set) {
    const auto index = static_cast<size_t>(set);
    return index < mesh.uvSets.size() && !mesh.uvSets[index].empty();
}

const TextureLayer* usable(const TextureLayer& layer, const Mesh& mesh) {
    return layer.texture && (!layer.uvSet || hasUvSet(mesh, *layer.uvSet)) ? &layer : nullptr;
}

GLenum modeOf(Topology topology) {
    switch (topology) {
    case Topology::Points:
        return GL_POINTS;
    case Topology::Lines:
        return GL_LINES;
    case Topology::Triangles:
        break;
    }
    return GL_TRIANGLES;
}

} // namespace

koColor::Color storedColor(const Material& material, const koColor::Color& color) {
    if (material.alphaMode == AlphaMode::Opaque)
        return {color[0], color[1], color[2], 1.0F};
    if (material.alphaMode == AlphaMode::Mask)
        return color;
    return {color[0] * color[3], color[1] * color[3], color[2] * color[3], color[3]};
}

DrawableScene::DrawableScene(const Scene& scene, const ProgressReport& report)
    : fScene(scene), fTextures(scene) {
    const auto routeTo = [this](GLRouting::GLInterpolant interpolant, GeometryData::DataType type) {
        GLRouting::Slot& slot = fRouting.fSlots[interpolant];
        slot.fMode = GLRouting::kFromGeometry;
        slot.fDataType = type;
    };
    routeTo(GLRouting::kPosition, GeometryData::kPosition);
    routeTo(GLRouting::kNormal, GeometryData::kNormal);
    routeTo(GLRouting::kColor, GeometryData::kColor);

    for (const Mesh& mesh : scene.meshes) {
        fDrawables.push_back(makeDrawable(mesh));
        tell(report, static_cast<double>(fDrawables.size()), static_cast<double>(scene.meshes.size()));
    }
    std::vector<size_t> blended;
    std::vector<Bounds> boxes;
    for (size_t i = 0; i < scene.instances.size(); ++i) {
        if (materialOf(i).alphaMode == AlphaMode::Blend) {
            blended.push_back(i);
            boxes.push_back(boundsOf(meshOf(i), scene.instances[i].toWorld));
        } else {
            fOpaque.push_back(i);
        }
    }
    fBlended = std::make_unique<BlendedElements>(scene, blended, boxes);
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
    addUvStreams(mesh, *drawable);

    if (mesh.topology == Topology::Triangles)
        drawable->group.addIndexRecord(std::make_unique<GeometryDataIndex>(
            GeometryDataIndex::kTriangles, mesh.indices.data(), static_cast<uint32_t>(mesh.indices.size())));
    return drawable;
}

void DrawableScene::addUvStreams(const Mesh& mesh, Drawable& drawable) const {
    const MaterialLayers& layers = fTextures.layersOf(mesh.material);
    const std::array<const TextureLayer*, kLayers> wanted{&layers.base, &layers.emission};
    std::vector<int> added;
    for (size_t i = 0; i < kLayers; ++i) {
        if (!wanted[i]->uvSet || !hasUvSet(mesh, *wanted[i]->uvSet))
            continue;
        const auto known = std::find(added.begin(), added.end(), *wanted[i]->uvSet);
        drawable.uvStreams[i] = static_cast<int>(known - added.begin());
        if (known != added.end())
            continue;
        added.push_back(*wanted[i]->uvSet);
        drawable.group.addStream(std::make_unique<GeometryData>(
            GeometryData::kTexCoord, 2, mesh.uvSets[static_cast<size_t>(*wanted[i]->uvSet)].data(),
            static_cast<uint32_t>(mesh.vertexCount())));
    }
}

const Material& DrawableScene::materialOf(size_t instance) const {
    const int material = meshOf(instance).material;
    return material < 0 ? kPlainMaterial : fScene.materials[material];
}

const TextureLayer* DrawableScene::baseLayerOf(size_t instance) const {
    const Mesh& mesh = meshOf(instance);
    return usable(fTextures.layersOf(mesh.material).base, mesh);
}

const TextureLayer* DrawableScene::emissionLayerOf(size_t instance) const {
    const Mesh& mesh = meshOf(instance);
    return usable(fTextures.layersOf(mesh.material).emission, mesh);
}

bool DrawableScene::isLit(size_t instance) const {
    return !meshOf(instance).normals.empty() && !materialOf(instance).unlit;
}

bool DrawableScene::isDoubleSided(size_t instance) const {
    return meshOf(instance).bothSides || materialOf(instance).doubleSided;
}

void DrawableScene::route(const Drawable& drawable) {
    fRouting.fSlots[GLRouting::kColor].fMode = GLRouting::kFromGeometry;
    for (size_t i = 0; i < kLayers; ++i) {
        GLRouting::Slot& slot = fRouting.fSlots[texCoord(i)];
        slot.fMode = drawable.uvStreams[i] < 0 ? GLRouting::kUnused : GLRouting::kFromGeometry;
        slot.fDataType = GeometryData::kTexCoord;
        slot.fIndex = drawable.uvStreams[i];
    }
}

void DrawableScene::drawMesh(size_t instance) {
    route(drawableOf(instance));
    drawRouted(instance);
}

void DrawableScene::drawShape(size_t instance) {
    for (const GLRouting::GLInterpolant i : {GLRouting::kColor, texCoord(0), texCoord(1)})
        fRouting.fSlots[i].fMode = GLRouting::kUnused;
    drawRouted(instance);
}

void DrawableScene::drawRouted(size_t instance) {
    const Mesh& mesh = meshOf(instance);
    Drawable& drawable = drawableOf(instance);
    if (mesh.topology == Topology::Triangles) {
        fRouting.drawGroup(&drawable.group, nullptr, nullptr, nullptr, 0, false);
        return;
    }
    // The routing draws triangles and quads only; its arrays serve here too.
    fRouting.fGroup = &drawable.group;
    fRouting.setVertexArrays(false, false);
    uploadIndices(mesh, drawable);
    const bool buffered = drawable.indices && drawable.indices->bind();
    drawElements(mesh, mesh.indices.size(), buffered ? nullptr : mesh.indices.data());
    if (buffered)
        drawable.indices->unbind();
    fRouting.unsetVertexArrays();
}

void DrawableScene::drawRun(const BlendedElements::Run& run) {
    Drawable& drawable = drawableOf(run.instance);
    route(drawable);
    fRouting.fGroup = &drawable.group;
    fRouting.setVertexArrays(false, false);
    drawElements(meshOf(run.instance), run.indexCount, fBlended->indicesOf(run));
    fRouting.unsetVertexArrays();
}

void DrawableScene::drawElements(const Mesh& mesh, size_t count, const void* indices) {
    GLFunctionTable::fpGlobalFunctionTable->glDrawElements(modeOf(mesh.topology), static_cast<GLsizei>(count),
                                                           GL_UNSIGNED_INT, indices);
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
    const auto all = static_cast<double>(fDrawables.size() + fTextures.count());
    for (size_t i = 0; i < fDrawables.size(); ++i) {
        route(*fDrawables[i]);
        fRouting.fGroup = &fDrawables[i]->group;
        fRouting.setVertexArrays(false, false);
        fRouting.unsetVertexArrays();
        uploadIndices(fScene.meshes[i], *fDrawables[i]);
        tell(report, static_cast<double>(i + 1), all);
    }
    size_t done = fDrawables.size();
    fTextures.upload([&] { tell(report, static_cast<double>(++done), all); });
}

} // namespace orloview
