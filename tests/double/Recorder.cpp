#include "Recorder.h"

#include "ArgumentRules.h"

#include <cinttypes>
#include <cstdio>

namespace {

struct Recording {
    Script script;
    State state;
    Calls calls;
    Calls lookups;
    std::map<std::string, int> callCounts;
    std::map<NameKind, Ledger> ledgers;
};

Recording& recording() {
    static Recording theRecording;
    return theRecording;
}

std::string quoted(const char* text) {
    return text ? '"' + std::string(text) + '"' : "null";
}

template <typename T>
std::string join(const T* elements, size_t count) {
    std::string text;
    for (size_t i = 0; i < count; ++i) {
        if (i > 0)
            text += ", ";
        char number[32];
        std::snprintf(number, sizeof number, "%g", static_cast<double>(elements[i]));
        if constexpr (std::is_integral_v<T>)
            text += std::to_string(elements[i]);
        else
            text += number;
    }
    return '{' + text + '}';
}

std::string pointerText(const void* pointer) {
    if (!pointer)
        return "null";
    char text[32];
    std::snprintf(text, sizeof text, "0x%" PRIxPTR, reinterpret_cast<uintptr_t>(pointer));
    return text;
}

/// A list that a null ends.
std::string listText(const char* const* strings) {
    std::string text = "{";
    for (; *strings; ++strings)
        text += quoted(*strings) + ", ";
    return text + "null}";
}

std::string formatArgument(const char* name, const std::vector<Argument>& arguments, size_t index) {
    const Argument& argument = arguments[index];
    switch (argument.kind()) {
    case Argument::Kind::Integer:
        return std::to_string(argument.integer());
    case Argument::Kind::Real: {
        char text[32];
        std::snprintf(text, sizeof text, "%g", argument.real());
        return text;
    }
    case Argument::Kind::Text:
        return argument.text();
    case Argument::Kind::Pointer:
        break;
    }
    if (recording().script.rawPointers || !argument.pointer())
        return pointerText(argument.pointer());
    if (writesThrough(name, argument, index))
        return "out";
    if (argument.element() == Argument::Element::String)
        return quoted(static_cast<const char*>(argument.pointer()));
    if (argument.element() == Argument::Element::StringList && std::string_view(name).starts_with("cg"))
        return listText(static_cast<const char* const*>(argument.pointer()));
    if (const std::optional<size_t> count = elementCount(name, arguments, index))
        return elementsText(argument, *count);
    return pointerText(argument.pointer());
}

} // namespace

Argument::Argument(const Values& elements)
    : fKind(Kind::Text), fText(join(elements.data(), elements.size())) {}

std::string elementsText(const Argument& argument, size_t count) {
    const void* elements = argument.pointer();
    if (!elements)
        return "null";
    switch (argument.element()) {
    case Argument::Element::Byte:
        return join(static_cast<const int8_t*>(elements), count);
    case Argument::Element::UByte:
        return join(static_cast<const uint8_t*>(elements), count);
    case Argument::Element::Short:
        return join(static_cast<const int16_t*>(elements), count);
    case Argument::Element::UShort:
        return join(static_cast<const uint16_t*>(elements), count);
    case Argument::Element::Int:
        return join(static_cast<const int32_t*>(elements), count);
    case Argument::Element::UInt:
        return join(static_cast<const uint32_t*>(elements), count);
    case Argument::Element::Float:
        return join(static_cast<const float*>(elements), count);
    case Argument::Element::Double:
        return join(static_cast<const double*>(elements), count);
    case Argument::Element::String:
    case Argument::Element::StringList:
    case Argument::Element::Opaque:
        break;
    }
    return pointerText(elements);
}

void PrintTo(const Calls& calls, std::ostream* out) {
    // GoogleTest shows a difference by lines when it finds an escaped line end in what it printed.
    for (const std::string& text : calls)
        *out << text << "\\n";
}

Calls operator+(Calls a, const Calls& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

const Calls& recorded() {
    return recording().calls;
}

const Calls& lookups() {
    return recording().lookups;
}

void clearRecorded() {
    recording().calls.clear();
    recording().lookups.clear();
}

void resetRecording() {
    recording() = Recording();
}

Script& script() {
    return recording().script;
}

void failNext(const char* name, int n) {
    recording().script.failing[name] = recording().callCounts[name] + n;
}

State& state() {
    return recording().state;
}

std::string formatCall(const char* name, const std::vector<Argument>& arguments) {
    std::string text = std::string(name) + '(';
    for (size_t i = 0; i < arguments.size(); ++i)
        text += (i > 0 ? ", " : "") + formatArgument(name, arguments, i);
    return text + ')';
}

Outcome record(const char* name, const std::vector<Argument>& arguments) {
    Recording& all = recording();
    all.calls.push_back(formatCall(name, arguments));
    const int count = ++all.callCounts[name];
    const auto failing = all.script.failing.find(name);
    if (failing != all.script.failing.end() && failing->second == count)
        return Outcome(true);
    const auto answer = all.script.answers.find(name);
    return answer == all.script.answers.end() ? Outcome(false) : Outcome(false, answer->second(arguments));
}

void recordLookup(const char* name) {
    recording().lookups.push_back(name);
    if (script().traceLookups)
        recording().calls.push_back(call("glXGetProcAddressARB", name));
}

uint64_t makeName(NameKind kind) {
    Ledger& names = recording().ledgers[kind];
    const uint64_t name = nthName(kind, names.made++);
    names.live.insert(name);
    return name;
}

void deleteName(NameKind kind, uint64_t name) {
    Ledger& names = recording().ledgers[kind];
    if (name == 0)
        return;
    if (names.live.erase(name))
        ++names.deleted;
    else
        ++names.strayDeletions;
}

const Ledger& ledger(NameKind kind) {
    return recording().ledgers[kind];
}

std::vector<unsigned char> bufferContents(GLuint buffer) {
    const auto found = state().buffers.find(buffer);
    return found == state().buffers.end() ? std::vector<unsigned char>() : found->second;
}
