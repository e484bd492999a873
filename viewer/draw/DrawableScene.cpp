#include "draw/DrawableScene.h"

#include "scene/Bending.h"

#include <algorithm>

#include <gl/GLFunctionTable.h>

namespace orloview {

namespace {

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

/// The attribute of a mesh that a stream has.
size_t attributeOf(const GeometryData& stream) {
    switch (stream.fDataType) {
    case GeometryData::kPosition:
        return kPositions;
    case GeometryData::kNormal:
        return kNormals;
    case GeometryData::kTangent:
        return kTangents;
    case GeometryData::kColor:
        return kColors;
    default:
        return kUvAttribute;
    }
}

/// A stream that has changed into the buffer object that it is in; in client memory it is drawn as it is.
void uploadAgain(const GeometryData& stream) {
    GLObject* const object = GLObject::from(stream.fHanger);
    if (!object || !object->bind())
        return;
    object->bufferSubData(
        0, static_cast<long>(size_t{stream.fElementCount} * stream.fComponentsPerElement * sizeof(float)),
        stream.fData);
    object->unbind();
}

uint32_t sourceOf(bool isThere) {
    return isThere ? GLRouting::kFromGeometry : GLRouting::kUnused;
}

} // namespace

koColor::Color storedColor(const Material& material, const koColor::Color& color) {
    if (material.alphaMode == AlphaMode::Opaque)
        return {color[0], color[1], color[2], 1.0F};
    if (material.alphaMode == AlphaMode::Mask)
        return color;
    return {color[0] * color[3], color[1] * color[3], color[2] * color[3], color[3]};
}

DrawableScene::DrawableScene(const Scene& scene, Shading shading, const ProgressReport& report, Extras extras)
    : fScene(scene), fHasExtraTangents(extras == Extras::NormalMapsAndTangents),
      fTextures(shading == Shading::Fixed ? std::make_unique<SceneTextures>(scene, extras != Extras::Nothing)
                                          : nullptr) {
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
    for (size_t i = 0; i < scene.instances.size(); ++i) {
        fHasUnlit = fHasUnlit || !isLit(i);
        (materialOf(i).alphaMode == AlphaMode::Blend ? fBlendedInstances : fOpaque).push_back(i);
    }
    sortBlended();
}

DrawableScene::~DrawableScene() = default;

void DrawableScene::sortBlended() {
    std::vector<Bounds> boxes;
    for (const size_t i : fBlendedInstances)
        boxes.push_back(boundsOf(meshOf(i), fScene.instances[i].toWorld));
    fBlended = std::make_unique<BlendedElements>(fScene, fBlendedInstances, boxes);
}

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
    drawable->hasNormals = !mesh.normals.empty();

    if (fTextures)
        setColors(mesh, *drawable);
    const std::vector<float>& colors = fTextures ? drawable->colors : mesh.colors;
    addStream(GeometryData::kColor, 4, colors);
    drawable->hasColors = !colors.empty();
    addUvStreams(mesh, *drawable);
    drawable->hasTangents = !fTextures && fScene.showsTangents(mesh);
    if (drawable->hasTangents)
        addStream(GeometryData::kTangent, 4, mesh.tangents);
    if (fHasExtraTangents) {
        drawable->extras = tangentsOf(mesh);
        addStream(GeometryData::kTangent, 3, drawable->extras.tangents);
        addStream(GeometryData::kTangent, 3, drawable->extras.binormals);
    }

    if (mesh.topology == Topology::Triangles)
        drawable->group.addIndexRecord(std::make_unique<GeometryDataIndex>(
            GeometryDataIndex::kTriangles, mesh.indices.data(), static_cast<uint32_t>(mesh.indices.size())));
    return drawable;
}

void DrawableScene::setColors(const Mesh& mesh, Drawable& drawable) const {
    const Material& material = fScene.materialOf(mesh);
    drawable.colors.resize(mesh.colors.size());
    for (size_t i = 0; i + 3 < mesh.colors.size(); i += 4) {
        koColor::Color color;
        for (int channel = 0; channel < 4; ++channel)
            color[channel] = mesh.colors[i + channel] * material.baseColor[channel];
        std::copy_n(storedColor(material, color).data(), 4, &drawable.colors[i]);
    }
}

