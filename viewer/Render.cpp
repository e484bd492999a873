#include "Render.h"

#include "ExitCode.h"
#include "draw/CallCounter.h"
#include "draw/Canvas.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <memory>

#include <gl/GLFunctionTable.h>
#include <gl/GLStartupContext.h>

namespace orloview {

namespace {

/// Above as many pixels a frame is drawn without supersampling: colour and depth take 12 bytes each.
constexpr double kMostPixels = 34e6;

const Camera& findCamera(const std::string& wanted, const Scene& scene) {
    for (const Camera& camera : scene.cameras) {
        if (camera.name == wanted)
            return camera;
    }
    size_t index = 0;
    const auto [end, error] = std::from_chars(wanted.data(), wanted.data() + wanted.size(), index);
    if (error == std::errc() && end == wanted.data() + wanted.size() && index < scene.cameras.size())
        return scene.cameras[index];
    if (scene.cameras.empty())
        throw Failure(kExitUsage, "--camera " + wanted + ": the model has no camera; leave --camera out");
    std::string known;
    for (size_t i = 0; i < scene.cameras.size(); ++i)
        known += (i ? ", " : "") + std::to_string(i) +
                 (scene.cameras[i].name.empty() ? "" : " (" + scene.cameras[i].name + ")");
    throw Failure(kExitUsage, "--camera " + wanted + ": the model has no such camera; it has " + known);
}

koColor::Color linearBackground(const std::array<float, 4>& srgb) {
    const float alpha = srgb[3];
    return {decodeSrgb(srgb[0]) * alpha, decodeSrgb(srgb[1]) * alpha, decodeSrgb(srgb[2]) * alpha, alpha};
}

void printStats(int frame, const CallCounts& counts, const Scene& scene) {
    std::fprintf(stderr,
                 "frame %d: %zu groups, %zu triangles, %zu lines, %zu points, %zu draw calls, %zu uploads, "
                 "%zu bytes uploaded, %zu GL names made\n",
                 frame, scene.instances.size(), scene.count(Topology::Triangles),
                 scene.count(Topology::Lines), scene.count(Topology::Points), counts.drawCalls,
                 counts.uploads, counts.uploadedBytes, counts.namesGenerated);
}

/// Reads the frame a band at a time, so that the whole of it never lies in memory as floats.
Picture develop(Canvas& canvas, const FrameLook& look, int factor, const ProgressReport& report) {
    constexpr unsigned kRGBAFloats = 4;
    constexpr int kBandRows = 32;
    Picture picture(look.width, look.height);
    for (int first = 0; first < look.height; first += kBandRows) {
        const int rows = std::min(kBandRows, look.height - first);
        const std::unique_ptr<PixelArray2D> band(
            canvas.target().readColorBuffer(kRGBAFloats, 0, static_cast<unsigned>(first * factor),
                                            look.width * factor, rows * factor, nullptr));
        if (!band)
            throw Failure(kExitNoGL, "there is no memory for a picture of this size; try a smaller --size");
        developRows(picture, first, rows, static_cast<const float*>(band->data()), factor,
                    look.background[3] == 1.0F);
        tell(report, first + rows, look.height);
    }
    return picture;
}

} // namespace

koLinear::Vector upOf(const Options& options) {
    return options.up.value_or(koLinear::Vector(0.0, 1.0, 0.0));
}

FrameLook lookOf(const Options& options) {
    FrameLook look;
    look.width = options.width;
    look.height = options.height;
    look.background = linearBackground(options.background);
    look.wireframe = options.wireframe;
    look.lights = options.lights;
    look.culling = options.culling;
    look.grid = options.grid;
    look.axes = options.axes;
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
    const Bounds bounds = scene.bounds();
    if (options.camera)
        return eyeOf(findCamera(*options.camera, scene), bounds);
    return placeEye({options.eye, options.target, options.up, options.fieldOfView, options.orthographic},
                    bounds, aspect);
}

View chooseView(const Options& options, const Scene& scene, const Bounds& bounds) {
    const double aspect = static_cast<double>(options.width) / options.height;
    if (options.camera)
        return viewThrough(findCamera(*options.camera, scene), bounds, aspect);
    return viewFrom(chooseEye(options, scene), bounds, aspect);
}

int supersampling(const FrameLook& look) {
    const int limit = Canvas::largestSide();
    const bool fits =
        look.width * 2 <= limit && look.height * 2 <= limit && 4.0 * look.width * look.height <= kMostPixels;
    return fits ? 2 : 1;
}

Picture renderPicture(const View& view, const FrameContent& content, const FrameLook& look, bool stats,
                      Progress& progress) {
    const int factor = supersampling(look);
    const FrameLook large = enlarged(look, factor);
    Canvas canvas(large.width, large.height);
    GLStartupContext::fpGlobalGLStartupContext->makeCurrent();

    if (stats)
        CallCounter::install();
    CallCounter::take();
    progress.begin(Progress::Stage::Upload);
    content.drawable.upload(progress.report());
    progress.begin(Progress::Stage::Draw);
    const int frames = stats ? 2 : 1;
    for (int frame = 1; frame <= frames; ++frame) {
        drawFrame(canvas.target(), view, content, large);
        if (stats) {
            progress.clear();
            printStats(frame, CallCounter::take(), content.drawable.scene());
        }
    }

    return develop(canvas, look, factor, progress.report());
}

void printWarnings(const DrawableScene& drawable, Progress& progress) {
    progress.clear();
    for (const std::string& warning : drawable.warnings())
        std::fprintf(stderr, "orloview: %s\n", warning.c_str());
}

} // namespace orloview
