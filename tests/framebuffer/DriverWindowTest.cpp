// Windows of the real server: what is looked at is what stands in the X window, not in GL's buffers.

#include "DriverTest.h"

#include "framebuffer/GLFrameBuffer.h"

#include <X11/Xutil.h>

#include <memory>

namespace {

constexpr int kGLXBadWindow = 12;

koBufferFormat wanted() {
    return {kRasterRGBA8, kRasterDepth24, kRasterStencil8, kSamplingSingle, IHWTexture::kTexture2D};
}

class DriverWindow : public DriverTest {
protected:
    struct Size {
        int width, height;
    };

    struct CloseImage {
        void operator()(XImage* image) const { XDestroyImage(image); }
    };
    using Image = std::unique_ptr<XImage, CloseImage>;

    Window hostWindow(Size size) {
        const Window window = XCreateSimpleWindow(display(), DefaultRootWindow(display()), 0, 0,
                                                  static_cast<unsigned>(size.width),
                                                  static_cast<unsigned>(size.height), 0, 0, 0x123456);
        XMapWindow(display(), window);
        return window;
    }

    WindowWrapper wrapped(Window window) { return {nullptr, window, display()}; }

    XWindowAttributes attributesOf(Window window) {
        XWindowAttributes attributes = {};
        EXPECT_TRUE(XGetWindowAttributes(display(), window, &attributes));
        return attributes;
    }

    int glxError(int code) {
        int opcode = 0;
        int event = 0;
        int first = 0;
        EXPECT_TRUE(XQueryExtension(display(), "GLX", &opcode, &event, &first));
        return first + code;
    }

    void clear(float red, float green, float blue) {
        gl().glClearColor(red, green, blue, 1);
        gl().glClear(GL_COLOR_BUFFER_BIT);
    }

    /// Green with a blue rectangle of 3 x 2 in the lower left corner, in the upper right one a red pixel.
    void paint(GLFrameBuffer& buffer, Size size) {
        ASSERT_EQ(buffer.makeCurrent(), 1u);
        gl().glViewport(0, 0, size.width, size.height);
        clear(0, 1, 0);
        gl().glEnable(GL_SCISSOR_TEST);
        gl().glScissor(0, 0, 3, 2);
        clear(0, 0, 1);
        gl().glScissor(size.width - 1, size.height - 1, 1, 1);
        clear(1, 0, 0);
        gl().glDisable(GL_SCISSOR_TEST);
        // Read before the swap: after it, the driver cuts the first frame of the next size to this one.
        EXPECT_EQ(readPixel(size.width - 1, size.height - 1), (Pixel{255, 0, 0, 255}));
        buffer.swapBuffers();
        gl().glXWaitX();
        expectNoErrors();
    }

    /// What the X window shows: 0xRRGGBB by place, (0, 0) at the upper left as X has it.
    Image shown(Window window, Size size) {
        gl().glXWaitGL();
        Image image(XGetImage(display(), window, 0, 0, static_cast<unsigned>(size.width),
                              static_cast<unsigned>(size.height), AllPlanes, ZPixmap));
        EXPECT_NE(image, nullptr);
        EXPECT_EQ(image->red_mask, 0xFF0000u);
        return image;
    }

    static unsigned at(const Image& image, int x, int y) {
        return static_cast<unsigned>(XGetPixel(image.get(), x, y)) & 0xFFFFFF;
    }

    /// To the letter means createInWindow, which a driver may refuse: one by NVIDIA (580.159) answers null to
    /// its lists of visuals (2); Mesa 22.3 gives a window.
    enum Create { kToTheLetter, kPortably };

    bool create(GLFrameBuffer& buffer, Create how, Window host) {
        if (how == kPortably) {
            EXPECT_EQ(buffer.createInWindowPortably(wrapped(host), wanted()), 0u);
            return !HasFailure();
        }
        const uint32_t result = buffer.createInWindow(wrapped(host), wanted());
        EXPECT_EQ(result, choosesVisualsByTheLetter() ? 0u : 2u);
        return result == 0;
    }

    /// By hand, with the lists that createInWindow hands to the chooser of visuals.
    bool choosesVisualsByTheLetter() {
        int configuration[] = {GLX_DRAWABLE_TYPE, GLX_WINDOW_BIT, GLX_DOUBLEBUFFER, 1, GLX_RED_SIZE, 8, None};
        int visual[] = {GLX_DOUBLEBUFFER, GLX_USE_GL, GLX_RED_SIZE, 8, None};
        int* const list = gl().usable(kCapSGIXChooseFBConfig) ? configuration : visual;
        XVisualInfo* found = gl().glXChooseVisual(display(), DefaultScreen(display()), list);
        if (found)
            XFree(found);
        return found != nullptr;
    }

