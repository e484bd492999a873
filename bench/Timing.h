#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

/// Nanoseconds that one of `count` groups takes when all are drawn again and again for a while.
template <typename Draw>
double timePerGroup(size_t count, const Draw& drawAll) {
    constexpr size_t kGroupsPerRound = 400'000;
    const size_t repetitions = std::max<size_t>(1, kGroupsPerRound / count);
    const auto start = std::chrono::steady_clock::now();
    for (size_t i = 0; i < repetitions; ++i)
        drawAll();
    const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - start;
    return taken.count() / static_cast<double>(repetitions * count);
}

inline double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}
