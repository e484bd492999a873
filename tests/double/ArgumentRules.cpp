#include "Recorder.h"

#include <algorithm>
#include <regex>
#include <set>

// Which pointers print as the elements behind them. Only those that GL reads during the call: never vertex
// arrays or images, which may be offsets into a buffer object.

namespace {

/// How many numbers a parameter has that is set by name.
size_t parameterCount(long long parameter) {
    static const std::set<long long> kFour = {
        GL_AMBIENT,  GL_DIFFUSE,   GL_SPECULAR,          GL_EMISSION,
        GL_POSITION, GL_EYE_PLANE, GL_TEXTURE_ENV_COLOR, GL_TEXTURE_BORDER_COLOR};
    return kFour.contains(parameter) ? 4 : parameter == GL_SPOT_DIRECTION ? 3 : 1;
}

constexpr size_t kLast = 9;
constexpr size_t kAsNamed = 0;

/// One row: in functions whose name matches, the pointer in place `index` has `perItem` elements, or as many
/// as the number in the name says, times the argument in place `countIndex` unless that is negative.
struct CountRule {
    std::regex name;
    size_t index;
    size_t perItem;
    int countIndex;
};

const std::vector<CountRule>& countRules() {
    static const std::vector<CountRule> kRules = {
        {std::regex(
             "gl(?:Vertex|Normal|Color|TexCoord|RasterPos|MultiTexCoord|SecondaryColor|VertexAttrib)([1-4])"
             "N?(?:b|s|i|f|d|ub|us|ui)v(?:ARB|EXT|NV)?"),
         kLast, kAsNamed, -1},
        {std::regex("gl(?:Load|Mult)(?:Transpose)?Matrix[fd](?:ARB)?"), 0, 16, -1},
        {std::regex("glDelete\\w+s(?:ARB|EXT|NV)?"), 1, 1, 0},
        {std::regex("glPointParameterfvARB"), 1, 3, -1}, // the one there is: how they fade with distance
        {std::regex("glShaderSourceARB"), 2, 1, 1},
        {std::regex("glShaderSourceARB"), 3, 1, 1},
        {std::regex("glUniform([1-4])[fi]v(?:ARB)?"), 2, kAsNamed, 1},
        {std::regex("glUniformMatrix4fv(?:ARB)?"), 3, 16, 1},
        {std::regex("cgGLSetParameter([34])[fd]v"), 1, kAsNamed, -1},
        {std::regex("cgGLSetMatrixParameter[fd][rc]"), 1, 16, -1},
    };
    return kRules;
}

/// A list of pairs that a 0 in an attribute's place ends, that 0 included. Of glXChooseVisual's attributes
/// some stand alone.
size_t attributeCount(const int* list, bool ofVisual) {
    static const std::set<int> kAlone = {GLX_USE_GL, GLX_RGBA, GLX_DOUBLEBUFFER, GLX_STEREO};
    size_t i = 0;
    while (list[i] != 0)
        i += ofVisual && kAlone.contains(list[i]) ? 1 : 2;
    return i + 1;
}

} // namespace

std::optional<size_t> elementCount(const char* name, const std::vector<Argument>& arguments, size_t index) {
    static const std::regex kAttributes(
        "glXChoose(?:Visual|FBConfig|FBConfigSGIX)|glXCreate(?:Pbuffer|Window|GLXPbufferSGIX)");
    static const std::regex kByParameter("gl(Light|Material|TexParameter|TexEnv|TexGen)[fid]v");
    const std::string text = name;
    const Argument& argument = arguments[index];
    if (argument.isStringList() && text.starts_with("cg")) { // which a null ends
        size_t count = 1;
        for (const auto* one = static_cast<const char* const*>(argument.pointer()); *one; ++one)
            ++count;
        return count;
    }
    if (index >= 2 && std::regex_match(text, kAttributes))
        return attributeCount(static_cast<const int*>(argument.pointer()), text == "glXChooseVisual");
    if (index == 2 && std::regex_match(text, kByParameter))
        return parameterCount(arguments[1].integer());
    for (const CountRule& rule : countRules()) {
        std::smatch match;
        if (index != std::min(rule.index, arguments.size() - 1) || !std::regex_match(text, match, rule.name))
            continue;
        const size_t perItem = rule.perItem == kAsNamed ? std::stoul(match[1].str()) : rule.perItem;
        return perItem * (rule.countIndex < 0 ? 1 : arguments[rule.countIndex].integer());
    }
    return {};
}

bool writesThrough(std::string_view name, const Argument& argument, size_t index) {
    if (!argument.writable())
        return false;
    if (name.starts_with("glXChooseFBConfig"))
        return index == 3;
    for (std::string_view prefix : {"glGet", "glGen", "glXGet", "glXQuery"}) {
        if (name.starts_with(prefix))
            return true;
    }
    return false;
}
