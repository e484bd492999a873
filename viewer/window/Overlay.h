#pragma once

#include "draw/CallCounter.h"
#include "draw/Culling.h"
#include "draw/TextPainter.h"
#include "window/InteractiveView.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

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

/// A line about it, with a bar, above a row of the window.
void writeProgress(TextPainter& text, const ShownProgress& progress, int windowWidth, int bottom);

/// What is dragged along the bottom.
enum class SliderKind : std::uint8_t { TimeLine, Exposure, Clip };

struct Slider {
    SliderKind kind;
    double share; ///< where it stands, 0 to 1
    std::string words;
};

/// Where a slider is, the lowest being the first, in pixels from the window's top left corner.
struct SliderPlace {
    int top;
    int width;
    int height;

    bool contains(int y) const { return y >= top && y < top + height; }

    /// The share at a place.
    double shareAt(int x) const {
        return std::clamp(static_cast<double>(x) / std::max(width - 1, 1), 0.0, 1.0);
    }
};
SliderPlace placeOfSlider(size_t number, int windowWidth, int windowHeight, int lineHeight);

struct Label {
    std::string text;
    int x; ///< of its middle
    int y;
};

/// Lines that belong together, under a heading.
struct TextPanel {
    std::string heading;
    std::vector<std::string> lines;
};

/// What is written over a frame, as far as it is shown.
struct Overlay {
    const InteractiveView& view;
    const Scene& scene;
    FrameStatistics statistics;
    std::vector<Slider> sliders;   ///< from the bottom
    std::vector<TextPanel> panels; ///< down the right side
    std::optional<Label> label;    ///< at a place of the window
    std::string message;
    ShownProgress progress; ///< in the place of the message
};

/// `lineHeight` is the wanted size in pixels; where the help doesn't fit the window, it gets smaller.
void writeOverlay(TextPainter& text, const Overlay& overlay, int lineHeight);

} // namespace orloview
