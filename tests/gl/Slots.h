#pragma once

#include "gl/GLFunctionTable.h"

#include <set>
#include <string>

/// The functions of Members.inc whose slots are filled.
inline std::set<std::string> filledSlots(const GLFunctionTable& table) {
    std::set<std::string> filled;
    const auto note = [&filled](bool slot, const char* function) {
        if (slot)
            filled.insert(function);
    };
#define RENAMED(member, function) note(table.f##function, #function);
#define MEMBER(name) RENAMED(name, name)
#define UNFILLED(name) RENAMED(name, name)
#include "Members.inc"
    note(table.fglFramebufferTextureLayerEXT, "glFramebufferTextureLayerEXT");
    return filled;
}
