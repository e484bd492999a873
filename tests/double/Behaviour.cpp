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

/// Tracked state, or nothing.
std::vector<double> trackedValue(GLenum name) {
    const State& s = state();
    switch (name) {
    case GL_ACTIVE_TEXTURE:
        return {static_cast<double>(s.activeTexture)};
    case GL_VIEWPORT:
        return {std::begin(s.viewport), std::end(s.viewport)};
    case GL_FRAMEBUFFER_BINDING_EXT:
        return {static_cast<double>(s.framebuffer)};
    default:
        return {};
    }
}

std::vector<double> valueOf(GLenum name) {
    const auto scripted = script().values.find(name);
    return scripted != script().values.end() ? scripted->second : trackedValue(name);
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
    for (GLsizei i = 0; i < count; ++i)
        deleteName(kind, names[i]);
}

GLboolean isLive(const char* function, NameKind kind, GLuint name) {
    return record(function, {name}).otherwise<GLboolean>(ledger(kind).live.contains(name));
}

GLhandleARB makeShaderObject(const char* function, const std::vector<Argument>& arguments) {
    const Outcome outcome = record(function, arguments);
    return outcome ? static_cast<GLhandleARB>(makeName(NameKind::ShaderObject))
                   : outcome.otherwise<GLhandleARB>(0);
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

Bool bindContext(const Outcome& outcome, Display* display, GLXDrawable draw, GLXDrawable read,
                 GLXContext context) {
    if (!outcome)
        return outcome.otherwise<Bool>(False);
    State& s = state();
    s.display = context ? display : nullptr;
    s.draw = draw;
    s.read = read;
    s.context = context;
    return True;
}

GLXContext makeContext(const char* function, const std::vector<Argument>& arguments) {
    const Outcome outcome = record(function, arguments);
    return outcome ? contextOf(makeName(NameKind::Context)) : outcome.otherwise<GLXContext>(nullptr);
}

XID makeDrawable(const char* function, NameKind kind, const std::vector<Argument>& arguments) {
    const Outcome outcome = record(function, arguments);
    return outcome ? makeName(kind) : outcome.otherwise<XID>(0);
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

void glGetIntegerv(GLenum name, GLint* values) {
    answerQuery("glGetIntegerv", name, values);
}

void glGetFloatv(GLenum name, GLfloat* values) {
    answerQuery("glGetFloatv", name, values);
}

void glGetDoublev(GLenum name, GLdouble* values) {
    answerQuery("glGetDoublev", name, values);
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

GLboolean glIsEnabled(GLenum cap) {
    return record("glIsEnabled", {cap}).otherwise<GLboolean>(state().enabled.contains(cap));
}

void glEnableClientState(GLenum array) {
    if (record("glEnableClientState", {array}))
        state().enabled.insert(array);
}

void glDisableClientState(GLenum array) {
    if (record("glDisableClientState", {array}))
        state().enabled.erase(array);
}

void glActiveTexture(GLenum texture) {
    if (record("glActiveTexture", {texture}))
        state().activeTexture = texture;
}

void glActiveTextureARB(GLenum texture) {
    if (record("glActiveTextureARB", {texture}))
        state().activeTexture = texture;
}

void glViewport(GLint x, GLint y, GLsizei width, GLsizei height) {
    const GLint viewport[] = {x, y, width, height};
    if (record("glViewport", {x, y, width, height}))
        std::copy(std::begin(viewport), std::end(viewport), state().viewport);
}

// Names.

void glGenTextures(GLsizei n, GLuint* names) {
    generate("glGenTextures", NameKind::Texture, n, names);
}

void glDeleteTextures(GLsizei n, const GLuint* names) {
    remove("glDeleteTextures", NameKind::Texture, n, names);
}

GLboolean glIsTexture(GLuint name) {
    return isLive("glIsTexture", NameKind::Texture, name);
}

void glGenBuffersARB(GLsizei n, GLuint* names) {
    generate("glGenBuffersARB", NameKind::Buffer, n, names);
}

void glDeleteBuffersARB(GLsizei n, const GLuint* names) {
    remove("glDeleteBuffersARB", NameKind::Buffer, n, names);
    for (GLsizei i = 0; i < n; ++i)
        state().buffers.erase(names[i]);
}

GLboolean glIsBufferARB(GLuint name) {
    return isLive("glIsBufferARB", NameKind::Buffer, name);
}

void glGenFramebuffersEXT(GLsizei n, GLuint* names) {
    generate("glGenFramebuffersEXT", NameKind::Framebuffer, n, names);
}

void glDeleteFramebuffersEXT(GLsizei n, const GLuint* names) {
    remove("glDeleteFramebuffersEXT", NameKind::Framebuffer, n, names);
}

GLboolean glIsFramebufferEXT(GLuint name) {
    return isLive("glIsFramebufferEXT", NameKind::Framebuffer, name);
}

void glGenRenderbuffersEXT(GLsizei n, GLuint* names) {
    generate("glGenRenderbuffersEXT", NameKind::Renderbuffer, n, names);
}

void glDeleteRenderbuffersEXT(GLsizei n, const GLuint* names) {
    remove("glDeleteRenderbuffersEXT", NameKind::Renderbuffer, n, names);
}

GLboolean glIsRenderbufferEXT(GLuint name) {
    return isLive("glIsRenderbufferEXT", NameKind::Renderbuffer, name);
}

void glGenQueriesARB(GLsizei n, GLuint* names) {
    generate("glGenQueriesARB", NameKind::Query, n, names);
}

void glDeleteQueriesARB(GLsizei n, const GLuint* names) {
    remove("glDeleteQueriesARB", NameKind::Query, n, names);
}

void glGenOcclusionQueriesNV(GLsizei n, GLuint* names) {
    generate("glGenOcclusionQueriesNV", NameKind::Query, n, names);
}

void glDeleteOcclusionQueriesNV(GLsizei n, const GLuint* names) {
    remove("glDeleteOcclusionQueriesNV", NameKind::Query, n, names);
}

void glGenProgramsARB(GLsizei n, GLuint* names) {
    generate("glGenProgramsARB", NameKind::Program, n, names);
}

void glDeleteProgramsARB(GLsizei n, const GLuint* names) {
    remove("glDeleteProgramsARB", NameKind::Program, n, names);
}

GLuint glGenLists(GLsizei range) {
    const Outcome outcome = record("glGenLists", {range});
    if (!outcome || range <= 0)
        return outcome.otherwise<GLuint>(0);
    const GLuint first = static_cast<GLuint>(makeName(NameKind::List));
    for (GLsizei i = 1; i < range; ++i)
        makeName(NameKind::List);
    return first;
}

void glDeleteLists(GLuint list, GLsizei range) {
    if (!record("glDeleteLists", {list, range}))
        return;
    for (GLsizei i = 0; i < range; ++i)
        deleteName(NameKind::List, list + i);
}

GLhandleARB glCreateShaderObjectARB(GLenum type) {
    return makeShaderObject("glCreateShaderObjectARB", {type});
}

GLhandleARB glCreateProgramObjectARB() {
    return makeShaderObject("glCreateProgramObjectARB", {});
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

void glBindFramebufferEXT(GLenum target, GLuint framebuffer) {
    if (record("glBindFramebufferEXT", {target, framebuffer}))
        state().framebuffer = framebuffer;
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

void (*glXGetProcAddress(const GLubyte* procName))() {
    return glXGetProcAddressARB(procName);
}

XVisualInfo* glXChooseVisual(Display* display, int screen, int* attributes) {
    return record("glXChooseVisual", {display, screen, attributes}).otherwise(onlyVisual());
}

GLXContext glXCreateContext(Display* display, XVisualInfo* visual, GLXContext share, Bool direct) {
    return makeContext("glXCreateContext", {display, visual, share, direct});
}

GLXContext glXCreateNewContext(Display* display, GLXFBConfig config, int type, GLXContext share,
                               Bool direct) {
    return makeContext("glXCreateNewContext", {display, config, type, share, direct});
}

GLXContext glXCreateContextWithConfigSGIX(Display* display, GLXFBConfigSGIX config, int type,
                                          GLXContext share, Bool direct) {
    return makeContext("glXCreateContextWithConfigSGIX", {display, config, type, share, direct});
}

void glXDestroyContext(Display* display, GLXContext context) {
    if (record("glXDestroyContext", {display, context}))
        deleteName(NameKind::Context, reinterpret_cast<uint64_t>(context));
}

Bool glXMakeCurrent(Display* display, GLXDrawable drawable, GLXContext context) {
    return bindContext(record("glXMakeCurrent", {display, drawable, context}), display, drawable, drawable,
                       context);
}

Bool glXMakeContextCurrent(Display* display, GLXDrawable draw, GLXDrawable read, GLXContext context) {
    return bindContext(record("glXMakeContextCurrent", {display, draw, read, context}), display, draw, read,
                       context);
}

GLXContext glXGetCurrentContext() {
    return record("glXGetCurrentContext", {}).otherwise(state().context);
}

GLXDrawable glXGetCurrentDrawable() {
    return record("glXGetCurrentDrawable", {}).otherwise(state().draw);
}

GLXDrawable glXGetCurrentReadDrawable() {
    return record("glXGetCurrentReadDrawable", {}).otherwise(state().read);
}

Display* glXGetCurrentDisplay() {
    return record("glXGetCurrentDisplay", {}).otherwise(state().display);
}

GLXFBConfig* glXChooseFBConfig(Display* display, int screen, const int* attributes, int* count) {
    return configs(record("glXChooseFBConfig", {display, screen, attributes, count}), count);
}

GLXFBConfigSGIX* glXChooseFBConfigSGIX(Display* display, int screen, int* attributes, int* count) {
    return configs(record("glXChooseFBConfigSGIX", {display, screen, attributes, count}), count);
}

GLXFBConfig* glXGetFBConfigs(Display* display, int screen, int* count) {
    return configs(record("glXGetFBConfigs", {display, screen, count}), count);
}

int glXGetFBConfigAttrib(Display* display, GLXFBConfig config, int attribute, int* value) {
    return configAttribute(record("glXGetFBConfigAttrib", {display, config, attribute, value}), attribute,
                           value);
}

int glXGetConfig(Display* display, XVisualInfo* visual, int attribute, int* value) {
    return configAttribute(record("glXGetConfig", {display, visual, attribute, value}), attribute, value);
}

XVisualInfo* glXGetVisualFromFBConfig(Display* display, GLXFBConfig config) {
    return record("glXGetVisualFromFBConfig", {display, config}).otherwise(onlyVisual());
}

XVisualInfo* glXGetVisualFromFBConfigSGIX(Display* display, GLXFBConfigSGIX config) {
    return record("glXGetVisualFromFBConfigSGIX", {display, config}).otherwise(onlyVisual());
}

GLXWindow glXCreateWindow(Display* display, GLXFBConfig config, Window window, const int* attributes) {
    return makeDrawable("glXCreateWindow", NameKind::GlxWindow, {display, config, window, attributes});
}

void glXDestroyWindow(Display* display, GLXWindow window) {
    if (record("glXDestroyWindow", {display, window}))
        deleteName(NameKind::GlxWindow, window);
}

GLXPbuffer glXCreatePbuffer(Display* display, GLXFBConfig config, const int* attributes) {
    return makeDrawable("glXCreatePbuffer", NameKind::Pbuffer, {display, config, attributes});
}

GLXPbufferSGIX glXCreateGLXPbufferSGIX(Display* display, GLXFBConfigSGIX config, unsigned width,
                                       unsigned height, int* attributes) {
    return makeDrawable("glXCreateGLXPbufferSGIX", NameKind::Pbuffer,
                        {display, config, width, height, attributes});
}

void glXDestroyPbuffer(Display* display, GLXPbuffer pbuffer) {
    if (record("glXDestroyPbuffer", {display, pbuffer}))
        deleteName(NameKind::Pbuffer, pbuffer);
}

void glXDestroyGLXPbufferSGIX(Display* display, GLXPbufferSGIX pbuffer) {
    if (record("glXDestroyGLXPbufferSGIX", {display, pbuffer}))
        deleteName(NameKind::Pbuffer, pbuffer);
}

} // extern "C"
