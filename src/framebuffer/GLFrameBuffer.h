#pragma once

#include "gl/EntryMacros.h"
#include "gl/Export.h"
#include "orlohost/HWInterfaces.h"
#include "orlohost/PixelArray2D.h"
#include "orlohost/RasterFormat.h"
#include "orlohost/WindowWrapper.h"

#include <array>
#include <cstdint>

class GLFunctionTable;
class GLTexture2D;
class IGLTexture;
struct DrawableAttributes;

/// Asks the bound framebuffer object whether it can be drawn into. Needs the table and a current context.
ORLOGL_API bool validFrameBufferStatus();

/// Where the host draws: a framebuffer object rendered into textures, a pbuffer, or a window.
///
/// Off screen:
///
///     GLFrameBuffer buffer;
///     const koBufferFormat format(kRasterRGBA8, kRasterDepth24, kRasterNoStencil, kSamplingSingle,
///                                 IHWTexture::kTexture2D);
///     if (buffer.createOffscreen(format, 640, 480) != GLFrameBuffer::kSuccess) ...
///     GLStartupContext::fpGlobalGLStartupContext->makeCurrent();   // framebuffer objects live there
///     buffer.makeCurrent();
///     GLFunctionTable::fpGlobalFunctionTable->glViewport(0, 0, 640, 480);
///     ... draw ...
///     PixelArray2D* picture = buffer.readColorBuffer(2, 0, 0, 0, 0, nullptr);
///
/// In a window of the host:
///
///     GLFrameBuffer buffer;
///     const WindowWrapper host(nullptr, window, display);
///     if (buffer.createInWindowPortably(host, format) != GLFrameBuffer::kSuccess) ...
///     XMapWindow(display, buffer.fWindow.fbWindow());   // the child that is drawn into
///     buffer.makeCurrent();
///     GLFunctionTable::fpGlobalFunctionTable->glViewport(0, 0, width, height);
///     ... draw ...
///     buffer.swapBuffers();
///
/// A framebuffer object belongs to the start-up context (and to all that share with it): the host makes that
/// context current before it draws, and sets the viewport, which starts with the 10 x 10 of the hidden
/// window. Creating one does not release what the buffer held before. Every create takes a reference on the
/// start-up context; the release of a window or pbuffer gives it back to the same one, that of a framebuffer
/// object doesn't.
class ORLOGL_API GLFrameBuffer {
public:
    /// What the create operations answer.
    enum Result : uint32_t {
        kSuccess = 0,
        kUnsupported = 1,     ///< GL lacks what is needed
        kFormat = 2,          ///< the format can't be had
        kNoWindow = 3,        ///< the X window could not be made
        kNoContextOrSize = 4, ///< no table, no context, or larger than GL allows
        kNoBuffer = 5,        ///< framebuffer object or pbuffer could not be allocated
    };

    /// What a buffer has been made as: fKind.
    enum Kind : uint32_t {
        kNotCreated = 0,
        kWindowed = 1,
        kOffscreen = 2,
    };

    GLFrameBuffer();

    /// As deleteInternalState.
    virtual ~GLFrameBuffer();

    GLFrameBuffer(const GLFrameBuffer&) = delete;
    GLFrameBuffer& operator=(const GLFrameBuffer&) = delete;

    /// Makes a framebuffer object whose colour buffer is a 2D, rectangle or cube-map texture (of `width` on
    /// each side; see fCubeFaceMask) and whose depth buffer is a texture. The start-up context is made if
    /// there is none (an empty one, which has no GL: make a working one first) and becomes current. A stencil
    /// with depth must be 8 bits, and is left out without a word where packed depth-stencil isn't offered.
    /// Leaves framebuffer 0 bound on success. Oddity: on failure nothing stays allocated but a stencil-only
    /// renderbuffer.
    uint32_t createOffscreen(const koBufferFormat& format, unsigned width, unsigned height);

