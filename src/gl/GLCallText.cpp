#include "gl/GLCallText.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>

namespace {

/// "GLenum glGetError()", "void glFogf(GLenum, pname, GLfloat, param)": a line each, in the order of the
/// slots.
const char kEntryTexts[] =
#define ENTRY_ANY(ret, name, ...) #ret " " #name "(" #__VA_ARGS__ ")\n"
#include "gl/GLEntryPoints.inc"
    ;

/// "GL_ACCUM 0x0100": a line each, in the order of the headers; of several names for one value the first is
/// the oldest.
const char kEnumerantTexts[] =
#include "GLEnumerants.inc"
    ;

/// How much of a string is told.
constexpr size_t kLongestString = 60;

/// How many elements of an array are told.
constexpr uint64_t kMostElements = 16;

std::vector<std::string_view> split(std::string_view text, std::string_view separator) {
    std::vector<std::string_view> parts;
    while (!text.empty()) {
        const size_t end = std::min(text.find(separator), text.size());
        parts.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + separator.size(), text.size()));
    }
    return parts;
}

template <typename... Arguments>
std::string formatted(const char* format, Arguments... arguments) {
    char text[64];
    std::snprintf(text, sizeof text, format, arguments...);
    return text;
}

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != text.npos;
}

std::string quoted(const char* text) {
    const std::string_view whole(text);
    std::string shown = "\"";
    for (const char c : whole.substr(0, kLongestString))
        shown += c == '\n' ? ' ' : c;
    return shown + (whole.size() > kLongestString ? "...\"" : "\"");
}

template <typename T>
std::string listed(const void* pointer, uint64_t count, const char* format) {
    std::string text = "{";
    for (uint64_t i = 0; i < std::min(count, kMostElements); ++i)
        text += (i == 0 ? "" : ", ") + formatted(format, static_cast<const T*>(pointer)[i]);
    return text + (count > kMostElements ? ", ...}" : "}");
}

/// How many elements the array of a call such as glColor4fv or glUniformMatrix4fvARB has; 0 when its name
/// doesn't say.
uint64_t elementsOf(std::string_view name, uint64_t count) {
    if (contains(name, "LoadMatrix") || contains(name, "MultMatrix") ||
        contains(name, "LoadTransposeMatrix") || contains(name, "MultTransposeMatrix"))
        return 16;
    const size_t digit = name.find_first_of("1234");
    if (digit == name.npos || digit + 2 >= name.size() || name[digit + 2] != 'v')
        return 0;
    const auto size = static_cast<uint64_t>(name[digit] - '0');
    return contains(name, "UniformMatrix") ? size * size * count
           : contains(name, "Uniform")     ? size * count
                                           : size;
}

/// Numbers where glTexParameteri and glTexImage2D take enumerants too: no other number there is as large as
/// those.
bool mayHoldEnumerant(std::string_view parameter) {
    return parameter == "param" || parameter == "internalformat" || parameter == "internalFormat";
}

bool takesPrimitives(std::string_view name) {
    for (const std::string_view start :
         {"glBegin", "glDrawArrays", "glDrawElements", "glDrawRange", "glMultiDraw"}) {
        if (name.starts_with(start))
            return true;
    }
    return false;
}

} // namespace

GLCallText::GLCallText() {
    for (const std::string_view line : split(kEntryTexts, "\n")) {
        const size_t open = line.find('(');
        const size_t space = line.rfind(' ', open);
        Entry entry{
            std::string(line.substr(space + 1, open - space - 1)), std::string(line.substr(0, space)), {}};
        const std::vector<std::string_view> words =
            split(line.substr(open + 1, line.size() - open - 2), ", ");
        for (size_t i = 0; i + 1 < words.size(); i += 2)
            entry.parameters.push_back({std::string(words[i]), std::string(words[i + 1])});
        fEntries.push_back(std::move(entry));
    }
    for (const std::string_view line : split(kEnumerantTexts, "\n")) {
        const size_t space = line.find(' ');
        const std::string_view name = line.substr(0, space);
        const uint64_t value = std::strtoull(line.data() + space, nullptr, 16);
        std::map<uint64_t, std::string_view>& names = !name.ends_with("_BIT") && !name.ends_with("_BITS")
                                                          ? fEnumerants
                                                      : name.starts_with("GL_CLIENT_") ? fClientBits
                                                                                       : fBits;
        names.emplace(value, name);
    }
}

