#include "info/GLInfo.h"

#include <gl/GLFunctionTable.h>

#include <cstring>
#include <sstream>

namespace orloview {

namespace {

const char* stringOf(GLenum name) {
    const auto* text = GLFunctionTable::fpGlobalFunctionTable->glGetString(name);
    return text ? reinterpret_cast<const char*>(text) : "unknown";
}

void describeCapabilities(std::ostream& out, const GLFunctionTable& gl) {
    struct Named {
        const char* name;
        GLCapability capability;
    };
    static constexpr Named kCapabilities[] = {
#define ORLO_NAMED(name, index) {#name, name},
        ORLO_CAPABILITIES(ORLO_NAMED)
#undef ORLO_NAMED
    };
    for (const Named& named : kCapabilities) {
        if (std::strncmp(named.name, "kCapUnassigned", 14) == 0)
            continue;
        const char* state = gl.usable(named.capability)          ? "yes"
                            : gl.fExtSupported[named.capability] ? "vetoed"
                                                                 : "no";
        out << "  " << named.name << ": " << state << "\n";
    }
}

void describeLimits(std::ostream& out, const GLFunctionTable& gl) {
    const auto queried = [&gl](GLenum name) {
        GLint values[2] = {};
        gl.glGetIntegerv(name, values);
        return values[0];
    };
    out << "  texture units: " << gl.fMaxTextureUnits << "\n"
        << "  texture coordinate sets: " << gl.fMaxTextureCoords << "\n"
        << "  texture image units: " << gl.fMaxTextureImageUnits << "\n"
        << "  texture size: " << gl.fMaxTextureSize << "\n"
        << "  vertex attributes: " << gl.fMaxVertexAttribs << "\n"
        << "  array texture layers: " << gl.fMaxArrayTextureLayers << "\n"
        << "  lights: " << queried(GL_MAX_LIGHTS) << "\n"
        << "  viewport side: " << queried(GL_MAX_VIEWPORT_DIMS) << "\n";
    if (gl.usable(kCapFramebufferObject))
        out << "  renderbuffer side: " << queried(GL_MAX_RENDERBUFFER_SIZE_EXT) << "\n";
}

} // namespace

std::string describeGL() {
    const GLFunctionTable& gl = *GLFunctionTable::fpGlobalFunctionTable;
    std::ostringstream out;
    out << "OpenGL version: " << stringOf(GL_VERSION) << "\n"
        << "vendor: " << stringOf(GL_VENDOR) << "\n"
        << "renderer: " << stringOf(GL_RENDERER) << "\n"
        << "capabilities:\n";
    describeCapabilities(out, gl);
    out << "limits:\n";
    describeLimits(out, gl);
    return out.str();
}

} // namespace orloview
