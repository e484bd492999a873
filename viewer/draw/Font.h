#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace orloview {

/// A monospaced font at one size: the printable ASCII characters, each in a cell of the same size, side by
/// side in one 8-bit picture of coverage, rows from the top down.
struct Font {
    static constexpr int kColumns = 16;
    static constexpr int kRows = 6;

    /// The cell that is covered whole, in place of the character 127.
    static constexpr int kSolidCell = 127 - ' ';

    int cellWidth = 0;
    int cellHeight = 0; ///< also the distance of two lines
    int width = 0;      ///< of the picture, a multiple of 4, at least all cells
    int height = 0;
    std::vector<std::uint8_t> coverage;

    /// No font could be found.
    bool empty() const { return coverage.empty(); }

    /// The cell of a character; that of a question mark for what the font doesn't have.
    static int cellOf(char character);
};

/// The machine's monospaced font, drawn for lines `pixelHeight` apart.
Font loadFont(int pixelHeight);

} // namespace orloview
