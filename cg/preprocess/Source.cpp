#include "preprocess/Source.h"

namespace orlocg {

namespace {

constexpr int kMostWarnings = 50;

} // namespace

void Diagnostics::fail(const Location& at, const std::string& message) {
    add(at, "error", message);
    throw CompileError();
}

void Diagnostics::warn(const Location& at, const std::string& message) {
    if (++fWarnings <= kMostWarnings)
        add(at, "warning", message);
}

uint32_t Diagnostics::addFile(const std::string& name) {
    fFiles.push_back(name);
    return static_cast<uint32_t>(fFiles.size() - 1);
}

void Diagnostics::add(const Location& at, const char* kind, const std::string& message) {
    const std::string file = at.file < fFiles.size() ? fFiles[at.file] : "program";
    fListing += file + ":" + std::to_string(at.line) + ":" + std::to_string(at.column) + ": " + kind + ": " +
                message + "\n";
}

std::string joined(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts)
        text += part;
    return text;
}

std::string inQuotes(std::string_view text) {
    constexpr size_t kMost = 60;
    std::string result = "'";
    for (const char c : text.substr(0, kMost))
        result += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
    return result + (text.size() > kMost ? "...'" : "'");
}

} // namespace orlocg
