// What some functions do besides being recorded: they answer queries, give out names and keep the little
// state that the library reads back.

#define GL_GLEXT_PROTOTYPES
#define GLX_GLXEXT_PROTOTYPES
#include "FakeX.h"
#include "Recorder.h"

#include <algorithm>
#include <cstring>

namespace {

using Arguments = std::vector<Argument>;

GLuint number(const Argument& argument) {
    return static_cast<GLuint>(argument.integer());
}

template <typename T>
uint64_t answer(T pointer) {
    return reinterpret_cast<uint64_t>(pointer);
}

Answer does(void (*effect)(const Arguments&)) {
    return [effect](const Arguments& arguments) {
        effect(arguments);
        return uint64_t{0};
    };
}

Answer answers(uint64_t usual) {
    return [usual](const Arguments&) { return usual; };
}

// Names.

Answer makes(NameKind kind) {
    return [kind](const Arguments&) { return makeName(kind); };
}

/// The name is in that place.
Answer deletes(NameKind kind, size_t place) {
    return [=](const Arguments& a) {
        deleteName(kind, a[place].pointer() ? answer(a[place].pointer()) : number(a[place]));
        return uint64_t{1};
    };
}

Answer generatesList(NameKind kind) {
    return [kind](const Arguments& a) {
        auto* names = static_cast<GLuint*>(a[1].pointer());
        std::generate_n(names, a[0].integer(), [kind] { return static_cast<GLuint>(makeName(kind)); });
        return uint64_t{0};
    };
}

Answer deletesList(NameKind kind) {
    return [kind](const Arguments& a) {
        const auto* names = static_cast<const GLuint*>(a[1].pointer());
        for (const GLuint* name = names; name != names + a[0].integer(); ++name) {
            deleteName(kind, *name);
            if (kind == NameKind::Buffer)
                state().buffers.erase(*name);
        }
        return uint64_t{0};
    };
}

// Queries.

/// What the script says, or tracked state, or nothing.
std::vector<double> valueOf(GLenum name) {
    const State& s = state();
    if (const auto scripted = script().values.find(name); scripted != script().values.end())
        return scripted->second;
    if (name == GL_ACTIVE_TEXTURE)
        return {static_cast<double>(s.activeTexture)};
    if (name == GL_VIEWPORT)
        return {std::begin(s.viewport), std::end(s.viewport)};
    return {};
}

template <typename T>
void query(const Arguments& a) {
    const std::vector<double> value = valueOf(number(a[0]));
    std::transform(value.begin(), value.end(), static_cast<T*>(a[1].pointer()),
                   [](double v) { return static_cast<T>(v); });
}

void queryBooleans(const Arguments& a) {
    std::vector<double> value = valueOf(number(a[0]));
    if (value.empty())
        value = {state().enabled.contains(number(a[0])) ? 1.0 : 0.0};
    std::transform(value.begin(), value.end(), static_cast<GLboolean*>(a[1].pointer()),
                   [](double v) { return v != 0; });
}

uint64_t string(const Arguments& a) {
    static const std::optional<std::string> kOther = "OrloGL";
    const GLuint name = number(a[0]);
    const auto& text = name == GL_VERSION      ? script().version
                       : name == GL_EXTENSIONS ? script().extensions
                                               : kOther;
    return answer(text ? text->c_str() : nullptr);
}

uint64_t nextError(const Arguments&) {
    if (script().errors.empty())
        return GL_NO_ERROR;
    const GLenum error = script().errors.front();
    script().errors.pop_front();
    return error;
}

// Buffer objects.

std::vector<unsigned char>& boundBuffer(const Argument& target) {
    return state().buffers[state().boundBuffers[number(target)]];
}

void bufferData(const Arguments& a) {
    const auto* bytes = static_cast<const unsigned char*>(a[2].pointer());
    std::vector<unsigned char>& buffer = boundBuffer(a[0]);
    buffer.assign(static_cast<size_t>(a[1].integer()), 0);
    if (bytes)
        std::copy_n(bytes, buffer.size(), buffer.data());
}

void bufferSubData(const Arguments& a) {
    std::vector<unsigned char>& buffer = boundBuffer(a[0]);
    if (a[1].integer() + a[2].integer() <= static_cast<long long>(buffer.size()))
        std::memcpy(buffer.data() + a[1].integer(), a[3].pointer(), static_cast<size_t>(a[2].integer()));
}

// GLX.

/// The drawable is in the second place, the context in the last.
uint64_t makeCurrent(const Arguments& a) {
    state().draw = static_cast<GLXDrawable>(a[1].integer());
    state().context = static_cast<GLXContext>(a.back().pointer());
    return True;
}

int theConfigCount = 0;

/// Owned by the double; the caller's XFree goes to the fake one, which frees nothing.
uint64_t configs(const Arguments&) {
    static GLXFBConfig theConfigs[] = {nthConfig(0), nthConfig(1), nthConfig(2)};
    theConfigCount = script().configCount;
    return answer(theConfigCount > 0 ? theConfigs : nullptr);
}

uint64_t configAttribute(const Arguments& a) {
    const auto found = script().configAttributes.find(static_cast<int>(a[2].integer()));
    if (found == script().configAttributes.end())
        return GLX_BAD_ATTRIBUTE;
    *static_cast<int*>(a[3].pointer()) = found->second;
    return 0;
}

uint64_t visual(const Arguments&) {
    return answer(onlyVisual());
}

long inertFunction() {
    return 0;
}

} // namespace

GLXContext nthContext(int n) {
    return reinterpret_cast<GLXContext>(nthName(NameKind::Context, n));
}

GLXFBConfig nthConfig(int n) {
    return reinterpret_cast<GLXFBConfig>(uintptr_t{0xF001} + n);
}

