#include "Recorder.h"

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

std::string formatArgument(const char* name, const std::vector<Argument>& arguments, size_t index) {
    const Argument& argument = arguments[index];
    std::ostringstream address;
    address << argument.pointer();
    if (!argument.pointer())
        return argument.text();
    if (recording().script.rawPointers)
        return address.str();
    if (writesThrough(name, argument, index))
        return "out";
    if (argument.isString())
        return elementText(static_cast<const char*>(argument.pointer()));
    const std::optional<size_t> count = elementCount(name, arguments, index);
    return count ? argument.elements(*count) : address.str();
}

} // namespace

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

uint64_t record(const char* name, const std::vector<Argument>& arguments) {
    Recording& all = recording();
    all.calls.push_back(formatCall(name, arguments));
    const int count = ++all.callCounts[name];
    const auto failing = all.script.failing.find(name);
    if (failing != all.script.failing.end() && failing->second == count)
        return 0;
    if (const auto answer = all.script.answers.find(name); answer != all.script.answers.end())
        return answer->second(arguments);
    const auto behaviour = kBehaviours.find(name);
    return behaviour == kBehaviours.end() ? 0 : behaviour->second(arguments);
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
    if (name != 0 && names.live.erase(name) == 0)
        ++names.strayDeletions;
}

const Ledger& ledger(NameKind kind) {
    return recording().ledgers[kind];
}

std::vector<unsigned char> bufferContents(GLuint buffer) {
    const auto found = state().buffers.find(buffer);
    return found == state().buffers.end() ? std::vector<unsigned char>() : found->second;
}
