// font.h: a font between its sources (BDF, outlines) and the image. docs/reference/formats.md,
// "Font".

#pragma once

#include "kit/dots.h"

#include <bitset>
#include <map>
#include <span>
#include <string>

namespace orvanel {

constexpr int code_count = 256;

/// Which characters are wanted, by the module's codes.
using Codes = std::bitset<code_count>;

/// The glyphs of a font by the module's code, all of one height.
struct Font {
    int height;                  // dots
    int ascent;                  // rows of them above the base line
    int cell_width;              // 0: that of the widest glyph
    int gap;                     // dots between lines
    int format;                  // the format byte, which the module doesn't look at
    std::map<int, Dots> glyphs;  // width is the advance
};

/// A glyph as a source draws it, around a point on the base line.
struct DrawnGlyph {
    int advance;  // dots to the point of the next glyph
    int left;     // dots from the point to the leftmost column
    int top;      // rows from the base line up to the first row, which it includes
    Dots dots;
};

/// Puts glyphs into cells of one height: `ascent` rows above the base line and `descent` below it,
/// or more where a glyph reaches farther; both may be negative. The module sets cell beside cell,
/// so a glyph that reaches out of its advance gets a wider cell.
Font font_of(const std::map<int, DrawnGlyph>& drawn, int ascent, int descent);

/// Takes off the rows above and below that none of the glyphs uses.
void trim_rows(Font& font);

/// Adds clear columns at the right of each glyph.
void widen(Font& font, int columns);

/// The font as the image holds it, first and last being the lowest and the highest code that has a
/// glyph. Empty, and `fault` says why, if it can't be.
Bytes font_bytes(const Font& font, std::string& fault);

/// Reads the font at the start of `bytes`; false if it isn't one, or one that font_bytes would
/// not write so. `size` is what it takes.
bool read_font_bytes(std::span<const std::uint8_t> bytes, Font& font, std::size_t& size);

/// What the head of a font and its table say, whether or not it is as font_bytes writes it.
struct FontHead {
    int first, last, cell_width, height, gap, format;
    std::size_t glyphs_at;
    std::size_t size;  // up to the end of its last glyph
    int glyph_count;
};

/// False if `bytes` don't begin with a font's letters, or end within its table.
bool read_font_head(std::span<const std::uint8_t> bytes, FontHead& head);

}  // namespace orvanel
