#include "window/Overlay.h"

#include <algorithm>
#include <cstdio>

namespace orloview {

namespace {

constexpr koColor::Color kPanel{0.05F, 0.05F, 0.06F, 0.85F};
constexpr koColor::Color kPassed{0.20F, 0.34F, 0.55F, 0.85F};
constexpr koColor::Color kText{0.92F, 0.92F, 0.92F};
constexpr koColor::Color kKeys{1.0F, 0.80F, 0.40F};
constexpr koColor::Color kOn{0.50F, 0.90F, 0.55F};
constexpr koColor::Color kOff{0.55F, 0.55F, 0.58F};

constexpr int kSmallestLine = 8;
constexpr size_t kKeyColumn = 20;
constexpr size_t kTextColumn = 32;
constexpr size_t kStateColumn = 3;

struct Line {
    std::string keys;
    std::string text;
    std::string state;
    koColor::Color stateColor;
};

std::vector<Line> helpLines(const InteractiveView& view) {
    std::vector<Line> lines;
    for (const MouseHelp& mouse : mouseHelp())
        lines.push_back({mouse.action, mouse.text, {}, {}});
    for (const CommandHelp& help : commandHelp()) {
        const std::optional<bool> on = view.isOn(help.command);
        lines.push_back({help.keys, help.text, on ? (*on ? "on" : "off") : "", on && *on ? kOn : kOff});
    }
    return lines;
}

void writeHelp(TextPainter& text, const std::vector<Line>& lines, int windowWidth, int windowHeight) {
    const int cell = text.characterWidth();
    const int line = text.lineHeight();
    const int width = static_cast<int>(kKeyColumn + kTextColumn + kStateColumn + 2) * cell;
    const int height = static_cast<int>(lines.size() + 1) * line;
    const int left = std::max(0, (windowWidth - width) / 2);
    int y = std::max(0, (windowHeight - height) / 2);
    text.addPanel(left, y, width, height, kPanel);
    y += line / 2;
    const int keys = left + cell;
    const int words = keys + static_cast<int>(kKeyColumn) * cell;
    const int states = words + static_cast<int>(kTextColumn) * cell;
    for (const Line& entry : lines) {
        text.addText(keys, y, entry.keys, kKeys);
        text.addText(words, y, entry.text, kText);
        text.addText(states, y, entry.state, entry.stateColor);
        y += line;
    }
}

/// With a comma after every third digit.
std::string grouped(size_t number) {
    std::string text = std::to_string(number);
    for (int at = static_cast<int>(text.size()) - 3; at > 0; at -= 3)
        text.insert(static_cast<size_t>(at), ",");
    return text;
}

/// The number and what it counts, in the plural unless it is one.
std::string counted(size_t number, const char* what) {
    return grouped(number) + " " + what + (number == 1 ? "" : "s");
}

std::vector<std::string> statisticsLines(const Scene& scene, const FrameStatistics& statistics) {
    char time[64];
    std::snprintf(time, sizeof time, "%.1f ms, %.1f frames per second", statistics.milliseconds,
                  1000.0 / std::max(statistics.milliseconds, 0.001));
    const CallCounts& calls = statistics.calls;
    const size_t triangles = statistics.seen ? statistics.seen->triangles : scene.count(Topology::Triangles);
    std::vector<std::string> lines{time, counted(scene.instances.size(), "group") + ", " +
                                             counted(triangles, "triangle")};
    if (statistics.seen)
        lines.push_back(grouped(statistics.seen->drawn) + " drawn, " + grouped(statistics.seen->outside) +
                        " outside, " + grouped(statistics.seen->hidden) + " hidden");
    lines.push_back(counted(scene.count(Topology::Lines), "line") + ", " +
                    counted(scene.count(Topology::Points), "point"));
    lines.push_back(counted(calls.drawCalls, "draw call") + ", " + counted(calls.uploads, "upload") + " of " +
                    counted(calls.uploadedBytes, "byte"));
    return lines;
}

void writeStatistics(TextPainter& text, const std::vector<std::string>& lines) {
    size_t longest = 0;
    for (const std::string& line : lines)
        longest = std::max(longest, line.size());
    const int cell = text.characterWidth();
    const int height = text.lineHeight();
    text.addPanel(0, 0, static_cast<int>(longest + 2) * cell, (static_cast<int>(lines.size()) + 1) * height,
                  kPanel);
    for (size_t i = 0; i < lines.size(); ++i)
        text.addText(cell, height / 2 + static_cast<int>(i) * height, lines[i], kText);
}

void writeMessage(TextPainter& text, const std::string& message, int bottom) {
    const int cell = text.characterWidth();
    const int height = text.lineHeight();
    const int y = bottom - height * 3 / 2;
    text.addPanel(0, y, static_cast<int>(message.size() + 2) * cell, height * 3 / 2, kPanel);
    text.addText(cell, y + height / 4, message, kText);
}

void writeSlider(TextPainter& text, const SliderPlace& place, double share, const std::string& words) {
    const int passed = static_cast<int>(share * place.width);
    text.addPanel(0, place.top, passed, place.height, kPassed);
    text.addPanel(passed, place.top, place.width - passed, place.height, kPanel);
    text.addText(text.characterWidth(), place.top + (place.height - text.lineHeight()) / 2, words, kText);
}

/// Down the right side as far as there is room; what isn't shown is counted.
void writePanels(TextPainter& text, const std::vector<TextPanel>& panels, int windowWidth, int bottom) {
    constexpr size_t kWidest = 60;
    const int cell = text.characterWidth();
    const int line = text.lineHeight();
    int y = 0;
    for (const TextPanel& panel : panels) {
        const int room = (bottom - y) / line - 2;
        if (room < 1)
            return;
        size_t count = std::min(panel.lines.size(), static_cast<size_t>(room));
        if (count < panel.lines.size())
            --count; // one says how many are left
        size_t widest = panel.heading.size();
        for (size_t i = 0; i < count; ++i)
            widest = std::max(widest, std::min(panel.lines[i].size(), kWidest));
        const int width = static_cast<int>(std::max(widest, size_t{16}) + 2) * cell;
        const int left = std::max(windowWidth - width, 0);
        const size_t rows = count + 1 + (count < panel.lines.size() ? 1 : 0);
        text.addPanel(left, y, width, static_cast<int>(rows) * line + line / 2, kPanel);
        y += line / 4;
        text.addText(left + cell, y, panel.heading, kKeys);
        for (size_t i = 0; i < count; ++i)
            text.addText(left + cell, y += line, panel.lines[i].substr(0, kWidest), kText);
        if (count < panel.lines.size())
            text.addText(left + cell, y += line, "and " + grouped(panel.lines.size() - count) + " more",
                         kOff);
        y += line + line / 2;
    }
}

void writeLabel(TextPainter& text, const Label& label) {
    const int width = static_cast<int>(label.text.size() + 1) * text.characterWidth();
    const int left = label.x - width / 2;
    const int top = label.y - text.lineHeight() / 2;
    text.addPanel(left, top, width, text.lineHeight(), kPanel);
    text.addText(left + text.characterWidth() / 2, top, label.text, kText);
}

} // namespace

void writeProgress(TextPainter& text, const ShownProgress& progress, int windowWidth, int bottom) {
    const int height = text.lineHeight();
    const int bar = std::max(height / 4, 2);
    const int y = bottom - height * 3 / 2;
    text.addPanel(0, y - bar, windowWidth, height * 3 / 2 + bar, kPanel);
    text.addPanel(0, y - bar, static_cast<int>(progress.fraction * windowWidth), bar, kKeys);
    text.addText(text.characterWidth(), y + height / 4, progress.what + " (Esc stops it)", kText);
}

SliderPlace placeOfSlider(size_t number, int windowWidth, int windowHeight, int lineHeight) {
    const int height = lineHeight * 5 / 4;
    return {windowHeight - static_cast<int>(number + 1) * height, windowWidth, height};
}

void writeOverlay(TextPainter& text, const Overlay& overlay, int lineHeight) {
    const InteractiveView& view = overlay.view;
    const int width = view.look().width;
    const int height = view.look().height;
    const auto placeOf = [width, height, lineHeight](size_t number) {
        return placeOfSlider(number, width, height, lineHeight);
    };
    const std::vector<Line> help = view.shown.help ? helpLines(view) : std::vector<Line>();
    if (!help.empty()) {
        // A character is a little over half as wide as a line is high.
        const int byHeight = height / static_cast<int>(help.size() + 1);
        const int byWidth = width * 9 / 5 / static_cast<int>(kKeyColumn + kTextColumn + kStateColumn + 2);
        lineHeight = std::max(kSmallestLine, std::min({lineHeight, byHeight, byWidth}));
    }
    text.setLineHeight(lineHeight);
    if (!help.empty())
        writeHelp(text, help, width, height);
    if (view.shown.statistics)
        writeStatistics(text, statisticsLines(overlay.scene, overlay.statistics));
    const int bottom = placeOf(overlay.sliders.size()).top + placeOf(0).height;
    writePanels(text, overlay.panels, width, bottom);
    if (overlay.label)
        writeLabel(text, *overlay.label);
    for (size_t i = 0; i < overlay.sliders.size(); ++i)
        writeSlider(text, placeOf(i), overlay.sliders[i].share, overlay.sliders[i].words);
    if (!overlay.progress.what.empty())
        writeProgress(text, overlay.progress, width, bottom);
    else if (!overlay.message.empty())
        writeMessage(text, overlay.message, bottom);
}

} // namespace orloview
