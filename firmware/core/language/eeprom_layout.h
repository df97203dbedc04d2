// eeprom_layout.h: what the module's memory looks like, as docs/reference/formats.md describes it:
// tables, fonts, pictures, the checksum. Facts alone, for the firmware, the kit compiler and the
// tools. Each value of 16 bits is stored low byte first.

#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace orvanel {

// The image.

constexpr int eeprom_small = 32 * 1024;  // bytes
constexpr int eeprom_large = 64 * 1024;
constexpr std::uint8_t erased_byte = 0xFF;

constexpr int image_length_at = 0;  // 2 bytes: those that the CRC covers, and its offset
constexpr std::uint16_t unprogrammed = 0xFFFF;  // as a length: there is no image
constexpr int max_image_length = 0xFFFE;
constexpr int crc_size = 2;

constexpr std::uint16_t font_table = 0x0000;  // entry 0 is the image's length
constexpr std::uint16_t picture_table = 0x0020;
constexpr std::uint16_t power_on_macro_table = 0x0220;  // by the kind of reset
constexpr std::uint16_t normal_macro_table = 0x0230;
constexpr std::uint16_t touch_macro_table = 0x0630;
constexpr std::uint16_t menu_macro_table = 0x0A30;
constexpr int data_start = 0x0E30;  // fonts, pictures and bytes of macros, in any order

/// What a number counts: nothing, or what one of the image's tables holds.
enum class Kind : std::uint8_t { number, font, picture, power_on, normal, touch, menu };

constexpr bool is_macro(Kind kind) { return kind >= Kind::power_on; }

constexpr int offset_entry_size = 2;  // bytes: the offset of a font or picture
constexpr int macro_record_size = 4;  // the offset of a macro's first byte, the macro's length

/// A table of the image.
struct StoreTable {
    int offset;      // in the image
    int entry_size;  // bytes
    int min, max;    // numbers; font 0 is held by the program
};

inline constexpr std::array<StoreTable, 7> store_tables{{
    {0, 0, 0, 0},  // a plain number
    {font_table, offset_entry_size, 1, 15},
    {picture_table, offset_entry_size, 0, 255},
    {power_on_macro_table, macro_record_size, 0, 3},
    {normal_macro_table, macro_record_size, 0, 255},
    {touch_macro_table, macro_record_size, 0, 255},
    {menu_macro_table, macro_record_size, 0, 255},
}};

constexpr const StoreTable& table_of(Kind kind) {
    return store_tables[static_cast<std::size_t>(kind)];
}

/// Where the entry of number `n` lies in the image.
constexpr int entry_at(Kind kind, int n) {
    return table_of(kind).offset + table_of(kind).entry_size * n;
}

constexpr bool tables_join() {
    for (std::size_t i = 1; i < store_tables.size(); ++i) {
        const int next = i + 1 < store_tables.size() ? store_tables[i + 1].offset : data_start;
        if (entry_at(Kind(i), store_tables[i].max + 1) != next) return false;
    }
    return true;
}
static_assert(tables_join(), "each table ends where the next begins");

constexpr std::uint16_t no_entry = 0xFFFF;  // the offset of a font or picture that isn't there
constexpr int max_macro_length = 0xFFFE;    // 0xFFFF is that of an erased record

/// Whether a record of this length holds a macro, whatever its offset.
constexpr bool is_macro_length(int length) { return length != 0 && length <= max_macro_length; }

// Fonts.

constexpr std::array<std::uint8_t, 3> font_magic{'F', 'H', '7'};
/// Whether a font begins here.
constexpr bool has_font_magic(std::span<const std::uint8_t> bytes) {
    return bytes.size() >= font_magic.size() &&
           std::equal(font_magic.begin(), font_magic.end(), bytes.begin());
}

constexpr int font_format_at = 3;  // a byte that the module doesn't look at
constexpr int font_first_at = 4;   // first code
constexpr int font_last_at = 5;    // last code, inclusive
constexpr int font_width_at = 6;   // dots of the terminal's cell
constexpr int font_height_at = 7;  // dots of every glyph
constexpr int font_glyphs_at = 8;  // 2 bytes: offset of the glyphs' rows
constexpr int font_gap_at = 10;    // dots between two lines
constexpr int font_head_size = 16;
constexpr int glyph_entry_size = 3;  // a code's width in dots, 0: no glyph, and offset of its rows
constexpr int max_glyph_width = 255;
constexpr int max_font_height = 255;
constexpr int max_glyph_offset = 0xFFFF;

// Pictures: a byte for the width, one for the height, the rows.

constexpr int picture_head_size = 2;
constexpr int max_picture_width = 255;
constexpr int max_picture_height =
    128;  // a height byte above it marks two images, one after the other

constexpr bool has_two_images(int height_byte) { return height_byte > max_picture_height; }

/// The rows that follow, of both images where there are two.
constexpr int picture_rows(int height_byte) {
    return has_two_images(height_byte) ? height_byte & 0x7F : height_byte;
}

constexpr int max_height_of_two = 63;  // rows of each, which 7 bits count together

/// The height byte of two images of `height` rows each.
constexpr int two_images_of(int height) { return 0x80 | 2 * height; }
static_assert(has_two_images(two_images_of(1)) &&
              picture_rows(two_images_of(max_height_of_two)) == 126);

/// Bytes of a packed row: the leftmost dot is bit 7 of the first, a set bit is a dark dot.
constexpr int stride_of(int width) { return (width + 7) / 8; }

// The checksum: CRC-16/XMODEM, from 0, most significant bit first.

constexpr int crc_polynomial = 0x1021;

inline constexpr std::array<std::uint16_t, 256> crc_table = [] {
    std::array<std::uint16_t, 256> table{};
    for (int i = 0; i < 256; ++i) {
        int crc = i << 8;
        for (int bit = 0; bit < 8; ++bit)
            crc = ((crc & 0x8000) != 0 ? crc << 1 ^ crc_polynomial : crc << 1) & 0xFFFF;
        table[static_cast<std::size_t>(i)] = static_cast<std::uint16_t>(crc);
    }
    return table;
}();

/// The CRC of the bytes so far, and one more.
constexpr std::uint16_t crc_step(std::uint16_t crc, std::uint8_t byte) {
    return static_cast<std::uint16_t>(crc << 8 ^ crc_table[(crc >> 8 ^ byte) & 0xFF]);
}
static_assert(crc_step(0, 1) == crc_polynomial);

/// The CRC of an image's bytes.
constexpr std::uint16_t crc_of(std::span<const std::uint8_t> bytes) {
    std::uint16_t crc = 0;
    for (const std::uint8_t byte : bytes)
        crc = crc_step(crc, byte);
    return crc;
}

}  // namespace orvanel
