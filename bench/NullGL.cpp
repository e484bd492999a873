#include "NullGL.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glx.h>

#include <algorithm>

// The few functions whose answers matter to a caller.

std::vector<std::string>* nullGLLookups = nullptr;

extern "C" {

const GLubyte* glGetString(GLenum name) {
    const char* text = name == GL_VERSION ? "2.1 null"
                                          : "GL_ARB_multitexture GL_EXT_framebuffer_object "
                                            "GL_ARB_vertex_program GL_ARB_fragment_program "
                                            "GL_ARB_vertex_buffer_object GL_ARB_occlusion_query "
                                            "GL_ARB_shader_objects GL_EXT_texture_filter_anisotropic";
    return reinterpret_cast<const GLubyte*>(text);
}

void glGetIntegerv(GLenum, GLint* value) {
    *value = 8;
}

/// Everything compiles and links.
void glGetObjectParameterivARB(GLhandleARB, GLenum, GLint* value) {
    *value = 1;
}

void glGenBuffersARB(GLsizei n, GLuint* buffers) {
    static GLuint last = 0;
    std::generate_n(buffers, n, [] { return ++last; });
}

void (*glXGetProcAddressARB(const GLubyte* asked))() {
    const char* name = reinterpret_cast<const char*>(asked);
    if (nullGLLookups)
        nullGLLookups->emplace_back(name);
    const auto before = [](const NullFunction& f, const char* wanted) {
        return std::string_view(f.name) < wanted;
    };
    const auto* found = std::lower_bound(kNullFunctions, kNullFunctionsEnd, name, before);
    return found != kNullFunctionsEnd && found->name == std::string_view(name) ? found->address : nullptr;
}
}
