#include "CgBench.h"
#include "GroupBench.h"
#include "ShaderBench.h"

#include "framebuffer/GLFrameBuffer.h"
#include "gl/GLStartupContext.h"
#include "state/GLCamera.h"

#include <cstdio>

// What the library adds where a real driver does the work: groups drawn into the start-up context's own
// window, pixels read back from a framebuffer object, and whole frames of a turntable.

namespace {

constexpr int kSide = 512;

void benchReadBack(GLFrameBuffer& buffer) {
    buffer.makeCurrent();
    const struct {
        unsigned pixelType;
        GLenum type;
        const char* name;
    } kTypes[] = {{2, GL_UNSIGNED_BYTE, "read 512 x 512 RGBA bytes"},
                  {4, GL_FLOAT, "read 512 x 512 RGBA floats"}};
    for (const auto& t : kTypes) {
        const std::string name = t.name;
        const std::unique_ptr<PixelArray2D> target(buffer.readColorBuffer(t.pixelType, 0, 0, 0, 0, nullptr));
        const auto byHand = [&] {
            table().fglPixelStorei(GL_PACK_ALIGNMENT, 1);
            table().fglReadPixels(0, 0, kSide, kSide, GL_RGBA, t.type, target->data());
        };
        measure(name + "/library", [&] { buffer.readColorBuffer(t.pixelType, 0, 0, 0, 0, target.get()); });
        measure(name + "/by hand", byHand);
        measure(name + ", new array/library", [&] {
            const std::unique_ptr<PixelArray2D> made(
                buffer.readColorBuffer(t.pixelType, 0, 0, 0, 0, nullptr));
        });
        measure(name + ", new array/by hand", [&] {
            const auto made = std::make_unique_for_overwrite<std::byte[]>(target->byteCount());
            table().fglPixelStorei(GL_PACK_ALIGNMENT, 1);
            table().fglReadPixels(0, 0, kSide, kSide, GL_RGBA, t.type, made.get());
        });
    }
}

/// A frame of a turntable: buffer and camera bound, cleared, 100 groups drawn, read back.
void benchTurntableFrame(GLFrameBuffer& buffer) {
    constexpr size_t kGroups = 100;
    GLRouting routing = makeRouting();
    std::vector<std::unique_ptr<GeometryLogicalGroup>> groups(kGroups);
    for (auto& group : groups)
        group = makeGroup();
    const std::unique_ptr<PixelArray2D> target(buffer.readColorBuffer(2, 0, 0, 0, 0, nullptr));
    GLCamera camera;
    const auto clear = [] {
        table().fglViewport(0, 0, kSide, kSide);
        table().fglClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    };
    measure("turntable frame, 100 groups/library", [&] {
        buffer.makeCurrent();
        clear();
        camera.bind();
        for (const auto& group : groups)
            routing.drawGroup(group.get(), nullptr, nullptr, nullptr, 0, false);
        buffer.readColorBuffer(2, 0, 0, 0, 0, target.get());
    });
    std::vector<HandGroup> handGroups;
    for (const auto& group : groups)
        handGroups.push_back(handGroupOf(*group));
    measure("turntable frame, 100 groups/by hand", [&] {
        table().fglBindFramebufferEXT(GL_FRAMEBUFFER_EXT, buffer.fFramebufferId);
        table().fglDrawBuffer(GL_COLOR_ATTACHMENT0_EXT);
        clear();
        table().fglMatrixMode(GL_PROJECTION);
        table().fglLoadMatrixd(camera.fProjection.data());
        table().fglMatrixMode(GL_MODELVIEW);
        table().fglLoadMatrixd(koLinear::ProjMatrix(camera.fViewTransform).data());
        for (const HandGroup& group : handGroups)
            drawByHand(table(), group);
        table().fglPixelStorei(GL_PACK_ALIGNMENT, 1);
        table().fglReadPixels(0, 0, kSide, kSide, GL_RGBA, GL_UNSIGNED_BYTE, target->data());
    });
}

} // namespace

int main() {
    Display* display = XOpenDisplay(nullptr);
    if (!display) {
        std::fputs("orlodriverbench: no display\n", stderr);
        return 1;
    }
    auto* startup = new GLStartupContext(WindowWrapper(nullptr, 0, display), nullptr);
    startup->ref();
    if (!startup->valid || !startup->makeCurrent() || !table().ensureLiveMultitexture()) {
        std::fputs("orlodriverbench: no usable GL on this display\n", stderr);
        return 1;
    }
    measure("nothing/by hand", [] {});
    benchDrawGroup(1'000, "drawGroup, 1,000 groups");
    benchBindShader();
    benchBindCgProgram();
    benchBindCgShader();
    {
        GLFrameBuffer buffer;
        const koBufferFormat format(kRasterRGBA8, kRasterDepth24, kRasterNoStencil, kSamplingSingle,
                                    IHWTexture::kTexture2D);
        if (buffer.createOffscreen(format, kSide, kSide) != GLFrameBuffer::kSuccess) {
            std::fputs("orlodriverbench: no framebuffer objects\n", stderr);
            return 1;
        }
        benchReadBack(buffer);
        benchTurntableFrame(buffer);
    }
    startup->unref();
    XCloseDisplay(display);
}
