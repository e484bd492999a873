#pragma once

#include <functional>

namespace orloview {

/// Told how much of a piece of work is done, 0 to 1. May be empty, which nobody has to ask: see tell.
using ProgressReport = std::function<void(double)>;

inline void tell(const ProgressReport& report, double done, double all) {
    if (report)
        report(all > 0.0 ? done / all : 1.0);
}

} // namespace orloview
