// layout.h: strings. layout_string scans a whole string into line runs and measures it;
// draw_string places each line and draws each character.

#pragma once

#include "firmware/raster/blit.h"
#include "firmware/text/font.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace orvanel {

extern TextStyle string_style;
extern TextStyle touch_style;
extern TextStyle menu_style;
extern TextStyle terminal_style;

/// The flash attribute with which each string starts, 0..2.
extern std::uint8_t string_flash;

/// Font and style of the running layout; the caller sets both before layout_string.
extern const FontRef* active_font;
extern const TextStyle* active_style;

/// Measures of the last layout.
extern std::uint8_t line_count;    // closed lines
extern std::int32_t max_width;     // dots of the widest line, zoomed
extern std::int32_t total_height;  // dots of the text block, gaps included

/// Where the next bytes of a string in memory lie; layout_string of such a string moves it after
/// what it took. A string that runs out without an end mark ends there.
extern std::span<const std::uint8_t> run_cursor;

enum class StringSource : std::uint8_t {
    memory,      // run_cursor
    stream = 8,  // read_byte, which waits
};

/// Scans a string up to its end mark, or until the run buffer is full, and sets the measures. With
/// `check_align` the first character is the result, and dropped if it is L, C or R; otherwise the
/// result is 0.
std::uint8_t layout_string(StringSource source, bool check_align);

/// The characters of the last layout that have a glyph, line by line with a line feed in between.
/// What `into` has no room for is left out. The number of bytes.
std::size_t layout_text(std::span<std::uint8_t> into);

/// Draws the last layout at x1, y1 of draw_area, aligned as 'L', 'C' or 'R' says (any other
/// acts as 'L'), and refreshes. Leaves the last glyph's box in draw_area.
void draw_string(std::uint8_t align);

/// draw_string of a text that starts without a flash attribute, whatever string_flash says.
void draw_unflashed_string(std::uint8_t align);

/// Draws one character with its top left corner at x1, y1 of draw_area, on the selected planes,
/// under flash_attr. Codes without a glyph leave x2, y2 at x1, y1. Refreshes nothing.
void draw_glyph(std::uint8_t code, const FontRef& font, const TextStyle& style);

/// Power-on of the four styles and of string_flash.
void power_on_styles();

// Handlers of group Z but for the font's.
void string_left();
void string_centre();
void string_right();
void set_string_zoom();
void set_string_link();
void set_string_rotation();
void set_string_flash();

}  // namespace orvanel
