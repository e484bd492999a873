#include "ArgumentRules.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glx.h>

#include <regex>

// Which pointers print as the elements behind them. Only those that GL reads during the call: never vertex
// arrays or images, which may be offsets into a buffer object.

namespace {

/// How many numbers a parameter has that is set by name.
size_t parameterCount(long long parameter) {
    switch (parameter) {
    case GL_AMBIENT:
    case GL_DIFFUSE:
    case GL_SPECULAR:
    case GL_POSITION:
    case GL_EMISSION:
    case GL_AMBIENT_AND_DIFFUSE:
    case GL_TEXTURE_BORDER_COLOR:
    case GL_TEXTURE_ENV_COLOR:
    case GL_OBJECT_PLANE:
    case GL_EYE_PLANE:
    case GL_FOG_COLOR:
    case GL_LIGHT_MODEL_AMBIENT:
        return 4;
    case GL_SPOT_DIRECTION:
    case GL_COLOR_INDEXES:
    case GL_POINT_DISTANCE_ATTENUATION:
        return 3;
    default:
        return 1;
    }
}

/// One row: in functions whose name matches, the pointer in place `index` has `perItem` elements, times the
/// argument in place `countIndex` unless that is negative.
struct CountRule {
    std::regex name;
    size_t index;
    size_t perItem;
    int countIndex;
};

const std::vector<CountRule>& countRules() {
    static const std::vector<CountRule> kRules = {
        {std::regex("gl(Load|Mult)(Transpose)?Matrix[fd](ARB)?"), 0, 16, -1},
        {std::regex("glClipPlane"), 1, 4, -1},
        {std::regex("glRect[dfis]v"), 0, 2, -1},
        {std::regex("glRect[dfis]v"), 1, 2, -1},
        {std::regex("glDelete(Textures|Buffers|Queries|Framebuffers|Renderbuffers|Programs|Fences|"
                    "OcclusionQueries)(ARB|EXT|NV)?"),
         1, 1, 0},
        {std::regex("glDrawBuffers(ARB)?"), 1, 1, 0},
        {std::regex("glMultiDrawArrays(EXT)?"), 1, 1, 3},
        {std::regex("glMultiDrawArrays(EXT)?"), 2, 1, 3},
        {std::regex("glMultiDrawElements(EXT)?"), 1, 1, 4},
        {std::regex("glShaderSourceARB"), 3, 1, 1},
        {std::regex("cgGLSetParameter3[fd]v"), 1, 3, -1},
        {std::regex("cgGLSetParameter4[fd]v"), 1, 4, -1},
        {std::regex("cgGLSetMatrixParameter[fd][rc]"), 1, 16, -1},
        {std::regex("glUniformMatrix2fv(ARB)?"), 3, 4, 1},
        {std::regex("glUniformMatrix3fv(ARB)?"), 3, 9, 1},
        {std::regex("glUniformMatrix4fv(ARB)?"), 3, 16, 1},
        {std::regex("glUniform1[fi]v(ARB)?"), 2, 1, 1},
        {std::regex("glUniform2[fi]v(ARB)?"), 2, 2, 1},
        {std::regex("glUniform3[fi]v(ARB)?"), 2, 3, 1},
        {std::regex("glUniform4[fi]v(ARB)?"), 2, 4, 1},
    };
    return kRules;
}

/// The n of glVertexNfv, glMultiTexCoordNsvARB and their kin.
std::optional<size_t> componentsByName(const std::string& name) {
    static const std::regex kForm("gl(Vertex|Normal|Color|TexCoord|RasterPos|MultiTexCoord|SecondaryColor|"
                                  "VertexAttrib)([1-4])N?(b|s|i|f|d|ub|us|ui)v(ARB|EXT|NV)?");
    std::smatch match;
    if (!std::regex_match(name, match, kForm))
        return {};
    return std::stoul(match[2].str());
}

/// A list of pairs that a 0 in an attribute's place ends, that 0 included. Of glXChooseVisual's attributes
/// some stand alone.
size_t attributeCount(const int* list, bool ofVisual) {
    size_t i = 0;
    while (list[i] != 0) {
        const bool alone = ofVisual && (list[i] == GLX_USE_GL || list[i] == GLX_RGBA ||
                                        list[i] == GLX_DOUBLEBUFFER || list[i] == GLX_STEREO);
        i += alone ? 1 : 2;
    }
    return i + 1;
}

bool isAttributeList(std::string_view name, size_t index) {
    return ((name == "glXChooseVisual" || name == "glXChooseFBConfig" || name == "glXChooseFBConfigSGIX" ||
             name == "glXCreatePbuffer") &&
            index == 2) ||
           (name == "glXCreateWindow" && index == 3) || (name == "glXCreateGLXPbufferSGIX" && index == 4);
}

} // namespace

std::optional<size_t> elementCount(const char* name, const std::vector<Argument>& arguments, size_t index) {
    static const std::regex kByParameter("gl(Light|Material|TexParameter|TexEnv|TexGen)[fid]v");
    static const std::regex kByFirstParameter("gl(Fog|LightModel|PointParameter)[fi]v(ARB|EXT)?");
    const std::string text = name;
    if (isAttributeList(name, index))
        return attributeCount(static_cast<const int*>(arguments[index].pointer()), text == "glXChooseVisual");
    if (index == 2 && std::regex_match(text, kByParameter))
        return parameterCount(arguments[1].integer());
    if (index == 1 && std::regex_match(text, kByFirstParameter))
        return parameterCount(arguments[0].integer());
    for (const CountRule& rule : countRules()) {
        if (rule.index == index && std::regex_match(text, rule.name))
            return rule.perItem * (rule.countIndex < 0 ? 1 : arguments[rule.countIndex].integer());
    }
    return componentsByName(text);
}

bool writesThrough(std::string_view name, const Argument& argument, size_t index) {
    if (!argument.writable())
        return false;
    if ((name == "glXChooseFBConfig" || name == "glXChooseFBConfigSGIX") && index == 3)
        return true;
    if (name == "glAreTexturesResident" || name == "glAreProgramsResidentNV")
        return true;
    for (std::string_view prefix : {"glGet", "glGen", "glXGet", "glXQuery"}) {
        if (name.starts_with(prefix))
            return true;
    }
    return false;
}
