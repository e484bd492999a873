#include "draw/SceneParticles.h"

#include "draw/FrameLook.h"
#include "draw/GL.h"
#include "scene/Vectors.h"
#include "scene/View.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

#include <particle/GLParticlePointDraw.h>
#include <particle/GLParticleSpriteDraw.h>
#include <particle/GLParticleStreakDraw.h>
#include <state/GLPassState.h>
#include <texture/GLTexUnitState.h>
#include <texture/GLTexUsage.h>

namespace orloview {

namespace {

constexpr int32_t kCopies = 10;
constexpr float kTailFade = 0.0F;
constexpr double kTailTime = 7 * 0.0333; ///< seconds that a streak reaches back

/// The values of the vertices that are drawn, in that order.
std::vector<float> drawn(const std::vector<float>& values, size_t width, const Mesh& mesh) {
    std::vector<float> picked;
    if (values.empty())
        return picked;
    picked.reserve(mesh.indices.size() * width);
    for (const uint32_t index : mesh.indices)
        picked.insert(picked.end(), &values[index * width], &values[index * width] + width);
    return picked;
}

/// How large a sprite is if nobody says: as many as there are would cover a square as wide as the cloud.
float usualSide(const std::vector<float>& positions) {
    Bounds bounds;
    for (size_t i = 0; i + 2 < positions.size(); i += 3)
        bounds.extend({positions[i], positions[i + 1], positions[i + 2]});
    const size_t count = std::max(positions.size() / 3, size_t{1});
    return static_cast<float>(2.0 * radiusOf(bounds) / std::sqrt(static_cast<double>(count)));
}

bool isTransparent(const std::vector<float>& colors) {
    for (size_t i = 3; i < colors.size(); i += 4)
        if (colors[i] < 1.0F)
            return true;
    return false;
}

/// As a frame stores colours: multiplied by their alpha.
void multiplyByAlpha(std::vector<float>& colors) {
    for (size_t i = 0; i + 3 < colors.size(); i += 4)
        std::for_each_n(&colors[i], 3, [alpha = colors[i + 3]](float& channel) { channel *= alpha; });
}

/// The pass of what hides what is behind it, or lies over it.
GLPassState passStateOf(bool shinesThrough) {
    GLPassState state;
    state.setDepthMask(!shinesThrough);
    if (shinesThrough)
        state.setBlendFuncFactors(GLPassState::kBlendOne, GLPassState::kBlendOneMinusSourceAlpha);
    return state;
}

/// A picture's rows run down, a sprite's t runs up.
koLinear::ProjMatrix upsideDown() {
    koLinear::ProjMatrix matrix;
    matrix[1][1] = -1.0;
    matrix[3][1] = 1.0;
    return matrix;
}

/// How far a particle's copies or corners are from it at most, along each axis.
double reachOf(const Mesh& mesh, ParticleKind kind) {
    const double side = usualSide(drawn(mesh.positions, 3, mesh));
    if (kind == ParticleKind::Multi) {
        GLParticleDrawBase::initRandom3();
        const float* const first = &GLParticleDrawBase::sfRandom3[0][0];
        const auto [least, most] =
            std::minmax_element(first, first + sizeof(GLParticleDrawBase::sfRandom3) / sizeof(float));
        return side * static_cast<double>(std::max(-*least, *most));
    }
    if (kind != ParticleKind::Sprites)
        return 0.0;
    double largest = 0.0;
    for (const size_t scale : {size_t{2}, size_t{3}})
        for (const float value : mesh.particles.values[scale])
            largest = std::max(largest, static_cast<double>(std::abs(value)));
    return std::numbers::sqrt2 / 2.0 * (largest > 0.0 ? largest : side);
}

} // namespace

void extendByParticles(Bounds& bounds, const Scene& scene, ParticleKind kind) {
    for (const Instance& instance : scene.instances) {
        const Mesh& mesh = scene.meshes[instance.mesh];
        if (mesh.topology != Topology::Points)
            continue;
        const double reach = reachOf(mesh, kind);
        const std::vector<float>& moves = mesh.particles.velocities;
        const bool hasTails = kind == ParticleKind::Streaks && !moves.empty();
        for (const uint32_t index : mesh.indices) {
            const float* p = &mesh.positions[size_t{index} * 3];
            const Point place(p[0], p[1], p[2]);
            const float* v = hasTails ? &moves[size_t{index} * 3] : nullptr;
            const Vector tail =
                v ? Vector(-kTailTime * v[0], -kTailTime * v[1], -kTailTime * v[2]) : Vector();
            bounds.extend(instance.toWorld.transform(offset(place, sum(tail, {reach, reach, reach}))));
            bounds.extend(instance.toWorld.transform(offset(place, sum(tail, {-reach, -reach, -reach}))));
        }
    }
}

SceneParticles::SceneParticles(const Scene& scene, const ParticleOptions& options)
    : fScene(scene), fOptions(options), fStore(fPictures), fImages(options.images.size()) {
    for (const std::string& path : options.images) {
        Texture texture;
        texture.image = static_cast<int>(fPictures.images.size());
        texture.wrapU = texture.wrapV = Wrap::ClampToEdge;
        fPictures.images.push_back({path, path, {}, "--sprite-images"});
        fPictures.textures.push_back(texture);
    }
    if (options.kind == ParticleKind::Sprites) {
        for (size_t i = 0; i < fImages.size(); ++i)
            fStore.ask({static_cast<int>(i)}, Encoding::Srgb, AlphaUse::Multiplied, {1.0F, 1.0F, 1.0F},
                       [this, i](GLTexture2D* texture) { fImages[i] = texture; });
        fStore.begin();
    }
    for (size_t i = 0; i < scene.instances.size(); ++i) {
        if (!draws(i))
            continue;
        const Instance& instance = scene.instances[i];
        Cloud& cloud = fClouds.emplace_back();
        cloud.instance = i;
        cloud.toWorld = instance.toWorld;
        cloud.data.reset(new ParticleData);
        cloud.data->ref();
        fill(cloud, scene.meshes[instance.mesh]);
        cloud.drawer = makeDrawer(cloud, instance.nodeName);
    }
}

SceneParticles::~SceneParticles() {
    for (const Cloud& cloud : fClouds)
        delete cloud.drawer->fAlignmentInfo; // the drawer leaves it to its host
}

void SceneParticles::fill(Cloud& cloud, const Mesh& mesh) const {
    ParticleData& data = *cloud.data;
    std::vector<float> positions = drawn(mesh.positions, 3, mesh);
    std::vector<float> colors = drawn(mesh.colors, 4, mesh);
    cloud.side = usualSide(positions);
    cloud.shinesThrough = fOptions.kind == ParticleKind::Sprites || fOptions.kind == ParticleKind::Streaks ||
                          isTransparent(colors);
    cloud.sortedFor.reset();
    if (fOptions.kind != ParticleKind::Streaks)
        multiplyByAlpha(colors);
    data.setPositions(std::move(positions));
    data.setColors(std::move(colors));
    data.setVelocities(drawn(mesh.particles.velocities, 3, mesh));
    std::array<std::vector<float>, kParticleValueNames.size()> values;
    for (size_t i = 0; i < values.size(); ++i)
        values[i] = drawn(mesh.particles.values[i], 1, mesh);
    auto& scaleX = values[2];
    auto& scaleY = values[3];
    if (scaleX.empty() != scaleY.empty()) // one of them makes squares
        (scaleX.empty() ? scaleX : scaleY) = scaleX.empty() ? scaleY : scaleX;
    for (size_t i = 0; i < values.size(); ++i)
        data.addData(kParticleValueNames[i], std::move(values[i]));
    data.fFilterEnabled = cloud.shinesThrough;
}

std::unique_ptr<GLParticleDrawBase> SceneParticles::makeDrawer(const Cloud& cloud,
                                                               const std::string& seed) const {
    std::unique_ptr<GLParticleDrawBase> drawer;
    switch (fOptions.kind) {
    case ParticleKind::Points:
    case ParticleKind::Multi:
        drawer = std::make_unique<GLParticlePointDraw>(*cloud.data);
        break;
    case ParticleKind::Sprites:
        drawer = std::make_unique<GLParticleSpriteDraw>(*cloud.data);
        drawer->fTextureCycling = true; // also where all have the same: then the draw names no textures
        break;
    case ParticleKind::Streaks: {
        auto streaks = std::make_unique<GLParticleStreakDraw>(*cloud.data);
        streaks->fTailFade = kTailFade;
        drawer = std::move(streaks);
        break;
    }
    }
    if (fOptions.kind == ParticleKind::Multi) {
        drawer->fMultiCount = kCopies;
        drawer->fMultiRadius = cloud.side;
    }
    drawer->setObjectSeed(seed.c_str());
    koColor::Color black(0.0F, 0.0F, 0.0F, 1.0F); // so that light makes all of a particle's colour
    drawer->setMaterialProperties(0.0F, black, black, black, black);
    return drawer;
}

void SceneParticles::upload() {
    if (fOptions.kind != ParticleKind::Sprites)
        return;
    fStore.upload([] {});
    makeSpot();
    for (Cloud& cloud : fClouds)
        pickTextures(cloud);
}

/// White, round, its alpha falling to the edge, and multiplied by it.
void SceneParticles::makeSpot() {
    constexpr int kSide = 64;
    std::vector<GLubyte> texels;
    const auto middleOf = [](int texel) { return (texel + 0.5) / kSide * 2.0 - 1.0; };
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            const double inside = std::max(1.0 - middleOf(x) * middleOf(x) - middleOf(y) * middleOf(y), 0.0);
            texels.insert(texels.end(), 4, static_cast<GLubyte>(std::lround(255.0 * inside * inside)));
        }
    }
    fSpot.reset(new GLTexture2D(kRasterRGBA8, false));
    fSpot->ref();
    fSpot->GLloadImageMipmap(texels.data(), kSide, kSide);
    GLTexUsage::setWrapMode(GL_TEXTURE_2D, IHWTexUsage::kClampToEdge, IHWTexUsage::kClampToEdge);
    GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, IHWTexUsage::kTrilinear, IHWTexUsage::kLinear);
    fSpot->unbind();
}

