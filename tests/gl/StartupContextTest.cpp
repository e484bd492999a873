#include "DoubleTest.h"
#include "FakeLoader.h"

#include "gl/GLStartupContext.h"

#include <algorithm>
#include <utility>

namespace {

/// The start-up context without a table: its own construction makes it.
class StartupContext : public testing::Test {
protected:
    StartupContext() {
        resetRecording();
        resetLoader();
        script().version = "1.1";
    }

    static GLStartupContext* make(GLXContext share = nullptr) {
        auto* startup = new GLStartupContext(WindowWrapper(nullptr, 5, fakeDisplay()), share);
        startup->ref();
        return startup;
    }

    /// Asks for a visual and makes context, colormap and window.
    static Calls creation(GLXContext share = nullptr, int n = 0) {
        Calls calls = untilContext(share);
        calls.push_back(call("XCreateColormap", fakeDisplay(), kFakeRoot, onlyVisual()->visual, AllocNone));
        calls.push_back(call("XCreateWindow", fakeDisplay(), kFakeRoot, 0, 0, 10, 10, 0, 24, InputOutput,
                             onlyVisual()->visual, 0x2009, Values{0, 0, double(kFakeColormap)}));
        calls.push_back(call("glXGetCurrentDrawable"));
        calls.push_back(call("glXGetCurrentContext"));
        calls.push_back(call("glXMakeCurrent", fakeDisplay(), nthName(NameKind::XWindow, n), nthContext(n)));
        return calls;
    }

    static Calls untilContext(GLXContext share = nullptr) {
        return {call("glXChooseVisual", fakeDisplay(), 0,
                     Values{4, 5, 8, 8, 9, 8, 10, 8, 11, 8, 12, 24, 13, 8, 0}),
                call("glXCreateContext", fakeDisplay(), onlyVisual(), share, 1)};
    }

    /// What populate calls on a version without multitexture.
    static Calls population() {
        return {call("glGetString", GL_VERSION), call("glGetString", GL_EXTENSIONS),
                call("glGetIntegerv", GL_MAX_TEXTURE_SIZE, kOut)};
    }

