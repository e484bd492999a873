#pragma once

#include "Argument.h"

#include <optional>

/// How many elements to print of the pointer in place `index`; nullopt to print its address.
std::optional<size_t> elementCount(const char* name, const std::vector<Argument>& arguments, size_t index);

/// Whether the call writes its results through the pointer in place `index`.
bool writesThrough(std::string_view name, const Argument& argument, size_t index);
