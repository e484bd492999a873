#include "base/LargePages.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <sstream>
#include <string>
#include <vector>

namespace {

/// What the kernel says of the memory that something is in, such as " rd wr mr mw me ac sd hg".
std::string flagsAt(const void* place) {
    const auto address = reinterpret_cast<std::uintptr_t>(place);
    std::ifstream maps("/proc/self/smaps");
    bool isThere = false;
    for (std::string line; std::getline(maps, line);) {
        std::uintptr_t begin = 0;
        std::uintptr_t end = 0;
        char dash = 0;
        if (std::istringstream(line) >> std::hex >> begin >> dash >> end && dash == '-')
            isThere = begin <= address && address < end;
        else if (isThere && line.starts_with("VmFlags:"))
            return line;
    }
    return {};
}

TEST(LargePages, areAskedForWhereTheHeapGrows) {
#ifdef ORLOGL_SANITIZED
    GTEST_SKIP() << "the sanitizer has a heap of its own";
#endif
    if (!std::filesystem::exists("/sys/kernel/mm/transparent_hugepage"))
        GTEST_SKIP() << "this kernel has no large pages";
    orloview::preferLargePages();
    const std::vector<char> frame(20 << 20);
    EXPECT_THAT(flagsAt(&frame.back()), testing::HasSubstr(" hg")); // its begin may lie in what was there
}

} // namespace