XVisualInfo* onlyVisual() {
    static XVisualInfo visual = {};
    visual.visual = reinterpret_cast<Visual*>(uintptr_t{0xA001});
    visual.depth = script().visualDepth;
    return &visual;
}

const std::map<std::string_view, Answer> kBehaviours = {
    {"glGetIntegerv", does(query<GLint>)},
    {"glGetFloatv", does(query<GLfloat>)},
    {"glGetBooleanv", does(queryBooleans)},
    {"glGetString", string},
    {"glGetError", nextError},
    {"glCheckFramebufferStatusEXT", [](const Arguments&) { return script().framebufferStatus; }},

    {"glEnable", does([](const Arguments& a) { state().enabled.insert(number(a[0])); })},
    {"glDisable", does([](const Arguments& a) { state().enabled.erase(number(a[0])); })},
    {"glActiveTexture", does([](const Arguments& a) { state().activeTexture = number(a[0]); })},
    {"glActiveTextureARB", does([](const Arguments& a) { state().activeTexture = number(a[0]); })},
    {"glViewport", does([](const Arguments& a) {
         std::transform(a.begin(), a.end(), state().viewport,
                        [](const Argument& one) { return one.integer(); });
     })},

    {"glGenTextures", generatesList(NameKind::Texture)},
    {"glGenBuffersARB", generatesList(NameKind::Buffer)},
    {"glGenFramebuffersEXT", generatesList(NameKind::Framebuffer)},
    {"glGenRenderbuffersEXT", generatesList(NameKind::Renderbuffer)},
    {"glGenQueriesARB", generatesList(NameKind::Query)},
    {"glGenOcclusionQueriesNV", generatesList(NameKind::Query)},
    {"glDeleteTextures", deletesList(NameKind::Texture)},
    {"glDeleteBuffersARB", deletesList(NameKind::Buffer)},
    {"glDeleteFramebuffersEXT", deletesList(NameKind::Framebuffer)},
    {"glDeleteRenderbuffersEXT", deletesList(NameKind::Renderbuffer)},
    {"glDeleteQueriesARB", deletesList(NameKind::Query)},
    {"glDeleteOcclusionQueriesNV", deletesList(NameKind::Query)},
    {"glCreateShaderObjectARB", makes(NameKind::ShaderObject)},
    {"glCreateProgramObjectARB", makes(NameKind::ShaderObject)},
    {"glDeleteObjectARB", deletes(NameKind::ShaderObject, 0)},

    {"glBindBufferARB", does([](const Arguments& a) { state().boundBuffers[number(a[0])] = number(a[1]); })},
    {"glBufferDataARB", does(bufferData)},
    {"glBufferSubDataARB", does(bufferSubData)},
    {"glMapBufferARB", [](const Arguments& a) { return answer(boundBuffer(a[0]).data()); }},
    {"glUnmapBufferARB", answers(GL_TRUE)},

    {"glXChooseVisual", visual},
    {"glXGetVisualFromFBConfig", visual},
    {"glXGetVisualFromFBConfigSGIX", visual},
    {"glXCreateContext", makes(NameKind::Context)},
    {"glXCreateNewContext", makes(NameKind::Context)},
    {"glXCreateContextWithConfigSGIX", makes(NameKind::Context)},
    {"glXDestroyContext", deletes(NameKind::Context, 1)},
    {"glXMakeCurrent", makeCurrent},
    {"glXMakeContextCurrent", makeCurrent},
    {"glXGetCurrentContext", [](const Arguments&) { return answer(state().context); }},
    {"glXGetCurrentDrawable", [](const Arguments&) { return state().draw; }},
    {"glXChooseFBConfig", configs},
    {"glXChooseFBConfigSGIX", configs},
    {"glXGetFBConfigAttrib", configAttribute},
    {"glXGetConfig", configAttribute},
    {"glXCreateWindow", makes(NameKind::GlxWindow)},
    {"glXCreatePbuffer", makes(NameKind::Pbuffer)},
    {"glXCreateGLXPbufferSGIX", makes(NameKind::Pbuffer)},
    {"glXDestroyWindow", deletes(NameKind::GlxWindow, 1)},
    {"glXDestroyPbuffer", deletes(NameKind::Pbuffer, 1)},

    {"XCreateColormap", answers(kFakeColormap)},
    {"XFreeColormap", answers(1)},
    {"XCreateWindow", makes(NameKind::XWindow)},
    {"XDestroyWindow", deletes(NameKind::XWindow, 1)},
    {"XResizeWindow", answers(1)},
    {"XGetGeometry", answers(1)},
    {"XFree", answers(1)},
};

extern "C" {

// Whatever else the script answers, with it comes a count of 0.
#define CHOOSES(name, Attributes)                                                                            \
    GLXFBConfig* name(Display* display, int screen, Attributes* attributes, int* count) {                    \
        theConfigCount = 0;                                                                                  \
        auto* found = (GLXFBConfig*)record(#name, {display, screen, attributes, count});                     \
        *count = theConfigCount;                                                                             \
        return found;                                                                                        \
    }
CHOOSES(glXChooseFBConfig, const int)
CHOOSES(glXChooseFBConfigSGIX, int)

__GLXextFuncPtr glXGetProcAddressARB(const GLubyte* procName) {
    const char* name = reinterpret_cast<const char*>(procName);
    recordLookup(name);
    if (script().missing.contains(name))
        return nullptr;
    if (script().inert.contains(name))
        return reinterpret_cast<__GLXextFuncPtr>(&inertFunction);
    const auto found = kDeclaredFunctions.find(name);
    return found == kDeclaredFunctions.end() ? nullptr : found->second;
}

} // extern "C"