    /// Makes a pbuffer on the window's display and a context for it that shares objects with the start-up
    /// context, which is made if there is none and becomes current. Single-buffered, with a stencil; sizes of
    /// colour, depth and stencil and samples as createInWindow asks for them. fActualFormat tells what came
    /// of it, but for the texture type, which stays.
    ///
    /// A size beyond the driver's is cut to it without a word: see fWidth and fHeight. A driver that tells no
    /// largest size (0) cuts nothing. With `squareLimit` (by GLX 1.3 alone) it is cut to a square m x m, m
    /// being the smaller of the driver's largest sides, halved where it is nearer to the power of two below
    /// than to that above; the height is cut only where m is less than the *width*.
    ///
    /// kUnsupported: GLX lacks a function. kFormat: no configuration. kNoBuffer: no pbuffer or no visual.
    /// kNoContextOrSize: no display, table or context. What was made before a failure stays.
    uint32_t createOffscreen(const WindowWrapper& window, const koBufferFormat& format, unsigned width,
                             unsigned height, bool squareLimit);

    /// The same, without the square, of a double-buffered pbuffer, which is what drivers of today do well:
    /// what is drawn into a single-buffered one raises an X error at each flush on Mesa, and with its
    /// softpipe nothing of it comes back. What a host calls unless it counts on createOffscreen. Drawn into
    /// and read by GL_BACK, the default of its context. After a failure nothing is left but the reference on
    /// the start-up context (and, by SGIX configurations alone, which can destroy none, the pbuffer).
    uint32_t createPbufferPortably(const WindowWrapper& window, const koBufferFormat& format, unsigned width,
                                   unsigned height);

    /// Makes a window as every driver of today gives one; what a host calls unless it counts on the roads of
    /// createInWindow. Result, format, sharing and what is left to the host are the same.
    ///
    /// The drawable is a GLX window of a configuration on a child window of that configuration's visual (of
    /// the screen's own depth where there is one, so that nothing shines through it under a compositor);
    /// where GLX 1.3 is missing, refuses or is vetoed, a child window of a visual. Four samples are asked for
    /// unless kSamplingSingle, and done without where they can't be had. No X error on the way, and none at
    /// the release, which destroys the child: release before the parent window goes. After a failure nothing
    /// is left but the reference on the start-up context.
    uint32_t createInWindowPortably(const WindowWrapper& parent, const koBufferFormat& format);

    /// Makes a double-buffered drawable of its own in `parent` and a context for it that shares objects with
    /// the start-up context, which is made on the parent's display if there is none. Makes neither current.
    ///
    /// Where the driver offers the SGIX configurations, or no configurations at all, the drawable is a child
    /// window as large as the parent is now. It is not mapped, asks for keys, buttons and exposure but hears
    /// of no pointer motion, and doesn't follow the parent's size: the host maps `fWindow.fbWindow()`,
    /// selects the events that it wants on it, and calls resizeWindow and glViewport when the parent changes.
    /// With GLX 1.3 alone the drawable is a GLX window on the parent itself, and that too is `fbWindow()`.
    ///
    /// At least 8 bits each of red, green, blue and alpha, or 32 for kRasterRGBA32F; 24 bits of depth for
    /// kRasterDepth24, otherwise 16; the stencil's bits. Samples, unless kSamplingSingle, as many as the
    /// current context has. fActualFormat repeats what was asked for: ask GL for what was given.
    ///
    /// kUnsupported: a GLX function is missing. kFormat: no configuration or visual. kNoWindow: X refused, or
    /// the parent is no window. kNoContextOrSize: no display, table or context. After a failure what was made
    /// until then stays, and deleteInternalState gives the reference on the start-up context back; then the
    /// buffer can try again. One that was a framebuffer object before needs clearInternalState.
    uint32_t createInWindow(const WindowWrapper& parent, const koBufferFormat& format);

