#include "firmware/core/read/read.h"
#include "firmware/raster/refresh.h"
#include "link/ground/port.h"
#include "tests/firmware/text/text_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace orvanel {
namespace {

/// Without a cursor, so that only text is in the plane.
void fresh_terminal() {
    fresh_text();
    terminal.cursor_on = false;
}

void type(std::string_view text) {
    for (const char c : text)
        terminal_put(static_cast<std::uint8_t>(c));
}

void go_to(std::uint8_t col, std::uint8_t row) {
    cursor_hide();
    params = {col, row};
    set_position();
    cursor_show();
}

bool cursor_at(int col, int row) { return terminal.term_col == col && terminal.term_row == row; }

std::string cell(int col, int row) {
    const int x = 8 * (col - 1), y = 8 * (row - 1);
    return dots(terminal_plane.data(),
                {x, static_cast<std::uint8_t>(y), x + 7, static_cast<std::uint8_t>(y + 7)});
}

bool is_blank(int col, int row) { return cell(col, row).find('#') == std::string::npos; }

bool glass_shows_dots() {
    return std::ranges::any_of(lcd_image, [](const auto& row) {
        return std::ranges::any_of(row, [](const auto& word) { return word.load() != 0; });
    });
}

TEST(Terminal, prints_into_its_own_plane_and_wraps) {
    fresh_terminal();
    go_to(30, 5);
    type("A");
    const std::string letter = cell(30, 5);
    EXPECT_FALSE(is_blank(30, 5));
    EXPECT_TRUE(cursor_at(1, 6));
    // A code without a glyph leaves the cell and moves on; backspace is just such a code.
    go_to(30, 5);
    type("\xB0\b\x01");
    EXPECT_EQ(cell(30, 5), letter);
    EXPECT_TRUE(cursor_at(3, 6));
    EXPECT_TRUE(glass_shows_dots());
    type("\f");
    EXPECT_FALSE(glass_shows_dots());
    EXPECT_EQ(terminal_plane, BitPlane{});
    EXPECT_TRUE(cursor_at(1, 1));
    EXPECT_EQ(graphics_planes, PlaneSet{});
}

TEST(Terminal, waits_with_the_scroll_of_a_full_last_row) {
    struct Case {
        const char* typed;
        int scrolls, col;
    };
    for (const auto& [typed, scrolls, col] :
         {Case{"", 0, 1}, Case{"\r", 1, 1}, Case{"\n", 1, 1}, Case{"\r\n", 2, 1},
          Case{"\n\r", 1, 1}, Case{"xy", 1, 3}, Case{"xy\n", 2, 3}, Case{"xy\r", 1, 1}}) {
        fresh_terminal();
        go_to(1, 10);
        type("A");
        const std::string letter = cell(1, 10);
        go_to(30, 16);
        type("Z");
        type(typed);
        EXPECT_EQ(cell(1, 10 - scrolls), letter) << "after " << typed;
        EXPECT_EQ(is_blank(30, 16), scrolls > 0) << "after " << typed;
        EXPECT_TRUE(cursor_at(col, 16)) << "after " << typed;
        EXPECT_EQ(terminal.pending_scroll, scrolls == 0) << "after " << typed;
    }
}

TEST(Terminal, scrolls_the_last_row_away_from_edge_to_edge) {
    fresh_terminal();
    terminal.cursor_on = false;
    terminal_plane.fill(0xFF);
    go_to(1, 16);
    select_graphics_planes();  // as a command leaves it
    type("\n");
    for (const int column : {1, 2, 29, 30}) {
        EXPECT_TRUE(is_blank(column, 16)) << column;
        EXPECT_FALSE(is_blank(column, 15)) << column;
    }
}

TEST(Terminal, keeps_a_saved_position_over_a_reset_with_its_waiting_scroll) {
    fresh_text();
    restore_position();
    EXPECT_TRUE(cursor_at(1, 1)) << "nothing was saved yet";
    go_to(200, 0);
    EXPECT_TRUE(cursor_at(30, 1));
    go_to(30, 16);
    type("Z");
    save_position();
    draw_area = whole_screen;
    terminal_init();
    EXPECT_TRUE(cursor_at(1, 1));
    restore_position();
    cursor_show();
    EXPECT_TRUE(cursor_at(1, 16));
    EXPECT_FALSE(cursor_shown) << "a scroll waits";
}

TEST(Terminal, drops_bytes_while_it_is_off) {
    fresh_terminal();
    type("A");
    const BitPlane text = terminal_plane;
    terminal_off();
    EXPECT_FALSE(glass_shows_dots());
    type("BC\r\f");
    terminal_show();
    EXPECT_EQ(terminal_plane, text);
    EXPECT_TRUE(cursor_at(2, 1));
}

TEST(Terminal, prints_the_interface_line_like_input) {
    fresh_terminal();
    module_address = 0xA7;
    go_to(28, 16);
    print_interface();
    const BitPlane printed = terminal_plane;
    fresh_terminal();
    go_to(28, 16);
    type("interface: RS232, ADR: $A7");
    EXPECT_EQ(printed, terminal_plane);
}

TEST(Cursor, blinks_every_six_ticks_unless_a_scroll_waits) {
    fresh_text();
    terminal_blink();
    EXPECT_EQ(cell(1, 1).find('.'), std::string::npos);
    EXPECT_EQ(blink_timer, 6);
    terminal_blink();
    EXPECT_TRUE(cursor_shown) << "not due yet";
    blink_timer = 0;
    terminal_blink();
    EXPECT_EQ(terminal_plane, BitPlane{});
    type("\r");
    EXPECT_TRUE(cursor_shown) << "each byte leaves it shown";
    go_to(30, 16);
    type("Z");
    blink_timer = 0;
    terminal_blink();
    EXPECT_FALSE(cursor_shown);
    EXPECT_EQ(blink_timer, 6) << "the clock runs on";
    go_to(1, 2);
    EXPECT_TRUE(cursor_shown) << "a position cancels the scroll";
    EXPECT_FALSE(is_blank(30, 16));
    go_to(30, 16);
    type("Z\f");
    EXPECT_TRUE(cursor_shown) << "and so does a form feed";
}

}  // namespace
}  // namespace orvanel
