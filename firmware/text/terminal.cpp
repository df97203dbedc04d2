#include "firmware/text/terminal.h"

#include "base/bytes.h"
#include "base/hex.h"
#include "firmware/core/ground/trace.h"
#include "firmware/core/read/read.h"
#include "firmware/raster/area_fill.h"
#include "firmware/raster/blit.h"
#include "firmware/raster/screen_store.h"
#include "firmware/text/layout.h"
#include "link/ground/port.h"

#include <algorithm>
#include <string_view>

namespace orvanel {

constinit TerminalState terminal{};
constinit bool cursor_shown = false;
constinit std::atomic<std::uint8_t> blink_timer{0};

constinit const char version_text[] = "HD Orvanel42 V1.8 Rev.B TP+ simulation";

namespace {

constexpr std::uint8_t line_feed = 0x0A;
constexpr std::uint8_t form_feed = 0x0C;
constexpr std::uint8_t carriage_return = 0x0D;

constexpr std::uint8_t blink_ticks = 6;

/// The cell under the cursor.
DrawArea cursor_cell() {
    const int x = (terminal.term_col - 1) * terminal_font.width;
    const int y = (terminal.term_row - 1) * terminal_font.height;
    return {x, low8(y), x + terminal_font.width - 1, low8(y + terminal_font.height - 1)};
}

void cursor_toggle() {
    select_terminal_plane();
    draw_area = cursor_cell();
    fill_area(link_invert, pattern_solid);
    refresh_area();
    cursor_shown = !cursor_shown;
}

/// A position beyond the grid becomes its last column or row; 0, which lies before it, the first.
void move_cursor(std::uint8_t col, std::uint8_t row) {
    terminal.term_col = std::clamp<std::uint8_t>(col, 1, terminal.term_cols);
    terminal.term_row = std::clamp<std::uint8_t>(row, 1, terminal.term_rows);
}

/// Moves the text up by one row.
void scroll() {
    select_terminal_plane();
    const std::uint8_t height = terminal_font.height;
    draw_area = {0, height, last_x, last_y};
    move_area(0, 0);
    draw_area = {0, low8(screen_height - height), last_x, last_y};
    fill_area(link_replace, pattern_clear);
    refresh_all();
}

void scroll_if_pending() {
    if (!terminal.pending_scroll) return;
    terminal.pending_scroll = false;
    scroll();
}

/// Steps to the next row. At the bottom the row stays, and a scroll waits.
void next_row() {
    if (++terminal.term_row <= terminal.term_rows) return;
    terminal.term_row = terminal.term_rows;
    terminal.pending_scroll = true;
}

void clear_text() {
    terminal.pending_scroll = false;
    select_terminal_plane();
    draw_area = whole_screen;
    fill_area(link_replace, pattern_clear);
    refresh_area();
    terminal.term_col = 1;
    terminal.term_row = 1;
}

/// Draws the character, which replaces the dots of its cell, and steps on. A code without a glyph
/// leaves the cell as it is.
void put_character(std::uint8_t code) {
    scroll_if_pending();
    select_terminal_plane();
    flash_attr = flash_none;
    draw_area = cursor_cell();
    draw_glyph(code, terminal_font, terminal_style);
    refresh_area();
    if (++terminal.term_col <= terminal.term_cols) return;
    terminal.term_col = 1;
    next_row();
}

void print(std::string_view text) {
    for (const char c : text)
        terminal_put(static_cast<std::uint8_t>(c));
}

}  // namespace

void terminal_put(std::uint8_t byte) {
    if (!terminal_on || terminal.term_cols == 0 || terminal.term_rows == 0) return;
    cursor_hide();
    switch (byte) {
    case line_feed:
        // At the bottom it scrolls at once, and a scroll that was waiting is all that it does.
        if (!terminal.pending_scroll) next_row();
        scroll_if_pending();
        break;
    case form_feed:
        clear_text();
        break;
    case carriage_return:
        terminal.term_col = 1;
        scroll_if_pending();
        break;
    default:
        put_character(byte);
        break;
    }
    cursor_show();
}

void terminal_blink() {
    if (blink_timer.load(std::memory_order_relaxed) != 0 || !terminal_on) return;
    if (terminal.cursor_on && !terminal.pending_scroll) cursor_toggle();
    blink_timer.store(blink_ticks);
}

void terminal_init() {
    const int width = draw_area.x2 - draw_area.x1 + 1;
    const int height = draw_area.y2 - draw_area.y1 + 1;
    const int gap = terminal_font.line_gap;
    cursor_shown = false;
    terminal.term_col = 1;
    terminal.term_row = 1;
    terminal.pending_scroll = false;
    terminal.cursor_on = true;
    terminal_on = true;
    terminal.term_cols = low8(width / terminal_font.width);
    terminal.term_rows = low8((height + gap) / (terminal_font.height + gap));
    // The saved position is not here: it outlives a reset.
    blink_timer.store(0);
    select_terminal_plane();
    fill_area(link_replace, pattern_clear);
    refresh_all();
}

void cold_start_terminal() { terminal = {}; }

void cursor_hide() {
    if (cursor_shown) cursor_toggle();
}

void cursor_show() {
    if (!cursor_shown && terminal_on && terminal.cursor_on && !terminal.pending_scroll)
        cursor_toggle();
}

void terminal_off() {
    terminal_on = false;
    refresh_all();
}

void terminal_show() {
    terminal_on = true;
    refresh_all();
}

void set_cursor() { terminal.cursor_on = masked(params[0], 1) != 0; }

void set_position() {
    terminal.pending_scroll = false;
    move_cursor(params[0], params[1]);
}

void restore_position() {
    terminal.pending_scroll = terminal.saved_pending;
    move_cursor(terminal.saved_col, terminal.saved_row);
}

void save_position() {
    terminal.saved_col = terminal.term_col;
    terminal.saved_row = terminal.term_row;
    terminal.saved_pending = terminal.pending_scroll;
}

void print_interface() {
    print("interface: RS232, ADR: $");
    const std::uint8_t address = module_address;
    terminal_put(static_cast<std::uint8_t>(hex_character(address >> 4)));
    terminal_put(static_cast<std::uint8_t>(hex_character(address)));
}

void print_version() { print(version_text); }

}  // namespace orvanel