/// Which set each texture unit gets: GL's own functions have the base colour's on unit 0, the emission's on
/// unit 1 and the normal map's on unit 2; shaders of materials find set N on unit N.
void DrawableScene::addUvStreams(const Mesh& mesh, Drawable& drawable) const {
    std::array<int, kMostUvSets> sets;
    sets.fill(-1);
    if (fTextures) {
        const MaterialLayers& layers = fTextures->layersOf(mesh.material);
        sets[0] = layers.base.uvSet.value_or(fHasExtraTangents ? 0 : -1); // textures of an effect's own
        sets[1] = layers.emission.uvSet.value_or(fHasExtraTangents ? 1 : -1);
        sets[2] = layers.normal.uvSet.value_or(-1);
    } else if (mesh.material >= 0) {
        const Material& material = fScene.materials[static_cast<size_t>(mesh.material)];
        if (material.anisotropy > 0.0F)
            sets[0] = 0; // the direction that it is stretched along
        for (const auto use : kTextureUses) {
            const TextureUse& used = material.*use;
            if (used.texture >= 0 && static_cast<size_t>(used.uvSet) < kMostUvSets)
                sets[static_cast<size_t>(used.uvSet)] = used.uvSet;
        }
    }
    drawable.uvStreams.fill(-1);
    std::vector<int> added;
    for (size_t unit = 0; unit < kMostUvSets; ++unit) {
        if (sets[unit] < 0 || !hasUvSet(mesh, sets[unit]))
            continue;
        const auto known = std::find(added.begin(), added.end(), sets[unit]);
        drawable.uvStreams[unit] = static_cast<int>(known - added.begin());
        if (known != added.end())
            continue;
        added.push_back(sets[unit]);
        drawable.group.addStream(std::make_unique<GeometryData>(
            GeometryData::kTexCoord, 2, mesh.uvSets[static_cast<size_t>(sets[unit])].data(),
            static_cast<uint32_t>(mesh.vertexCount())));
    }
}

std::vector<std::string> DrawableScene::warnings() const {
    return fTextures ? fTextures->warnings() : std::vector<std::string>();
}

const Material& DrawableScene::materialOf(size_t instance) const {
    return fScene.materialOf(meshOf(instance));
}

const TextureLayer* DrawableScene::baseLayerOf(size_t instance) const {
    const Mesh& mesh = meshOf(instance);
    return fTextures ? usable(fTextures->layersOf(mesh.material).base, mesh) : nullptr;
}

const TextureLayer* DrawableScene::emissionLayerOf(size_t instance) const {
    const Mesh& mesh = meshOf(instance);
    return fTextures ? usable(fTextures->layersOf(mesh.material).emission, mesh) : nullptr;
}

const TextureLayer* DrawableScene::normalLayerOf(size_t instance) const {
    const Mesh& mesh = meshOf(instance);
    return fTextures ? usable(fTextures->layersOf(mesh.material).normal, mesh) : nullptr;
}

bool DrawableScene::isLit(size_t instance) const {
    return !meshOf(instance).normals.empty() && !materialOf(instance).unlit;
}

bool DrawableScene::isDoubleSided(size_t instance) const {
    return meshOf(instance).bothSides || materialOf(instance).doubleSided;
}

bool DrawableScene::hasClear() const {
    return std::any_of(fScene.instances.begin(), fScene.instances.end(), [this](const Instance& instance) {
        return fScene.materialOf(fScene.meshes[static_cast<size_t>(instance.mesh)]).isClear();
    });
}

void DrawableScene::route(const Drawable& drawable) {
    // What a mesh hasn't isn't routed: a drawing of what is missing can't be planned.
    fRouting.fSlots[GLRouting::kNormal].fMode = sourceOf(drawable.hasNormals);
    fRouting.fSlots[GLRouting::kColor].fMode = sourceOf(drawable.hasColors);
    for (size_t i = 0; i < kMostUvSets; ++i) {
        GLRouting::Slot& slot = fRouting.fSlots[texCoord(i)];
        slot.fMode = sourceOf(drawable.uvStreams[i] >= 0);
        slot.fDataType = GeometryData::kTexCoord;
        slot.fIndex = drawable.uvStreams[i];
    }
    if (drawable.hasTangents)
        routeTangents(kTangentUnit, 0);
    if (!drawable.extras.tangents.empty()) {
        routeTangents(kExtraTangentUnit, 0);
        routeTangents(kExtraBinormalUnit, 1);
    }
}

