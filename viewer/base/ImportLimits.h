#pragma once

#include <cstddef>
#include <optional>

namespace orloview {

/// What the import of one file may use. An import library that needs more is ended.
struct ImportLimits {
    /// None: in proportion to what the model's files hold, 2 GB at least, but not more than the machine has.
    std::optional<size_t> memoryBytes;

    /// Of computing. None: in proportion too, 30 at least.
    std::optional<unsigned> seconds;

    /// Whether the model may name files anywhere, not only in its folder and the one above.
    bool allowOutside = false;
};

} // namespace orloview
