// drawing.h: texts as the module's own text engine draws them, each in a picture of its own. The
// module's state is as before after each of these calls. It stands still meanwhile.

#pragma once

#include "firmware/text/font.h"
#include "host/reading/dots.h"

#include <cstdint>
#include <span>
#include <vector>

namespace orvanel {

/// How a text stands on the glass: everything that a command can choose.
struct TextLook {
    std::uint8_t font;  // its number, 0 for the built-in one
    std::uint8_t zoom_x, zoom_y;
    std::uint8_t rotation;  // 0 from left to right, 1 from bottom to top
    bool inverted;          // clear dots on set ones
};

/// The fonts that the module has: the built-in one, and those of its image.
std::vector<FontRef> module_fonts();

/// The width of a code's glyph in dots, 0 if the font has none.
int glyph_width(const FontRef& font, std::uint8_t code);

/// Whether a dot of a glyph, which is there, is set; column 0 is the leftmost, row 0 the top.
bool glyph_dot(const FontRef& font, std::uint8_t code, int column, int row);

/// The text in the upper left corner of a picture, and how large it is; `width` is 0 if it doesn't
/// fit the glass. Each code has a glyph.
struct DrawnText {
    DotRows rows;
    int width, height;  // dots
};
DrawnText draw_text(const FontRef& font, const TextLook& look, std::span<const std::uint8_t> codes);

}  // namespace orvanel
