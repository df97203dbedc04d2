// font.h: fonts and their selection. Font 0 is the program's own, fonts 1 to 15 lie in the EEPROM
// image and are used where they lie. The format stands in docs/reference/formats.md.

#pragma once

#include <cstdint>
#include <span>

namespace orvanel {

constexpr std::uint8_t no_font = 0xFF;  // the id of a FontRef that has to select again

/// A selected font: its header fields, and where its bytes lie. The two offsets count from the
/// start of the built-in font if `builtin`, else from the start of the EEPROM image; each read
/// through them is bounded and gives 0 outside, since the image can change under a selected font.
struct FontRef {
    std::uint8_t id;        // font number of the last selection, no_font for none
    std::uint8_t first;     // first code
    std::uint8_t last;      // last code, inclusive
    std::uint8_t width;     // nominal width in dots, the terminal's cell width
    std::uint8_t height;    // glyph height in dots
    std::uint8_t line_gap;  // dots between lines
    bool builtin;
    std::int32_t width_table;  // offset of the width table
    std::int32_t glyphs;       // offset of the glyph bits
};

extern FontRef string_font;
extern FontRef touch_font;
extern FontRef menu_font;
extern FontRef terminal_font;

/// Selects font n & 15. Nothing happens if it is the font's present id. A number without a font,
/// or with a wrong magic, changes the id alone: the font in use stays in use.
void select_font(std::uint8_t n, FontRef& font);

/// Font n, 0..15, as select_font would have it, without selecting it: nothing changes but `font`.
/// False if there is none.
bool find_font(std::uint8_t n, FontRef& font);

/// A code's entry of the width table; code lies in first..last.
struct GlyphEntry {
    std::uint8_t width;    // dots, 0: no glyph
    std::uint16_t offset;  // of the glyph, from the start of the glyph bits
};
GlyphEntry glyph_entry(const FontRef& font, std::uint8_t code);

/// The packed rows of the glyph at `entry`, font.height * stride_of(entry.width) bytes, where they
/// lie in the font. A glyph that leaves the font's memory comes as a copy with 0 for what is
/// outside, valid until the next call.
std::span<const std::uint8_t> glyph_rows(const FontRef& font, GlyphEntry entry);

/// Power-on of all four selections: read again from the image, terminal, string, menu, touch.
void power_on_fonts();

/// Program start: no selection yet.
void cold_start_fonts();

// Handlers of the font commands.
void select_string_font();
void select_touch_font();
void select_menu_font();
void set_string_gap();
void set_touch_gap();
void set_menu_gap();

}  // namespace orvanel
