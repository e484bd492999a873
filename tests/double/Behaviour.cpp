// The functions of the double that do more than record: they answer queries, give out names and keep the
// little state that the library reads back.

#define GL_GLEXT_PROTOTYPES
#define GLX_GLXEXT_PROTOTYPES
#include "Recorder.h"

#include <GL/glxext.h>

#include <algorithm>
#include <cstring>

namespace {

GLXContext contextOf(uint64_t name) {
    return reinterpret_cast<GLXContext>(name);
}

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
void answerQuery(const char* function, GLenum name, T* values) {
    if (!record(function, {name, values}))
        return;
    const std::vector<double> value = valueOf(name);
    std::transform(value.begin(), value.end(), values, [](double v) { return static_cast<T>(v); });
}

void generate(const char* function, NameKind kind, GLsizei count, GLuint* names) {
    const Outcome outcome = record(function, {count, names});
    for (GLsizei i = 0; i < count; ++i)
        names[i] = outcome ? static_cast<GLuint>(makeName(kind)) : outcome.otherwise<GLuint>(0);
}

void remove(const char* function, NameKind kind, GLsizei count, const GLuint* names) {
    if (!record(function, {count, names}))
        return;
    for (GLsizei i = 0; i < count; ++i) {
        deleteName(kind, names[i]);
        if (kind == NameKind::Buffer)
            state().buffers.erase(names[i]);
    }
}

/// A new name as the call answers it.
template <typename T>
T make(NameKind kind, const Outcome& outcome) {
    return outcome ? (T)makeName(kind) : outcome.otherwise<T>({});
}

Argument stringList(GLsizei count, const GLcharARB** strings) {
    std::string text;
    for (GLsizei i = 0; i < count; ++i)
        text += (i > 0 ? ", \"" : "\"") + std::string(strings[i]) + '"';
    return '{' + text + '}';
}

std::vector<unsigned char>& boundBuffer(GLenum target) {
    return state().buffers[state().boundBuffers[target]];
}

Bool bindContext(const Outcome& outcome, GLXDrawable draw, GLXContext context) {
    if (!outcome)
        return outcome.otherwise<Bool>(False);
    state().draw = draw;
    state().context = context;
    return True;
}

/// Owned by the double; the caller's XFree goes to the fake one, which frees nothing.
GLXFBConfig* configs(const Outcome& outcome, int* count) {
    static std::vector<GLXFBConfig> found;
    found.clear();
    for (int i = 0; i < script().configCount; ++i)
        found.push_back(nthConfig(i));
    *count = outcome ? script().configCount : 0;
    return outcome.otherwise<GLXFBConfig*>(found.empty() ? nullptr : found.data());
}

int configAttribute(const Outcome& outcome, int attribute, int* value) {
    const auto found = script().configAttributes.find(attribute);
    if (!outcome)
        return outcome.otherwise<int>(0);
    if (found == script().configAttributes.end())
        return GLX_BAD_ATTRIBUTE;
    *value = found->second;
    return 0;
}

long inertFunction() {
    return 0;
}

} // namespace

