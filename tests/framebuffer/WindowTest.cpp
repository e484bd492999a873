#include "FrameBufferTest.h"

namespace {

constexpr Window kParent = 0x55;

/// The visual of the first configuration; onlyVisual() is what the chooser of visuals finds.
XVisualInfo* firstVisual() {
    static XVisualInfo visual = {};
    return &visual;
}

class InWindow : public FrameBufferTest {
protected:
    /// By SGIX configurations, by visuals, by GLX 1.3.
    enum Path { kSGIX, kVisual, kGLX13 };

    InWindow() {
        script().visualDepth = 30;
        script().answers["glXGetVisualFromFBConfigSGIX"] = [](const auto&) {
            return reinterpret_cast<uintptr_t>(firstVisual());
        };
        fakeGeometry() = {320, 200};
        int count = 0;
        fConfigs = glXChooseFBConfig(fakeDisplay(), 0, nullptr, &count);
        clearRecorded();
    }

    void vetoAllBut(Path path) {
        gl().fExtEnabled[kCapSGIXChooseFBConfig] = path == kSGIX;
        gl().fExtEnabled[kCapGLXFBConfig] = path != kVisual;
    }

    static koBufferFormat wanted(RasterFormat color = kRasterRGBA8, RasterFormat depth = kRasterDepth24,
                                 RasterFormat stencil = kRasterStencil8,
                                 SamplingType sampling = kSamplingSingle) {
        return {color, depth, stencil, sampling, IHWTexture::kTexture2D};
    }

    static WindowWrapper parent() { return {&fakeGeometry(), kParent, fakeDisplay()}; }

    static uint32_t create(GLFrameBuffer& buffer, const koBufferFormat& format = wanted()) {
        clearRecorded();
        return buffer.createInWindow(parent(), format);
    }

    static Values configuration(double color, double depth, double stencil) {
        return {0x8010, 1,     5,  1,     0x8011, 1,     8,  color,   9, color,
                10,     color, 11, color, 12,     depth, 13, stencil, 0};
    }

    static Values configuration(double color, double depth, double stencil, double samples) {
        Values list = configuration(color, depth, stencil);
        list.pop_back();
        list.insert(list.end(), {0x80A8, 1, 0x80A9, samples, 0});
        return list;
    }

    static Values visual(double color, double depth, double stencil) {
        return {5, 1, 8, color, 9, color, 10, color, 11, color, 12, depth, 13, stencil, 0};
    }

    Steps steps(Path path) {
        Display* display = fakeDisplay();
        const GLXContext shared = startup().context;
        const Values list = configuration(8, 24, 8);
        const std::string asked = call("glXQueryExtensionsString", display, 0);
        const std::string context = call("glXCreateContext", display, onlyVisual(), shared, 1);
        const Steps child = {
            {call("XGetGeometry", display, kParent), 3},
            {call("XCreateColormap", display, kFakeRoot, onlyVisual()->visual, AllocNone)},
            {call("XCreateWindow", display, kParent, 0, 0, 320, 200, 0, 30, InputOutput, onlyVisual()->visual,
                  0x2809, Values{0, 0, 0x6800F, double(kFakeColormap)}),
             3},
            {call("XFree", onlyVisual())},
        };
        Steps all;
        switch (path) {
        case kSGIX:
            all = {{asked},
                   {call("glXChooseFBConfigSGIX", display, 0, list, kOut), 2},
                   {call("glXGetVisualFromFBConfigSGIX", display, nthConfig()), 2},
                   {call("glXCreateContext", display, firstVisual(), shared, 1), 4},
                   {call("glXChooseVisual", display, 0, list), 2},
                   {context, 4}};
            all.insert(all.end(), child.begin(), child.end());
            all.push_back({call("XFree", fConfigs)});
            return all;
        case kVisual:
            all = {{asked}, {call("glXChooseVisual", display, 0, visual(8, 24, 8)), 2}, {context, 4}};
            all.insert(all.end(), child.begin(), child.end());
            return all;
        case kGLX13:
            return {{asked},
                    {call("glXChooseFBConfig", display, 0, list, kOut)},
                    {call("glXCreateNewContext", display, nthConfig(), 0x8010, shared, 1), 4},
                    {call("glXCreateWindow", display, nthConfig(), kParent, nullptr), 3},
                    {call("XFree", fConfigs)}};
        }
        return all;
    }

