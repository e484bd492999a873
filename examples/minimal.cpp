// A minimal host: draws a lit, textured ball offscreen and writes it to standard output as a PPM picture.
//
//     xvfb-run ./minimal > ball.ppm
//
// Every step that a host owes the library is here, in order; docs/example.md walks through them.

#include <orlogl.h>
#include <orlohost.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <memory>
#include <numbers>
#include <utility>
#include <vector>

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;

/// Each pixel of the picture is the mean of so many each way of the buffer.
constexpr int kSamples = 2;

/// A broken request is reported late by the X server and ends a process by default; a host decides otherwise.
int reportXError(Display*, XErrorEvent* event) {
    std::fprintf(stderr, "minimal: X error %d\n", event->error_code);
    return 0;
}

/// The start-up context: it finds OpenGL, and framebuffer objects live in it.
bool startUp(Display* display) {
    auto* startup =
        new GLStartupContext(WindowWrapper(nullptr, DefaultRootWindow(display), display), nullptr);
    startup->ref();
    GLStartupContext::fpGlobalGLStartupContext = startup;
    return startup->makeCurrent() && GLFunctionTable::fpGlobalFunctionTable->ensureLiveMultitexture();
}

/// A ball of radius 1: streams of positions, normals and texture coordinates, and the triangles between.
void fillBall(GeometryLogicalGroup& group) {
    constexpr unsigned kRings = 32;
    constexpr unsigned kSides = 64;
    std::vector<float> positions;
    std::vector<float> coordinates;
    std::vector<unsigned> triangles;
    for (unsigned ring = 0; ring <= kRings; ++ring) {
        for (unsigned side = 0; side <= kSides; ++side) {
            const float v = static_cast<float>(ring) / kRings;
            const float u = static_cast<float>(side) / kSides;
            const float down = v * std::numbers::pi_v<float>;
            const float round = 2.0F * u * std::numbers::pi_v<float>;
            positions.insert(positions.end(), {std::sin(down) * std::sin(round), std::cos(down),
                                               std::sin(down) * std::cos(round)});
            coordinates.insert(coordinates.end(), {8.0F * u, 4.0F * v});
            const unsigned here = ring * (kSides + 1) + side;
            const unsigned below = here + kSides + 1;
            if (ring < kRings && side < kSides)
                triangles.insert(triangles.end(), {here, below, below + 1, here, below + 1, here + 1});
        }
    }
    group.addStream(GeometryData::kPosition, 3, positions);
    group.addStream(GeometryData::kNormal, 3, positions); // a ball's normals are its places
    group.addStream(GeometryData::kTexCoord, 2, coordinates);
    group.addIndexRecord(GeometryDataIndex::kTriangles, triangles);
}

/// Which stream feeds what of GL.
void route(GLRouting& routing) {
    const std::pair<GLRouting::GLInterpolant, GeometryData::DataType> kRoutes[] = {
        {GLRouting::kPosition, GeometryData::kPosition},
        {GLRouting::kNormal, GeometryData::kNormal},
        {GLRouting::kTexCoord0, GeometryData::kTexCoord}};
    for (const auto& [slot, type] : kRoutes) {
        routing.fSlots[slot].fMode = GLRouting::kFromGeometry;
        routing.fSlots[slot].fDataType = type;
    }
    GLRouting::fsUseObjectsForData = GLRouting::fsUseObjectsForIndexing = true;
}

/// A board of two colours, of 2 x 2 fields; the texture repeats.
GLTexture2D* makeBoard() {
    constexpr int kSide = 64;
    std::vector<unsigned char> texels;
    for (int i = 0; i < kSide * kSide; ++i) {
        const bool isLight = (i % kSide < kSide / 2) == (i / kSide < kSide / 2);
        if (isLight)
            texels.insert(texels.end(), {250, 235, 205, 255});
        else
            texels.insert(texels.end(), {205, 70, 40, 255});
    }
    auto* board = new GLTexture2D(kRasterRGBA8, false);
    board->ref();
    board->GLloadImageMipmap(texels.data(), kSide, kSide);
    GLTexUsage::setMinMagFilter(GL_TEXTURE_2D, IHWTexUsage::kLinearMipmapLinear, IHWTexUsage::kLinear);
    return board;
}