    /// What createInWindow made is released with one error on Mesa and with none by NVIDIA's driver.
    void release(GLFrameBuffer& buffer, Create how) {
        expectXErrors({});
        buffer.deleteInternalState();
        EXPECT_EQ(gl().glXGetCurrentContext(), nullptr);
        XSync(display(), 0);
        if (how == kToTheLetter && xErrors().size() == 1)
            EXPECT_THAT(xErrors()[0], testing::AnyOf(int{BadWindow}, glxError(kGLXBadWindow)));
        else
            EXPECT_THAT(xErrors(), testing::IsEmpty());
        xErrors().clear();
    }

    unsigned childrenOf(Window window) {
        Window root = 0;
        Window parent = 0;
        Window* children = nullptr;
        unsigned count = 0;
        EXPECT_TRUE(XQueryTree(display(), window, &root, &parent, &children, &count));
        if (children)
            XFree(children);
        return count;
    }

    void drawAndResize(Window host, Create how) {
        GLFrameBuffer buffer;
        if (!create(buffer, how, host))
            return;
        const Window child = buffer.fWindow.fbWindow();
        XMapWindow(display(), child);
        paint(buffer, {40, 30});
        expectPainted(child, {40, 30});
        EXPECT_EQ(at(shown(host, {40, 30}), 39, 0), 0xFF0000u) << "seen through the host's window";
        for (const Size size : {Size{75, 50}, Size{3, 3}}) {
            XResizeWindow(display(), host, static_cast<unsigned>(size.width),
                          static_cast<unsigned>(size.height));
            buffer.resizeWindow(static_cast<unsigned>(size.width), static_cast<unsigned>(size.height));
            EXPECT_EQ(attributesOf(child).width, size.width);
            int width = 0;
            int height = 0;
            buffer.getDimensions(&width, &height);
            EXPECT_NE(width, size.width) << "a window is measured by its viewport";
            gl().glViewport(0, 0, size.width, size.height);
            buffer.getDimensions(&width, &height);
            EXPECT_EQ(width, size.width);
            EXPECT_EQ(height, size.height);
            clear(0, 0, 0);
            gl().glColor3f(1, 1, 0);
            gl().glRectf(-1, -1, 1, 1);
            buffer.swapBuffers();
            const Image filled = shown(child, size);
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x)
                    ASSERT_EQ(at(filled, x, y), 0xFFFF00u) << x << ", " << y;
        }
        release(buffer, how);
        EXPECT_EQ(childrenOf(host), how == kPortably ? 0u : 1u)
            << "that of createInWindow lives on until its parent goes";
    }

    void expectPainted(Window window, Size size) {
        const Image image = shown(window, size);
        const auto [right, bottom] = Size{size.width - 1, size.height - 1};
        const struct {
            int x, y;
            unsigned color;
        } kPlaces[] = {
            {0, bottom, 0x0000FF},     {2, bottom - 1, 0x0000FF}, {3, bottom, 0x00FF00},
            {0, bottom - 2, 0x00FF00}, {0, 0, 0x00FF00},          {right, 0, 0xFF0000},
            {right - 1, 0, 0x00FF00},  {right, 1, 0x00FF00},      {right, bottom, 0x00FF00},
        };
        for (const auto& place : kPlaces)
            EXPECT_EQ(at(image, place.x, place.y), place.color) << place.x << ", " << place.y;
    }
};

TEST_F(DriverWindow, drawsOnTheScreenAndFollowsResizeWindow) {
    const struct {
        Create create;
        std::vector<GLCapability> vetoed;
    } kRoads[] = {
        {kPortably, {}},
        {kPortably, {kCapGLXFBConfig}},
        {kToTheLetter, {}},
        {kToTheLetter, {kCapSGIXChooseFBConfig, kCapGLXFBConfig}},
        {kToTheLetter, {kCapGLXWindow}},
    };
    for (const auto& road : kRoads) {
        for (GLCapability capability : road.vetoed)
            gl().fExtEnabled[capability] = false;
        const Window host = hostWindow({40, 30});
        drawAndResize(host, road.create);
        XDestroyWindow(display(), host);
        for (GLCapability capability : road.vetoed)
            gl().fExtEnabled[capability] = true;
    }
}

