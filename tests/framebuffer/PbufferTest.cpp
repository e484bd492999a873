#include "FrameBufferTest.h"

namespace {

constexpr Window kWindow = 0x55;

class PbufferTest : public FrameBufferTest {
protected:
    PbufferTest() {
        script().configAttributes = {
            {GLX_MAX_PBUFFER_WIDTH, 4096}, {GLX_MAX_PBUFFER_HEIGHT, 2048}, {GLX_RED_SIZE, 8},
            {GLX_ALPHA_SIZE, 8},           {GLX_DEPTH_SIZE, 24},           {GLX_STENCIL_SIZE, 8},
            {GLX_SAMPLE_BUFFERS, 0}};
        int count = 0;
        fConfigs = glXChooseFBConfig(fakeDisplay(), 0, nullptr, &count);
        clearRecorded();
    }

    static koBufferFormat wanted(uint32_t color = 2, uint32_t depth = 7, uint32_t stencil = 12,
                                 SamplingType sampling = kSamplingSingle) {
        return {static_cast<RasterFormat>(color), static_cast<RasterFormat>(depth),
                static_cast<RasterFormat>(stencil), sampling, IHWTexture::kTexture2D};
    }

    uint32_t create(GLFrameBuffer& buffer, const koBufferFormat& format, unsigned width, unsigned height,
                    bool squareLimit = false) {
        clearRecorded();
        return buffer.createOffscreen(WindowWrapper(this, kWindow, fakeDisplay()), format, width, height,
                                      squareLimit);
    }

    static Values configuration(double color, double depth, double stencil) {
        return {0x8010, 5,     5,  0,     0x8011, 1,     8,  color,   9, color,
                10,     color, 11, color, 12,     depth, 13, stencil, 0};
    }

    Steps steps(bool sgix) {
        Display* display = fakeDisplay();
        const GLXFBConfig config = nthConfig();
        const Values list = configuration(8, 24, 8);
        Steps all = {{startupMadeCurrent()},
                     {call("glXQueryExtensionsString", display, 0)},
                     {call(sgix ? "glXChooseFBConfigSGIX" : "glXChooseFBConfig", display, 0, list, kOut), 2},
                     {call("glXGetFBConfigAttrib", display, config, 0x8016, kOut)},
                     {call("glXGetFBConfigAttrib", display, config, 0x8017, kOut)},
                     {sgix ? call("glXCreateGLXPbufferSGIX", display, config, 640, 480, list)
                           : call("glXCreatePbuffer", display, config,
                                  Values{0x8041, 640, 0x8040, 480, 0x801C, 0, 0x801B, 0, 0}),
                      5},
                     {call("glXGetVisualFromFBConfig", display, config), 5},
                     {call(sgix ? "glXCreateContextWithConfigSGIX" : "glXCreateNewContext", display, config,
                           0x8014, startup().context, 1),
                      4}};
        for (const int attribute :
             {GLX_RED_SIZE, GLX_ALPHA_SIZE, GLX_DEPTH_SIZE, GLX_STENCIL_SIZE, GLX_SAMPLE_BUFFERS})
            all.push_back({call("glXGetConfig", display, onlyVisual(), attribute, kOut)});
        all.push_back({call("XFree", fConfigs)});
        all.push_back({call("XFree", onlyVisual())});
        return all;
    }

    void choose(bool sgix) { gl().fExtEnabled[kCapGLXPbuffer] = !sgix; }

