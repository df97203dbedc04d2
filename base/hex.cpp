#include "base/hex.h"

#include "base/bytes.h"

#include <algorithm>

namespace orvanel {

bool is_hex(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return hex_digit(c) >= 0; });
}

void append_hex_pairs(std::string_view digits, std::vector<std::uint8_t>& bytes) {
    for (; digits.size() >= 2; digits.remove_prefix(2))
        bytes.push_back(low8(hex_pair(digits)));
}

std::string hex_digits(std::uint32_t value, int count) {
    std::string text;
    for (int shift = 4 * (count - 1); shift >= 0; shift -= 4)
        text += hex_character(value >> shift);
    return text;
}

std::string hex_number(std::uint32_t value) {
    int count = 1;
    while (count < 8 && value >> 4 * count != 0)
        ++count;
    return hex_digits(value, count);
}

std::string hex_of(std::span<const std::uint8_t> bytes) {
    std::string text;
    text.reserve(bytes.size() * 3);
    for (const std::uint8_t byte : bytes) {
        text += ' ';
        text += hex_character(byte >> 4);
        text += hex_character(byte);
    }
    return text;
}

std::string hex_of(std::span<const std::uint8_t> bytes, std::string_view between) {
    std::string text;
    text.reserve(bytes.size() * (2 + between.size()));
    for (const std::uint8_t byte : bytes) {
        if (!text.empty()) text += between;
        text += hex_character(byte >> 4);
        text += hex_character(byte);
    }
    return text;
}

}  // namespace orvanel
