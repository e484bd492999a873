#pragma once

#include "draw/CallCounter.h"
#include "draw/Culling.h"
#include "draw/TextPainter.h"
#include "window/InteractiveView.h"

#include <optional>
#include <string>

namespace orloview {

/// What the statistics say of the last frame.
struct FrameStatistics {
    double milliseconds = 0.0;
    CallCounts calls;
    std::optional<Culling::Counts> seen; ///< of --cull
};

/// Writes help, statistics and a message over the frame, as far as they are shown. `lineHeight` is the wanted
/// size in pixels; where the help doesn't fit the window, it gets smaller.
void writeOverlay(TextPainter& text, const InteractiveView& view, const Scene& scene,
                  const FrameStatistics& statistics, const std::string& message, int lineHeight);

} // namespace orloview
