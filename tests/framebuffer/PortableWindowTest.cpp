#include "FrameBufferTest.h"

#include <algorithm>

namespace {

constexpr Window kParent = 0x55;
const Values kSizes = {8, 8, 9, 8, 10, 8, 11, 8, 12, 24, 13, 8, 0};

Values before(Values list, const Values& rest) {
    list.insert(list.end(), rest.begin(), rest.end());
    return list;
}

const Values kConfiguration = before({0x8012, 1, 0x8010, 1, 0x8011, 1, 5, 1}, kSizes);
const Values kVisual = before({4, 5}, kSizes);

class PortableWindow : public FrameBufferTest {
protected:
    PortableWindow() {
        fakeGeometry() = {320, 200};
        int count = 0;
        fConfigs = glXChooseFBConfig(fakeDisplay(), 0, nullptr, &count);
        clearRecorded();
    }

    static uint32_t create(GLFrameBuffer& buffer, SamplingType sampling = kSamplingSingle) {
        clearRecorded();
        return buffer.createInWindowPortably(
            {nullptr, kParent, fakeDisplay()},
            {kRasterRGBA8, kRasterDepth24, kRasterStencil8, sampling, IHWTexture::kTexture2D});
    }

    /// The child window, a name of its own in each test.
    static Calls childMade(Calls calls) {
        calls.push_back(call("XGetGeometry", fakeDisplay(), kParent));
        calls.push_back(call("XCreateColormap", fakeDisplay(), kFakeRoot, onlyVisual()->visual, AllocNone));
        calls.push_back(call("XCreateWindow", fakeDisplay(), kParent, 0, 0, 320, 200, 0, 24, InputOutput,
                             onlyVisual()->visual, 0x2809, Values{0, 0, 0x6800F, double(kFakeColormap)}));
        return calls;
    }

    static void expectNothingLeft() {
        EXPECT_EQ(ledger(NameKind::Context).live.size(), 1u) << "the start-up context's";
        EXPECT_EQ(ledger(NameKind::XWindow).live.size(), 1u);
        EXPECT_TRUE(ledger(NameKind::GlxWindow).live.empty());
        const auto calls = [](const char* name) {
            return std::count_if(recorded().begin(), recorded().end(),
                                 [&](const std::string& text) { return text.starts_with(name); });
        };
        EXPECT_EQ(calls("XCreateColormap"), calls("XFreeColormap"));
    }

