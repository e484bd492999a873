#pragma once

#include <cstddef>

namespace orloview {

// What reading a sound file of some size, and making a scene of it, takes at most: several times what the
// greediest of the readers needs.

constexpr size_t memoryFor(size_t fileBytes) {
    return fileBytes * 32;
}

constexpr unsigned secondsFor(size_t fileBytes) {
    return static_cast<unsigned>(fileBytes >> 21U);
}

} // namespace orloview