    static Calls together(std::initializer_list<Calls> parts) {
        Calls all;
        for (const Calls& part : parts)
            all.insert(all.end(), part.begin(), part.end());
        return all;
    }
};

TEST_F(StartupContext, makesWindowContextAndTable) {
    GLStartupContext* startup = make(nthContext(9));
    EXPECT_EQ(recorded(), together({creation(nthContext(9)), population()}));
    EXPECT_TRUE(startup->valid);
    EXPECT_EQ(startup->window, nthName(NameKind::XWindow));
    EXPECT_EQ(startup->context, nthContext());
    EXPECT_EQ(startup->display, fakeDisplay());
    EXPECT_EQ(startup->wrapper.window(), 5u) << "the host's own window";
    EXPECT_EQ(GLStartupContext::fsNumInstances_GLStartupContext, 1);
    EXPECT_EQ(GLStartupContext::fpGlobalGLStartupContext, nullptr) << "storing it is the host's part";
    EXPECT_EQ(GLFunctionTable::fsNumInstances_GLFunctionTable, 1);
    EXPECT_EQ(glXGetCurrentContext(), nthContext()) << "where none was current its own stays";

    const Calls opening = {call("dlopen", "libGL.so", 1),
                           call("dlsym", "glXChooseVisual"),
                           call("dlerror"),
                           call("dlsym", "glXCreateContext"),
                           call("dlerror"),
                           call("dlsym", "glXMakeCurrent"),
                           call("dlerror"),
                           call("dlsym", "glXGetCurrentDrawable"),
                           call("dlerror"),
                           call("dlsym", "glXGetCurrentContext"),
                           call("dlerror"),
                           call("dlopen", "libGL.so", 1),
                           call("dlsym", "glAccum")};
    EXPECT_EQ(Calls(loaderCalls().begin(), loaderCalls().begin() + 13), opening);
    startup->unref();
}

TEST_F(StartupContext, putsTheHostsBindingBack) {
    const struct {
        GLXDrawable drawable;
        GLXContext context;
        bool restored;
    } kCases[] = {
        {44, nthContext(9), true},
        {0, nthContext(9), false},
        {44, nullptr, false},
        {0, nullptr, false},
    };
    for (const auto& c : kCases) {
        resetRecording();
        script().version = "1.1";
        script().answers["glXGetCurrentDrawable"] = [&](auto&) { return c.drawable; };
        script().answers["glXGetCurrentContext"] = [&](auto&) {
            return reinterpret_cast<uintptr_t>(c.context);
        };
        GLStartupContext* startup = make();
        Calls expected = together({creation(), population()});
        if (c.restored)
            expected.push_back(call("glXMakeCurrent", fakeDisplay(), c.drawable, c.context));
        EXPECT_EQ(recorded(), expected);
        startup->unref();
    }
}

TEST_F(StartupContext, aSecondOnePopulatesTheSameTableAgain) {
    GLStartupContext* first = make();
    GLFunctionTable* table = GLFunctionTable::fpGlobalFunctionTable;
    clearRecorded();
    script().version = "1.5";
    GLStartupContext* second = make(first->context);
    EXPECT_EQ(GLFunctionTable::fpGlobalFunctionTable, table);
    EXPECT_EQ(GLFunctionTable::fsNumInstances_GLFunctionTable, 1);
    EXPECT_TRUE(table->usable(kCapVertexBufferObject)) << "populated anew";
    EXPECT_EQ(recorded().back(), call("glXMakeCurrent", fakeDisplay(), first->window, first->context));
    EXPECT_EQ(Calls(recorded().begin(), recorded().begin() + 7), creation(first->context, 1));
    EXPECT_EQ(GLStartupContext::fsNumInstances_GLStartupContext, 2);

    GLStartupContext::fpGlobalGLStartupContext = first;
    second->unref();
    EXPECT_EQ(GLStartupContext::fpGlobalGLStartupContext, nullptr) << "cleared though another one was stored";
    first->unref();
    EXPECT_EQ(GLStartupContext::fsNumInstances_GLStartupContext, 0);
    EXPECT_EQ(GLFunctionTable::fpGlobalFunctionTable, table) << "the table outlives every context";
}

TEST_F(StartupContext, isMadeCurrentAndDestroyed) {
    GLStartupContext* startup = make();
    GLStartupContext::fpGlobalGLStartupContext = startup;
    const Window window = startup->window;
    clearRecorded();
    EXPECT_TRUE(startup->makeCurrent());
    script().failing["glXMakeCurrent"] = 3;
    EXPECT_FALSE(startup->makeCurrent()) << "what GLX answers";
    startup->unref();
    EXPECT_EQ(recorded(), (Calls{call("glXMakeCurrent", fakeDisplay(), window, nthContext()),
                                 call("glXMakeCurrent", fakeDisplay(), window, nthContext()),
                                 call("glXMakeCurrent", fakeDisplay(), 0, nullptr),
                                 call("glXDestroyContext", fakeDisplay(), nthContext()),
                                 call("XDestroyWindow", fakeDisplay(), window)}));
    EXPECT_EQ(GLStartupContext::fpGlobalGLStartupContext, nullptr);
    EXPECT_EQ(ledger(NameKind::Context).strayDeletions, 0);
    EXPECT_TRUE(ledger(NameKind::Context).live.empty());
    EXPECT_TRUE(ledger(NameKind::XWindow).live.empty());
}

TEST_F(StartupContext, aFailureLeavesItInvalid) {
    Calls untilWindow = creation();
    untilWindow.resize(4);
    const struct {
        const char* failing;
        Calls calls;
    } kCases[] = {
        {"glXChooseVisual", {untilContext()[0]}},
        {"glXCreateContext", untilContext()},
        {"XCreateWindow", untilWindow},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.failing);
        resetRecording();
        script().failing[c.failing] = 1;
        GLStartupContext* startup = make();
        EXPECT_EQ(recorded(), c.calls);
        EXPECT_FALSE(startup->valid);
        EXPECT_EQ(startup->window, 0u);
        EXPECT_EQ(startup->context, nullptr);
        EXPECT_EQ(GLFunctionTable::fpGlobalFunctionTable, nullptr);
        EXPECT_EQ(GLStartupContext::fsNumInstances_GLStartupContext, 0);
        clearRecorded();
        EXPECT_FALSE(startup->makeCurrent());
        startup->unref();
        EXPECT_EQ(recorded(), Calls{}) << "nothing is taken down";
        // Lowered by every destructor, though only a whole construction raises it.
        EXPECT_EQ(std::exchange(GLStartupContext::fsNumInstances_GLStartupContext, 0), -1);
    }
}

/// GLX that refuses to make the new context current is taken at its word only later: the table is filled all
/// the same.
TEST_F(StartupContext, aRefusedBindingIsNoFailure) {
    script().failing["glXMakeCurrent"] = 1;
    GLStartupContext* startup = make();
    EXPECT_TRUE(startup->valid);
    EXPECT_EQ(recorded(), together({creation(), population()}));
    startup->unref();
}

