#pragma once

#include "draw/Canvas.h"
#include "draw/TextPainter.h"
#include "draw/WindowDeveloper.h"
#include "frame/Frame.h"

#include <array>
#include <functional>
#include <memory>

namespace orloview {

/// Paints frames into a window: the scene into a canvas, in the start-up context; the canvas, developed, into
/// the window, and text over it, in the window's own.
///
/// Where GL has no framebuffer objects or no shaders the scene is drawn right into the window, its colours
/// darker than they should be. Needs the window's context current to be destroyed.
class WindowPainter {
public:
    /// The window's frame buffer, which outlives the painter.
    explicit WindowPainter(GLFrameBuffer& window);

    /// Adds what is to be written over the frame.
    using WriteText = std::function<void(TextPainter&)>;

    /// Draws, writes and shows a frame of the look's size, averaged from `factor` x `factor` pixels each.
    void paint(const View& view, const FrameContent& content, const FrameLook& look, int factor,
               const WriteText& writeText);

    /// Shows nothing but a background and what is written over it.
    void paintBare(const FrameLook& look, const WriteText& writeText);

    /// Whether colours come out right, and averaging has an effect.
    bool develops() const { return fDevelops; }

private:
    void finish(const FrameLook& look, const WriteText& writeText);
    Canvas* canvasFor(const FrameLook& look, size_t factor);

    GLFrameBuffer& fWindow;
    WindowDeveloper fDeveloper;
    TextPainter fText;
    bool fDevelops;
    std::array<std::unique_ptr<Canvas>, 3> fCanvases; ///< by factor
};

} // namespace orloview
