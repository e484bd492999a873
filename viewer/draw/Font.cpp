#include "draw/Font.h"

#include <algorithm>
#include <memory>
#include <string>

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H

namespace orloview {

namespace {

/// The file of the machine's monospaced font; empty where there is none.
std::string fontFile() {
    const std::unique_ptr<FcPattern, decltype(&FcPatternDestroy)> wanted(
        FcNameParse(reinterpret_cast<const FcChar8*>("monospace:scalable=true")), FcPatternDestroy);
    if (!wanted)
        return {};
    FcConfigSubstitute(nullptr, wanted.get(), FcMatchPattern);
    FcDefaultSubstitute(wanted.get());
    FcResult result{};
    const std::unique_ptr<FcPattern, decltype(&FcPatternDestroy)> found(
        FcFontMatch(nullptr, wanted.get(), &result), FcPatternDestroy);
    FcChar8* file = nullptr;
    if (!found || FcPatternGetString(found.get(), FC_FILE, 0, &file) != FcResultMatch)
        return {};
    return reinterpret_cast<const char*>(file);
}

/// FreeType with the one face that we use.
class Face {
public:
    explicit Face(const std::string& file) {
        if (FT_Init_FreeType(&fLibrary) == 0)
            FT_New_Face(fLibrary, file.c_str(), 0, &fFace);
    }
    Face(const Face&) = delete;
    Face& operator=(const Face&) = delete;
    ~Face() {
        if (fLibrary)
            FT_Done_FreeType(fLibrary); // the face goes with it
    }

    /// Draws the character; null where that fails.
    const FT_GlyphSlotRec_* draw(char character) {
        const auto code = static_cast<FT_ULong>(static_cast<unsigned char>(character));
        return fFace && FT_Load_Char(fFace, code, FT_LOAD_RENDER) == 0 ? fFace->glyph : nullptr;
    }

    /// Sizes the face so that its lines are this far apart; false where it can't.
    bool setLineHeight(int pixels) {
        if (!fFace || FT_Set_Pixel_Sizes(fFace, 0, static_cast<FT_UInt>(pixels)) != 0)
            return false;
        const double lines = static_cast<double>(fFace->size->metrics.height) / 64.0;
        const auto em = static_cast<FT_UInt>(std::max(1.0, pixels * pixels / lines));
        return FT_Set_Pixel_Sizes(fFace, 0, em) == 0;
    }

    int ascent() const { return static_cast<int>((fFace->size->metrics.ascender + 63) / 64); }

private:
    FT_Library fLibrary = nullptr;
    FT_Face fFace = nullptr;
};

std::uint8_t& texelAt(Font& font, int x, int y) {
    return font.coverage[static_cast<size_t>(y) * static_cast<size_t>(font.width) + static_cast<size_t>(x)];
}

/// Copies a glyph into its cell; what reaches beyond is cut.
void place(Font& font, int cell, const FT_GlyphSlotRec_& glyph, int ascent) {
    const FT_Bitmap& bitmap = glyph.bitmap;
    const int left = cell % Font::kColumns * font.cellWidth;
    const int top = cell / Font::kColumns * font.cellHeight;
    for (int row = 0; row < static_cast<int>(bitmap.rows); ++row) {
        const int y = ascent - glyph.bitmap_top + row;
        if (y < 0 || y >= font.cellHeight)
            continue;
        for (int column = 0; column < static_cast<int>(bitmap.width); ++column) {
            const int x = glyph.bitmap_left + column;
            if (x >= 0 && x < font.cellWidth)
                texelAt(font, left + x, top + y) =
                    bitmap.buffer[static_cast<std::ptrdiff_t>(row) * bitmap.pitch + column];
        }
    }
}

} // namespace

int Font::cellOf(char character) {
    return character >= ' ' && character <= '~' ? character - ' ' : '?' - ' ';
}

Font loadFont(int pixelHeight) {
    Font font;
    Face face(fontFile());
    if (!face.setLineHeight(pixelHeight))
        return font;
    const FT_GlyphSlotRec_* widest = face.draw('M');
    if (!widest)
        return font;
    font.cellWidth = std::max(1, static_cast<int>((widest->advance.x + 32) / 64));
    font.cellHeight = pixelHeight;
    font.width = (font.cellWidth * Font::kColumns + 3) / 4 * 4;
    font.height = font.cellHeight * Font::kRows;
    font.coverage.resize(static_cast<size_t>(font.width) * static_cast<size_t>(font.height));
    for (char character = ' '; character <= '~'; ++character) {
        if (const FT_GlyphSlotRec_* glyph = face.draw(character))
            place(font, Font::cellOf(character), *glyph, face.ascent());
    }
    for (int y = 0; y < font.cellHeight; ++y) {
        for (int x = 0; x < font.cellWidth; ++x)
            texelAt(font, Font::kSolidCell % Font::kColumns * font.cellWidth + x,
                    Font::kSolidCell / Font::kColumns * font.cellHeight + y) = 255;
    }
    return font;
}

} // namespace orloview