void DrawableScene::routeTangents(int unit, int stream) {
    GLRouting::Slot& slot = fRouting.fSlots[texCoord(static_cast<size_t>(unit))];
    slot.fMode = GLRouting::kFromGeometry;
    slot.fDataType = GeometryData::kTangent;
    slot.fIndex = stream;
}

void DrawableScene::drawMesh(size_t instance) {
    route(drawableOf(instance));
    drawRouted(instance);
}

void DrawableScene::drawShape(size_t instance) {
    fRouting.fSlots[GLRouting::kNormal].fMode = sourceOf(drawableOf(instance).hasNormals);
    fRouting.fSlots[GLRouting::kColor].fMode = GLRouting::kUnused;
    for (size_t unit = 0; unit < kMostUvSets; ++unit)
        fRouting.fSlots[texCoord(unit)].fMode = GLRouting::kUnused;
    drawRouted(instance);
}

void DrawableScene::drawRouted(size_t instance) {
    const Mesh& mesh = meshOf(instance);
    Drawable& drawable = drawableOf(instance);
    if (mesh.topology == Topology::Triangles && mesh.indices.size() <= fIndicesAtOnce) {
        fRouting.drawGroup(&drawable.group, nullptr, nullptr, nullptr, 0, false);
        noteDrawn(mesh.indices.size());
        return;
    }
    // The routing draws whole groups of triangles and quads only; its arrays serve here too.
    fRouting.fGroup = &drawable.group;
    fRouting.setVertexArrays(false, false);
    uploadIndices(mesh, drawable);
    GLObject* const indices = mesh.topology == Topology::Triangles
                                  ? GLObject::from(drawable.group.indexRecord(0)->fHanger)
                                  : drawable.indices.get();
    const bool buffered = indices && indices->bind();
    drawElements(mesh, mesh.indices.size(), buffered ? nullptr : mesh.indices.data());
    if (buffered)
        indices->unbind();
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
    const auto address = reinterpret_cast<std::uintptr_t>(indices); // or an offset into a buffer
    for (size_t first = 0; first < count;) {
        const size_t piece = std::min(count - first, fIndicesAtOnce);
        const std::uintptr_t place = address + first * sizeof(std::uint32_t);
        const void* from = reinterpret_cast<const void*>(place); // NOLINT(performance-no-int-to-ptr)
        GLFunctionTable::fpGlobalFunctionTable->glDrawElements(
            modeOf(mesh.topology), static_cast<GLsizei>(piece), GL_UNSIGNED_INT, from);
        noteDrawn(piece);
        first += piece;
    }
}

/// While the driver draws some pieces it can be given the next.
void DrawableScene::noteDrawn(size_t indices) {
    fDrawnOfPiece += indices;
    if (fDrawnOfPiece < fIndicesAtOnce)
        return;
    fDrawnOfPiece = 0;
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    ++fPieces % kPiecesAtOnce == 0 ? gl->glFinish() : gl->glFlush();
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

void DrawableScene::follow(const Moved& moved) {
    for (const Moved::Bent& bent : moved.meshes) {
        Drawable& drawable = *fDrawables[bent.mesh];
        std::array<bool, kUvAttribute + 1> isChanged{};
        for (const size_t attribute : bent.attributes)
            isChanged[std::min<size_t>(attribute, kUvAttribute)] = true;
        if (isChanged[kColors] && fTextures)
            setColors(fScene.meshes[bent.mesh], drawable);
        for (size_t i = 0; i < drawable.group.streamCount(); ++i)
            if (GeometryData& stream = *drawable.group.stream(i); isChanged[attributeOf(stream)])
                uploadAgain(stream);
    }
    if (std::ranges::any_of(moved.instances,
                            [this](size_t i) { return materialOf(i).alphaMode == AlphaMode::Blend; }))
        sortBlended();
}

void DrawableScene::upload(const ProgressReport& report) {
    const auto all = static_cast<double>(fDrawables.size() + (fTextures ? fTextures->count() : 0));
    for (size_t i = 0; i < fDrawables.size(); ++i) {
        route(*fDrawables[i]);
        fRouting.fGroup = &fDrawables[i]->group;
        fRouting.setVertexArrays(false, false);
        fRouting.unsetVertexArrays();
        uploadIndices(fScene.meshes[i], *fDrawables[i]);
        tell(report, static_cast<double>(i + 1), all);
    }
    size_t done = fDrawables.size();
    if (fTextures)
        fTextures->upload([&] { tell(report, static_cast<double>(++done), all); });
}

} // namespace orloview
