#pragma once

// Arrays that can't be had: the program's own operator new[] for those that may be missing. For one source
// file of a test program.

#include <new>

/// Whether `new (std::nothrow) T[n]` answers null.
inline bool theArraysFail = false;

[[gnu::noinline]] void* operator new[](size_t size, const std::nothrow_t&) noexcept {
    return theArraysFail ? nullptr : operator new[](size);
}