TEST_F(DriverWindow, isAnUnmappedChildThatIsLeftToTheHost) {
    const Window host = hostWindow({40, 30});
    XSelectInput(display(), host, PointerMotionMask);
    GLuint texture = 0;
    gl().glGenTextures(1, &texture);
    gl().glBindTexture(GL_TEXTURE_2D, texture);
    GLFrameBuffer buffer;
    ASSERT_TRUE(create(buffer, kPortably, host));
    EXPECT_EQ(gl().glXGetCurrentContext(), startup().context) << "what was current still is";
    const Window child = buffer.fWindow.fbWindow();
    const XWindowAttributes attributes = attributesOf(child);
    EXPECT_EQ(attributes.map_state, IsUnmapped);
    EXPECT_EQ(attributes.your_event_mask, 0x6800F);
    EXPECT_EQ(attributes.width, 40);
    EXPECT_EQ(attributes.height, 30);
    XResizeWindow(display(), host, 60, 60);
    EXPECT_EQ(attributesOf(child).width, 40) << "doesn't follow the parent";

    ASSERT_EQ(buffer.makeCurrent(), 1u);
    EXPECT_TRUE(gl().glIsTexture(texture)) << "objects are shared";
    clear(0, 1, 0);
    EXPECT_EQ(readPixel(39, 29), (Pixel{0, 255, 0, 255})) << "also without being mapped";
    gl().glDeleteTextures(1, &texture);
    release(buffer, kPortably);
    XDestroyWindow(display(), host);
}

TEST_F(DriverWindow, twoCloseInEitherOrder) {
    const Size sizes[] = {{40, 30}, {25, 20}};
    for (int closedFirst : {0, 1}) {
        SCOPED_TRACE(closedFirst);
        const Window hosts[] = {hostWindow(sizes[0]), hostWindow(sizes[1])};
        XMoveWindow(display(), hosts[1], 200, 100);
        GLFrameBuffer buffers[2];
        for (int i : {0, 1})
            ASSERT_TRUE(create(buffers[i], kPortably, hosts[i]));
        EXPECT_EQ(startup().refCount(), 3);
        for (int i : {0, 1, 0})
            XMapWindow(display(), buffers[i].fWindow.fbWindow());
        paint(buffers[0], sizes[0]);
        paint(buffers[1], sizes[1]);
        for (int i : {0, 1})
            expectPainted(buffers[i].fWindow.fbWindow(), sizes[i]);
        expectXErrors({});

        const int other = 1 - closedFirst;
        release(buffers[closedFirst], kPortably);
        XDestroyWindow(display(), hosts[closedFirst]);
        EXPECT_EQ(startup().refCount(), 2);
        ASSERT_EQ(buffers[other].makeCurrent(), 1u);
        clear(1, 1, 1);
        buffers[other].swapBuffers();
        EXPECT_EQ(at(shown(buffers[other].fWindow.fbWindow(), sizes[other]), 0, 0), 0xFFFFFFu);
        paint(buffers[other], sizes[other]);
        expectPainted(buffers[other].fWindow.fbWindow(), sizes[other]);
        release(buffers[other], kPortably);
        XDestroyWindow(display(), hosts[other]);
        EXPECT_EQ(startup().refCount(), 1);
    }
}

TEST_F(DriverWindow, drawsWithAContextOfTheHost) {
    int list[] = {GLX_RGBA, GLX_DOUBLEBUFFER, GLX_RED_SIZE, 8, GLX_DEPTH_SIZE, 24, None};
    const std::unique_ptr<XVisualInfo, int (*)(void*)> visual(
        gl().glXChooseVisual(display(), DefaultScreen(display()), list), XFree);
    ASSERT_NE(visual, nullptr);
    const GLXContext context = gl().glXCreateContext(display(), visual.get(), startup().context, True);
    ASSERT_NE(context, nullptr);
    XSetWindowAttributes attributes = {};
    const Window root = DefaultRootWindow(display());
    attributes.colormap = XCreateColormap(display(), root, visual->visual, AllocNone);
    const Window host = XCreateWindow(display(), root, 0, 0, 40, 30, 0, visual->depth, InputOutput,
                                      visual->visual, CWBorderPixel | CWColormap, &attributes);
    XMapWindow(display(), host);

    GLFrameBuffer buffer;
    ASSERT_EQ(buffer.assignInWindow(context, wrapped(host), wanted(), 40, 30), 0u);
    EXPECT_EQ(startup().refCount(), 2);
    paint(buffer, {40, 30});
    expectPainted(host, {40, 30});
    buffer.resizeWindow(55, 33);
    paint(buffer, {55, 33});
    expectPainted(host, {55, 33});

    buffer.unassignInWindow();
    EXPECT_EQ(startup().refCount(), 1);
    EXPECT_EQ(gl().glXGetCurrentContext(), context) << "the host's context is left as it is";
    clear(0, 0, 1);
    gl().glXSwapBuffers(display(), host);
    EXPECT_EQ(at(shown(host, {55, 33}), 54, 0), 0x0000FFu);
    gl().glXMakeCurrent(display(), None, nullptr);
    gl().glXDestroyContext(display(), context);
    XDestroyWindow(display(), host);
    XFreeColormap(display(), attributes.colormap);
    expectXErrors({});
}

} // namespace