    GLXFBConfig* fConfigs = nullptr;
};

TEST_F(PbufferTest, eachRoadMakesAndReleasesIt) {
    for (const bool sgix : {false, true}) {
        choose(sgix);
        const GLXPbuffer pbuffer = nthName(NameKind::Pbuffer, ledger(NameKind::Pbuffer).made);
        const GLXContext context = nthContext(ledger(NameKind::Context).made);
        GLFrameBuffer buffer;
        buffer.fActualFormat.fTextureType = IHWTexture::kTextureCubeMap;
        ASSERT_EQ(create(buffer, wanted(), 640, 480), 0u);
        EXPECT_EQ(recorded(), callsOf(steps(sgix)));
        EXPECT_TRUE(buffer.isOffscreen() && buffer.fGLXDrawableFlag && buffer.fOwnsDrawable);
        EXPECT_FALSE(buffer.fFramebufferObjectFlag);
        EXPECT_EQ(buffer.fPbuffer, pbuffer);
        EXPECT_EQ(buffer.fContext, context);
        EXPECT_EQ(buffer.fWidth, 640u);
        EXPECT_EQ(buffer.fHeight, 480u);
        EXPECT_EQ(buffer.fWindow.window(), kWindow);
        EXPECT_EQ(buffer.fWindow.widget(), this);
        EXPECT_EQ(buffer.fActualFormat.fColorFormat, 2u);
        EXPECT_EQ(buffer.fActualFormat.fTextureType, 5u) << "as it was";
        EXPECT_EQ(startup().refCount(), 2);
        clearRecorded();
        EXPECT_EQ(buffer.makeCurrent(), 1u);
        buffer.deleteInternalState();
        EXPECT_EQ(recorded(), (Calls{call("glXMakeCurrent", fakeDisplay(), pbuffer, context),
                                     call("glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, 0),
                                     call("glXMakeCurrent", fakeDisplay(), 0, nullptr),
                                     call("glXDestroyContext", fakeDisplay(), context),
                                     call("glXMakeContextCurrent", fakeDisplay(), 0, 0, nullptr),
                                     call("glXDestroyPbuffer", fakeDisplay(), pbuffer)}));
        EXPECT_TRUE(ledger(NameKind::Pbuffer).live.empty());
        EXPECT_EQ(startup().refCount(), 1);
    }
}

TEST_F(PbufferTest, eachFailureEndsItThere) {
    for (const bool sgix : {false, true}) {
        choose(sgix);
        walkFailures(
            steps(sgix), [&](GLFrameBuffer& buffer) { return create(buffer, wanted(), 640, 480); },
            [&](GLFrameBuffer& buffer, const Step& step, Calls calls) {
                if (step.call.starts_with("glXCreatePbuffer")) // the visual is looked for all the same
                    calls.push_back(steps(sgix)[6].call);
                EXPECT_EQ(recorded(), calls);
                EXPECT_EQ(buffer.fKind, step.failure == 5 ? 0u : 2u);
                EXPECT_EQ(buffer.fWidth, 0u);
                EXPECT_EQ(buffer.fActualFormat.fColorFormat, 14u);
                EXPECT_EQ(buffer.fRequestedFormat.fColorFormat, 2u);
            });
    }
}

TEST_F(PbufferTest, needsARoadAndAStartupContext) {
    for (const GLCapability sgix : {kCapSGIXChooseFBConfig, kCapSGIXPbuffer, kCapSGIXContextWithConfig}) {
        gl().fExtEnabled[sgix] = false;
        for (const GLCapability glx : {kCapGLXFBConfig, kCapGLXPbuffer, kCapGLXNewContext}) {
            for (bool* flags : {gl().fExtEnabled, gl().fExtSupported}) {
                flags[glx] = false;
                GLFrameBuffer buffer;
                EXPECT_EQ(create(buffer, wanted(), 8, 8), 1u);
                flags[glx] = true;
            }
        }
        gl().fExtEnabled[sgix] = true;
    }
    script().configCount = 0;
    GLFrameBuffer none;
    EXPECT_EQ(create(none, wanted(), 8, 8), 2u);
    script().configCount = 1;

    std::swap(startup().context, none.fContext);
    GLFrameBuffer contextless;
    EXPECT_EQ(create(contextless, wanted(), 8, 8), 4u);
    std::swap(startup().context, none.fContext);
    GLFrameBuffer displayless;
    EXPECT_EQ(displayless.createOffscreen(WindowWrapper(), wanted(), 8, 8, false), 4u);
}

TEST_F(PbufferTest, makesTheStartupContextThatItNeeds) {
    GLStartupContext* kept = GLStartupContext::fpGlobalGLStartupContext;
    GLStartupContext::fpGlobalGLStartupContext = nullptr;
    GLFrameBuffer buffer;
    EXPECT_EQ(create(buffer, wanted(), 8, 8), 0u);
    ASSERT_NE(GLStartupContext::fpGlobalGLStartupContext, nullptr);
    EXPECT_TRUE(GLStartupContext::fpGlobalGLStartupContext->valid);
    EXPECT_EQ(GLStartupContext::fpGlobalGLStartupContext->refCount(), 1);
    buffer.deleteInternalState();
    GLStartupContext::fpGlobalGLStartupContext = kept;
}

TEST_F(PbufferTest, cutsTheSizeToTheDrivers) {
    const struct {
        int largestWidth, largestHeight;
        unsigned width, height, cutWidth, cutHeight, squareWidth, squareHeight;
    } kCases[] = {
        {4096, 4096, 5000, 100, 4096, 100, 4096, 4096}, // the height by the width that was wanted
        {4096, 4096, 100, 5000, 100, 4096, 100, 5000},
        {3000, 4096, 2000, 2000, 2000, 2000, 1500, 1500}, // 3000 is nearer to 2048: half of it
        {3000, 4096, 1500, 2000, 1500, 2000, 1500, 2000},
        {4096, 3100, 4000, 10, 4000, 10, 3100, 3100},     // nearer to 4096: stays
        {3072, 3072, 4000, 4000, 3072, 3072, 3072, 3072}, // half-way stays
        {1, 8, 4, 4, 1, 4, 1, 1},
        {0, 0, 40000, 3, 40000, 3, 40000, 3}, // a driver that tells no limit
        {0, 8, 40, 9, 40, 8, 8, 8},
        {3, 3, 4, 4, 3, 3, 3, 3},
    };
    for (const auto& c : kCases) {
        script().configAttributes[GLX_MAX_PBUFFER_WIDTH] = c.largestWidth;
        script().configAttributes[GLX_MAX_PBUFFER_HEIGHT] = c.largestHeight;
        for (const auto& [sgix, square] : {std::pair{false, false}, {false, true}, {true, true}}) {
            choose(sgix);
            GLFrameBuffer buffer;
            ASSERT_EQ(create(buffer, wanted(), c.width, c.height, square), 0u);
            const bool squared = square && !sgix;
            EXPECT_EQ(buffer.fWidth, squared ? c.squareWidth : c.cutWidth)
                << c.width << ' ' << c.largestWidth;
            EXPECT_EQ(buffer.fHeight, squared ? c.squareHeight : c.cutHeight)
                << c.height << ' ' << c.largestHeight;
        }
    }
}

TEST_F(PbufferTest, asksForSizesAndSamplesAndReadsWhatCame) {
    GLFrameBuffer buffer;
    ASSERT_EQ(create(buffer, wanted(4, 6, 16), 8, 8), 0u);
    EXPECT_EQ(recorded()[2], call("glXChooseFBConfig", fakeDisplay(), 0, configuration(32, 16, 0), kOut));

    const std::vector<std::array<int, 6>> kCases = {
        // bits of red, alpha, depth and stencil; colour format and depth format that come of it
        {0, 0, 0, 0, 14, 15}, {0, 8, 16, 1, 0, 6},     {8, 0, 24, 4, 1, 7},
        {8, 1, 32, 8, 2, 15}, {10, 2, 23, 16, 14, 15}, {5, 0, 24, 2, 14, 7}};
    for (const auto& c : kCases) {
        script().configAttributes[GLX_RED_SIZE] = c[0];
        script().configAttributes[GLX_ALPHA_SIZE] = c[1];
        script().configAttributes[GLX_DEPTH_SIZE] = c[2];
        script().configAttributes[GLX_STENCIL_SIZE] = c[3];
        script().configAttributes[GLX_SAMPLE_BUFFERS] = c[0] == 10 ? 1 : 0;
        ASSERT_EQ(create(buffer, wanted(), 8, 8), 0u);
        EXPECT_EQ(buffer.fActualFormat.fColorFormat, static_cast<uint32_t>(c[4]));
        EXPECT_EQ(buffer.fActualFormat.fDepthFormat, static_cast<uint32_t>(c[5]));
        const uint32_t stencil = c[3] == 1 ? 10 : c[3] == 4 ? 11 : c[3] == 8 ? 12 : c[3] == 16 ? 13 : 16;
        EXPECT_EQ(buffer.fActualFormat.fStencilFormat, stencil);
        EXPECT_EQ(buffer.fActualFormat.fSamplingType, c[0] == 10 ? kSamplingMultiple : kSamplingSingle);
    }

    Values doubled = configuration(8, 24, 8);
    doubled[3] = 1;
    ASSERT_EQ(buffer.createPbufferPortably(WindowWrapper(this, kWindow, fakeDisplay()), wanted(), 8, 8), 0u);
    EXPECT_THAT(recorded(), testing::Contains(call("glXChooseFBConfig", fakeDisplay(), 0, doubled, kOut)));

    script().answers["glXQueryExtensionsString"] = [](const auto&) {
        return reinterpret_cast<uintptr_t>("GLX_ARB_multisample");
    };
    script().values[GL_SAMPLE_BUFFERS] = {1};
    script().values[GL_SAMPLES] = {4};
    ASSERT_EQ(create(buffer, wanted(2, 7, 12, kSamplingMultiple), 8, 8), 0u);
    Values list = configuration(8, 24, 8);
    list.pop_back();
    list.insert(list.end(), {0x80A8, 1, 0x80A9, 4, 0});
    EXPECT_EQ(recorded()[4], call("glXChooseFBConfig", fakeDisplay(), 0, list, kOut));
}

} // namespace
