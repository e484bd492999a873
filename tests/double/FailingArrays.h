#pragma once

// Arrays that can't be had: the program's own operator new[]. For one source file of a test program.

#include <cstdlib>
#include <new>

/// Whether `new (std::nothrow) T[n]` answers null.
inline bool theArraysFail = false;

[[gnu::noinline]] void* operator new[](size_t size) {
    return std::malloc(size);
}

[[gnu::noinline]] void* operator new[](size_t size, const std::nothrow_t&) noexcept {
    return theArraysFail ? nullptr : std::malloc(size);
}

[[gnu::noinline]] void operator delete[](void* memory) noexcept {
    std::free(memory);
}

[[gnu::noinline]] void operator delete[](void* memory, size_t) noexcept {
    std::free(memory);
}