    GLXFBConfig* fConfigs = nullptr;
};

TEST_F(PortableWindow, livesOnAConfiguration) {
    GLFrameBuffer buffer;
    ASSERT_EQ(create(buffer), 0u);
    const GLXContext context = nthContext(1);
    const Window child = nthName(NameKind::XWindow, 1);
    const GLXWindow drawable = nthName(NameKind::GlxWindow);
    Calls expected =
        childMade({call("glXChooseFBConfig", fakeDisplay(), 0, kConfiguration, kOut),
                   call("glXGetVisualFromFBConfig", fakeDisplay(), nthConfig()), call("XFree", fConfigs),
                   call("glXCreateNewContext", fakeDisplay(), nthConfig(), 0x8014, startup().context, 1)});
    expected.push_back(call("glXCreateWindow", fakeDisplay(), nthConfig(), child, nullptr));
    expected.push_back(call("XFree", onlyVisual()));
    EXPECT_EQ(recorded(), expected);
    EXPECT_EQ(buffer.fKind, GLFrameBuffer::kWindowed);
    EXPECT_EQ(buffer.fWindow.fbWindow(), child) << "what the host maps";
    EXPECT_EQ(startup().refCount(), 2);

    clearRecorded();
    buffer.makeCurrent();
    buffer.swapBuffers();
    buffer.resizeWindow(30, 20);
    buffer.deleteInternalState();
    EXPECT_EQ(recorded(), (Calls{call("glXMakeCurrent", fakeDisplay(), drawable, context),
                                 call("glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, 0),
                                 call("glXSwapBuffers", fakeDisplay(), drawable),
                                 call("XResizeWindow", fakeDisplay(), child, 30, 20), call("glXWaitX"),
                                 call("glXMakeCurrent", fakeDisplay(), 0, nullptr),
                                 call("glXDestroyContext", fakeDisplay(), context),
                                 call("glXDestroyWindow", fakeDisplay(), drawable),
                                 call("XDestroyWindow", fakeDisplay(), child),
                                 call("XFreeColormap", fakeDisplay(), kFakeColormap)}));
    EXPECT_EQ(startup().refCount(), 1);
}

/// Without GLX 1.3, and where it refuses, on a visual; also of a driver whose chooser of visuals refuses what
/// the lists of createInWindow hold.
TEST_F(PortableWindow, livesOnAVisualWhereThereIsNoConfiguration) {
    script().answers["glXChooseVisual"] = [](const std::vector<Argument>& arguments) {
        const int* list = static_cast<int*>(arguments[2].pointer());
        return list[0] == GLX_RGBA ? reinterpret_cast<uintptr_t>(onlyVisual()) : 0;
    };
    const auto refuse = [](const auto&) { return uint64_t{0}; };
    for (const char* missing : {"glXChooseFBConfig", "glXGetVisualFromFBConfig", "glXCreateNewContext"}) {
        script().answers["glXChooseFBConfigSGIX"] = refuse;
        script().answers[missing] = refuse;
        GLFrameBuffer buffer;
        EXPECT_EQ(buffer.createInWindow({nullptr, kParent, fakeDisplay()}, {}), 2u);
        buffer.deleteInternalState();
        ASSERT_EQ(create(buffer), 0u) << missing;
        buffer.deleteInternalState();
        expectNothingLeft();
        script().answers.erase(missing);
    }
    gl().fExtEnabled[kCapGLXFBConfig] = false;
    GLFrameBuffer buffer;
    ASSERT_EQ(create(buffer), 0u);
    Calls expected = childMade({call("glXChooseVisual", fakeDisplay(), 0, kVisual),
                                call("glXCreateContext", fakeDisplay(), onlyVisual(), startup().context, 1)});
    expected.push_back(call("XFree", onlyVisual()));
    EXPECT_EQ(recorded(), expected);
    const Window child = buffer.fWindow.fbWindow();
    EXPECT_EQ(buffer.fDrawable, child);
    clearRecorded();
    buffer.deleteInternalState();
    EXPECT_EQ(recorded()[2], call("XDestroyWindow", fakeDisplay(), child)) << "and no glXDestroyWindow";
    EXPECT_EQ(recorded().size(), 4u);
}

TEST_F(PortableWindow, leavesNothingAfterAFailure) {
    const struct {
        std::vector<const char*> failing;
        uint32_t result;
    } kCases[] = {
        {{"glXChooseFBConfig", "glXChooseVisual"}, 2},
        {{"glXCreateNewContext", "glXCreateContext"}, 4},
        {{"XGetGeometry"}, 3},
        {{"XCreateWindow"}, 3},
        {{"glXCreateWindow"}, 3},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.failing[0]);
        for (const char* name : c.failing)
            failNext(name);
        GLFrameBuffer buffer;
        EXPECT_EQ(create(buffer), c.result);
        expectNothingLeft();
        EXPECT_EQ(buffer.fKind, 0u);
        EXPECT_EQ(startup().refCount(), 2);
        EXPECT_EQ(create(buffer), 0u) << "tries again";
        buffer.deleteInternalState();
        buffer.deleteInternalState();
        EXPECT_EQ(startup().refCount(), 1);
        expectNothingLeft();
    }
    gl().fExtEnabled[kCapGLXNewContext] = false;
    gl().fglXChooseVisual = nullptr;
    GLFrameBuffer unsupported;
    EXPECT_EQ(create(unsupported), 1u);
}

TEST_F(PortableWindow, prefersTheScreensOwnDepthAndTakesSamplesWhereThereAreAny) {
    XVisualInfo deep = *onlyVisual();
    deep.depth = 32;
    script().configCount = 3;
    script().answers["glXGetVisualFromFBConfig"] = [&](const std::vector<Argument>& arguments) {
        const void* config = arguments[1].pointer();
        return reinterpret_cast<uintptr_t>(config == nthConfig(0)   ? nullptr
                                           : config == nthConfig(1) ? &deep
                                                                    : onlyVisual());
    };
    Values sampled = kConfiguration;
    sampled.pop_back();
    sampled = before(sampled, {100000, 1, 100001, 4, 0});
    GLFrameBuffer buffer;
    ASSERT_EQ(create(buffer, kSamplingMultiple), 0u);
    EXPECT_EQ(recorded()[0], call("glXChooseFBConfig", fakeDisplay(), 0, sampled, kOut));
    const std::string last =
        call("glXCreateNewContext", fakeDisplay(), nthConfig(2), 0x8014, startup().context, 1);
    EXPECT_THAT(recorded(), testing::Contains(last));

    script().configCount = 2;
    failNext("glXChooseFBConfig");
    ASSERT_EQ(create(buffer, kSamplingMultiple), 0u);
    EXPECT_EQ(recorded()[1], call("glXChooseFBConfig", fakeDisplay(), 0, kConfiguration, kOut));
    EXPECT_THAT(recorded(), testing::Contains(call("XFree", &deep)));
}

/// A host may delete its start-up context under a window. The window's reference went with it, and is no
/// claim on the one that came after, wherever that one lies.
TEST_F(PortableWindow, leavesALaterStartupContextAlone) {
    GLFrameBuffer old;
    ASSERT_EQ(create(old), 0u);
    auto* first = new GLStartupContext(WindowWrapper(nullptr, 5, fakeDisplay()), nullptr);
    GLStartupContext::fpGlobalGLStartupContext = first;
    GLFrameBuffer orphan;
    ASSERT_EQ(create(orphan), 0u);
    delete first;
    GLFrameBuffer later;
    ASSERT_EQ(create(later), 0u) << "makes a start-up context";
    GLStartupContext* second = GLStartupContext::fpGlobalGLStartupContext;
    ASSERT_EQ(second->refCount(), 1);
    orphan.deleteInternalState();
    EXPECT_EQ(second->refCount(), 1);
    old.deleteInternalState();
    EXPECT_EQ(startup().refCount(), 1) << "gives back what it took, whichever is the global one";
    later.deleteInternalState();
    EXPECT_EQ(GLStartupContext::fpGlobalGLStartupContext, nullptr) << "went with its only user";
}

} // namespace