    GLXFBConfig* fConfigs = nullptr;
};

TEST_F(InWindow, eachPathMakesAndReleasesIt) {
    for (Path path : {kSGIX, kVisual, kGLX13}) {
        SCOPED_TRACE(path);
        vetoAllBut(path);
        const GLXContext context = nthContext(ledger(NameKind::Context).made + (path == kSGIX ? 1 : 0));
        const NameKind kind = path == kGLX13 ? NameKind::GlxWindow : NameKind::XWindow;
        const Window drawable = nthName(kind, ledger(kind).made);
        const size_t contexts = ledger(NameKind::Context).live.size();
        GLFrameBuffer buffer;
        ASSERT_EQ(create(buffer), 0u);
        EXPECT_EQ(recorded(), callsOf(steps(path)));

        EXPECT_EQ(buffer.fKind, GLFrameBuffer::kWindowed);
        EXPECT_TRUE(buffer.fOwnsDrawable && buffer.fGLXDrawableFlag);
        EXPECT_EQ(buffer.fContext, context);
        EXPECT_EQ(buffer.fDrawable, drawable);
        EXPECT_EQ(buffer.fDisplay, fakeDisplay());
        EXPECT_EQ(buffer.fFunctionTable, &gl());
        EXPECT_EQ(buffer.fPbuffer, 0u);
        EXPECT_EQ(buffer.fWindow.fbWindow(), drawable);
        EXPECT_EQ(buffer.fWindow.window(), kParent);
        EXPECT_EQ(buffer.fWindow.widget(), &fakeGeometry());
        for (const koBufferFormat& format : {buffer.fRequestedFormat, buffer.fActualFormat}) {
            EXPECT_EQ(format.fColorFormat, kRasterRGBA8);
            EXPECT_EQ(format.fDepthFormat, kRasterDepth24);
            EXPECT_EQ(format.fStencilFormat, kRasterStencil8);
            EXPECT_EQ(format.fTextureType, IHWTexture::kTexture2D);
        }
        EXPECT_EQ(startup().refCount(), 2);

        clearRecorded();
        buffer.makeCurrent();
        buffer.deleteInternalState();
        EXPECT_EQ(recorded(), (Calls{call("glXMakeCurrent", fakeDisplay(), drawable, context),
                                     call("glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, 0),
                                     call("glXMakeCurrent", fakeDisplay(), 0, nullptr),
                                     call("glXDestroyContext", fakeDisplay(), context),
                                     call("glXDestroyWindow", fakeDisplay(), drawable)}));
        EXPECT_EQ(ledger(NameKind::Context).live.size(), contexts + (path == kSGIX ? 1 : 0))
            << "of the SGIX path the first one is left";
        EXPECT_EQ(startup().refCount(), 1);
        EXPECT_EQ(buffer.fKind, 0u);
    }
}

TEST_F(InWindow, eachFailureEndsItThere) {
    for (Path path : {kSGIX, kVisual, kGLX13}) {
        vetoAllBut(path);
        walkFailures(
            steps(path), [](GLFrameBuffer& buffer) { return create(buffer); },
            [&](GLFrameBuffer& buffer, const Step& step, const Calls& calls) {
                EXPECT_EQ(recorded(), calls);
                EXPECT_EQ(buffer.fWindow.window(), 0u);
                EXPECT_EQ(buffer.fRequestedFormat.fColorFormat, kRasterRGBA8);
                EXPECT_EQ(buffer.fActualFormat.fColorFormat, kRasterNoColor);
                EXPECT_EQ(buffer.fKind, path == kSGIX && calls.size() > 2 ? 1u : 0u);
                EXPECT_EQ(buffer.fContext != nullptr,
                          step.failure == 3 || (path == kSGIX && step.call.starts_with("glXChooseVisual")))
                    << "a context that was made stays in its field";
                EXPECT_EQ(startup().refCount(), 2);
                clearRecorded();
                buffer.deleteInternalState();
                EXPECT_EQ(recorded(), Calls{}) << "and is not destroyed";
            });
    }
}

TEST_F(InWindow, asksForTheSizesOfItsFormat) {
    const struct {
        RasterFormat color, depth, stencil;
        int colorBits, depthBits, stencilBits;
    } kCases[] = {
        {kRasterRGBA32F, kRasterDepth24, kRasterNoStencil, 32, 24, 0},
        {kRasterRGBA16F, kRasterDepth16, kRasterStencil1, 8, 16, 1},
        {kRasterIntensity8, kRasterDepth24Stencil8, kRasterStencil4, 8, 16, 4},
        {kRasterNoColor, kRasterNoDepth, kRasterStencil8, 8, 16, 8},
        {kRasterAlpha8, kRasterRGBX8, kRasterStencil16, 8, 16, 16},
        {kRasterRGB8, kRasterDepth24, kRasterDepth24Stencil8, 8, 24, 0},
    };
    for (const auto& c : kCases) {
        const koBufferFormat format = wanted(c.color, c.depth, c.stencil);
        vetoAllBut(kSGIX);
        GLFrameBuffer bySGIX;
        EXPECT_EQ(create(bySGIX, format), 0u);
        const Values list = configuration(c.colorBits, c.depthBits, c.stencilBits);
        EXPECT_EQ(recorded()[1], call("glXChooseFBConfigSGIX", fakeDisplay(), 0, list, kOut));
        EXPECT_EQ(recorded()[4], call("glXChooseVisual", fakeDisplay(), 0, list));
        vetoAllBut(kVisual);
        GLFrameBuffer byVisual;
        EXPECT_EQ(create(byVisual, format), 0u);
        EXPECT_EQ(recorded()[1],
                  call("glXChooseVisual", fakeDisplay(), 0, visual(c.colorBits, c.depthBits, c.stencilBits)));
    }
}

TEST_F(InWindow, asksForTheSamplesOfTheCurrentContext) {
    const struct {
        const char* extensions;
        SamplingType sampling;
        double sampleBuffers;
        int queries;
    } kCases[] = {
        {nullptr, kSamplingMultiple, 1, 0},
        {"GLX_ARB_multisampl", kSamplingMultiple, 1, 0},
        {"GLX_A GLX_ARB_multisample", kSamplingSingle, 1, 0},
        {"GLX_A GLX_ARB_multisample", kSamplingMultiple, 0, 1},
        {"GLX_A GLX_ARB_multisample_more", static_cast<SamplingType>(7), 2, 2},
    };
    script().values[GL_SAMPLES] = {6};
    int count = 0;
    script().answers["glXChooseFBConfigSGIX"] = [&](const auto& arguments) {
        count = *static_cast<int*>(arguments[3].pointer());
        return 0;
    };
    for (const auto& c : kCases) {
        script().answers["glXQueryExtensionsString"] = [&](const auto&) {
            return reinterpret_cast<uintptr_t>(c.extensions);
        };
        script().values[GL_SAMPLE_BUFFERS] = {c.sampleBuffers};
        GLFrameBuffer buffer;
        EXPECT_EQ(create(buffer, wanted(kRasterRGB8, kRasterDepth24, kRasterStencil8, c.sampling)), 2u);

        Calls expected = {call("glXQueryExtensionsString", fakeDisplay(), 0)};
        if (c.queries >= 1)
            expected.push_back(call("glGetIntegerv", GL_SAMPLE_BUFFERS, kOut));
        if (c.queries >= 2)
            expected.push_back(call("glGetIntegerv", GL_SAMPLES, kOut));
        const bool multisampled = c.queries == 2;
        expected.push_back(call("glXChooseFBConfigSGIX", fakeDisplay(), 0,
                                multisampled ? configuration(8, 24, 8, 6) : configuration(8, 24, 8), kOut));
        EXPECT_EQ(recorded(), expected);
        EXPECT_EQ(count, multisampled ? 22 : 18);
    }
}

TEST_F(InWindow, takesTheFirstPathThatIsOffered) {
    const struct {
        std::vector<GLCapability> missing;
        const char* choice;
    } kCases[] = {
        {{}, "glXChooseFBConfigSGIX("},
        {{kCapGLXFBConfig, kCapGLXNewContext}, "glXChooseFBConfigSGIX("},
        {{kCapSGIXChooseFBConfig}, "glXChooseFBConfig("},
        {{kCapSGIXVisualFromFBConfig}, "glXChooseFBConfig("},
        {{kCapSGIXChooseFBConfig, kCapSGIXContextWithConfig, kCapGLXWindow}, "glXChooseFBConfig("},
        {{kCapSGIXVisualFromFBConfig, kCapGLXFBConfig}, "glXChooseVisual("},
        {{kCapSGIXChooseFBConfig, kCapGLXNewContext}, "glXChooseVisual("},
    };
    for (bool* flags : {&gl().fExtSupported[0], &gl().fExtEnabled[0]}) {
        for (const auto& c : kCases) {
            for (GLCapability capability : c.missing)
                flags[capability] = false;
            GLFrameBuffer buffer;
            EXPECT_EQ(create(buffer), 0u);
            EXPECT_THAT(recorded()[1], testing::StartsWith(c.choice));
            for (GLCapability capability : c.missing)
                flags[capability] = true;
        }
    }
}

TEST_F(InWindow, isUnsupportedWithoutAnEntryPoint) {
    const auto refuses = [&](auto& slot, Path path, size_t calls) {
        vetoAllBut(path);
        const auto kept = slot;
        slot = nullptr;
        GLFrameBuffer buffer;
        EXPECT_EQ(create(buffer), 1u);
        EXPECT_EQ(recorded().size(), calls);
        slot = kept;
    };
    refuses(gl().fglXQueryExtensionsString, kSGIX, 0);
    refuses(gl().fglXCreateContext, kSGIX, 1);
    refuses(gl().fglXChooseVisual, kSGIX, 1);
    refuses(gl().fglXCreateContext, kVisual, 1);
    refuses(gl().fglXChooseVisual, kVisual, 1);
    refuses(gl().fglXCreateWindow, kGLX13, 1);
}

TEST_F(InWindow, readsNoMissingConfiguration) {
    GLFrameBuffer buffer;
    const auto noneCounted = [&](const auto&) { return reinterpret_cast<uintptr_t>(fConfigs); };
    script().answers["glXChooseFBConfigSGIX"] = noneCounted;
    EXPECT_EQ(create(buffer), 2u) << "an array, but a count of 0";

    vetoAllBut(kGLX13);
    failNext("glXChooseFBConfig");
    Calls expected = callsOf(steps(kGLX13));
    expected.resize(3);
    expected[2] = call("glXCreateNewContext", fakeDisplay(), nullptr, 0x8010, startup().context, 1);
    EXPECT_EQ(create(buffer), 4u);
    EXPECT_EQ(recorded(), expected);

    script().answers["glXChooseFBConfig"] = noneCounted;
    EXPECT_EQ(create(buffer), 0u) << "GLX 1.3 is not asked how many there are";
}

TEST_F(InWindow, makesTheStartupContextThatIsMissing) {
    GLStartupContext::fpGlobalGLStartupContext = nullptr;
    GLFrameBuffer buffer;
    ASSERT_EQ(create(buffer), 0u);
    GLStartupContext* made = GLStartupContext::fpGlobalGLStartupContext;
    ASSERT_NE(made, nullptr);
    EXPECT_TRUE(made->valid);
    EXPECT_EQ(made->wrapper.window(), kParent);
    EXPECT_EQ(made->refCount(), 1);
    EXPECT_EQ(recorded()[1], call("glXCreateContext", fakeDisplay(), onlyVisual(), nullptr, 1));
    const auto contexts = std::count_if(recorded().begin(), recorded().end(), [&](const std::string& text) {
        return text == call("glXCreateContext", fakeDisplay(), onlyVisual(), made->context, 1);
    });
    EXPECT_EQ(contexts, 1) << "shares with the new one";

    const Window hidden = made->window;
    clearRecorded();
    buffer.deleteInternalState();
    EXPECT_EQ(recorded().back(), call("XDestroyWindow", fakeDisplay(), hidden)) << "went with its only user";
    EXPECT_EQ(GLStartupContext::fpGlobalGLStartupContext, nullptr);
}

TEST_F(InWindow, needsDisplayAndTable) {
    GLFrameBuffer buffer;
    clearRecorded();
    EXPECT_EQ(buffer.createInWindow(WindowWrapper(), wanted()), 4u);
    GLFunctionTable::fpGlobalFunctionTable = nullptr;
    EXPECT_EQ(buffer.createInWindow(parent(), wanted()), 4u);
    GLFunctionTable::fpGlobalFunctionTable = &gl();
    EXPECT_EQ(recorded(), Calls{});
    EXPECT_EQ(startup().refCount(), 3) << "taken before either is looked at";
    for (int expected : {2, 1, 1}) {
        buffer.deleteInternalState();
        EXPECT_EQ(startup().refCount(), expected);
    }
    EXPECT_EQ(recorded(), Calls{});
}

TEST_F(InWindow, adoptsAWindowOfTheHost) {
    GLFrameBuffer buffer;
    buffer.fPbuffer = 7;
    WindowWrapper window = parent();
    window.setFBWindow(0x66);
    const koBufferFormat format = wanted(kRasterRGB8, kRasterDepth16, kRasterNoStencil, kSamplingMultiple);
    for (bool withStartup : {true, false}) {
        GLStartupContext::fpGlobalGLStartupContext = withStartup ? &startup() : nullptr;
        EXPECT_EQ(buffer.assignInWindow(nthContext(8), window, format, 30, 20), 0u);
        EXPECT_EQ(startup().refCount(), withStartup ? 2 : 1);
        EXPECT_EQ(buffer.fKind, GLFrameBuffer::kWindowed);
        EXPECT_FALSE(buffer.fOwnsDrawable);
        EXPECT_EQ(buffer.fPbuffer, 0u);
        EXPECT_EQ(buffer.fDrawable, kParent) << "the host's own window";
        EXPECT_EQ(buffer.fWindow.fbWindow(), 0x66u);
        EXPECT_EQ(buffer.fDisplay, fakeDisplay());
        EXPECT_EQ(buffer.fWidth, 30u);
        EXPECT_EQ(buffer.fHeight, 20u);
        for (const koBufferFormat& taken : {buffer.fRequestedFormat, buffer.fActualFormat}) {
            EXPECT_EQ(taken.fDepthFormat, kRasterDepth16);
            EXPECT_EQ(taken.fSamplingType, kSamplingMultiple);
        }
        EXPECT_EQ(recorded(), Calls{});

        EXPECT_EQ(buffer.makeCurrent(), 1u);
        buffer.swapBuffers();
        EXPECT_EQ(recorded(), (Calls{call("glXMakeCurrent", fakeDisplay(), kParent, nthContext(8)),
                                     call("glXSwapBuffers", fakeDisplay(), kParent)}))
            << "a framebuffer object stays bound";
        const int instances = GLFrameBuffer::fsNumInstances_GLFrameBuffer;
        clearRecorded();
        for (int i = 0; i < 2; ++i) {
            buffer.unassignInWindow();
            EXPECT_EQ(buffer.fKind, 0u);
            EXPECT_EQ(buffer.fContext, nullptr);
            EXPECT_EQ(startup().refCount(), 1);
        }
        EXPECT_EQ(GLFrameBuffer::fsNumInstances_GLFrameBuffer, instances);
        EXPECT_EQ(recorded(), Calls{});
    }
    GLStartupContext::fpGlobalGLStartupContext = &startup();
    buffer.fKind = GLFrameBuffer::kOffscreen;
    GLFunctionTable::fpGlobalFunctionTable = nullptr;
    EXPECT_EQ(buffer.assignInWindow(nthContext(8), window, format, 30, 20), 4u);
    GLFunctionTable::fpGlobalFunctionTable = &gl();
    EXPECT_EQ(buffer.fKind, 0u);
    EXPECT_EQ(buffer.fContext, nullptr);
    EXPECT_EQ(startup().refCount(), 1);
}

} // namespace
