// A minimal host: draws one lit triangle offscreen and writes it to standard output as a PPM picture.
//
//     xvfb-run ./minimal > triangle.ppm
//
// Every step that a host owes the library is here, in order.

#include <orlogl.h>
#include <orlohost.h>

#include <cstdio>
#include <memory>
#include <vector>

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;

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

void fillTriangle(GeometryLogicalGroup& group) {
    group.addStream(GeometryData::kPosition, 3, {-1.0F, -0.8F, 0.0F, 1.0F, -0.8F, 0.0F, 0.0F, 0.9F, 0.0F});
    group.addStream(GeometryData::kNormal, 3, {-0.5F, 0.0F, 0.9F, 0.5F, 0.0F, 0.9F, 0.0F, 0.4F, 0.9F});
    group.addIndexRecord(GeometryDataIndex::kTriangles, {0, 1, 2});
}

void drawFrame(GLFrameBuffer& buffer, GLRouting& routing, GeometryLogicalGroup& group) {
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    buffer.makeCurrent();
    // The context's viewport is still that of the 10 x 10 start-up window.
    gl->glViewport(0, 0, kWidth, kHeight);
    gl->glClearColor(0.1F, 0.1F, 0.12F, 1.0F);
    gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    gl->glEnable(GL_LIGHTING);
    gl->glEnable(GL_NORMALIZE);

    GLPassState pass;
    pass.setDepthMask(true);
    pass.applyGL(false);

    GLCamera camera; // identity: x and y from -1 to 1
    camera.bind();

    GLLight light;
    light.setLightType(IHWLight::kLightDirectional);
    light.fDiffuseColor = koColor::Color(1.0F, 0.6F, 0.2F);
    GLLighting lighting;
    lighting.bind(0, &light);

    routing.drawGroup(&group, nullptr, nullptr, nullptr, 0, false);
    lighting.unbindAll();
}

void writePpm(const PixelArray2D& pixels) {
    std::printf("P6\n%d %d\n255\n", pixels.width(), pixels.height());
    const auto* bytes = static_cast<const unsigned char*>(pixels.data());
    const size_t rowBytes = static_cast<size_t>(pixels.width()) * 3;
    for (int row = pixels.height() - 1; row >= 0; --row) // GL counts rows from the bottom
        std::fwrite(bytes + static_cast<size_t>(row) * rowBytes, 1, rowBytes, stdout);
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
        if (buffer.createOffscreen(format, kWidth, kHeight) != GLFrameBuffer::kSuccess)
            return 1;
        GeometryLogicalGroup group;
        fillTriangle(group);
        GLRouting routing;
        for (const auto& [slot, type] : {std::pair(GLRouting::kPosition, GeometryData::kPosition),
                                         std::pair(GLRouting::kNormal, GeometryData::kNormal)}) {
            routing.fSlots[slot].fMode = GLRouting::kFromGeometry;
            routing.fSlots[slot].fDataType = type;
        }
        GLRouting::fsUseObjectsForData = GLRouting::fsUseObjectsForIndexing = true;
        drawFrame(buffer, routing, group);
        const std::unique_ptr<PixelArray2D> pixels(buffer.readColorBuffer(1, 0, 0, 0, 0, nullptr));
        writePpm(*pixels);
    } // buffers and groups go while their context is current
    GLStartupContext::fpGlobalGLStartupContext->unref();
    XCloseDisplay(display);
    return 0;
}