/// A drawer takes the i-th texture of its list for particle i, so the list is by particle.
void SceneParticles::pickTextures(Cloud& cloud) {
    const ParticleData::Data* numbers = cloud.data->getData(cloud.data->getDataIndex("textureNumber"));
    cloud.textures.clear();
    if (!numbers || fImages.empty())
        return;
    for (const float number : numbers->fValues) {
        const auto last = static_cast<float>(fImages.size() - 1);
        const auto picked = static_cast<size_t>(std::clamp(std::floor(number), 0.0F, last));
        cloud.textures.push_back(fImages[picked] ? fImages[picked] : fSpot.get());
    }
}

std::vector<std::string> SceneParticles::warnings() const {
    std::vector<std::string> warnings = fStore.warnings();
    if (fClouds.empty())
        warnings.emplace_back("--particles: the models have no points, so that there are no particles");
    const bool resting = std::none_of(fClouds.begin(), fClouds.end(),
                                      [](const Cloud& cloud) { return cloud.data->velocities(); });
    if (fOptions.kind == ParticleKind::Streaks && resting && !fClouds.empty())
        warnings.emplace_back(
            "--particles streaks: no point has a velocity (vx, vy and vz), so that they have no length");
    return warnings;
}

void SceneParticles::replace(const Mesh& mesh) {
    if (fClouds.empty())
        return;
    fill(fClouds.front(), mesh);
    pickTextures(fClouds.front());
}