TEST_F(StartupContext, withoutDisplayOrLookUpNothingIsCalled) {
    for (const char* missing : {"", "glXChooseVisual", "glXCreateContext", "glXMakeCurrent",
                                "glXGetCurrentDrawable", "glXGetCurrentContext"}) {
        SCOPED_TRACE(missing);
        missingSymbols() = {missing};
        Display* display = *missing ? fakeDisplay() : nullptr;
        auto* startup = new GLStartupContext(WindowWrapper(nullptr, 5, display), nullptr);
        startup->ref();
        EXPECT_FALSE(startup->valid);
        EXPECT_FALSE(startup->makeCurrent());
        EXPECT_EQ(GLStartupContext::fsNumInstances_GLStartupContext, 0);
        startup->unref();
        GLStartupContext::fsNumInstances_GLStartupContext = 0;
    }
    EXPECT_EQ(recorded(), Calls{});
    EXPECT_EQ(GLFunctionTable::fpGlobalFunctionTable, nullptr);
}

/// The plain name belongs to a development package.
TEST_F(StartupContext, opensTheVersionedLibraryWhereThePlainNameIsMissing) {
    missingLibraries() = {"libGL.so"};
    GLStartupContext* startup = make();
    EXPECT_TRUE(startup->valid);
    EXPECT_EQ(recorded(), together({creation(), population()}));
    EXPECT_EQ(Calls(loaderCalls().begin(), loaderCalls().begin() + 3),
              (Calls{call("dlopen", "libGL.so", 1), call("dlopen", "libGL.so.1", 1),
                     call("dlsym", "glXChooseVisual")}));
    startup->unref();
}

GLHostContext hostContext(bool works = true) {
    static bool answer;
    answer = works;
    return {nthContext(5),
            [](Display* display, GLXDrawable drawable, GLXContext context) {
                glXMakeCurrent(display, drawable, context); // stands for what a host would call
                return Bool{answer};
            },
            [](Display* display, GLXContext context) { glXDestroyContext(display, context); }};
}

TEST_F(StartupContext, takesAContextOfTheHost) {
    script().version = "2.1";
    script().extensions = "GL_EXT_framebuffer_object";
    auto* startup = new GLStartupContext(hostContext());
    startup->ref();
    GLFunctionTable& table = *GLFunctionTable::fpGlobalFunctionTable;
    EXPECT_EQ(recorded()[0], call("glXMakeCurrent", nullptr, 0, nthContext(5)));
    EXPECT_EQ(recorded()[1], call("glGetString", GL_VERSION)) << "populated with it current";
    EXPECT_TRUE(startup->valid);
    EXPECT_EQ(startup->context, nthContext(5));
    EXPECT_TRUE(table.usable(kCapShaderObjects));
    EXPECT_EQ(table.fglXSwapBuffers, nullptr);
    EXPECT_EQ(std::count(table.fExtSupported + kCapGLXPbuffer, table.fExtSupported + kCapabilityCount, true),
              0)
        << "nothing that asks for GLX";
    EXPECT_EQ(GLStartupContext::fsNumInstances_GLStartupContext, 1);
    clearRecorded();
    EXPECT_TRUE(startup->makeCurrent());
    startup->unref();
    EXPECT_EQ(recorded(), (Calls{call("glXMakeCurrent", nullptr, 0, nthContext(5)),
                                 call("glXMakeCurrent", nullptr, 0, nullptr),
                                 call("glXDestroyContext", nullptr, nthContext(5))}));

    GLStartupContext* glx = make();
    EXPECT_NE(table.fglXSwapBuffers, nullptr) << "a start-up context on a display brings GLX back";
    EXPECT_TRUE(table.usable(kCapGLXPbuffer));
    glx->unref();
}

TEST_F(StartupContext, leavesAContextThatDoesNotServeToTheHost) {
    GLHostContext none = hostContext();
    none.context = nullptr;
    GLHostContext unmade = hostContext();
    unmade.makeCurrent = nullptr;
    GLHostContext unending = hostContext();
    unending.destroyContext = nullptr;
    script().version = std::nullopt; // GL answers nothing
    for (const GLHostContext& host : {none, unmade, unending, hostContext(), hostContext(false)}) {
        auto* startup = new GLStartupContext(host);
        startup->ref();
        EXPECT_FALSE(startup->valid);
        EXPECT_EQ(startup->context, nullptr);
        clearRecorded();
        EXPECT_FALSE(startup->makeCurrent());
        startup->unref();
        EXPECT_EQ(recorded(), Calls{});
        EXPECT_EQ(std::exchange(GLStartupContext::fsNumInstances_GLStartupContext, 0), -1);
    }
}

TEST_F(StartupContext, anEmptyOneDoesNothing) {
    GLStartupContext other(nthContext());
    EXPECT_FALSE(other.valid);
    EXPECT_EQ(other.window, 0u);
    EXPECT_EQ(other.display, nullptr);
    EXPECT_EQ(other.context, nullptr);
    EXPECT_EQ(other.wrapper.display(), nullptr);
    EXPECT_FALSE(other.makeCurrent());
    EXPECT_EQ(GLStartupContext::fsNumInstances_GLStartupContext, 0);
    EXPECT_EQ(recorded(), Calls{});
    EXPECT_EQ(loaderCalls(), Calls{});
}

} // namespace
