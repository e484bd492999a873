#include "DoubleTest.h"
#include "FakeLoader.h"

#include "gl/GLStartupContext.h"

namespace {

/// What is looked up by itself, before there is a table.
constexpr const char* kByName[] = {"glXChooseVisual", "glXCreateContext", "glXMakeCurrent",
                                   "glXGetCurrentDrawable", "glXGetCurrentContext"};

/// The start-up context without a table: its own construction makes it.
class StartupContext : public testing::Test {
protected:
    StartupContext() { reset(); }

    static void reset() {
        resetRecording();
        resetLoader();
        script().version = "1.1";
        GLStartupContext::fsNumInstances_GLStartupContext = 0;
    }

    static Shared<GLStartupContext> make(GLXContext share = nullptr, Display* display = fakeDisplay()) {
        return makeShared<GLStartupContext>(WindowWrapper(nullptr, 5, display), share);
    }

    static std::string current(GLXDrawable drawable, GLXContext context) {
        return on("glXMakeCurrent", drawable, context);
    }

    /// The n-th one's window, context and table, of a version without multitexture.
    static Calls creation(GLXContext share = nullptr, int n = 0) {
        return {on("glXChooseVisual", 0, Values{4, 5, 8, 8, 9, 8, 10, 8, 11, 8, 12, 24, 13, 8, 0}),
                on("glXCreateContext", onlyVisual(), share, 1),
                on("XCreateColormap", kFakeRoot, onlyVisual()->visual, AllocNone),
                on("XCreateWindow", kFakeRoot, 0, 0, 10, 10, 0, 24, InputOutput, onlyVisual()->visual, 0x2009,
                   Values{0, 0, double(kFakeColormap)}),
                call("glXGetCurrentDrawable"),
                call("glXGetCurrentContext"),
                current(nthName(NameKind::XWindow, n), nthContext(n)),
                call("glGetString", GL_VERSION),
                call("glGetString", GL_EXTENSIONS),
                call("glGetIntegerv", GL_MAX_TEXTURE_SIZE, kOut)};
    }

