// Pbuffers: a drawable outside any window, with a context of its own, by GLX 1.3 or by SGIX configurations.

#include "framebuffer/DrawableAttributes.h"
#include "framebuffer/GLFrameBuffer.h"
#include "gl/GLFunctionTable.h"
#include "gl/GLStartupContext.h"

#include <algorithm>
#include <limits>
#include <new>

namespace {

struct Size {
    unsigned width;
    unsigned height;
};

constexpr unsigned kUnlimited = std::numeric_limits<unsigned>::max();

/// Drivers that make pbuffers of any size tell a limit of 0: that is none.
unsigned limitOf(GLFunctionTable& gl, Display* display, void* configuration, int attribute) {
    int value = 0;
    gl.glXGetFBConfigAttrib(display, configuration, attribute, &value);
    return value > 0 ? static_cast<unsigned>(value) : kUnlimited;
}

/// The largest pbuffer of a configuration.
Size largestOf(GLFunctionTable& gl, Display* display, void* configuration) {
    const unsigned width = limitOf(gl, display, configuration, GLX_MAX_PBUFFER_WIDTH);
    return {width, limitOf(gl, display, configuration, GLX_MAX_PBUFFER_HEIGHT)};
}

Size cutTo(Size largest, Size wanted) {
    return {std::min(wanted.width, largest.width), std::min(wanted.height, largest.height)};
}

/// Cut to a square m x m that the driver has. Oddity: where the largest side is nearer to the power of two
/// below it, m is half of it and not that power, and the height is cut by the *width* that was wanted: a host
/// that asks for wide pictures relies on both to get its textures' aspect.
Size cutToSquare(Size largest, Size wanted) {
    unsigned m = std::min(largest.width, largest.height);
    if (m > 1 && m != kUnlimited) {
        uint64_t power = 1;
        while (power < m)
            power *= 2;
        if (power - m > m - power / 2)
            m /= 2;
    }
    return {std::min(m, wanted.width), m < wanted.width ? m : wanted.height};
}

int visualValue(GLFunctionTable& gl, Display* display, XVisualInfo* visual, int attribute) {
    int value = 0;
    gl.glXGetConfig(display, visual, attribute, &value);
    return value;
}

RasterFormat colorFormatOf(int redBits, int alphaBits) {
    if (redBits == 0)
        return alphaBits != 0 ? kRasterAlpha8 : kRasterNoColor;
    if (redBits == 8)
        return alphaBits != 0 ? kRasterRGBA8 : kRasterRGB8;
    return kRasterNoColor;
}

RasterFormat depthFormatOf(int bits) {
    if (bits == 16)
        return kRasterDepth16;
    return bits == 24 ? kRasterDepth24 : kRasterNoDepth;
}

} // namespace

/// What a pbuffer is asked to be, and what a road to it comes up with beside pbuffer and context.
struct GLFrameBuffer::PbufferParts {
    unsigned width = 0;
    unsigned height = 0;
    bool doubleBuffered = false;
    bool squareLimit = false;
    void** configurations = nullptr;
    XVisualInfo* visual = nullptr;
};

uint32_t GLFrameBuffer::createOffscreen(const WindowWrapper& window, const koBufferFormat& format,
                                        unsigned width, unsigned height, bool squareLimit) {
    PbufferParts parts{width, height, false, squareLimit};
    return createPbuffer(window, format, parts);
}

uint32_t GLFrameBuffer::createPbufferPortably(const WindowWrapper& window, const koBufferFormat& format,
                                              unsigned width, unsigned height) {
    PbufferParts parts{width, height, true, false};
    const GLXPbuffer earlier = fPbuffer; // of a buffer that wasn't released
    const uint32_t result = createPbuffer(window, format, parts);
    if (result == kSuccess)
        return result;
    if (fPbuffer != 0 && fPbuffer != earlier && fFunctionTable->usable(kCapGLXPbuffer))
        destroyPbuffer();
    fPbuffer = earlier;
    for (void* list : {static_cast<void*>(parts.configurations), static_cast<void*>(parts.visual)})
        if (list)
            XFree(list);
    return result;
}

/// Of a GLX that makes pbuffers and has nothing to destroy them, it stays until the display closes.
void GLFrameBuffer::destroyPbuffer() {
    if (fFunctionTable->fglXDestroyPbuffer)
        fFunctionTable->glXDestroyPbuffer(fDisplay, fPbuffer);
}

uint32_t GLFrameBuffer::createPbuffer(const WindowWrapper& window, const koBufferFormat& format,
                                      PbufferParts& parts) {
    fRequestedFormat = format;
    fDisplay = window.display();
    if (!GLStartupContext::fpGlobalGLStartupContext)
        GLStartupContext::fpGlobalGLStartupContext = new (std::nothrow) GLStartupContext(window, nullptr);
    if (!GLStartupContext::fpGlobalGLStartupContext)
        return kNoContextOrSize;
    referenceStartupContext();
    GLStartupContext::fpGlobalGLStartupContext->makeCurrent();
    if (!sharedContext())
        return kNoContextOrSize;
    fFunctionTable = GLFunctionTable::fpGlobalFunctionTable;
    if (!fFunctionTable || !fDisplay)
        return kNoContextOrSize;
    fKind = kOffscreen;
    fFramebufferObjectFlag = false;
    fGLXDrawableFlag = true;

    GLFunctionTable& gl = *fFunctionTable;
    if (!gl.fglXQueryExtensionsString)
        return kUnsupported;
    const auto attributes = DrawableAttributes::configuration(gl, fDisplay, GLX_WINDOW_BIT | GLX_PBUFFER_BIT,
                                                              parts.doubleBuffered, fRequestedFormat);
    const uint32_t result = createPbufferDrawable(attributes, parts);
    if (result != kSuccess)
        return result;
    readActualFormat(parts.visual);
    fWindow = WindowWrapper(window.widget(), window.window(), window.display());
    fWidth = parts.width;
    fHeight = parts.height;
    XFree(parts.configurations);
    XFree(parts.visual);
    fOwnsDrawable = true;
    return kSuccess;
}

