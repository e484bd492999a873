// Windows and pbuffers: the calls of each road to one, and what each answers when one of them fails.

#include "FrameBufferTest.h"

#include <algorithm>
#include <functional>
#include <sstream>

namespace {

constexpr Window kParent = 0x55;
constexpr Window kChild = nthName(NameKind::XWindow, 1); // the start-up context has the first
constexpr GLXWindow kGlxWindow = nthName(NameKind::GlxWindow);
constexpr GLXPbuffer kPbuffer = nthName(NameKind::Pbuffer);

using Create = std::function<uint32_t(GLFrameBuffer&, const WindowWrapper&, const koBufferFormat&)>;
const Create kInWindow = &GLFrameBuffer::createInWindow;
const Create kPortably = &GLFrameBuffer::createInWindowPortably;
const Create kAsPbuffer = [](GLFrameBuffer& buffer, const WindowWrapper& window, const koBufferFormat& f) {
    return buffer.createOffscreen(window, f, 640, 480, false);
};
const Create kAsPbufferPortably = [](GLFrameBuffer& b, const WindowWrapper& w, const koBufferFormat& f) {
    return b.createPbufferPortably(w, f, 640, 480);
};
using Capabilities = std::vector<GLCapability>;
using Answers = std::map<std::string, uint32_t>;

struct Road {
    const char* name;
    Create create;
    Capabilities vetoed;
    Calls creation;
    XID drawable;
    Window window;        // what the host maps; 0 for a pbuffer
    Calls release;        // after the context is gone
    Answers answers = {}; // where it answers to a failing call otherwise than most

