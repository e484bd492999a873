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

/// As many pixels of a frame are drawn at once: colour and depth take 12 bytes each.
constexpr double kMostPixels = 34e6;

/// The side of the tiles of larger frames, in their pixels.
constexpr int kLargeTile = 4096;

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

/// Reads a tile a strip at a time, so that the whole of it never lies in memory as floats.
void develop(Canvas& canvas, const Block& tile, int factor, PictureFile& picture) {
    constexpr unsigned kRGBAFloats = 4;
    constexpr int kStripRows = 32;
    for (int first = 0; first < tile.height; first += kStripRows) {
        const int rows = std::min(kStripRows, tile.height - first);
        const std::unique_ptr<PixelArray2D> strip(
            canvas.target().readColorBuffer(kRGBAFloats, 0, static_cast<unsigned>(first * factor),
                                            tile.width * factor, rows * factor, nullptr));
        if (!strip)
            throw Failure(kExitNoGL, "there is no memory for a picture of this size; try a smaller --size");
        picture.add({tile.x, first, tile.width, rows}, static_cast<const float*>(strip->data()), factor);
    }
}

/// How large tiles are, in pixels of the picture.
int tileSide(const FrameLook& look, const Sampling& sampling) {
    const int factor = sampling.samples;
    const int limit = Canvas::largestSide() / factor;
    if (sampling.tile > 0)
        return std::min(sampling.tile, limit);
    const double pixels = static_cast<double>(look.width) * look.height * factor * factor;
    const int longest = std::max(look.width, look.height);
    return longest <= limit && pixels <= kMostPixels ? longest : std::min(kLargeTile / factor, limit);
}

/// A frame that a viewport may be as large as, and the view of it.
struct FramePart {
    View view;
    FrameLook look;
};

/// The part of a frame beyond GL's viewports that holds what begins at x, y; the whole of a smaller one.
FramePart partAt(const View& view, const FrameLook& large, int x, int y, int tile) {
    const int most = Canvas::largestFrame() / tile * tile;
    FramePart part{view, large};
    const int left = x / most * most;
    const int bottom = y / most * most;
    part.look.left = x - left;
    part.look.bottom = y - bottom;
    if (large.width <= most && large.height <= most)
        return part;
    part.look.width = std::min(most, large.width - left);
    part.look.height = std::min(most, large.height - bottom);
    const auto scale = [](int whole, int side) { return static_cast<double>(whole) / side; };
    const auto shift = [](int whole, int first, int side) {
        return static_cast<double>(whole - 2 * first) / side - 1.0;
    };
    koLinear::ProjMatrix window;
    window[0][0] = scale(large.width, part.look.width);
    window[1][1] = scale(large.height, part.look.height);
    window[3][0] = shift(large.width, left, part.look.width);
    window[3][1] = shift(large.height, bottom, part.look.height);
    part.view.projection = view.projection.then(window);
    return part;
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

void prepare(DrawableScene& drawable, bool stats, Progress& progress) {
    if (stats)
        CallCounter::install();
    CallCounter::take();
    progress.begin(Progress::Stage::Upload);
    drawable.upload(progress.report());
}

void renderPicture(const View& view, const FrameContent& content, const FrameLook& look,
                   const Sampling& sampling, bool stats, PictureFile& picture, Progress& progress) {
    const int factor = sampling.samples;
    const FrameLook large = enlarged(look, factor);
    const int side = tileSide(look, sampling);
    Canvas canvas(std::min(side, look.width) * factor, std::min(side, look.height) * factor);
    GLStartupContext::fpGlobalGLStartupContext->makeCurrent();

    const auto draw = [&](int x, int y) {
        const FramePart part = partAt(view, large, x * factor, y * factor, side * factor);
        drawFrame(canvas.target(), part.view, content, part.look);
    };
    const bool isOneTile = look.width <= side && look.height <= side;
    if (stats && isOneTile) { // twice, to show what only the first costs
        draw(0, 0);
        progress.clear();
        printStats(1, CallCounter::take(), content.drawable.scene());
    }
    // Bands from the top down, as pictures are written.
    for (int top = look.height; top > 0;) {
        const int bottom = (top - 1) / side * side;
        picture.beginBand(top - bottom);
        for (int x = 0; x < look.width; x += side) {
            draw(x, bottom);
            develop(canvas, {x, 0, std::min(side, look.width - x), top - bottom}, factor, picture);
        }
        picture.endBand();
        top = bottom;
        progress.update(1.0 - static_cast<double>(top) / look.height);
    }
    if (stats) {
        progress.clear();
        printStats(isOneTile ? 2 : 1, CallCounter::take(), content.drawable.scene());
    }
}

void printWarnings(const DrawableScene& drawable, Progress& progress) {
    progress.clear();
    for (const std::string& warning : drawable.warnings())
        std::fprintf(stderr, "orloview: %s\n", warning.c_str());
}

} // namespace orloview