    /// Adopts a window and a context that the host made; nothing is asked of GL. They stay the host's. The
    /// context should share objects with the start-up context. makeCurrent never unbinds a framebuffer object
    /// here: bind framebuffer 0 before drawing. kNoContextOrSize without a table, and the buffer is cleared.
    uint32_t assignInWindow(GLXContext context, const WindowWrapper& window, const koBufferFormat& format,
                            unsigned width, unsigned height);

    /// Gives an adopted window back, as assignInWindow found it, and clears the buffer.
    void unassignInWindow();

    /// Forgets everything without releasing anything. Always 0.
    uint32_t clearInternalState();

    /// Releases what the buffer holds. A stencil-only renderbuffer stays until the GL context goes. A window
    /// or pbuffer leaves no context current: make another current before deleting textures or buffers. The
    /// child window of createInWindow stays until its parent goes, and X reports an error (GLXBadWindow or
    /// BadWindow): have a handler installed. A window is released while a start-up context exists, and not at
    /// all without one.
    void deleteInternalState();

    /// Whether it was made to draw off screen.
    bool isOffscreen() const;

    /// Makes this buffer the target of drawing; nonzero on success. A framebuffer object is bound in whatever
    /// context is current, its first colour texture attached by the face that fCubeFaceMask selects if a cube
    /// map.
    uint32_t makeCurrent();

    /// Makes the buffer current and reads the viewport in force.
    void viewportSize(unsigned& width, unsigned& height, unsigned& x, unsigned& y);

    /// Size of an offscreen buffer as created. For a window the viewport's size minus its origin, so a
    /// viewport that was moved in from the corner measures smaller.
    void getDimensions(int* width, int* height);

    /// Makes the buffer current and sets the viewport. False, viewport untouched, for an empty size, one that
    /// reaches beyond getDimensions, or one beyond GL's limit. A window's viewport can't be enlarged by it,
    /// since a window is measured by its viewport: call glViewport through the table after resizeWindow.
    bool resizeViewport(unsigned width, unsigned height, unsigned x, unsigned y);

    /// Shows what was drawn into a window; nothing for a framebuffer object.
    void swapBuffers();

    // Pixel transfer. Everything works on whatever is current: make the buffer current first. (A window or
    // pbuffer becomes current by being measured.) Nothing is reported but by a null result, and nothing
    // happens before the buffer is created. Sizes larger than the buffer's are cut to it; negative places
    // count as 0 where they are signed whole numbers. Reads leave a pack alignment of 1, draws an unpack
    // alignment of 1.

    /// Reads colour into `target`, or into a new array that the caller deletes when null.
    ///
    /// `pixelType`: 0 alpha, 1 RGB, 2 RGBA in bytes, 3 RGBA in halves, 4 RGBA in floats, 8 depth in floats;
    /// others can't be read. A width or height of 0 is the buffer's. A given target must hold the size that
    /// comes of it. Null on failure.
    PixelArray2D* readColorBuffer(unsigned pixelType, unsigned x, unsigned y, int width, int height,
                                  PixelArray2D* target);

    /// The whole buffer in a new array. Oddity: the number of the actual colour format is taken for the pixel
    /// type, and the argument is not looked at.
    PixelArray2D* readCurrentColorBuffer(PixelArray2D* ignored);

    /// Depth, 0 near to 1 far, as floats in a new array that the caller deletes; null without memory and for
    /// negative sizes.
    PixelArray2D* readDepthBuffer(int x, int y, int width, int height);

    /// The whole of it.
    PixelArray2D* readDepthBuffer();

    /// The same in bytes, of the whole buffer.
    PixelArray2D* readDepthBufferInBytes();

    /// Reads the depth buffer twice and keeps nothing: for hosts that wait for the drawing to end.
    void readDepthBuffer(PixelArray2D* ignored);

