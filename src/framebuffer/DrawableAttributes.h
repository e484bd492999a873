#pragma once

#include "gl/EntryMacros.h"
#include "gl/GLStartupContext.h"
#include "orlohost/PixelArray2D.h"

#include <array>

class GLFunctionTable;

/// What windows and pbuffers ask GLX for: pairs of attribute and value, with a 0 behind the last.
struct DrawableAttributes {
    std::array<int, 25> values = {};
    int count = 0;

    void add(int attribute, int value);

    /// Colour, depth and stencil of the format.
    void addSizes(const koBufferFormat& format);

    /// The list for the choosers of configurations: drawables of these types (GLX_WINDOW_BIT ...) in RGBA
    /// with the sizes of the format, and as many samples as the current context has, where the display offers
    /// multisampling and the format asks for it.
    static DrawableAttributes configuration(GLFunctionTable& gl, Display* display, int drawableTypes,
                                            bool doubleBuffered, const koBufferFormat& format);
};

/// The format of a stencil of this many bits; kRasterNoStencil where there is none.
RasterFormat stencilFormatOf(int bits);

/// What the contexts of all frame buffers share objects with.
inline GLXContext sharedContext() {
    return GLStartupContext::fpGlobalGLStartupContext->context;
}
