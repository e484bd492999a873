#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

/// Room for an image that is computed and uploaded; null when there is no memory, and for negative sizes. GL
/// takes rows at the alignment in force, which is the host's: each row has the bytes to spare that the widest
/// alignment can make it read. (Rows are written without gaps, so they come out straight where their length
/// is a multiple of that alignment.)
inline std::unique_ptr<uint8_t[]> makeTexelBuffer(int width, int height, int bytesPerTexel) {
    constexpr size_t kSpare = 7;
    if (width < 0 || height < 0)
        return nullptr;
    const size_t row = static_cast<size_t>(width) * static_cast<size_t>(bytesPerTexel) + kSpare;
    return std::unique_ptr<uint8_t[]>(new (std::nothrow) uint8_t[row * static_cast<size_t>(height)]);
}
