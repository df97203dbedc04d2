// hex.h: hexadecimal digits and what they stand for. Reading takes either case of letters, writing
// gives upper case.

#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvanel {

/// The value of a digit, -1 for any other character.
constexpr int hex_digit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

/// The byte of two digits at the start of `text`, -1 if they aren't there.
constexpr int hex_pair(std::string_view text) {
    if (text.size() < 2) return -1;
    const int high = hex_digit(text[0]);
    const int low = hex_digit(text[1]);
    return high < 0 || low < 0 ? -1 : high << 4 | low;
}

/// The digit of the low four bits.
constexpr char hex_character(std::uint32_t value) { return "0123456789ABCDEF"[value & 15]; }

/// Whether the text holds nothing but digits.
bool is_hex(std::string_view text);

/// Appends the bytes of pairs of digits, of which there is an even number and nothing else.
void append_hex_pairs(std::string_view digits, std::vector<std::uint8_t>& bytes);

/// The low `count` digits of a number; and as few digits as it takes, at least one.
std::string hex_digits(std::uint32_t value, int count);
std::string hex_number(std::uint32_t value);

/// Each byte as ` HH`; and as two digits with `between` from one to the next.
std::string hex_of(std::span<const std::uint8_t> bytes);
std::string hex_of(std::span<const std::uint8_t> bytes, std::string_view between);

}  // namespace orvanel
