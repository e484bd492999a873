#include "frame/ViewAndLook.h"

#include "base/ExitCode.h"
#include "options/Values.h"
#include "output/Picture.h"
#include "scene/Vectors.h"

#include <algorithm>
#include <numbers>

namespace orloview {

namespace {

const Camera& findCamera(const std::string& wanted, const Scene& scene) {
    return scene.cameras[indexOf("camera", wanted, scene.cameras)];
}

koColor::Color linearBackground(const std::array<float, 4>& srgb) {
    const float alpha = srgb[3];
    return {decodeSrgb(srgb[0]) * alpha, decodeSrgb(srgb[1]) * alpha, decodeSrgb(srgb[2]) * alpha, alpha};
}

/// Whether anything is lit; the colours of the rest are meant as they are.
bool isLit(const Scene& scene) {
    return std::any_of(scene.meshes.begin(), scene.meshes.end(), [&](const Mesh& mesh) {
        const bool unlit = mesh.material >= 0 && scene.materials[static_cast<size_t>(mesh.material)].unlit;
        return !mesh.normals.empty() && !unlit;
    });
}

ToneMap toneMapFor(const Options& options, const Scene& scene) {
    const bool wanted = options.shading != Shading::Fixed && isLit(scene);
    return options.toneMap.value_or(wanted ? ToneMap::Soft : ToneMap::Cut);
}

} // namespace

koLinear::Vector upOf(const Options& options) {
    return options.up.value_or(koLinear::Vector(0.0, 1.0, 0.0));
}

std::optional<SkyLight> skyOf(const Options& options) {
    if (!options.hasSky())
        return std::nullopt;
    SkyLight sky;
    sky.heights = options.sky;
    sky.picture = options.skyPicture;
    sky.factor = options.exposure;
    sky.up = scaled(upOf(options), 1.0 / length(upOf(options)));
    sky.back = turned(levelFrontOf(sky.up), sky.up, -options.skyRotation * std::numbers::pi / 180.0);
    sky.right = cross(sky.up, sky.back);
    return sky;
}

Bounds drawnBounds(const Options& options, const Scene& scene, Bounds bounds) {
    if (options.particles)
        extendByParticles(bounds, scene, *options.particles);
    return bounds;
}

FrameLook lookOf(const Options& options, const Scene& scene) {
    FrameLook look;
    look.width = options.width;
    look.height = options.height;
    look.background = linearBackground(options.background);
    look.toneMap = toneMapFor(options, scene);
    look.wireframe = options.wireframe;
    look.lights = options.lights;
    look.culling = options.culling;
    look.grid = options.grid;
    look.axes = options.axes;
    look.ground = options.ground;
    look.ambientOcclusion = options.ambientOcclusion;
    look.sky = options.showSky;
    look.edges = options.edges;
    look.clip = options.clip;
    look.exposure = options.exposure;
    look.pointSize = options.pointSize;
    return look;
}

FrameLook enlarged(FrameLook look, int factor) {
    look.width *= factor;
    look.height *= factor;
    look.pointSize *= static_cast<float>(factor);
    look.lineWidth *= static_cast<float>(factor);
    return look;
}

Viewpoint chooseEye(const Options& options, const Scene& scene) {
    const double aspect = static_cast<double>(options.width) / options.height;
    if (options.camera)
        return eyeOf(findCamera(*options.camera, scene), scene.bounds());
    Outline outline = outlineOf(scene);
    if (options.turntable > 0)
        outline = turnedAbout(outline, centerOf(scene.bounds()),
                              scaled(upOf(options), 1.0 / length(upOf(options))));
    return placeEye({options.direction, options.eye, options.target, options.up, options.fieldOfView,
                     options.orthographic},
                    outline, aspect);
}

View chooseView(const Options& options, const Scene& scene, const Viewpoint& eye, const Bounds& bounds) {
    const double aspect = static_cast<double>(options.width) / options.height;
    if (options.camera)
        return viewThrough(findCamera(*options.camera, scene), bounds, aspect);
    return viewFrom(eye, bounds, aspect);
}

} // namespace orloview
