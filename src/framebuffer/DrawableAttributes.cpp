#include "framebuffer/DrawableAttributes.h"

#include "gl/GLFunctionTable.h"

#include <cstring>

namespace {

int colorBits(RasterFormat color) {
    return color == kRasterRGBA32F ? 32 : 8;
}

int depthBits(RasterFormat depth) {
    return depth == kRasterDepth24 ? 24 : 16;
}

/// By format, from kRasterStencil1 on.
constexpr int kStencilBits[] = {1, 4, 8, 16};
static_assert(kRasterStencil16 - kRasterStencil1 == 3);

int stencilBits(RasterFormat stencil) {
    return stencil >= kRasterStencil1 && stencil <= kRasterStencil16 ? kStencilBits[stencil - kRasterStencil1]
                                                                     : 0;
}

/// How many samples the current context has, where there are any and somebody asks for them; 0 otherwise.
struct Multisampling {
    GLint buffers = 0;
    GLint samples = 0;
};

Multisampling multisamplingFor(GLFunctionTable& gl, Display* display, const koBufferFormat& format) {
    Multisampling found;
    const char* extensions = gl.glXQueryExtensionsString(display, DefaultScreen(display));
    const bool offered = extensions && std::strstr(extensions, "GLX_ARB_multisample");
    if (!offered || format.fSamplingType == kSamplingSingle)
        return found;
    gl.glGetIntegerv(GL_SAMPLE_BUFFERS, &found.buffers);
    if (found.buffers != 0)
        gl.glGetIntegerv(GL_SAMPLES, &found.samples);
    return found;
}

} // namespace

void DrawableAttributes::add(int attribute, int value) {
    values[count++] = attribute;
    values[count++] = value;
}

void DrawableAttributes::addSizes(const koBufferFormat& format) {
    for (int channel : {GLX_RED_SIZE, GLX_GREEN_SIZE, GLX_BLUE_SIZE, GLX_ALPHA_SIZE})
        add(channel, colorBits(format.fColorFormat));
    add(GLX_DEPTH_SIZE, depthBits(format.fDepthFormat));
    add(GLX_STENCIL_SIZE, stencilBits(format.fStencilFormat));
}

DrawableAttributes DrawableAttributes::configuration(GLFunctionTable& gl, Display* display, int drawableTypes,
                                                     bool doubleBuffered, const koBufferFormat& format) {
    const Multisampling multisampling = multisamplingFor(gl, display, format);
    DrawableAttributes wanted;
    wanted.add(GLX_DRAWABLE_TYPE, drawableTypes);
    wanted.add(GLX_DOUBLEBUFFER, doubleBuffered ? 1 : 0);
    wanted.add(GLX_RENDER_TYPE, GLX_RGBA_BIT);
    wanted.addSizes(format);
    if (multisampling.buffers != 0) {
        // GL's names and not GLX's, which look like a slip. Choosers that don't know them pass them over, so
        // hosts get a drawable without samples where one with samples could not be had.
        wanted.add(GL_SAMPLE_BUFFERS, 1);
        wanted.add(GL_SAMPLES, multisampling.samples);
    }
    return wanted;
}

RasterFormat stencilFormatOf(int bits) {
    for (uint32_t format = kRasterStencil1; format <= kRasterStencil16; ++format) {
        if (kStencilBits[format - kRasterStencil1] == bits)
            return static_cast<RasterFormat>(format);
    }
    return kRasterNoStencil;
}