    friend void PrintTo(const Road& road, std::ostream* out) { *out << road.name; }
};

/// What creating answers when one of these fails; nobody looks at the others.
const std::map<uint32_t, std::string> kAnswers = {
    {2, "glXChooseFBConfig glXChooseFBConfigSGIX glXChooseVisual glXGetVisualFromFBConfigSGIX"},
    {3, "XGetGeometry XCreateWindow glXCreateWindow"},
    {4, "glXCreateContext glXCreateNewContext glXCreateContextWithConfigSGIX"},
    {5, "glXCreatePbuffer glXCreateGLXPbufferSGIX glXGetVisualFromFBConfig"}};

/// The visual of the first configuration; onlyVisual() is what the chooser of visuals finds.
XVisualInfo theFirstVisual = {};

Values sizes(Values list, double color = 8, double depth = 24, double stencil = 8) {
    list.insert(list.end(), {8, color, 9, color, 10, color, 11, color, 12, depth, 13, stencil, 0});
    return list;
}

Values sampled(Values list, double buffers, double samples, double value) {
    list.pop_back();
    list.insert(list.end(), {buffers, 1, samples, value, 0});
    return list;
}

Values configuration(double types, double doubled, double color = 8, double depth = 24, double stencil = 8) {
    return sizes({GLX_DRAWABLE_TYPE, types, GLX_DOUBLEBUFFER, doubled, GLX_RENDER_TYPE, 1}, color, depth,
                 stencil);
}

const Values kPortable =
    sizes({GLX_X_RENDERABLE, 1, GLX_DRAWABLE_TYPE, 1, GLX_RENDER_TYPE, 1, GLX_DOUBLEBUFFER, 1});

uintptr_t configurations() {
    int count = 0;
    return reinterpret_cast<uintptr_t>(glXChooseFBConfig(fakeDisplay(), 0, nullptr, &count));
}

std::vector<Road> roads() {
    const GLXContext shared = nthContext();
    const GLXFBConfig config = nthConfig();
    const std::string freedConfigs = call("XFree", reinterpret_cast<void*>(configurations()));
    const std::string freed = call("XFree", onlyVisual());
    const std::string query = on("glXQueryExtensionsString", 0);
    const std::string context = on("glXCreateContext", onlyVisual(), shared, 1);
    const std::string visual = on("glXGetVisualFromFBConfig", config);
    const Calls child = {on("XGetGeometry", kParent),
                         on("XCreateColormap", kFakeRoot, onlyVisual()->visual, AllocNone),
                         on("XCreateWindow", kParent, 0, 0, 640, 480, 0, 30, InputOutput,
                            onlyVisual()->visual, 0x2809, Values{0, 0, 0x6800F, double(kFakeColormap)})};
    const Calls bySGIX = Calls{query,
                               on("glXChooseFBConfigSGIX", 0, configuration(1, 1), kOut),
                               on("glXGetVisualFromFBConfigSGIX", config),
                               on("glXCreateContext", &theFirstVisual, shared, 1),
                               on("glXChooseVisual", 0, configuration(1, 1)),
                               context} +
                         child + Calls{freed, freedConfigs};
    const Calls byVisual =
        Calls{query, on("glXChooseVisual", 0, sizes({GLX_DOUBLEBUFFER, GLX_USE_GL})), context} + child +
        Calls{freed};
    const Calls byGLX13 = {query, on("glXChooseFBConfig", 0, configuration(1, 1), kOut),
                           on("glXCreateNewContext", config, GLX_DRAWABLE_TYPE, shared, 1),
                           on("glXCreateWindow", config, kParent, nullptr), freedConfigs};
    const Calls portable = Calls{on("glXChooseFBConfig", 0, kPortable, kOut), visual, freedConfigs,
                                 on("glXCreateNewContext", config, GLX_RGBA_TYPE, shared, 1)} +
                           child + Calls{on("glXCreateWindow", config, kChild, nullptr), freed};
    const Calls portableByVisual =
        Calls{on("glXChooseVisual", 0, sizes({GLX_RGBA, GLX_DOUBLEBUFFER})), context} + child + Calls{freed};
    const auto pbuffer = [&](const char* chooser, double doubled, const std::string& creation,
                             const char* contextOf) {
        Calls calls = {on("glXMakeCurrent", nthName(NameKind::XWindow), shared), query,
                       on(chooser, 0, configuration(5, doubled), kOut)};
        for (int side : {GLX_MAX_PBUFFER_WIDTH, GLX_MAX_PBUFFER_HEIGHT})
            calls.push_back(on("glXGetFBConfigAttrib", config, side, kOut));
        calls = calls + Calls{creation, visual, on(contextOf, config, GLX_RGBA_TYPE, shared, 1)};
        for (int size : {GLX_RED_SIZE, GLX_ALPHA_SIZE, GLX_DEPTH_SIZE, GLX_STENCIL_SIZE, GLX_SAMPLE_BUFFERS})
            calls.push_back(on("glXGetConfig", onlyVisual(), size, kOut));
        return calls + Calls{freedConfigs, freed};
    };
    Values size = {GLX_PBUFFER_WIDTH, 640, GLX_PBUFFER_HEIGHT, 480, GLX_LARGEST_PBUFFER, 0};
    size.insert(size.end(), {GLX_PRESERVED_CONTENTS, 0, 0});
    const Calls pbuffer13 =
        pbuffer("glXChooseFBConfig", 0, on("glXCreatePbuffer", config, size), "glXCreateNewContext");
    const Calls pbufferSGIX = pbuffer("glXChooseFBConfigSGIX", 1,
                                      on("glXCreateGLXPbufferSGIX", config, 640, 480, configuration(5, 1)),
                                      "glXCreateContextWithConfigSGIX");
    const Capabilities sgix = {kCapSGIXChooseFBConfig};
    const Capabilities windows = {kCapSGIXChooseFBConfig, kCapGLXFBConfig, kCapGLXWindow};
    const Capabilities pbuffers = {kCapGLXPbuffer, kCapGLXWindow};
    const Calls destroyed = {on("glXDestroyWindow", kGlxWindow)};
    const Calls freedChild = {on("XDestroyWindow", kChild), on("XFreeColormap", kFakeColormap)};
    const Calls freed13 = {on("glXMakeContextCurrent", 0, 0, nullptr), on("glXDestroyPbuffer", kPbuffer)};
    const Calls freedSGIX = {on("XDestroyWindow", kPbuffer)};
    // The context is refused then; the road by a visual is taken.
    const Answers refused = {{"glXChooseFBConfig", 4}};
    const Answers another = {
        {"glXChooseFBConfig", 0}, {"glXGetVisualFromFBConfig", 0}, {"glXCreateNewContext", 0}};
    return {
        {"bySGIX", kInWindow, {}, bySGIX, kChild, kChild, {on("glXDestroyWindow", kChild)}},
        {"byVisual", kInWindow, windows, byVisual, kChild, kChild, {on("XDestroyWindow", 0)}},
        {"byGLX13", kInWindow, sgix, byGLX13, kGlxWindow, kGlxWindow, destroyed, refused},
        {"portable", kPortably, {}, portable, kGlxWindow, kChild, destroyed + freedChild, another},
        {"portableByVisual", kPortably, windows, portableByVisual, kChild, kChild, freedChild},
        {"pbuffer", kAsPbuffer, {}, pbuffer13, kPbuffer, 0, freed13},
        {"pbufferBySGIX", kAsPbufferPortably, pbuffers, pbufferSGIX, kPbuffer, 0, freedSGIX},
    };
}

class DrawableTest : public FrameBufferTest {
protected:
    DrawableTest() {
        script().visualDepth = 30;
        script().answers["glXGetVisualFromFBConfigSGIX"] = [](const auto&) {
            return reinterpret_cast<uintptr_t>(&theFirstVisual);
        };
        script().configAttributes = {
            {GLX_RED_SIZE, 8}, {GLX_ALPHA_SIZE, 8}, {GLX_DEPTH_SIZE, 24}, {GLX_STENCIL_SIZE, 8}};
    }

