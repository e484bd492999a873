#pragma once

#include "gl/GLFunctionTable.h"

#include <cstring>
#include <vector>

/// The contents of every slot, first to last.
inline std::vector<const void*> slotsOf(const GLFunctionTable& table) {
    const auto* first = reinterpret_cast<const char*>(&table.fglAccum);
    const size_t size = reinterpret_cast<const char*>(&table + 1) - first;
    std::vector<const void*> slots(size / sizeof(void*));
    std::memcpy(slots.data(), first, size);
    return slots;
}