GLXContext nthContext(int n) {
    return contextOf(nthName(NameKind::Context, n));
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

extern "C" {

// Queries.

#define QUERY(name, T)                                                                                       \
    void name(GLenum parameter, T* values) {                                                                 \
        answerQuery(#name, parameter, values);                                                               \
    }
QUERY(glGetIntegerv, GLint)
QUERY(glGetFloatv, GLfloat)

const GLubyte* glGetString(GLenum name) {
    const Outcome outcome = record("glGetString", {name});
    const auto text = [](const std::optional<std::string>& s) { return s ? s->c_str() : nullptr; };
    const char* usual = name == GL_VERSION      ? text(script().version)
                        : name == GL_EXTENSIONS ? text(script().extensions)
                        : name == GL_VENDOR     ? script().vendor.c_str()
                                                : script().renderer.c_str();
    return outcome.otherwise(reinterpret_cast<const GLubyte*>(usual));
}

GLenum glGetError() {
    const Outcome outcome = record("glGetError", {});
    if (!outcome || script().errors.empty())
        return outcome.otherwise<GLenum>(GL_NO_ERROR);
    const GLenum error = script().errors.front();
    script().errors.pop_front();
    return error;
}

void glGetBooleanv(GLenum name, GLboolean* values) {
    if (!record("glGetBooleanv", {name, values}))
        return;
    const std::vector<double> value = valueOf(name);
    for (size_t i = 0; i < value.size(); ++i)
        values[i] = value[i] != 0;
    if (value.empty())
        *values = state().enabled.contains(name);
}

// Tracked state.

void glEnable(GLenum cap) {
    if (record("glEnable", {cap}))
        state().enabled.insert(cap);
}

void glDisable(GLenum cap) {
    if (record("glDisable", {cap}))
        state().enabled.erase(cap);
}

#define ACTIVATES(name)                                                                                      \
    void name(GLenum texture) {                                                                              \
        if (record(#name, {texture}))                                                                        \
            state().activeTexture = texture;                                                                 \
    }
ACTIVATES(glActiveTexture)
ACTIVATES(glActiveTextureARB)

void glViewport(GLint x, GLint y, GLsizei width, GLsizei height) {
    const GLint viewport[] = {x, y, width, height};
    if (record("glViewport", {x, y, width, height}))
        std::copy(std::begin(viewport), std::end(viewport), state().viewport);
}

// Names.

#define NAMES(Kind, generator, deleter)                                                                      \
    void generator(GLsizei n, GLuint* names) {                                                               \
        generate(#generator, NameKind::Kind, n, names);                                                      \
    }                                                                                                        \
    void deleter(GLsizei n, const GLuint* names) {                                                           \
        remove(#deleter, NameKind::Kind, n, names);                                                          \
    }
NAMES(Texture, glGenTextures, glDeleteTextures)
NAMES(Buffer, glGenBuffersARB, glDeleteBuffersARB)
NAMES(Framebuffer, glGenFramebuffersEXT, glDeleteFramebuffersEXT)
NAMES(Renderbuffer, glGenRenderbuffersEXT, glDeleteRenderbuffersEXT)
NAMES(Query, glGenQueriesARB, glDeleteQueriesARB)
NAMES(Query, glGenOcclusionQueriesNV, glDeleteOcclusionQueriesNV)

GLhandleARB glCreateShaderObjectARB(GLenum type) {
    return make<GLhandleARB>(NameKind::ShaderObject, record("glCreateShaderObjectARB", {type}));
}

GLhandleARB glCreateProgramObjectARB() {
    return make<GLhandleARB>(NameKind::ShaderObject, record("glCreateProgramObjectARB", {}));
}

void glDeleteObjectARB(GLhandleARB object) {
    if (record("glDeleteObjectARB", {object}))
        deleteName(NameKind::ShaderObject, object);
}

void glShaderSourceARB(GLhandleARB shader, GLsizei count, const GLcharARB** sources, const GLint* lengths) {
    const Argument printed = script().rawPointers ? Argument(sources) : stringList(count, sources);
    record("glShaderSourceARB", {shader, count, printed, lengths});
}

// Buffer objects and framebuffer objects.

void glBindBufferARB(GLenum target, GLuint buffer) {
    if (record("glBindBufferARB", {target, buffer}))
        state().boundBuffers[target] = buffer;
}

void glBufferDataARB(GLenum target, GLsizeiptrARB size, const void* data, GLenum usage) {
    if (!record("glBufferDataARB", {target, size, data, usage}))
        return;
    const auto* bytes = static_cast<const unsigned char*>(data);
    if (bytes)
        boundBuffer(target).assign(bytes, bytes + size);
    else
        boundBuffer(target).assign(static_cast<size_t>(size), 0);
}

void glBufferSubDataARB(GLenum target, GLintptrARB start, GLsizeiptrARB size, const void* data) {
    std::vector<unsigned char>& buffer = boundBuffer(target);
    if (record("glBufferSubDataARB", {target, start, size, data}) &&
        static_cast<size_t>(start + size) <= buffer.size())
        std::memcpy(buffer.data() + start, data, static_cast<size_t>(size));
}

void* glMapBufferARB(GLenum target, GLenum access) {
    return record("glMapBufferARB", {target, access}).otherwise<void*>(boundBuffer(target).data());
}

GLboolean glUnmapBufferARB(GLenum target) {
    return record("glUnmapBufferARB", {target}).otherwise<GLboolean>(GL_TRUE);
}

GLenum glCheckFramebufferStatusEXT(GLenum target) {
    return record("glCheckFramebufferStatusEXT", {target}).otherwise(script().framebufferStatus);
}

// GLX.

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

XVisualInfo* glXChooseVisual(Display* display, int screen, int* attributes) {
    return record("glXChooseVisual", {display, screen, attributes}).otherwise(onlyVisual());
}

GLXContext glXCreateContext(Display* display, XVisualInfo* visual, GLXContext share, Bool direct) {
    return make<GLXContext>(NameKind::Context, record("glXCreateContext", {display, visual, share, direct}));
}

#define CONTEXT_OF_CONFIG(name)                                                                              \
    GLXContext name(Display* display, GLXFBConfig config, int type, GLXContext share, Bool direct) {         \
        return make<GLXContext>(NameKind::Context, record(#name, {display, config, type, share, direct}));   \
    }
CONTEXT_OF_CONFIG(glXCreateNewContext)
CONTEXT_OF_CONFIG(glXCreateContextWithConfigSGIX)

void glXDestroyContext(Display* display, GLXContext context) {
    if (record("glXDestroyContext", {display, context}))
        deleteName(NameKind::Context, reinterpret_cast<uint64_t>(context));
}

Bool glXMakeCurrent(Display* display, GLXDrawable drawable, GLXContext context) {
    return bindContext(record("glXMakeCurrent", {display, drawable, context}), drawable, context);
}

Bool glXMakeContextCurrent(Display* display, GLXDrawable draw, GLXDrawable read, GLXContext context) {
    return bindContext(record("glXMakeContextCurrent", {display, draw, read, context}), draw, context);
}

GLXContext glXGetCurrentContext() {
    return record("glXGetCurrentContext", {}).otherwise(state().context);
}

GLXDrawable glXGetCurrentDrawable() {
    return record("glXGetCurrentDrawable", {}).otherwise(state().draw);
}

GLXFBConfig* glXChooseFBConfig(Display* display, int screen, const int* attributes, int* count) {
    return configs(record("glXChooseFBConfig", {display, screen, attributes, count}), count);
}

GLXFBConfigSGIX* glXChooseFBConfigSGIX(Display* display, int screen, int* attributes, int* count) {
    return configs(record("glXChooseFBConfigSGIX", {display, screen, attributes, count}), count);
}

int glXGetFBConfigAttrib(Display* display, GLXFBConfig config, int attribute, int* value) {
    return configAttribute(record("glXGetFBConfigAttrib", {display, config, attribute, value}), attribute,
                           value);
}

int glXGetConfig(Display* display, XVisualInfo* visual, int attribute, int* value) {
    return configAttribute(record("glXGetConfig", {display, visual, attribute, value}), attribute, value);
}

#define VISUAL_OF_CONFIG(name)                                                                               \
    XVisualInfo* name(Display* display, GLXFBConfig config) {                                                \
        return record(#name, {display, config}).otherwise(onlyVisual());                                     \
    }
VISUAL_OF_CONFIG(glXGetVisualFromFBConfig)
VISUAL_OF_CONFIG(glXGetVisualFromFBConfigSGIX)

GLXWindow glXCreateWindow(Display* display, GLXFBConfig config, Window window, const int* attributes) {
    return make<XID>(NameKind::GlxWindow, record("glXCreateWindow", {display, config, window, attributes}));
}

GLXPbuffer glXCreatePbuffer(Display* display, GLXFBConfig config, const int* attributes) {
    return make<XID>(NameKind::Pbuffer, record("glXCreatePbuffer", {display, config, attributes}));
}

GLXPbufferSGIX glXCreateGLXPbufferSGIX(Display* display, GLXFBConfigSGIX config, unsigned width,
                                       unsigned height, int* attributes) {
    return make<XID>(NameKind::Pbuffer,
                     record("glXCreateGLXPbufferSGIX", {display, config, width, height, attributes}));
}

#define DESTROYS(name, Kind)                                                                                 \
    void name(Display* display, XID drawable) {                                                              \
        if (record(#name, {display, drawable}))                                                              \
            deleteName(NameKind::Kind, drawable);                                                            \
    }
DESTROYS(glXDestroyWindow, GlxWindow)
DESTROYS(glXDestroyPbuffer, Pbuffer)

} // extern "C"