    uint32_t create(const Create& by, GLFrameBuffer& buffer,
                    const koBufferFormat& format = bufferFormat(2, 7, 12)) {
        clearRecorded();
        return by(buffer, WindowWrapper(this, kParent, fakeDisplay()), format);
    }

    void enable(const Capabilities& capabilities, bool enabled) {
        for (GLCapability capability : capabilities)
            gl().fExtEnabled[capability] = enabled;
    }

    /// The call that begins so, empty where there is none.
    static std::string theCall(const std::string& name) {
        const auto found =
            std::ranges::find_if(recorded(), [&](const auto& text) { return text.starts_with(name); });
        return found == recorded().end() ? "" : *found;
    }
};

class DrawableRoad : public DrawableTest, public testing::WithParamInterface<Road> {
protected:
    DrawableRoad() { enable(GetParam().vetoed, false); }

    uint32_t create(GLFrameBuffer& buffer) { return DrawableTest::create(GetParam().create, buffer); }
};
INSTANTIATE_TEST_SUITE_P(, DrawableRoad, testing::ValuesIn(roads()),
                         [](const auto& road) { return std::string(road.param.name); });

TEST_P(DrawableRoad, isMadeUsedAndReleased) {
    const Road& road = GetParam();
    const bool isWindow = road.window != 0;
    GLFrameBuffer buffer;
    buffer.fActualFormat.fTextureType = IHWTexture::kTextureCubeMap;
    ASSERT_EQ(create(buffer), 0u);
    EXPECT_EQ(startup().refCount(), 2);
    EXPECT_EQ(buffer.isOffscreen(), !isWindow);
    EXPECT_TRUE(buffer.fOwnsDrawable && buffer.fGLXDrawableFlag && !buffer.fFramebufferObjectFlag);
    EXPECT_EQ(numbers(buffer.fRequestedFormat), numbers(bufferFormat(2, 7, 12)));
    EXPECT_EQ(numbers(buffer.fActualFormat), numbers(bufferFormat(2, 7, 12, isWindow ? 2 : 5)));
    EXPECT_EQ(std::pair(buffer.fWidth, buffer.fHeight), isWindow ? std::pair(0u, 0u) : std::pair(640u, 480u));
    EXPECT_EQ(buffer.fWindow.widget(), this);
    EXPECT_EQ(buffer.fWindow.window(), kParent);
    EXPECT_EQ(buffer.fWindow.fbWindow(), road.window);

    // By SGIX the first context is left.
    const GLXContext context = nthContext(ledger(NameKind::Context).made - 1);
    Calls expected = road.creation + Calls{on("glXMakeCurrent", road.drawable, context), bound(0)};
    EXPECT_EQ(buffer.makeCurrent(), 1u);
    if (isWindow) {
        buffer.swapBuffers();
        buffer.resizeWindow(30, 20);
        expected = expected + Calls{on("glXSwapBuffers", road.drawable),
                                    on("XResizeWindow", road.window, 30, 20), call("glXWaitX")};
    }
    const int instances = GLFrameBuffer::fsNumInstances_GLFrameBuffer;
    for (int releases : {1, 2}) {
        buffer.deleteInternalState();
        EXPECT_EQ(startup().refCount(), 1);
        EXPECT_EQ(buffer.fKind | buffer.fDrawable | buffer.fPbuffer, 0u);
        EXPECT_EQ(GLFrameBuffer::fsNumInstances_GLFrameBuffer, instances - releases) << "falls at every one";
    }
    expected = expected + Calls{on("glXMakeCurrent", 0, nullptr), on("glXDestroyContext", context)};
    EXPECT_EQ(recorded(), expected + road.release);
}

TEST_P(DrawableRoad, saysWhichCallFailed) {
    const Road& road = GetParam();
    std::string name;
    Answers answers = road.answers;
    for (const auto& [answer, names] : kAnswers)
        for (std::istringstream words(names); words >> name;)
            answers.insert({name, answer});
    std::map<std::string, int> counts;
    for (const std::string& failing : road.creation) {
        SCOPED_TRACE(failing);
        name = failing.substr(0, failing.find('('));
        const uint32_t answer = answers[name];
        failNext(name.c_str(), ++counts[name]);
        GLFrameBuffer buffer;
        EXPECT_EQ(create(buffer), answer);
        if (answer == 0)
            continue;
        const bool isKnownAsWindow =
            counts.contains("glXChooseFBConfigSGIX") && name != "glXChooseFBConfigSGIX";
        EXPECT_EQ(buffer.fKind, road.window != 0 ? isKnownAsWindow : answer == 5 ? 0 : 2);
        EXPECT_EQ(buffer.fActualFormat.fColorFormat, kRasterNoColor);
        EXPECT_EQ(buffer.fWindow.window() + buffer.fWidth + buffer.fOwnsDrawable, 0u);
        clearRecorded();
        buffer.deleteInternalState();
        EXPECT_EQ(recorded(), Calls{}) << "what was made is left";
        EXPECT_EQ(startup().refCount(), 1);
    }
}

TEST_P(DrawableRoad, needsADisplayAndATableAndMakesAStartupContext) {
    const bool isWindow = GetParam().window != 0;
    GLFrameBuffer buffer;
    EXPECT_EQ(GetParam().create(buffer, WindowWrapper(), {}), 4u);
    GLFunctionTable::fpGlobalFunctionTable = isWindow ? nullptr : &gl(); // a pbuffer calls through it at once
    EXPECT_EQ(create(buffer), isWindow ? 4u : 0u);
    GLFunctionTable::fpGlobalFunctionTable = &gl();
    for (int left : {3, 2, 1, 1}) { // taken before either is looked at
        EXPECT_EQ(startup().refCount(), left);
        buffer.deleteInternalState();
    }
    GLStartupContext::fpGlobalGLStartupContext = nullptr;
    ASSERT_EQ(create(buffer), 0u);
    const GLStartupContext* made = GLStartupContext::fpGlobalGLStartupContext;
    ASSERT_TRUE(made && made->valid);
    EXPECT_EQ(made->wrapper.window(), kParent);
    buffer.deleteInternalState();
    EXPECT_EQ(GLStartupContext::fpGlobalGLStartupContext, nullptr) << "went with its only user";
}

TEST_F(DrawableTest, takesTheFirstRoadWhoseCapabilitiesAreAllThere) {
    const Capabilities kAll = {kCapGLXFBConfig,        kCapGLXNewContext,         kCapGLXWindow,
                               kCapGLXPbuffer,         kCapSGIXPbuffer,           kCapSGIXContextWithConfig,
                               kCapSGIXChooseFBConfig, kCapSGIXVisualFromFBConfig};
    const std::string sgix = "glXChooseFBConfigSGIX(", glx13 = "glXChooseFBConfig(", old = "glXChooseVisual(";
    for (uint32_t vetoed = 0; vetoed < 1U << kAll.size(); ++vetoed) {
        SCOPED_TRACE(vetoed);
        for (size_t i = 0; i < kAll.size(); ++i)
            gl().fExtEnabled[kAll[i]] = (vetoed >> i & 1) == 0;
        const auto usable = [&](auto... needed) { return (gl().usable(needed) && ...); };
        const auto expectChooser = [&](const Create& by, const std::string& chooser) {
            GLFrameBuffer buffer;
            EXPECT_EQ(create(by, buffer), chooser.empty() ? 1u : 0u);
            EXPECT_EQ(theCall("glXChoose").substr(0, chooser.size()), chooser);
        };
        const bool glx = usable(kCapGLXFBConfig, kCapGLXNewContext);
        expectChooser(kInWindow, usable(kCapSGIXChooseFBConfig, kCapSGIXVisualFromFBConfig) ? sgix
                                 : glx                                                      ? glx13
                                                                                            : old);
        expectChooser(kPortably, glx && usable(kCapGLXWindow) ? glx13 : old);
        const bool bySGIX = usable(kCapSGIXChooseFBConfig, kCapSGIXContextWithConfig, kCapSGIXPbuffer);
        expectChooser(kAsPbuffer, glx && usable(kCapGLXPbuffer) ? glx13 : bySGIX ? sgix : "");
    }
}

TEST_F(DrawableTest, translatesFormatsIntoSizesAndBack) {
    constexpr std::array kTold = {GLX_RED_SIZE, GLX_ALPHA_SIZE, GLX_DEPTH_SIZE, GLX_STENCIL_SIZE,
                                  GLX_SAMPLE_BUFFERS};
    // Of colour, depth and stencil the formats that are asked for, the bits that GLX is asked for, what it
    // tells in that order, the formats that come of it, and their sampling.
    const std::tuple<std::array<uint32_t, 3>, std::array<int, 3>, std::array<int, 5>, std::array<uint32_t, 3>>
        kCases[] = {{{4, 7, 16}, {32, 24, 0}, {0, 0, 0, 0, 0}, {14, 15, 16}},
                    {{3, 6, 10}, {8, 16, 1}, {0, 8, 16, 1, 0}, {0, 6, 10}},
                    {{5, 8, 11}, {8, 16, 4}, {8, 0, 24, 4, 0}, {1, 7, 11}},
                    {{14, 15, 12}, {8, 16, 8}, {8, 1, 32, 8, 0}, {2, 15, 12}},
                    {{0, 9, 13}, {8, 16, 16}, {10, 2, 23, 16, 1}, {14, 15, 13}},
                    {{1, 7, 8}, {8, 24, 0}, {5, 0, 24, 2, 0}, {14, 7, 16}}};
    for (const auto& [asked, bits, told, actual] : kCases) {
        for (size_t i = 0; i < told.size(); ++i)
            script().configAttributes[kTold[i]] = told[i];
        GLFrameBuffer buffer;
        ASSERT_EQ(create(kAsPbuffer, buffer, bufferFormat(asked[0], asked[1], asked[2])), 0u);
        EXPECT_EQ(theCall("glXChoose"),
                  on("glXChooseFBConfig", 0, configuration(5, 0, bits[0], bits[1], bits[2]), kOut));
        const uint32_t sampling = told[4] == 0 ? kSamplingSingle : kSamplingMultiple;
        EXPECT_EQ(numbers(buffer.fActualFormat),
                  numbers(bufferFormat(actual[0], actual[1], actual[2], 3, sampling)));
    }
}

TEST_F(DrawableTest, asksForTheSamplesOfTheCurrentContext) {
    const char* const kOffer = "GLX_A GLX_ARB_multisample_more";
    for (const auto& [offer, sampling, buffers] : {std::tuple{kOffer, 7, 2.0},
                                                   {kOffer, int(kSamplingSingle), 1.0},
                                                   {kOffer, 7, 0.0},
                                                   {"GLX_ARB_multisampl", 7, 1.0},
                                                   {nullptr, 7, 1.0}}) {
        script().answers["glXQueryExtensionsString"] = [told = reinterpret_cast<uintptr_t>(offer)](auto&) {
            return told;
        };
        script().values = {{GL_SAMPLES, {6}}, {GL_SAMPLE_BUFFERS, {buffers}}};
        GLFrameBuffer buffer;
        EXPECT_EQ(create(kInWindow, buffer, bufferFormat(2, 7, 12, 2, sampling)), 0u);
        const Values list = configuration(1, 1);
        EXPECT_EQ(
            theCall("glXChooseVisual"),
            on("glXChooseVisual", 0, buffers == 2 ? sampled(list, GL_SAMPLE_BUFFERS, GL_SAMPLES, 6) : list));
    }
}

TEST_F(DrawableTest, needsAConfigurationAndSomethingToShareObjectsWith) {
    GLFrameBuffer buffer;
    script().answers["glXChooseFBConfigSGIX"] =
        script().answers["glXChooseFBConfig"] = [configs = configurations()](const auto&) { return configs; };
    for (const auto& [by, vetoed] : {std::pair{kInWindow, kCapGLXFBConfig},
                                     {kAsPbuffer, kCapSGIXPbuffer},
                                     {kAsPbuffer, kCapGLXPbuffer}}) {
        gl().fExtEnabled[vetoed] = false;
        EXPECT_EQ(create(by, buffer), 2u) << "an array, but a count of 0";
        gl().fExtEnabled[vetoed] = true;
    }
    const GLXContext kept = std::exchange(startup().context, nullptr);
    EXPECT_EQ(create(kPortably, buffer), 4u);
    EXPECT_EQ(create(kAsPbuffer, buffer), 4u);
    startup().context = kept;
}

TEST_F(DrawableTest, portableWindowsPreferTheScreensOwnDepthAndDoWithoutSamples) {
    XVisualInfo shallow = *onlyVisual();
    shallow.depth = 24;
    script().answers["glXGetVisualFromFBConfig"] = [&](const std::vector<Argument>& arguments) {
        const void* config = arguments[1].pointer();
        return reinterpret_cast<uintptr_t>(config == nthConfig(0)   ? nullptr
                                           : config == nthConfig(1) ? onlyVisual()
                                                                    : &shallow);
    };
    for (int count : {3, 2}) { // with two none is of the screen's depth, and none has samples
        script().configCount = count;
        if (count == 2)
            failNext("glXChooseFBConfig");
        GLFrameBuffer buffer;
        ASSERT_EQ(create(kPortably, buffer, bufferFormat(2, 7, 12, 2, kSamplingMultiple)), 0u);
        EXPECT_EQ(recorded()[0],
                  on("glXChooseFBConfig", 0, sampled(kPortable, GLX_SAMPLE_BUFFERS, GLX_SAMPLES, 4), kOut));
        EXPECT_EQ(recorded()[1] == on("glXChooseFBConfig", 0, kPortable, kOut), count == 2);
        EXPECT_EQ(theCall("glXCreateNewContext"),
                  on("glXCreateNewContext", nthConfig(count - 1), GLX_RGBA_TYPE, startup().context, 1));
    }
}

TEST_F(DrawableTest, pbuffersAreCutToTheDriversSize) {
    // The largest of the driver, what is wanted, what comes of it, and what of it in a square.
    const std::array<unsigned, 8> kCases[] = {
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
        script().configAttributes = {{GLX_MAX_PBUFFER_WIDTH, int(c[0])}, {GLX_MAX_PBUFFER_HEIGHT, int(c[1])}};
        for (const auto& [sgix, square] : {std::pair{false, false}, {false, true}, {true, true}}) {
            enable({kCapGLXPbuffer}, !sgix);
            GLFrameBuffer buffer;
            const WindowWrapper window(nullptr, 5, fakeDisplay());
            ASSERT_EQ(buffer.createOffscreen(window, bufferFormat(), c[2], c[3], square), 0u);
            const size_t cut = square && !sgix ? 6 : 4;
            EXPECT_EQ(std::pair(buffer.fWidth, buffer.fHeight), std::pair(c[cut], c[cut + 1])) << &c - kCases;
        }
    }
}

TEST_F(DrawableTest, aWindowOfTheHostIsGivenBackAsItWas) {
    GLFrameBuffer buffer;
    WindowWrapper window(this, kParent, fakeDisplay());
    window.setFBWindow(0x66);
    const koBufferFormat format = bufferFormat(kRasterRGB8, kRasterDepth16);
    const auto assign = [&] { return buffer.assignInWindow(nthContext(8), window, format, 30, 20); };
    const int instances = GLFrameBuffer::fsNumInstances_GLFrameBuffer;
    for (GLStartupContext* global : {static_cast<GLStartupContext*>(nullptr), &startup()}) {
        GLStartupContext::fpGlobalGLStartupContext = global;
        buffer.fPbuffer = 7;
        EXPECT_EQ(assign(), 0u);
        EXPECT_EQ(startup().refCount(), global ? 2 : 1);
        EXPECT_EQ(buffer.fPbuffer + buffer.fOwnsDrawable, 0u);
        EXPECT_EQ(buffer.fWindow.fbWindow(), 0x66u);
        EXPECT_EQ((std::array{buffer.fWidth, buffer.fHeight}), (std::array{30u, 20u}));
        EXPECT_EQ(numbers(buffer.fRequestedFormat), numbers(format));
        EXPECT_EQ(numbers(buffer.fActualFormat), numbers(format));
        EXPECT_EQ(buffer.makeCurrent(), 1u);
        buffer.swapBuffers();
        EXPECT_EQ(made(),
                  (Calls{on("glXMakeCurrent", kParent, nthContext(8)), on("glXSwapBuffers", kParent)}))
            << "a framebuffer object stays bound";
        for (int i = 0; i < 2; ++i)
            buffer.unassignInWindow();
        EXPECT_EQ(buffer.fKind, 0u);
        EXPECT_EQ(startup().refCount(), 1);
    }
    EXPECT_EQ(GLFrameBuffer::fsNumInstances_GLFrameBuffer, instances);
    assign();
    buffer.deleteInternalState(); // as good as giving it back, but for the count
    EXPECT_EQ(GLFrameBuffer::fsNumInstances_GLFrameBuffer, instances - 1);
    GLFunctionTable::fpGlobalFunctionTable = nullptr;
    EXPECT_EQ(assign(), 4u);
    GLFunctionTable::fpGlobalFunctionTable = &gl();
    EXPECT_EQ(buffer.fKind, 0u) << "cleared";
    EXPECT_EQ(startup().refCount(), 1);
    EXPECT_EQ(recorded(), Calls{});
}

/// A host may delete its start-up context under a window. The window's reference went with it, and is no
/// claim on the one that came after, wherever that one lies.
TEST_F(DrawableTest, aLaterStartupContextIsLeftAlone) {
    GLFrameBuffer old, orphan, later;
    ASSERT_EQ(create(kPortably, old), 0u);
    auto* first = new GLStartupContext(WindowWrapper(nullptr, 5, fakeDisplay()), nullptr);
    GLStartupContext::fpGlobalGLStartupContext = first;
    ASSERT_EQ(create(kPortably, orphan), 0u);
    delete first;
    ASSERT_EQ(create(kPortably, later), 0u) << "makes a start-up context";
    orphan.deleteInternalState();
    EXPECT_EQ(GLStartupContext::fpGlobalGLStartupContext->refCount(), 1);
    old.deleteInternalState();
    EXPECT_EQ(startup().refCount(), 1) << "gives back what it took, whichever is the global one";
    later.deleteInternalState();
    EXPECT_EQ(GLStartupContext::fpGlobalGLStartupContext, nullptr) << "went with its only user";
}

} // namespace
