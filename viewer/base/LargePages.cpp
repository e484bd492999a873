#include "base/LargePages.h"

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

namespace orloview {

namespace {

/// What of the heap can be in large pages: more than most pictures take. Only what is used takes memory.
constexpr int kHeap = 128 << 20;

/// More than the heap has at the start, so that it has to grow.
constexpr size_t kToGrow = size_t{1} << 20;

/// What the heap grows by later.
constexpr int kStep = 1 << 20;

/// The largest that malloc takes: what is larger gets pages of its own, by a call each time.
constexpr int kLargestInHeap = 32 << 20;

} // namespace

void preferLargePages() {
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_MMAP_THRESHOLD, kLargestInHeap);
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    // All of it is asked for at once: what the heap grows by later comes without the advice.
    auto* const before = static_cast<std::byte*>(sbrk(0));
    mallopt(M_TOP_PAD, kHeap);
    void* volatile grown = std::malloc(kToGrow); // else compilers leave both calls out
    std::free(grown);
    mallopt(M_TOP_PAD, kStep);
    auto* const after = static_cast<std::byte*>(sbrk(0));
    if (after > before) // malloc ends its heap where a page does
        madvise(before, static_cast<size_t>(after - before), MADV_HUGEPAGE);
}

} // namespace orloview
