#include "Render.h"

#include "ExitCode.h"
#include "Frame.h"
#include "draw/CallCounter.h"

#include <charconv>
#include <cstdio>
#include <memory>

#include <gl/GLFunctionTable.h>
#include <gl/GLStartupContext.h>

namespace orloview {

namespace {

/// Above as many pixels a frame is drawn without supersampling: a float pixel takes 16 bytes, twice.
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

/// A framebuffer object with a float colour buffer, or one of bytes where there is none.
void createTarget(GLFrameBuffer& target, int width, int height) {
    GLint limit = 0;
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    if (!gl->usable(kCapFramebufferObject))
        throw Failure(kExitNoGL, "this OpenGL has no framebuffer objects (GL_EXT_framebuffer_object), which "
                                 "pictures are drawn in; --gl-info shows what it has");
    gl->glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE_EXT, &limit);
    if (width > limit || height > limit)
        throw Failure(kExitUsage, "--size " + std::to_string(width) + "x" + std::to_string(height) +
                                      ": this OpenGL draws at most " + std::to_string(limit) +
                                      " pixels each way");
    for (const RasterFormat color : {kRasterRGBA32F, kRasterRGBA8}) {
        if (color == kRasterRGBA32F && !gl->usable(kCapTextureFloat))
            continue;
        const koBufferFormat format(color, kRasterDepth24, kRasterNoStencil, kSamplingSingle,
                                    IHWTexture::kTexture2D);
        if (target.createOffscreen(format, static_cast<unsigned>(width), static_cast<unsigned>(height)) ==
            GLFrameBuffer::kSuccess)
            return;
    }
    throw Failure(kExitNoGL, "this OpenGL can't make a framebuffer of " + std::to_string(width) + "x" +
                                 std::to_string(height) +
                                 " pixels with colour and depth; try a smaller --size");
}

/// Pictures are averaged from 2 x 2 pixels each, where the driver and memory allow.
int supersampling(const Options& options) {
    GLint limit = 0;
    GLFunctionTable::fpGlobalFunctionTable->glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE_EXT, &limit);
    const bool fits = options.width * 2 <= limit && options.height * 2 <= limit &&
                      4.0 * options.width * options.height <= kMostPixels;
    return fits ? 2 : 1;
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

} // namespace

View chooseView(const Options& options, const Scene& scene) {
    const double aspect = static_cast<double>(options.width) / options.height;
    const Bounds bounds = scene.bounds();
    if (options.camera)
        return viewThrough(findCamera(*options.camera, scene), bounds, aspect);
    return placeView({options.eye, options.target, options.up, options.fieldOfView}, bounds, aspect);
}

Picture renderPicture(const Options& options, const Scene& scene, const View& view) {
    GLFrameBuffer target;
    const int factor = supersampling(options);
    createTarget(target, options.width * factor, options.height * factor);

    FrameLook look;
    look.width = options.width * factor;
    look.height = options.height * factor;
    look.background = linearBackground(options.background);
    look.wireframe = options.wireframe;
    look.pointSize *= static_cast<float>(factor);
    look.lineWidth *= static_cast<float>(factor);

    StudioLights lights;
    DrawableScene drawable(scene);
    if (options.stats)
        CallCounter::install();
    const int frames = options.stats ? 2 : 1;
    for (int frame = 1; frame <= frames; ++frame) {
        CallCounter::take();
        drawFrame(target, view, lights, drawable, look);
        if (options.stats)
            printStats(frame, CallCounter::take(), scene);
    }

    constexpr unsigned kRGBAFloats = 4;
    const std::unique_ptr<PixelArray2D> pixels(target.readColorBuffer(kRGBAFloats, 0, 0, 0, 0, nullptr));
    if (!pixels)
        throw Failure(kExitNoGL, "there is no memory for a picture of this size; try a smaller --size");
    return developPicture(static_cast<const float*>(pixels->data()), options.width, options.height, factor,
                          options.background[3] == 1.0F);
}

} // namespace orloview