/// Looks at the middle from 4.4 units away, through 28 degrees.
void setCamera(GLCamera& camera) {
    constexpr double kNear = 2.0;
    constexpr double kFar = 6.0;
    const double scale = 1.0 / std::tan(14.0 * std::numbers::pi / 180.0);
    camera.fViewTransform = koLinear::AffineMatrix::translation(0.0, 0.0, -4.4);
    camera.fProjection[0][0] = scale * kHeight / kWidth;
    camera.fProjection[1][1] = scale;
    camera.fProjection[2][2] = (kFar + kNear) / (kNear - kFar);
    camera.fProjection[2][3] = -1.0;
    camera.fProjection[3][2] = 2.0 * kFar * kNear / (kNear - kFar);
    camera.fProjection[3][3] = 0.0;
}

void setLight(GLLight& light) {
    light.setLightType(IHWLight::kLightDirectional);
    const double from[3] = {-0.5, 0.6, 0.8}; // a directional light shines from its own z
    std::copy(std::begin(from), std::end(from), light.fLightTransform[2]);
    light.fDiffuseColor = koColor::Color(1.2F, 1.18F, 1.15F);
}

void drawFrame(GLFrameBuffer& buffer, GLRouting& routing, GeometryLogicalGroup& ball, GLTexture2D& board) {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    buffer.makeCurrent();
    // The context's viewport is still that of the 10 x 10 start-up window.
    gl->glViewport(0, 0, kWidth * kSamples, kHeight * kSamples);
    gl->glClearColor(0.16F, 0.17F, 0.19F, 1.0F);
    gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    for (const GLenum capability : {GL_DEPTH_TEST, GL_LIGHTING, GL_NORMALIZE, GL_TEXTURE_2D})
        gl->glEnable(capability);

    GLPassState pass;
    pass.setDepthMask(true);
    pass.applyGL(false);

    GLCamera camera;
    setCamera(camera);
    camera.bind();

    GLLight light;
    setLight(light);
    GLLighting lighting;
    lighting.bind(0, &light);

    gl->glRotatef(20.0F, 1.0F, 0.0F, 0.3F); // the ball's own place, on the model-view matrix
    board.bind();
    routing.drawGroup(&ball, nullptr, nullptr, nullptr, 0, false);
    lighting.unbindAll();
}

void writePpm(const PixelArray2D& pixels) {
    std::printf("P6\n%d %d\n255\n", kWidth, kHeight);
    const auto* bytes = static_cast<const unsigned char*>(pixels.data());
    const auto at = [&](int x, int y, int channel) { return bytes[(y * pixels.width() + x) * 3 + channel]; };
    for (int y = kHeight - 1; y >= 0; --y) { // GL counts rows from the bottom
        for (int i = 0; i < kWidth * 3; ++i) {
            int sum = 0;
            for (int sample = 0; sample < kSamples * kSamples; ++sample)
                sum += at(i / 3 * kSamples + sample % kSamples, y * kSamples + sample / kSamples, i % 3);
            std::putchar(sum / (kSamples * kSamples));
        }
    }
}

} // namespace

int main() {
    XSetErrorHandler(reportXError);
    Display* display = XOpenDisplay(nullptr);
    if (!display || !startUp(display)) {
        std::fputs("minimal: no X display with OpenGL; try xvfb-run ./minimal\n", stderr);
        return 1;
    }
    {
        GLFrameBuffer buffer;
        const koBufferFormat format(kRasterRGBA8, kRasterDepth24, kRasterNoStencil, kSamplingSingle,
                                    IHWTexture::kTexture2D);
        if (buffer.createOffscreen(format, kWidth * kSamples, kHeight * kSamples) != GLFrameBuffer::kSuccess)
            return 1;
        GeometryLogicalGroup ball;
        fillBall(ball);
        GLRouting routing;
        route(routing);
        GLTexture2D* board = makeBoard();
        drawFrame(buffer, routing, ball, *board);
        const std::unique_ptr<PixelArray2D> pixels(buffer.readColorBuffer(1, 0, 0, 0, 0, nullptr));
        writePpm(*pixels);
        board->unref();
    } // buffers, groups and textures go while their context is current
    GLStartupContext::fpGlobalGLStartupContext->unref();
    XCloseDisplay(display);
    return 0;
}
