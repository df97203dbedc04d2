// text_support.h: the text layer as a reset leaves it, and fonts made for a test.

#pragma once

#include "firmware/core/ground/draw_area.h"
#include "firmware/core/ground/requests.h"
#include "firmware/raster/planes.h"
#include "firmware/store/ground/eeprom.h"
#include "firmware/store/ground/macro.h"
#include "firmware/text/layout.h"
#include "firmware/text/terminal.h"
#include "link/ground/pipes.h"
#include "tests/support/fake_platform.h"
#include "tests/support/raster_support.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

namespace orvanel {

/// Everything the text layer rests on as after a reset with an erased image, also what outlives
/// one, and the graphics planes selected as at the start of a command.
inline void fresh_text() {
    fresh_raster();
    eeprom_reset_to(eeprom_small, {});
    power_on_pipes();
    power_on_macros();
    restart_requested = false;
    string_font = touch_font = menu_font = terminal_font = {};
    power_on_fonts();
    power_on_styles();
    terminal = {};
    draw_area = whole_screen;
    terminal_init();
    select_graphics_planes();
    fake_platform.painted.clear();
}

/// A font image by its parts; `widths` holds one entry a code, `bits` the glyphs one after the
/// other.
struct TestFont {
    std::uint8_t first, height, line_gap;
    std::vector<std::uint8_t> widths;
    std::vector<std::uint8_t> bits;
};

/// Writes the font to `at` of the image and enters it in the table as `number`.
inline void put_font(std::uint8_t number, int at, const TestFont& font) {
    const auto le = [](std::size_t v) {
        return std::array{static_cast<std::uint8_t>(v & 0xFF), static_cast<std::uint8_t>(v >> 8)};
    };
    const auto glyphs = le(16 + 3 * font.widths.size());
    const auto last = static_cast<std::uint8_t>(font.first + font.widths.size() - 1);
    std::vector<std::uint8_t> image{
        font_magic[0], font_magic[1], font_magic[2], 0, font.first, last, 7, font.height,
        glyphs[0],     glyphs[1],     font.line_gap};
    image.resize(16);
    std::size_t offset = 0;
    for (const std::uint8_t width : font.widths) {
        image.insert(image.end(), {width, le(offset)[0], le(offset)[1]});
        offset += static_cast<std::size_t>(font.height * stride_of(width));
    }
    image.insert(image.end(), font.bits.begin(), font.bits.end());
    std::ranges::copy(image, eeprom_image.begin() + at);
    std::ranges::copy(le(static_cast<std::size_t>(at)), eeprom_image.begin() + 2 * number);
}

/// Lays out a string that lies in memory and draws it at x, y.
inline void draw_text(std::string_view text, int x, int y, char align = 'L') {
    const std::vector<std::uint8_t> data(text.begin(), text.end());
    run_cursor = data;
    layout_string(StringSource::memory, false);
    run_cursor = {};
    draw_area.x1 = x;
    draw_area.y1 = static_cast<std::uint8_t>(y);
    draw_string(static_cast<std::uint8_t>(align));
}

}  // namespace orvanel
