#include "base/Say.h"

#include <cstdio>

namespace orloview {

void say(const std::string& line) {
    std::fprintf(stderr, "orloview: %s\n", line.c_str());
}

} // namespace orloview
