#pragma once

#include <cstdint>
#include <span>
#include <string_view>

/// A road that bytes of strangers take into the code: must neither crash nor hang on any, whatever they are.
struct FuzzTarget {
    std::string_view name; ///< also that of its folder of seeds, in fuzz/corpus
    void (*run)(std::span<const std::uint8_t> bytes);
};

std::span<const FuzzTarget> fuzzTargets();