    /// Draws the array with its lower left corner at a place that the matrices in force transform. The array
    /// must hold the size that is drawn: the given one, cut to the buffer's. 0, and nothing drawn, for a
    /// pixel type beyond 4, nonzero otherwise.
    uint32_t drawColorBuffer(float x, float y, float z, int width, int height, PixelArray2D* pixels);

    /// Likewise into the depth buffer, for arrays of depth in floats (type 8); nothing for any other. Depth
    /// writes and, with GL_ALWAYS, the depth test have to be on.
    void drawDepthBuffer(float x, float y, float z, int width, int height, PixelArray2D* pixels);

    /// Draws an array as large as the buffer at (0, 0, 0).
    void writeCurrentColorBuffer(const PixelArray2D& pixels);

    /// The whole of the array, at the lower left.
    void writeDepthBuffer(const PixelArray2D& pixels);

    /// Draws a quad with the texture, in colour alone or in depth alone, from corner (-1, -1) to (1, 1) in a
    /// projection of one unit per texel of the texture: one pixel beside the origin, as the viewport has it.
    /// Nothing for a texture that is no GLTexture2D. Leaves the colour and depth masks as it set them, and
    /// the identity as model-view matrix.
    void writeCurrentColorBuffer(const IHWTexture& texture);

    /// The whole of the texture, at the lower left.
    void writeDepthBuffer(const IHWTexture& texture);

    /// Copies the buffer into the texture's level 0: the attachment of that index, or GL_BACK for a window
    /// and beyond the attachments. Nothing for null and for a texture that is no GLTexture2D.
    void readCurrentColorBuffer(IHWTexture* texture, unsigned index);

    /// Copies depth, which needs a texture of a depth format. Selects GL_DEPTH for reading, which GL refuses
    /// (GL_INVALID_ENUM) while copying all the same.
    void readDepthBuffer(IHWTexture* texture);

    /// Copies a region into the texture: of the first attachment, or without attachments of GL_FRONT
    /// (`source` 0) or GL_BACK (1); nothing for any other source.
    void renderTexture(GLTexture2D* texture, int x, int y, int width, int height, unsigned unused,
                       unsigned source);

    /// Copies a region into a new texture, which the caller references; null without memory. The texture's
    /// format is RGBX, and GL fills it with what that can hold: colour.
    GLTexture2D* copyDepthBuffer2Texture2D(int x, int y, int width, int height);

    // What makeCurrent, swapBuffers and deleteInternalState do for windows and pbuffers.

    /// 0 unless created; otherwise 1 whatever GLX answers.
    uint32_t makeCurrentWindowed();

    /// What swapBuffers does in a window.
    void swapBuffersWindowed();

    /// Makes the child window of so many pixels each way; the viewport stays.
    void resizeWindow(unsigned width, unsigned height);

    /// What deleteInternalState does of a window.
    void deleteInternalStateWindowed();

    /// How many there are, for leak hunts.
    static int32_t fsNumInstances_GLFrameBuffer;

    koBufferFormat fRequestedFormat;                 ///< what the host asked for
    koBufferFormat fActualFormat;                    ///< what came of it
    WindowWrapper fWindow;                           ///< the host's window, and the child that is drawn into
    uint32_t fKind = kNotCreated;                    ///< a Kind
    bool fFramebufferObjectFlag = false;             ///< whether it is a framebuffer object
    bool fGLXDrawableFlag = true;                    ///< whether it is drawn into through GLX
    uint32_t fFramebufferId = 0;                     ///< GL's name, or 0
    uint32_t fColorAttachmentCount = 0;              ///< how many of the next two are used
    std::array<IGLTexture*, 16> fColorTextures = {}; ///< what colour is drawn into; a reference each
    std::array<uint32_t, 16> fAttachmentPoints = {}; ///< GL_COLOR_ATTACHMENT0_EXT and so on

