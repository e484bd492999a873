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

/// What is under way, and how far it is.
struct ShownProgress {
    std::string what; ///< empty: nothing
    double fraction = 0.0;
};

/// A line about it, with a bar, at the bottom.
void writeProgress(TextPainter& text, const ShownProgress& progress, int windowWidth, int windowHeight);

/// Writes help, statistics and a message, or progress, over the frame, as far as they are shown. `lineHeight`
/// is the wanted size in pixels; where the help doesn't fit the window, it gets smaller.
void writeOverlay(TextPainter& text, const InteractiveView& view, const Scene& scene,
                  const FrameStatistics& statistics, const std::string& message,
                  const ShownProgress& progress, int lineHeight);

} // namespace orloview
