// orlocg-link: links pairs of GLSL programs on the machine's OpenGL and draws with each. Reads lines of
// "VERTEX FRAGMENT" (file names, - for none) from standard input; answers each with a line: "drawn", or what
// failed and the first line that OpenGL has to say of it.

#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glx.h>
#include <X11/Xlib.h>

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <utility>

namespace {

void* library = nullptr;

/// An entry point by its name; ends the program where there is none.
template <typename Function>
Function find(const char* name) {
    static auto* const ask =
        reinterpret_cast<void* (*)(const GLubyte*)>(dlsym(library, "glXGetProcAddressARB"));
    void* address = dlsym(library, name);
    if (!address && ask)
        address = ask(reinterpret_cast<const GLubyte*>(name));
    if (!address) {
        std::fprintf(stderr, "orlocg-link: this OpenGL has no %s\n", name);
        std::exit(1);
    }
    return reinterpret_cast<Function>(address);
}

struct GL {
    decltype(&::glGetError) getError = find<decltype(&::glGetError)>("glGetError");
    decltype(&::glBegin) begin = find<decltype(&::glBegin)>("glBegin");
    decltype(&::glEnd) end = find<decltype(&::glEnd)>("glEnd");
    decltype(&::glVertex2f) vertex2f = find<decltype(&::glVertex2f)>("glVertex2f");
    decltype(&::glTexCoord2f) texCoord2f = find<decltype(&::glTexCoord2f)>("glTexCoord2f");
    decltype(&::glFinish) finish = find<decltype(&::glFinish)>("glFinish");
    PFNGLCREATESHADERPROC createShader = find<PFNGLCREATESHADERPROC>("glCreateShader");
    PFNGLSHADERSOURCEPROC shaderSource = find<PFNGLSHADERSOURCEPROC>("glShaderSource");
    PFNGLCOMPILESHADERPROC compileShader = find<PFNGLCOMPILESHADERPROC>("glCompileShader");
    PFNGLGETSHADERIVPROC getShaderiv = find<PFNGLGETSHADERIVPROC>("glGetShaderiv");
    PFNGLGETSHADERINFOLOGPROC getShaderInfoLog = find<PFNGLGETSHADERINFOLOGPROC>("glGetShaderInfoLog");
    PFNGLDELETESHADERPROC deleteShader = find<PFNGLDELETESHADERPROC>("glDeleteShader");
    PFNGLCREATEPROGRAMPROC createProgram = find<PFNGLCREATEPROGRAMPROC>("glCreateProgram");
    PFNGLATTACHSHADERPROC attachShader = find<PFNGLATTACHSHADERPROC>("glAttachShader");
    PFNGLLINKPROGRAMPROC linkProgram = find<PFNGLLINKPROGRAMPROC>("glLinkProgram");
    PFNGLGETPROGRAMIVPROC getProgramiv = find<PFNGLGETPROGRAMIVPROC>("glGetProgramiv");
    PFNGLGETPROGRAMINFOLOGPROC getProgramInfoLog = find<PFNGLGETPROGRAMINFOLOGPROC>("glGetProgramInfoLog");
    PFNGLUSEPROGRAMPROC useProgram = find<PFNGLUSEPROGRAMPROC>("glUseProgram");
    PFNGLDELETEPROGRAMPROC deleteProgram = find<PFNGLDELETEPROGRAMPROC>("glDeleteProgram");
};

/// A context on a window that nobody sees.
bool openContext() {
    library = dlopen("libGL.so.1", RTLD_LAZY | RTLD_GLOBAL);
    Display* display = XOpenDisplay(nullptr);
    if (!library || !display)
        return false;
    const auto chooseVisual = find<decltype(&::glXChooseVisual)>("glXChooseVisual");
    const auto createContext = find<decltype(&::glXCreateContext)>("glXCreateContext");
    const auto makeCurrent = find<decltype(&::glXMakeCurrent)>("glXMakeCurrent");
    // Two buffers: into a single one some drivers draw over what they read of the window, which X refuses of
    // an unmapped one.
    int attributes[] = {GLX_RGBA, GLX_DOUBLEBUFFER, GLX_DEPTH_SIZE, 16, None};
    XVisualInfo* visual = chooseVisual(display, DefaultScreen(display), attributes);
    if (!visual)
        return false;
    const Window root = RootWindow(display, visual->screen);
    XSetWindowAttributes set{};
    set.colormap = XCreateColormap(display, root, visual->visual, AllocNone);
    const Window window = XCreateWindow(display, root, 0, 0, 32, 32, 0, visual->depth, InputOutput,
                                        visual->visual, CWColormap | CWBorderPixel, &set);
    const GLXContext context = createContext(display, visual, nullptr, True);
    return context && makeCurrent(display, window, context);
}

std::string firstLine(const std::string& text) {
    return text.substr(0, std::min({text.find('\n'), text.find('\0'), size_t{300}}));
}

/// Adds a stage; what failed, or nothing.
std::string attach(const GL& gl, GLuint program, GLenum stage, const std::string& path) {
    if (path == "-")
        return {};
    std::ifstream file(path, std::ios::binary);
    const std::string source(std::istreambuf_iterator<char>(file), {});
    const GLuint shader = gl.createShader(stage);
    const char* text = source.c_str();
    gl.shaderSource(shader, 1, &text, nullptr);
    gl.compileShader(shader);
    GLint compiled = 0;
    gl.getShaderiv(shader, GL_COMPILE_STATUS, &compiled);
    std::string log(4096, '\0');
    gl.getShaderInfoLog(shader, static_cast<GLsizei>(log.size()), nullptr, log.data());
    gl.attachShader(program, shader);
    gl.deleteShader(shader);
    return compiled ? "" : "compile: " + firstLine(log);
}

std::string tryPair(const GL& gl, const std::string& vertex, const std::string& fragment) {
    const GLuint program = gl.createProgram();
    std::string failed = attach(gl, program, GL_VERTEX_SHADER, vertex);
    if (failed.empty())
        failed = attach(gl, program, GL_FRAGMENT_SHADER, fragment);
    if (failed.empty()) {
        gl.linkProgram(program);
        GLint linked = 0;
        gl.getProgramiv(program, GL_LINK_STATUS, &linked);
        std::string log(4096, '\0');
        gl.getProgramInfoLog(program, static_cast<GLsizei>(log.size()), nullptr, log.data());
        if (!linked)
            failed = "link: " + firstLine(log);
    }
    if (failed.empty()) {
        gl.useProgram(program);
        gl.begin(GL_QUADS);
        for (const auto& [x, y] : {std::pair{-1.0F, -1.0F}, {1.0F, -1.0F}, {1.0F, 1.0F}, {-1.0F, 1.0F}}) {
            gl.texCoord2f(x, y);
            gl.vertex2f(x, y);
        }
        gl.end();
        gl.finish();
        gl.useProgram(0);
    }
    if (const GLenum error = gl.getError(); error != GL_NO_ERROR && failed.empty())
        failed = "draw: GL error " + std::to_string(error);
    gl.deleteProgram(program);
    return failed.empty() ? "drawn" : failed;
}

} // namespace

int main() {
    if (!openContext()) {
        std::fputs("orlocg-link: no display, or no OpenGL on it\n", stderr);
        return 1;
    }
    const GL gl;
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream words(line);
        std::string vertex;
        std::string fragment;
        words >> vertex >> fragment;
        std::puts(tryPair(gl, vertex, fragment).c_str());
        std::fflush(stdout);
    }
    return 0;
}