void SceneParticles::follow(const Moved& moved) {
    for (Cloud& cloud : fClouds) {
        if (!std::ranges::binary_search(moved.instances, cloud.instance))
            continue;
        const Instance& instance = fScene.instances[cloud.instance];
        cloud.toWorld = instance.toWorld;
        cloud.sortedFor.reset();
        const auto isOwn = [&](const Moved::Bent& bent) {
            return bent.mesh == static_cast<size_t>(instance.mesh);
        };
        if (std::ranges::none_of(moved.meshes, isOwn))
            continue;
        const float side = cloud.side; // sprites keep their size
        fill(cloud, fScene.meshes[instance.mesh]);
        cloud.side = side;
    }
}

void SceneParticles::draw(const koLinear::AffineMatrix& worldToEye, const FrameLook& look) {
    const bool lit = fOptions.lit && look.lights;
    gl().glDisable(GL_CULL_FACE);
    gl().glDisable(GL_ALPHA_TEST);
    gl().glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    gl().glDisable(GL_COLOR_MATERIAL); // lit particles send materials
    lit ? gl().glEnable(GL_LIGHTING) : gl().glDisable(GL_LIGHTING);
    for (Cloud& cloud : fClouds) {
        cloud.drawer->fLit = lit;
        cloud.drawer->applyMaterialProperties();
        cloud.shinesThrough ? gl().glEnable(GL_BLEND) : gl().glDisable(GL_BLEND);
        if (cloud.shinesThrough)
            sort(cloud, worldToEye);
        turnToEye(cloud, worldToEye);
        gl().glPushMatrix();
        gl().glMultMatrixd(koLinear::ProjMatrix(cloud.toWorld).data());
        drawPasses(cloud, look);
        gl().glPopMatrix();
    }
    passStateOf(false).applyGL(false); // streaks leave colours masked
    gl().glDisable(GL_LIGHTING);
    gl().glEnable(GL_COLOR_MATERIAL);
    gl().glPolygonMode(GL_FRONT_AND_BACK, look.wireframe ? GL_LINE : GL_FILL);
}