    /// Bit f selects face GL_TEXTURE_CUBE_MAP_POSITIVE_X + f of a cube-map colour texture, the lowest bit
    /// winning; 0 the first face. Set by the host between passes.
    uint32_t fCubeFaceMask = 0;
    GLTexture2D* fDepthTexture = nullptr;      ///< what depth is drawn into, or null
    uint32_t fDepthRenderbufferId = 0;         ///< or this
    uint32_t fStencilRenderbufferId = 0;       ///< what the stencil is drawn into, or 0
    bool fOwnsDrawable = false;                ///< whether the release destroys it
    GLXContext fContext = nullptr;             ///< of a window or pbuffer
    GLXPbuffer fPbuffer = 0;                   ///< or 0
    uint32_t fWidth = 0;                       ///< pixels
    uint32_t fHeight = 0;                      ///< pixels
    GLFunctionTable* fFunctionTable = nullptr; ///< the table as it was when the buffer was made
    Window fDrawable = 0;                      ///< what GLX draws into
    Display* fDisplay = nullptr;               ///< of fDrawable

private:
    struct PbufferParts;

    /// A way to fDrawable and fContext in a window of the host.
    using Road = uint32_t (GLFrameBuffer::*)(const WindowWrapper& parent);

    void referenceStartupContext();
    void dropStartupContext();
    uint32_t createInWindowBy(Road road, const WindowWrapper& parent, const koBufferFormat& format);
    uint32_t createDrawable(const WindowWrapper& parent);
    uint32_t createPortableDrawable(const WindowWrapper& parent);
    uint32_t createOnConfiguration(const WindowWrapper& parent);
    uint32_t createOnVisual(const WindowWrapper& parent);
    uint32_t createOwnChildWindow(const WindowWrapper& parent, const XVisualInfo& visual);
    void destroyContext();
    void destroyChildWindow();
    void destroyPbuffer();
    DrawableAttributes visualAttributes() const;
    uint32_t createBySGIXConfiguration(const WindowWrapper& parent, DrawableAttributes attributes);
    uint32_t createByVisual(const WindowWrapper& parent, DrawableAttributes attributes);
    uint32_t createByConfiguration(const WindowWrapper& parent, DrawableAttributes attributes);
    uint32_t createChildWindow(const WindowWrapper& parent, const XVisualInfo& visual);
    uint32_t createPbuffer(const WindowWrapper& window, const koBufferFormat& format, PbufferParts& parts);
    uint32_t createPbufferDrawable(const DrawableAttributes& attributes, PbufferParts& parts);
    uint32_t createPbufferByConfiguration(DrawableAttributes attributes, PbufferParts& parts);
    uint32_t createPbufferBySGIX(DrawableAttributes attributes, PbufferParts& parts);
    void readActualFormat(XVisualInfo* visual);
    uint32_t createColor(const koBufferFormat& format, unsigned width, unsigned height);
    uint32_t createDepthAndStencil(const koBufferFormat& format, unsigned width, unsigned height);
    void createStencil(RasterFormat stencil, unsigned width, unsigned height);
    uint32_t createDepth(RasterFormat depth, unsigned width, unsigned height);
    void attachCubeFace();
    PixelArray2D* readDepth(const koSysPixelFormat& format, GLenum type, int x, int y, int width, int height);
    void drawPixels(const std::array<float, 3>& place, const std::array<int, 2>& size, GLenum format,
                    GLenum type, const PixelArray2D& pixels);
    std::array<int, 2> cutToBuffer(int width, int height);
    static void copyInto(GLTexture2D& texture, int x, int y, int width, int height);

    /// The start-up context that this buffer took references on, and how many it has not given back.
    uint64_t fStartupSerial = 0;
    uint32_t fStartupReferences = 0;

    /// Of createInWindowPortably: the X window under fDrawable, which may be a GLX window with a name of its
    /// own. 0 for windows of any other road.
    Window fChildWindow = 0;
    /// Of the child window that was made last.
    Colormap fChildColormap = 0;
};
