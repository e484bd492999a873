#include "base/Say.h"

#include <cstdio>

#include "base/Text.h"

namespace orloview {

void say(const std::string& line) {
    constexpr const char* kNextLine = "\n  "; // of ours; names of files may hold anything else
    std::string shown = printable(line, line.npos);
    for (size_t at = line.find(kNextLine); at != line.npos; at = line.find(kNextLine, at + 1))
        shown[at] = '\n';
    std::fprintf(stderr, "orloview: %s\n", shown.c_str());
}

} // namespace orloview