/// A streak's colour can't be multiplied by an alpha that fades along it. So it is by the blending, which
/// leaves the frame's alpha to a pass of its own.
void SceneParticles::drawPasses(Cloud& cloud, const FrameLook& look) {
    GLPassState state = passStateOf(cloud.shinesThrough);
    if (fOptions.kind != ParticleKind::Streaks) {
        state.applyGL(false);
        return drawCloud(cloud, look);
    }
    GLPassState colors = state;
    colors.setColorMask(true, true, true, false);
    colors.setBlendFuncFactors(GLPassState::kBlendSourceAlpha, GLPassState::kBlendOneMinusSourceAlpha);
    colors.applyGL(false);
    drawCloud(cloud, look);
    const bool mayBeSeenThrough = look.background[3] < 1.0F;
    if (!mayBeSeenThrough)
        return;
    state.setColorMask(false, false, false, true);
    state.applyGL(false);
    drawCloud(cloud, look);
}

/// The order of the particles is the order of their filter.
void SceneParticles::sort(Cloud& cloud, const koLinear::AffineMatrix& worldToEye) {
    ParticleData& data = *cloud.data;
    const koLinear::AffineMatrix toEye = cloud.toWorld.then(worldToEye);
    const auto isSame = [](const koLinear::AffineMatrix& a, const koLinear::AffineMatrix& b) {
        return koLinear::equivalent(a, b, 0.0);
    };
    if (cloud.sortedFor && isSame(*cloud.sortedFor, toEye))
        return;
    cloud.sortedFor = toEye;
    std::vector<double> depths(data.count());
    for (size_t i = 0; i < depths.size(); ++i) {
        const float* p = data.positions() + 3 * i;
        depths[i] = p[0] * toEye[0][2] + p[1] * toEye[1][2] + p[2] * toEye[2][2];
    }
    data.fFilter.resize(depths.size());
    std::iota(data.fFilter.begin(), data.fFilter.end(), 0U);
    std::stable_sort(data.fFilter.begin(), data.fFilter.end(),
                     [&](uint32_t a, uint32_t b) { return depths[a] < depths[b]; });
}

void SceneParticles::turnToEye(Cloud& cloud, const koLinear::AffineMatrix& worldToEye) const {
    const koLinear::AffineMatrix eyeToObject = worldToEye.inverse().then(cloud.toWorld.inverse());
    const AlignmentInfo* info =
        cloud.drawer->createAlignmentInfo({0.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {}, eyeToObject);
    if (fOptions.kind != ParticleKind::Sprites || !info)
        return;
    auto& sprites = static_cast<GLParticleSpriteDraw&>(*cloud.drawer);
    std::copy_n(info->fCameraPosition, 3, sprites.fCameraPosition);
    std::copy_n(info->fCameraUp, 3, sprites.fCameraUp);
    sprites.fCurrentScaleX = sprites.fCurrentScaleY = cloud.side;
    sprites.fCurrentTwist = 0.0F;
}

void SceneParticles::drawCloud(Cloud& cloud, const FrameLook& look) {
    cloud.data->fPointSize = look.pointSize;
    if (fOptions.kind == ParticleKind::Streaks)
        static_cast<GLParticleStreakDraw&>(*cloud.drawer).fLineWidth = look.pointSize;
    if (fOptions.kind != ParticleKind::Sprites)
        return cloud.drawer->draw(nullptr, nullptr);

    GLTexUnitState state;
    state.setTextureFunction(GLTexUnitState::kEnvModulate);
    state.applyGL();
    if (cloud.textures.empty()) {
        gl().glEnable(GL_TEXTURE_2D);
        GLTexture2D* image = fImages.empty() ? nullptr : fImages.front();
        (image ? image : fSpot.get())->bind();
        GLTexUsage::setTransform(upsideDown());
        cloud.drawer->draw(nullptr, nullptr);
    } else {
        IHWTexPlacement placement;
        placement.fWrapModes[0] = placement.fWrapModes[1] = IHWTexUsage::kClampToEdge;
        placement.fMinFilter = IHWTexUsage::kTrilinear;
        placement.fMatrix = upsideDown();
        cloud.drawer->draw(&placement, &cloud.textures);
    }
    GLTexUsage::setTransform(koLinear::ProjMatrix());
    gl().glDisable(GL_TEXTURE_2D);
    gl().glBindTexture(GL_TEXTURE_2D, 0);
}

} // namespace orloview