std::string GLCallText::call(size_t index, const CallValue* arguments, const CallValue& result) const {
    const Entry& entry = fEntries[index];
    std::string text = entry.name + "(";
    for (size_t i = 0; i < entry.parameters.size(); ++i)
        text += (i == 0 ? "" : ", ") + value(entry, entry.parameters[i], arguments, arguments[i]);
    text += ")";
    if (result.kind != CallValue::Kind::None)
        text += " = " + value(entry, {entry.result, ""}, arguments, result);
    return text;
}

std::string GLCallText::value(const Entry& entry, const Parameter& parameter, const CallValue* arguments,
                              const CallValue& value) const {
    const std::string& type = parameter.type;
    switch (value.kind) {
    case CallValue::Kind::Real:
        if (mayHoldEnumerant(parameter.name) && value.asReal >= GL_COLOR_INDEX)
            return enumerant(static_cast<uint64_t>(value.asReal));
        return formatted("%g", value.asReal);
    case CallValue::Kind::Signed:
        if (mayHoldEnumerant(parameter.name) && value.asSigned >= GL_COLOR_INDEX)
            return enumerant(value.asUnsigned);
        return formatted("%" PRId64, value.asSigned);
    case CallValue::Kind::Unsigned:
        if (type == "GLenum")
            return enumerantOf(entry, parameter, value.asUnsigned);
        if (type == "GLbitfield")
            return bits(entry, value.asUnsigned);
        if (type == "GLboolean")
            return value.asUnsigned > 1 ? formatted("%" PRIu64, value.asUnsigned)
                   : value.asUnsigned   ? "GL_TRUE"
                                        : "GL_FALSE";
        return formatted("%" PRIu64, value.asUnsigned);
    case CallValue::Kind::Pointer:
        break;
    case CallValue::Kind::None:
        return "";
    }
    const void* const pointer = value.asPointer;
    if (!pointer)
        return "null";
    if (type == "const GLubyte*" && parameter.name.empty())
        return quoted(static_cast<const char*>(pointer));
    if ((type == "const GLcharARB*" || type == "const char*") &&
        (parameter.name == "name" || parameter.name.empty()))
        return quoted(static_cast<const char*>(pointer));
    const bool countsFirst = !entry.parameters.empty() && entry.parameters[0].type == "GLsizei";
    const uint64_t first = countsFirst ? arguments[0].asUnsigned : 0;
    if (countsFirst && (type == "const GLuint*" || type == "GLuint*"))
        return listed<GLuint>(pointer, first, "%u");
    const bool countsSecond = entry.parameters.size() > 1 && entry.parameters[1].type == "GLsizei";
    const uint64_t elements = elementsOf(entry.name, countsSecond ? arguments[1].asUnsigned : 1);
    if (elements > 0 && type == "const GLfloat*")
        return listed<GLfloat>(pointer, elements, "%g");
    if (elements > 0 && type == "const GLdouble*")
        return listed<GLdouble>(pointer, elements, "%g");
    if (elements > 0 && type == "const GLint*")
        return listed<GLint>(pointer, elements, "%d");
    return formatted("%p", pointer);
}

/// Numbers up to 9 have a name in each of several sets.
std::string GLCallText::enumerantOf(const Entry& entry, const Parameter& parameter, uint64_t value) const {
    if (value > GL_POLYGON || (parameter.name == "mode" && takesPrimitives(entry.name)))
        return enumerant(value);
    const bool isFactor = contains(entry.name, "Blend") || contains(entry.name, "Stencil");
    if (isFactor && value <= GL_ONE)
        return value == GL_ZERO ? "GL_ZERO" : "GL_ONE";
    if (value == 0)
        return entry.name == "glGetError" ? "GL_NO_ERROR" : "GL_NONE";
    return formatted("%" PRIu64, value);
}

std::string GLCallText::bits(const Entry& entry, uint64_t value) const {
    const auto& names = contains(entry.name, "Client") ? fClientBits : fBits;
    std::string text;
    uint64_t rest = value;
    for (const auto& [bit, name] : names) {
        if (bit != 0 && (rest & bit) == bit) {
            text.append(text.empty() ? "" : " | ").append(name);
            rest &= ~bit;
        }
    }
    if (rest != 0 || text.empty())
        text += (text.empty() ? "" : " | ") + formatted("0x%" PRIX64, rest);
    return text;
}

std::string GLCallText::enumerant(uint64_t value) const {
    const auto found = fEnumerants.find(value);
    return found == fEnumerants.end() ? formatted("0x%04" PRIX64, value) : std::string(found->second);
}
