#include "base/bytes.h"
#include "tests/firmware/text/text_support.h"

#include <gtest/gtest.h>

namespace orvanel {
namespace {

using Rows = std::vector<std::uint8_t>;

/// Two codes from 'A' on, 8 and 9 dots wide.
TestFont two_letters(std::uint8_t gap) {
    return {'A', 2, gap, {8, 9}, {0x81, 0x42, 0xFF, 0x80, 0x01, 0x00}};
}

Rows rows_of(const FontRef& font, std::uint8_t code) {
    const auto rows = glyph_rows(font, glyph_entry(font, code));
    return {rows.begin(), rows.end()};
}

TEST(SelectFont, a_failed_selection_changes_the_number_alone) {
    fresh_text();
    put_font(1, 0x2000, two_letters(3));
    put_font(4, 0x3000, two_letters(5));
    eeprom_image[0x3002] = '8';
    select_font(1, string_font);
    string_font.line_gap = 9;
    for (const int missing : {2, 4}) {
        select_font(low8(missing), string_font);
        EXPECT_EQ(string_font.id, missing);
        EXPECT_EQ(string_font.line_gap, 9);
    }
    select_font(17, string_font);
    EXPECT_EQ(string_font.line_gap, 3) << "17 is 1, and the header is read again";
    string_font.line_gap = 9;
    select_font(1, string_font);
    EXPECT_EQ(string_font.line_gap, 9) << "already selected";
}

TEST(SelectFont, a_reset_reads_the_header_anew_and_keeps_a_font_that_is_gone) {
    fresh_text();
    put_font(5, 0x2000, two_letters(3));
    power_on_fonts();
    EXPECT_EQ(menu_font.line_gap, 3);
    eeprom_image[0x200A] = 6;
    power_on_fonts();
    EXPECT_EQ(touch_font.line_gap, 6);
    eeprom_image[0x2000] = 'f';
    eeprom_image[0x200A] = 7;
    power_on_fonts();
    EXPECT_EQ(touch_font.line_gap, 6);
}

TEST(SelectFont, leaves_the_image_cursor_behind_the_table_entry) {
    fresh_text();
    eeprom_image[8] = 77;
    select_font(3, string_font);
    select_font(0, string_font);
    EXPECT_EQ(eeprom_read(), 77);
}

TEST(Font, has_no_dots_beyond_the_end_of_the_image) {
    fresh_text();
    // The last row of the second glyph lies outside.
    put_font(1, eeprom_small - 26, two_letters(0));
    select_font(1, string_font);
    EXPECT_EQ(rows_of(string_font, 'A'), (Rows{0x81, 0x42}));
    EXPECT_EQ(rows_of(string_font, 'B'), (Rows{0xFF, 0x80, 0, 0}));

    // The image may be replaced under a selected font, and offsets may point anywhere.
    string_font.width_table = eeprom_small - 4;
    eeprom_image[eeprom_small - 1] = 200;
    string_font.glyphs = 2 * eeprom_large;
    EXPECT_EQ(rows_of(string_font, 'B'), Rows(2 * 25, 0));
    eeprom_image[4] = low8(eeprom_small - 2);
    eeprom_image[5] = low8((eeprom_small - 2) >> 8);
    eeprom_image[eeprom_small - 2] = 'F';
    select_font(2, string_font);
    EXPECT_EQ(string_font.height, 2) << "a magic that is cut off selects nothing";
}

}  // namespace
}  // namespace orvanel