uint32_t GLFrameBuffer::createPbufferDrawable(const DrawableAttributes& attributes, PbufferParts& parts) {
    const GLFunctionTable& gl = *fFunctionTable;
    if (!gl.fglXGetFBConfigAttrib || !gl.fglXGetVisualFromFBConfig || !gl.fglXGetConfig)
        return kUnsupported;
    if (gl.usable(kCapGLXFBConfig) && gl.usable(kCapGLXPbuffer) && gl.usable(kCapGLXNewContext))
        return createPbufferByConfiguration(attributes, parts);
    if (gl.usable(kCapSGIXChooseFBConfig) && gl.usable(kCapSGIXPbuffer) &&
        gl.usable(kCapSGIXContextWithConfig))
        return createPbufferBySGIX(attributes, parts);
    return kUnsupported;
}

uint32_t GLFrameBuffer::createPbufferByConfiguration(DrawableAttributes attributes, PbufferParts& parts) {
    GLFunctionTable& gl = *fFunctionTable;
    int count = attributes.count;
    parts.configurations =
        gl.glXChooseFBConfig(fDisplay, DefaultScreen(fDisplay), attributes.values.data(), &count);
    if (!parts.configurations || count == 0)
        return kFormat;
    void* configuration = parts.configurations[0];
    const Size largest = largestOf(gl, fDisplay, configuration);
    const Size size = (parts.squareLimit ? cutToSquare : cutTo)(largest, {parts.width, parts.height});
    const int pbuffer[] = {GLX_PBUFFER_WIDTH,
                           static_cast<int>(size.width),
                           GLX_PBUFFER_HEIGHT,
                           static_cast<int>(size.height),
                           GLX_LARGEST_PBUFFER,
                           0,
                           GLX_PRESERVED_CONTENTS,
                           0,
                           0};
    parts.width = size.width;
    parts.height = size.height;
    fPbuffer = gl.glXCreatePbuffer(fDisplay, configuration, pbuffer);
    parts.visual = gl.glXGetVisualFromFBConfig(fDisplay, configuration);
    if (fPbuffer == 0 || !parts.visual) {
        fKind = kNotCreated;
        return kNoBuffer;
    }
    fContext = gl.glXCreateNewContext(fDisplay, configuration, GLX_RGBA_TYPE, sharedContext(), True);
    return fContext ? kSuccess : kNoContextOrSize;
}

uint32_t GLFrameBuffer::createPbufferBySGIX(DrawableAttributes attributes, PbufferParts& parts) {
    GLFunctionTable& gl = *fFunctionTable;
    int count = attributes.count;
    parts.configurations =
        gl.glXChooseFBConfigSGIX(fDisplay, DefaultScreen(fDisplay), attributes.values.data(), &count);
    if (!parts.configurations || count == 0)
        return kFormat;
    void* configuration = parts.configurations[0];
    const Size size = cutTo(largestOf(gl, fDisplay, configuration), {parts.width, parts.height});
    // Oddity: the list that chose the configuration: it says of a pbuffer what it says of a drawable, and old
    // servers size their ancillary buffers by it.
    parts.width = size.width;
    parts.height = size.height;
    fPbuffer = gl.glXCreateGLXPbufferSGIX(fDisplay, configuration, size.width, size.height,
                                          attributes.values.data());
    if (fPbuffer != 0)
        parts.visual = gl.glXGetVisualFromFBConfig(fDisplay, configuration);
    if (!parts.visual) {
        fKind = kNotCreated;
        return kNoBuffer;
    }
    fContext =
        gl.glXCreateContextWithConfigSGIX(fDisplay, configuration, GLX_RGBA_TYPE, sharedContext(), True);
    return fContext ? kSuccess : kNoContextOrSize;
}

void GLFrameBuffer::readActualFormat(XVisualInfo* visual) {
    const auto value = [&](int attribute) {
        return visualValue(*fFunctionTable, fDisplay, visual, attribute);
    };
    const int red = value(GLX_RED_SIZE);
    fActualFormat.fColorFormat = colorFormatOf(red, value(GLX_ALPHA_SIZE));
    fActualFormat.fDepthFormat = depthFormatOf(value(GLX_DEPTH_SIZE));
    fActualFormat.fStencilFormat = stencilFormatOf(value(GLX_STENCIL_SIZE));
    fActualFormat.fSamplingType = value(GLX_SAMPLE_BUFFERS) == 0 ? kSamplingSingle : kSamplingMultiple;
}
