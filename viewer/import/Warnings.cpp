#include "import/Warnings.h"

#include <algorithm>

#include "base/Text.h"

namespace orloview {

namespace {

constexpr size_t kMostNamed = 3;
constexpr size_t kMostLines = 12;

} // namespace

void Warnings::add(const std::string& what, const std::string& reason) {
    auto entry = std::find_if(fEntries.begin(), fEntries.end(),
                              [&](const Entry& known) { return known.reason == reason; });
    if (entry == fEntries.end() && fEntries.size() == kMostLines) {
        ++fUnnamed;
        return;
    }
    if (entry == fEntries.end())
        entry = fEntries.insert(entry, Entry{reason, {}, 0});
    if (std::find(entry->parts.begin(), entry->parts.end(), what) != entry->parts.end())
        return;
    if (entry->parts.size() < kMostNamed)
        entry->parts.push_back(what);
    ++entry->count;
}

std::vector<std::string> Warnings::lines() const {
    std::vector<std::string> result;
    for (const Entry& entry : fEntries) {
        std::string line;
        for (const std::string& part : entry.parts)
            line += (line.empty() ? "" : ", ") + printable(part);
        if (entry.count > entry.parts.size())
            line += " and " + std::to_string(entry.count - entry.parts.size()) + " more";
        result.push_back(line + ": " + printable(entry.reason, 300));
    }
    if (fUnnamed > 0)
        result.push_back(std::to_string(fUnnamed) + " more parts: left out for other reasons");
    return result;
}

} // namespace orloview
