// reads.h: how the module's language writes what a command takes.

#pragma once

#include <cstdint>

namespace orvanel {

// The bytes that open a command.
constexpr std::uint8_t lead_in_esc = 0x1B;
constexpr std::uint8_t lead_in_hash = 0x23;  // '#': parameters are ASCII numbers

/// How a parameter is read, in the words of docs/reference/commands.md.
enum class Read : std::uint8_t {
    none,
    // After ESC one byte for each number, after '#' an ASCII number, cut to 8 bits, and the one
    // byte that ends it.
    p,     // 0..255
    pt1,   // x, y: cut at the edge of the glass
    pt2,   // likewise, into the second point of the draw area
    rect,  // x1, y1, x2, y2: cut, then ordered
    zoom,  // 1..4, and wraps
    bar,   // 1..32, and wraps
    // Raw bytes after both lead-ins.
    raw_string,   // text up to one that ends_text, which is taken as well
    raw_text,     // likewise, the rows of a menu
    raw_picture,  // width, height and rows (eeprom_layout.h)
    raw_byte,
    raw_bytes,  // as many as the number before them says
    raw_word,   // two, low byte first
    raw_data,   // after the letter W as many as the word before the letter says, after others none
};

constexpr bool is_raw(Read read) { return read >= Read::raw_string; }

/// Numbers that it takes, each with a name of its own.
constexpr int numbers_of(Read read) {
    switch (read) {
    case Read::p:
    case Read::zoom:
    case Read::bar:
        return 1;
    case Read::pt1:
    case Read::pt2:
        return 2;
    case Read::rect:
        return 4;
    default:
        return 0;
    }
}

constexpr bool ends_text(std::uint8_t byte) { return byte == 0 || byte == '\n' || byte == '\r'; }

}  // namespace orvanel