    /// It called nothing and calls nothing; every destructor lowers the count, though only a whole
    /// construction raises it.
    static void expectUseless(Shared<GLStartupContext> startup) {
        clearRecorded();
        EXPECT_FALSE(startup->valid);
        EXPECT_EQ(startup->window, 0u);
        EXPECT_EQ(startup->context, nullptr);
        EXPECT_FALSE(startup->makeCurrent());
        EXPECT_EQ(GLStartupContext::fsNumInstances_GLStartupContext, 0);
        startup.reset();
        EXPECT_EQ(std::exchange(GLStartupContext::fsNumInstances_GLStartupContext, 0), -1);
        EXPECT_EQ(recorded(), Calls{});
    }
};

TEST_F(StartupContext, isMadeUsedAndDestroyed) {
    Shared<GLStartupContext> startup = make(nthContext(9));
    EXPECT_TRUE(startup->valid);
    EXPECT_EQ(startup->wrapper.window(), 5u) << "the host's own window";
    EXPECT_EQ(GLStartupContext::fsNumInstances_GLStartupContext, 1);
    EXPECT_EQ(GLStartupContext::fpGlobalGLStartupContext, nullptr) << "storing it is the host's part";
    EXPECT_TRUE(startup->makeCurrent());
    failNext("glXMakeCurrent");
    EXPECT_FALSE(startup->makeCurrent()) << "what GLX answers";
    startup.reset();
    const Window window = nthName(NameKind::XWindow);
    EXPECT_EQ(recorded(),
              (creation(nthContext(9)) + Calls{current(window, nthContext()), current(window, nthContext()),
                                               current(0, nullptr), on("glXDestroyContext", nthContext()),
                                               on("XDestroyWindow", window)}));
}

/// The plain name belongs to a development package.
TEST_F(StartupContext, opensTheLibraryByEitherName) {
    for (bool plain : {true, false}) {
        reset();
        Calls expected = {call("dlopen", "libGL.so", 1)};
        if (!plain) {
            loader().missing = {"libGL.so"};
            expected.push_back(call("dlopen", "libGL.so.1", 1));
        }
        const Calls opened = expected;
        for (const char* name : kByName)
            expected = expected + Calls{call("dlsym", name), call("dlerror")};
        expected = expected + opened + Calls{call("dlsym", "glAccum")};
        EXPECT_TRUE(make()->valid);
        Calls first = loader().calls;
        first.resize(expected.size());
        EXPECT_EQ(first, expected);
    }
}

TEST_F(StartupContext, putsTheHostsBindingBack) {
    for (const auto& binding : {std::pair<uint64_t, GLXContext>{44, nthContext(9)},
                                {44, nullptr},
                                {0, nthContext(9)},
                                {0, nullptr}}) {
        reset();
        script().answers["glXGetCurrentDrawable"] = [=](auto&) { return binding.first; };
        script().answers["glXGetCurrentContext"] = [=](auto&) {
            return reinterpret_cast<uintptr_t>(binding.second);
        };
        failNext("glXMakeCurrent"); // is taken at its word only later: the table is filled all the same
        const Shared<GLStartupContext> startup = make();
        EXPECT_TRUE(startup->valid);
        const bool bound = binding.first && binding.second;
        EXPECT_EQ(recorded(), creation() + (bound ? Calls{current(binding.first, binding.second)} : Calls{}));
    }
}

TEST_F(StartupContext, aSecondOnePopulatesTheSameTableAgain) {
    Shared<GLStartupContext> first = make();
    const GLFunctionTable* table = GLFunctionTable::fpGlobalFunctionTable;
    clearRecorded();
    script().version = "1.5";
    Shared<GLStartupContext> second = make(first->context);
    EXPECT_EQ(GLFunctionTable::fsNumInstances_GLFunctionTable, 1);
    EXPECT_TRUE(table->usable(kCapVertexBufferObject)) << "populated anew";
    EXPECT_EQ(recorded().back(), current(first->window, first->context));
    EXPECT_EQ(GLStartupContext::fsNumInstances_GLStartupContext, 2);
    GLStartupContext::fpGlobalGLStartupContext = first.get();
    second.reset();
    EXPECT_EQ(GLStartupContext::fpGlobalGLStartupContext, nullptr) << "cleared though another one was stored";
    first.reset();
    EXPECT_EQ(GLStartupContext::fsNumInstances_GLStartupContext, 0);
    EXPECT_EQ(GLFunctionTable::fpGlobalFunctionTable, table) << "the table outlives every context";
}

TEST_F(StartupContext, aFailureLeavesItInvalid) {
    const auto expectFailure = [](const std::string& what, size_t calls, Display* display = fakeDisplay()) {
        SCOPED_TRACE(what);
        Shared<GLStartupContext> startup = make(nullptr, display);
        Calls expected = creation();
        expected.resize(calls);
        EXPECT_EQ(recorded(), expected);
        expectUseless(std::move(startup));
        reset();
    };
    for (const auto& [failing, calls] :
         {std::pair{"glXChooseVisual", 1}, {"glXCreateContext", 2}, {"XCreateWindow", 4}}) {
        failNext(failing);
        expectFailure(failing, calls);
    }
    for (const char* missing : kByName) {
        loader().missing = {missing};
        expectFailure(missing, 0);
    }
    expectFailure("no display", 0, nullptr);
    expectUseless(makeShared<GLStartupContext>(nthContext())); // an empty one
    EXPECT_EQ(loader().calls, Calls{});
    EXPECT_EQ(GLFunctionTable::fpGlobalFunctionTable, nullptr);
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
    Shared<GLStartupContext> startup = makeShared<GLStartupContext>(hostContext());
    const GLFunctionTable& table = *GLFunctionTable::fpGlobalFunctionTable;
    const auto hosted = [](GLXContext context) { return call("glXMakeCurrent", nullptr, 0, context); };
    EXPECT_EQ(recorded()[0], hosted(nthContext(5)));
    EXPECT_EQ(recorded()[1], call("glGetString", GL_VERSION)) << "populated with it current";
    EXPECT_TRUE(startup->valid && table.usable(kCapShaderObjects));
    EXPECT_EQ(table.fglXSwapBuffers, nullptr);
    EXPECT_FALSE(
        std::ranges::count(table.fExtSupported + kCapGLXPbuffer, std::end(table.fExtSupported), true))
        << "nothing that asks for GLX";
    EXPECT_EQ(GLStartupContext::fsNumInstances_GLStartupContext, 1);
    clearRecorded();
    EXPECT_TRUE(startup->makeCurrent());
    startup.reset();
    EXPECT_EQ(recorded(), (Calls{hosted(nthContext(5)), hosted(nullptr),
                                 call("glXDestroyContext", nullptr, nthContext(5))}));

    startup = make();
    EXPECT_NE(table.fglXSwapBuffers, nullptr) << "a start-up context on a display brings GLX back";
    EXPECT_TRUE(table.usable(kCapGLXPbuffer));
}

TEST_F(StartupContext, leavesAContextThatDoesNotServeToTheHost) {
    GLHostContext bad[] = {hostContext(), hostContext(), hostContext()};
    bad[0].context = nullptr;
    bad[1].makeCurrent = nullptr;
    bad[2].destroyContext = nullptr;
    expectUseless(makeShared<GLStartupContext>(hostContext())); // no framebuffer objects
    script().extensions = "GL_EXT_framebuffer_object";
    script().version = std::nullopt; // GL answers nothing
    expectUseless(makeShared<GLStartupContext>(hostContext()));
    script().version = "2.1";
    for (const GLHostContext& host : bad)
        expectUseless(makeShared<GLStartupContext>(host));
    expectUseless(makeShared<GLStartupContext>(hostContext(false)));
}

} // namespace
