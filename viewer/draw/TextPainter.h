#pragma once

#include "draw/Font.h"

#include <memory>
#include <string_view>
#include <vector>

#include <geometry/GLRouting.h>
#include <orlohost/GeometryData.h>
#include <orlohost/koColor.h>
#include <texture/GLTexture2D.h>

namespace orloview {

/// Writes lines of text and panels to set them on, over what the current target shows: collected first, then
/// painted with one draw call. Places are in pixels from the target's top left corner; colours are stored as
/// they are.
///
/// Needs a current context of the share group to be made, used and destroyed. The glyphs are drawn for the
/// size in use, pixel for pixel, so they are sharp at any.
class TextPainter {
public:
    TextPainter();
    ~TextPainter();

    TextPainter(const TextPainter&) = delete;
    TextPainter& operator=(const TextPainter&) = delete;

    /// Lines this many pixels apart from here on. What was collected is forgotten.
    void setLineHeight(int pixels);

    int lineHeight() const { return fFont.cellHeight; }

    /// Of every character.
    int characterWidth() const { return fFont.cellWidth; }

    void addPanel(int x, int y, int width, int height, const koColor::Color& color);

    /// One line; x and y are the top left corner of its first character.
    void addText(int x, int y, std::string_view text, const koColor::Color& color);

    /// Paints what was collected into the current target of this size, and forgets it.
    void paint(int targetWidth, int targetHeight);

private:
    void addQuad(int x, int y, int width, int height, int cell, const koColor::Color& color);

    Font fFont;
    GLTexture2D* fTexture = nullptr;
    std::vector<float> fPositions;
    std::vector<float> fTexCoords;
    std::vector<float> fColors;
    std::vector<uint32_t> fIndices;
    GeometryLogicalGroup fGroup;
    GLRouting fRouting;
};

} // namespace orloview
